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
# One reader as a user gets it (1 Gb/s link), one on an unlimited link for
# raw throughput, and sixteen at once.
"$simulator" --demo 1 --base-address 127.0.0.2 2>/dev/null &
paced=$!
"$simulator" --demo 1 --base-address 127.0.0.3 --no-broadcast --link-speed unlimited 2>/dev/null &
unlimited=$!
many_log=$(mktemp)
"$simulator" --demo 16 --base-address 127.0.0.10 --no-broadcast -v 2>"$many_log" &
many=$!
trap 'kill $paced $unlimited $many $reference 2>/dev/null; wait $paced $unlimited $many $reference 2>/dev/null; rm -f "$many_log"' EXIT
sleep 1
# Untuned first: the tuned runs leave their packet size in the devices.
echo "== untuned client, 8 s at 10 frames/s: simulator, fake camera"
"$bench" --default-client --seconds 8 --link 1e9 127.0.0.2
"$bench" --default-client --seconds 8 --link 0 127.0.0.1
echo "== throughput and reads: unlimited link against the fake camera"
"$bench" "$@" 127.0.0.3 127.0.0.1
echo "== trigger latency at the default 1 Gb/s link"
"$bench" --latency-only --link 1e9 "$@" 127.0.0.2
echo "== untuned clients of sixteen readers at once, 640x480, 8 s at 10 frames/s"
many_addresses=$(for i in $(seq 10 25); do printf '127.0.0.%s ' "$i"; done)
"$bench" --default-client --seconds 8 --size 640x480 --link 1e9 $many_addresses
# The simulator's own pacing error over the run, printed when it stops:
# the mean over devices of how much later than its wire time a frame ended.
kill $many; wait $many 2>/dev/null || true
awk '/frames later than their wire time/ { n[$3] = $0 }
     END { for (d in n) { split(n[d], w, "by "); split(w[2], v, " "); sum += v[1]; count++; if (v[5] > worst) worst = v[5] }
           if (count) printf "many-devices simulator pacing error mean_us %.0f worst_us %.0f over %d devices\n", sum / count, worst, count }' "$many_log"
