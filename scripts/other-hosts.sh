#!/usr/bin/env bash
# Builds or runs parts of mapexport on other hosts than a release build: other-hosts.sh [HOST...], by
# default all:
#
#   libcxx      libc++ in place of libstdc++: the exporter and the header that engines read models with,
#               with their tests
#   musl        that header and its example are compiled with musl's headers
#   wasm        they are compiled to WebAssembly, with a C library made from musl's, and run
#   assertions  all tests, debug build, with the assertions of the standard library in the exporter, too
#   threads     ThreadSanitizer over the tests that have or start threads
#   valgrind    memcheck over exports and inspect
#
# Ends with 1 when something fails. Results go to build/robustness/other-hosts.tsv; docs/portability.md
# has them.
set -euo pipefail
unset CDPATH
root=$(cd -- "$(dirname -- "$(readlink -f -- "${BASH_SOURCE[0]}")")/.." && pwd -P)
# shellcheck source=scripts/lib/ensure-packages.sh
. "$root/scripts/lib/ensure-packages.sh"
# shellcheck source=scripts/lib/note-result.sh
. "$root/scripts/lib/note-result.sh"

hosts=("$@")
[[ $# -gt 0 ]] || hosts=(libcxx musl wasm assertions threads valgrind)
work=$root/build/other-hosts
status=0

# configure HOST OPTION...: a build folder for that host, without the page and the windows.
configure() {
  local host=$1
  shift
  cmake -S "$root" -B "$work/$host" -G Ninja -DCMAKE_UNITY_BUILD=ON -DMAPEXPORT_TESTS=ON \
    -DMAPEXPORT_VIEW=OFF -DMAPEXPORT_WINDOW=OFF "$@" >&2
}

# run_tests HOST PROGRAM...: builds and runs these test programs; prints how many there are.
run_tests() {
  local host=$1 test
  shift
  cmake --build "$work/$host" --target "$@" >&2 || return
  for test in "$@"; do
    # Whoever starts this in the background has some signals ignored, which tests raise.
    env --default-signal "$work/$host/tests/$test" --gtest_brief=1 >&2 || return
  done
  echo "$#"
}

# reader_example COMPILER OPTION...: compiles the example of the engines' header as an engine does.
reader_example() {
  "$@" -std=c++17 -O2 -fno-exceptions -fno-rtti -Wall -Wextra -Werror -I"$root/include" \
    "$root/examples/engine_reader.cpp" >&2
}

check_libcxx() {
  local flags="-stdlib=libc++ -DFMT_HEADER_ONLY" gtest=$work/libcxx-gtest
  cmake -S /usr/src/googletest -B "$gtest/build" -G Ninja -DCMAKE_CXX_COMPILER=clang++-19 \
    -DCMAKE_CXX_FLAGS=-stdlib=libc++ -DCMAKE_INSTALL_PREFIX="$gtest" >&2
  cmake --build "$gtest/build" --target install >&2
  configure libcxx -DCMAKE_BUILD_TYPE=Release -DCMAKE_CXX_COMPILER=clang++-19 \
    -DCMAKE_CXX_FLAGS="$flags" -DGTest_DIR="$gtest/lib/cmake/GTest"
  # The others need libraries that are built with libstdc++.
  run_tests libcxx TokenizerTest CxpTest MaterialsTest GeometryTest PassesTest ModelReaderTest
}

check_musl() {
  reader_example clang++-19 -nostdlibinc -isystem /usr/lib/llvm-19/include/c++/v1 \
    -isystem "/usr/include/$(uname -m)-linux-musl" -D_LIBCPP_HAS_MUSL_LIBC -c -o "$work/musl.o"
  echo 1
}

check_wasm() {
  local model=$work/yard.kob native=$work/native wasm=$work/wasm
  export_yard "$model"
  reader_example clang++ --target=wasm32-wasi -o "$wasm.wasm"
  reader_example g++ -o "$native"
  "$native" "$model" >"$native.txt"
  node --no-warnings - "$wasm.wasm" "$work" >"$wasm.txt" <<'JS'
const { WASI } = require('node:wasi');
const { readFileSync } = require('node:fs');
const [program, folder] = process.argv.slice(2);
const wasi = new WASI({ version: 'preview1', args: [program, '/yard.kob'], preopens: { '/': folder } });
const module = new WebAssembly.Module(readFileSync(program));
process.exitCode = wasi.start(new WebAssembly.Instance(module, wasi.getImportObject()));
JS
  cmp -- "$native.txt" "$wasm.txt" >&2
  echo 1
}

check_assertions() {
  configure assertions -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS=-D_GLIBCXX_ASSERTIONS
  cmake --build "$work/assertions" >&2
  ctest --test-dir "$work/assertions" --no-tests=error --output-on-failure >"$work/assertions.log" || {
    tail -n 30 -- "$work/assertions.log" >&2
    return 1
  }
  sed -n 's/^100% tests passed.* out of //p' "$work/assertions.log"
}

check_threads() {
  configure threads -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_COMPILER=clang++ \
    -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g1" -DMAPEXPORT_SANITIZE=thread
  cmake --build "$work/threads" --target mapexport >&2
  run_tests threads SettingsTest ProgramTest
}

# export_yard OUTPUT [COMMAND...]: the example level, by the release build's program under COMMAND.
export_yard() {
  "${@:2}" "$root/build/release/bin/mapexport" export "$root/examples/yard.scene.json" "$1" --fresh \
    --seed 1 --quiet --longest-list 500
}

check_valgrind() {
  local output count=0
  local -a memcheck=(valgrind --quiet --error-exitcode=99 --trace-children=yes)
  for output in yard.kob yard.qob; do
    export_yard "$work/$output" "${memcheck[@]}" >&2
    "${memcheck[@]}" "$root/build/release/bin/mapexport" inspect "$work/$output" >/dev/null
    count=$((count + 2))
  done
  # Foreign formats have a reader that ends at valgrind's system calls.
  for output in "$root"/tests/golden/*.scene.json; do
    "${memcheck[@]}" "$root/build/release/bin/mapexport" export "$output" "$work/golden.kob" --fresh \
      --quiet >&2
    count=$((count + 1))
  done
  echo "$count"
}

# check HOST: prints how many things it tried.
check() {
  case $1 in
    libcxx) check_libcxx ;;
    musl) check_musl ;;
    wasm) check_wasm ;;
    assertions) check_assertions ;;
    threads) check_threads ;;
    valgrind) check_valgrind ;;
  esac
}

# describe HOST: what is tried, a vertical line, and by which programs.
describe() {
  case $1 in
    libcxx) echo "libc++: test programs|$(clang++-19 --version | head -n 1)" ;;
    musl) echo "musl: the header's example, compiled|musl $(dpkg-query -Wf '${Version}' musl-dev)" ;;
    wasm) echo "WebAssembly: the header's example, run|Node.js $(node --version)" ;;
    assertions) echo "standard library's assertions: tests|$(g++ --version | head -n 1)" ;;
    threads) echo "ThreadSanitizer: test programs|$(clang++ --version | head -n 1)" ;;
    valgrind) echo "memcheck: exports and inspect|$(valgrind --version)" ;;
  esac
}

for host in "${hosts[@]}"; do
  case $host in
    libcxx | musl | wasm | assertions | threads | valgrind) ;;
    *)
      echo "other-hosts.sh: there is no host \"$host\"" >&2
      exit 2
      ;;
  esac
done
ensure_packages "$root"/scripts/packages{,-test,-hosts}.txt
mkdir -p -- "$work"
(
  cd -- "$root"
  [[ -f build/release/build.ninja ]] || cmake --preset release -DMAPEXPORT_TESTS=OFF
  cmake --build --preset release --target mapexport
) >&2
for host in "${hosts[@]}"; do
  # Not in a condition, where a failure would not end it.
  set +e
  (
    set -e
    check "$host"
  ) >"$work/count"
  failed=$(($? != 0))
  set -e
  [[ $failed -eq 0 ]] || status=1
  description=$(describe "$host")
  count=$(cat -- "$work/count")
  printf '%-45s %5s tried, %d failed\n' "${description%|*}" "${count:-0}" "$failed"
  note_result other-hosts.tsv "${description%|*}" "${count:-0}" "$failed" "${description#*|}"
done
exit "$status"
