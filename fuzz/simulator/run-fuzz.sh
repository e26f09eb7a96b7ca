#!/bin/sh
# Builds the GVCP packet-handler fuzz target with clang (libFuzzer, ASan,
# UBSan) into its own folder and runs it for a bounded time.
#
#   fuzz/simulator/run-fuzz.sh [--seconds N] [--out DIR]
# Defaults: 60 seconds, <repo>/build-fuzz-simulator. Exit status 0 when no
# crash was found; the fuzzer's crash file is kept in DIR otherwise.
set -e
here=$(cd "$(dirname "$0")" && pwd)
top=$(cd "$here/../.." && pwd)
seconds=60
out="$top/build-fuzz-simulator"
while [ $# -gt 0 ]; do
  case "$1" in
    --seconds) seconds=$2; shift 2 ;;
    --out) out=$2; shift 2 ;;
    *) echo "run-fuzz.sh: unknown option $1" >&2; exit 2 ;;
  esac
done

CXX=${FUZZ_CXX:-clang++}
if ! command -v "$CXX" >/dev/null 2>&1; then
  echo "run-fuzz.sh: FAILED: '$CXX' not found; the fuzz target needs clang with libFuzzer (Debian packages clang and libclang-rt-14-dev)" >&2
  exit 1
fi

sources="$here/gvcp_fuzz.cpp"
for f in core/bootstrap_registers.cpp core/control_privilege.cpp core/device_control.cpp core/link_pacer.cpp core/udp_socket.cpp \
         demo/code_frame_source.cpp demo/demo_code_reader.cpp demo/demo_features.cpp demo/feature_registers.cpp \
         demo/feature_table.cpp demo/genicam_writer.cpp; do
  sources="$sources $top/simulator/$f"
done

mkdir -p "$out/corpus"
out=$(cd "$out" && pwd)
binary="$out/gvcp_fuzz"
# Rebuild only when a source or header changed.
if [ ! -x "$binary" ] || [ -n "$(find "$top/simulator" "$here" -newer "$binary" \( -name '*.cpp' -o -name '*.h' \) | head -n 1)" ]; then
  echo "run-fuzz.sh: building $binary"
  # shellcheck disable=SC2086
  "$CXX" -std=c++17 -g -O1 -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    -I"$top/simulator" $sources -lZXing -lpthread -o "$binary"
fi

# Seeds: one well-formed command of each kind, the first byte being the
# fuzzer's control byte (sender 0, no time step, unicast).
seed() { printf "$2" > "$out/corpus/$1"; }
seed discovery '\000\102\001\000\002\000\000\377\377'
seed readreg '\000\102\001\000\200\000\004\000\001\000\000\011\004'
seed take-control '\000\102\001\000\202\000\010\000\002\000\000\012\000\000\000\000\002'
seed readmem-url '\000\102\001\000\204\000\010\000\003\000\000\002\000\000\000\002\000'
seed writemem-name '\000\102\001\000\206\000\010\000\004\000\000\000\350\101\102\103\000'
seed resend '\000\102\000\000\100\000\014\000\005\000\000\000\001\000\000\000\001\000\000\000\003'

cd "$out"
exec "$binary" -max_total_time="$seconds" -max_len=1100 -print_final_stats=1 "$out/corpus"
