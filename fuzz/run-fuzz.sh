#!/bin/sh
# Builds one fuzz target with clang (libFuzzer, ASan, UBSan) into its own
# folder, seeds its corpus and runs it for a bounded time.
#
#   fuzz/run-fuzz.sh TARGET [--seconds N] [--out DIR]
# TARGET is one of
#   gvcp           the simulator's GVCP packet handler
#   description    the SDKs' check of a device's description URL and zip
#   register-dump  the replay's parser of the register dumps in the store
#   store-ini      the store's INI reader
# Defaults: 60 seconds, <repo>/build-fuzz-TARGET. Exit status 0 when no
# crash was found; the fuzzer's crash file is kept in DIR otherwise.
set -e
here=$(cd "$(dirname "$0")" && pwd)
top=$(cd "$here/.." && pwd)
target=$1
[ $# -gt 0 ] && shift
seconds=60
out="$top/build-fuzz-$target"
while [ $# -gt 0 ]; do
  case "$1" in
    --seconds) seconds=$2; shift 2 ;;
    --out) out=$2; shift 2 ;;
    *) echo "run-fuzz.sh: unknown option $1" >&2; exit 2 ;;
  esac
done

# What each target is built from, the folders whose changes rebuild it, and
# the longest input worth trying.
case "$target" in
  gvcp)
    harness="$here/simulator/gvcp_fuzz.cpp"
    includes="-I$top/simulator"
    sources=""
    for f in core/bootstrap_registers.cpp core/control_privilege.cpp core/device_control.cpp core/link_pacer.cpp \
             core/udp_socket.cpp demo/code_frame_source.cpp demo/demo_code_reader.cpp demo/demo_features.cpp \
             demo/feature_registers.cpp demo/feature_table.cpp demo/genicam_writer.cpp; do
      sources="$sources $top/simulator/$f"
    done
    libs="-lZXing -lpthread"
    watched="$top/simulator"
    max_len=1100 ;;
  description)
    harness="$here/sdk/description_fuzz.cpp"
    includes="-I$top/sdk/common/src -I$top/tests/sdk/support"
    sources="$top/sdk/common/src/DescriptionCheck.cpp"
    libs="-lz"
    watched="$top/sdk/common/src $top/tests/sdk/support"
    max_len=4096 ;;
  register-dump)
    harness="$here/simulator/register_dump_fuzz.cpp"
    includes="-I$top/simulator/replay"
    sources="$top/simulator/replay/register_dump.cpp"
    libs=""
    watched="$top/simulator/replay"
    max_len=8192 ;;
  store-ini)
    harness="$here/store/fuzz_store_ini.cpp"
    includes="-I$top/store/reader"
    sources="$top/store/reader/ini_file.cpp $top/store/reader/store_names.cpp"
    libs=""
    watched="$top/store/reader"
    max_len=4096 ;;
  *)
    echo "usage: fuzz/run-fuzz.sh gvcp|description|register-dump|store-ini [--seconds N] [--out DIR]" >&2
    exit 2 ;;
esac

CXX=${FUZZ_CXX:-clang++}
if ! command -v "$CXX" >/dev/null 2>&1; then
  echo "run-fuzz.sh: FAILED: '$CXX' not found; the fuzz targets need clang with libFuzzer (Debian packages clang and libclang-rt-14-dev)" >&2
  exit 1
fi

mkdir -p "$out/corpus"
out=$(cd "$out" && pwd)
binary="$out/$(basename "$harness" .cpp)"
# Rebuild only when a source or header changed.
# shellcheck disable=SC2086
if [ ! -x "$binary" ] || [ -n "$(find $watched "$(dirname "$harness")" -newer "$binary" \( -name '*.cpp' -o -name '*.h' \) | head -n 1)" ]; then
  echo "run-fuzz.sh: building $binary"
  # shellcheck disable=SC2086
  "$CXX" -std=c++17 -g -O1 -fsanitize=fuzzer,address,undefined -fno-sanitize-recover=undefined \
    $includes "$harness" $sources $libs -o "$binary"
fi

# The seeds are printf formats, for their octal escapes.
# shellcheck disable=SC2059
seed() { printf "$2" > "$out/corpus/$1"; }
case "$target" in
  gvcp)
    # One well-formed command of each kind, the first byte being the
    # fuzzer's control byte (sender 0, no time step, unicast).
    seed discovery '\000\102\001\000\002\000\000\377\377'
    seed readreg '\000\102\001\000\200\000\004\000\001\000\000\011\004'
    seed take-control '\000\102\001\000\202\000\010\000\002\000\000\012\000\000\000\000\002'
    seed readmem-url '\000\102\001\000\204\000\010\000\003\000\000\002\000\000\000\002\000'
    seed writemem-name '\000\102\001\000\206\000\010\000\004\000\000\000\350\101\102\103\000'
    seed resend '\000\102\000\000\100\000\014\000\005\000\000\000\001\000\000\000\001\000\000\000\003' ;;
  description)
    # A mode byte (raw zip, wrapped content, URL text), four bytes that bend
    # a wrapped archive (method, CRC, packed and unpacked size), then data.
    seed raw-zip '\000\000\000\000\000PK\003\004'
    seed deflated '\001\001\000\000\000<?xml version="1.0"?><RegisterDescription ModelName="QVX"/>'
    seed stored '\001\000\000\000\000<RegisterDescription/>'
    seed url '\002\000\000\000\000Local:QVX.zip;10000;200'
    seed url-query '\002\000\000\000\000local:qvx.xml;0x8000;0x1f4?SchemaVersion=1.1.0' ;;
  register-dump)
    seed numeric 'QUORVEX-REGDUMP 1\ncontent numeric\nmodel QVX%%20A\ndevice D\nevents 2\nW 1 0x000105d4 4 00000001\nR 1 0x00010030 4 0000000a\nlast 1\nL 0x00010030 4 0000000a\nend\n'
    seed string 'QUORVEX-REGDUMP 1\ncontent string\nmodel A\ndevice D\nevents 1\nR 0 0x0001053c 8 5554524947000000\nlast 1\nL 0x0001053c 8 5554524947000000\nend\n' ;;
  store-ini)
    # The configuration file as the tool writes it, and the dialect's
    # escapes: quoted and backslashed texts, %U names, typed values, lists.
    seed config '[Global]\nVirtualMode=1\n\n[Vir58744219]\nbIsConnect=0\nchModelName=QVX-ID2040M\nchUserDefinedName=\nnCurrentIp=7f000002\nnMacAddrHigh=12ab\n'
    seed escapes '\357\273\277[%%General]\r\nkey="a;b\\\\ \\x1F\\0"\r\n%%U00E9=caf\303\251\r\nlist=a, "b,c", @String(x)\r\n'
    seed typed '[Vir1]\nbytes=@ByteArray(\\0\\xff)\nvariant=@Variant(\\0\\0\\0\\x7f)\ninvalid=@Invalid()\nat=@@home\nlong=a\\\nb\n[..]\nx=1\n' ;;
esac

cd "$out"
exec "$binary" -max_total_time="$seconds" -max_len="$max_len" -print_final_stats=1 "$out/corpus"
