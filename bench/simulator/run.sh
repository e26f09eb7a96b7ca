#!/bin/sh
# Measures quorvex-simulator against Aravis's fake camera (aravis-tools),
# both started here inside one private network namespace that has only
# loopback, with the same read loop and the same 1280x1024 Mono8 stream.
#
#   bench/simulator/run.sh [BUILD_DIR] [-- extra simulator_bench options]
set -e
here=$(cd "$(dirname "$0")" && pwd)
build=${1:-$here/../../build}
[ $# -gt 0 ] && shift
[ "$1" = "--" ] && shift

simulator=$(find "$build/suite/apps" -maxdepth 1 -name quorvex-simulator -type f 2>/dev/null | head -n 1)
bench="$build/bin/simulator_bench"
for tool in unshare ip arv-fake-gv-camera-0.8; do
  command -v "$tool" >/dev/null 2>&1 || { echo "run.sh: '$tool' is needed (aravis-tools, util-linux, iproute2)" >&2; exit 2; }
done
[ -x "$simulator" ] || { echo "run.sh: no quorvex-simulator under $build/suite/apps; build it first" >&2; exit 2; }
[ -x "$bench" ] || { echo "run.sh: no $bench; build the simulator_bench target first" >&2; exit 2; }

if [ -z "$QUORVEX_BENCH_IN_NETNS" ]; then
  if [ "$(id -u)" = 0 ]; then ns="-n"; else ns="-rn"; fi
  QUORVEX_BENCH_IN_NETNS=1 exec unshare $ns "$0" "$build" -- "$@"
fi

ip link set lo up
arv-fake-gv-camera-0.8 -i 127.0.0.1 -s BENCH01 >/dev/null 2>&1 &
reference=$!
"$simulator" --demo 1 --base-address 127.0.0.2 2>/dev/null &
subject=$!
trap 'kill $subject $reference 2>/dev/null; wait $subject $reference 2>/dev/null' EXIT
sleep 1
"$bench" "$@" 127.0.0.2 127.0.0.1
