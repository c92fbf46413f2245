# shellcheck shell=bash
# What the commands of ./dev share. They run in the root of the source tree.
set -euo pipefail

jobs=$(nproc)

say() { printf '%s\n' "$*"; }
die() {
  printf './dev: %s\n' "$*" >&2
  exit 1
}

# no_arguments ARGUMENT...: for a command that takes none.
no_arguments() {
  if (($#)); then die "'${0##*/}' takes no arguments, and was given: $*"; fi
}

# configure PRESET [OPTION...]: makes build/PRESET what the preset says. Quiet unless it fails.
configure() {
  local preset=$1 log options=()
  shift
  log=build/$preset.configure.log
  mkdir -p build
  if command -v ccache >/dev/null; then
    options+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  # Another compiler than ours may know other warnings; with ours there are none.
  if [[ $(g++ -dumpversion) == 12 ]]; then options+=(-DLMAINTE_WERROR=ON); fi
  if ! cmake --preset "$preset" "${options[@]}" "$@" >"$log" 2>&1; then
    cat "$log" >&2
    return 1
  fi
}

# compile PRESET [TARGET...]: brings targets up to date, all of them when none is named.
compile() {
  local preset=$1
  shift
  local targets=()
  if (($#)); then targets=(--target "$@"); fi
  cmake --build "build/$preset" --parallel "$jobs" "${targets[@]}"
}

# build_tools: the box's tools and the examples, quietly, and without what only tests need: a workstation that only wants
# to look need not install the test libraries.
build_tools() {
  if ! grep -qs '^LMAINTE_TESTS:BOOL=ON' build/release/CMakeCache.txt; then
    configure release -DLMAINTE_TESTS=OFF -DLMAINTE_BENCH=OFF
  fi
  say 'Building; the first time takes some minutes ...'
  if ! compile release lmainte lmainte_host control_program spbox monitor_daemon examples >build/tools.log 2>&1; then
    cat build/tools.log >&2
    die 'the build failed.'
  fi
}

# built_library PRESET: where its shared library lies. A check of a library that is not there would find nothing wrong.
built_library() {
  local library=build/$1/liblmainte.so.1
  if [[ ! -f $library ]]; then die "$library is not built. './dev check library' builds it."; fi
  echo "$library"
}

# sources: every C and C++ file of ours, NUL-separated.
sources() {
  find include trace_events src host examples tests bench \( -name '*.h' -o -name '*.c' -o -name '*.cpp' \) -print0 2>/dev/null
}
