# shellcheck shell=bash
# The functions that the commands of ./dev share. The commands run in the root of the source tree.
set -euo pipefail

jobs=$(nproc)

# Where code is, besides the public headers, the catalogue of trace events and the tests.
code_folders=(src procedure host examples bench fuzz storm failures)

say() { printf '%s\n' "$*"; }
die() {
  printf './dev: %s\n' "$*" >&2
  exit 1
}

# misused SENTENCE: for a command line that makes no sense.
misused() {
  printf './dev: %s\n' "$*" >&2
  exit 2
}

# quick_checks: prints those that ./dev quick runs.
quick_checks() { grep -l '^# Quick' scripts/checks/* | sed 's#.*/##'; }

# no_arguments ARGUMENT...: for a command that takes none.
no_arguments() {
  if (($#)); then misused "'${0##*/}' takes no arguments, and was given: $*"; fi
}

# forget_moved FOLDER: removes a build folder of a tree that was moved or copied, because it knows its old place.
forget_moved() {
  if [[ ! -f $1/CMakeCache.txt ]] || grep -qxF "CMAKE_CACHEFILE_DIR:INTERNAL=$(realpath "$1")" "$1/CMakeCache.txt"; then
    return 0
  fi
  say "This tree was moved or copied: $1 is made anew." >&2
  rm -rf "$1"
}

# configure PRESET [OPTION...]: configures build/PRESET. It prints nothing unless it fails.
configure() { configure_in "build/$1" "$@"; }

# configure_in FOLDER PRESET [OPTION...]: the same in another folder.
configure_in() {
  local folder=$1 preset=$2 options=()
  shift 2
  forget_moved "$folder"
  mkdir -p build
  if command -v ccache >/dev/null; then
    options+=(-DCMAKE_C_COMPILER_LAUNCHER=ccache -DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  # With the project's compiler there are no warnings; another compiler may have others.
  if [[ $(g++ -dumpversion) == 12 ]]; then options+=(-DLMAINTE_WERROR=ON); fi
  if ! cmake --preset "$preset" -B "$folder" "${options[@]}" "$@" >"$folder.configure.log" 2>&1; then
    cat "$folder.configure.log" >&2
    return 1
  fi
}

# compile PRESET [TARGET...]: brings targets up to date, all of them when none is named.
compile() {
  local preset=$1
  shift
  local targets=()
  if (($#)); then targets=(--target "$@"); fi
  # What ccache has to overlook so that it serves files that are compiled over a precompiled header.
  CCACHE_SLOPPINESS=${CCACHE_SLOPPINESS:-pch_defines,time_macros,include_file_mtime,include_file_ctime} \
    cmake --build "build/$preset" --parallel "$jobs" "${targets[@]}"
}

# count_steps: turns the output of ninja into one line that counts the steps. It prints nothing when there was nothing to
# build. Without a terminal, the line is printed for the first step and the last.
count_steps() {
  local line done=0 of=0
  while IFS= read -r line; do
    if [[ ! $line =~ ^\[([0-9]+)/([0-9]+)\] ]] || ((BASH_REMATCH[1] == 0)); then continue; fi
    done=${BASH_REMATCH[1]} of=${BASH_REMATCH[2]}
    if [[ -t 1 ]]; then
      printf '\rBuilding: step %d of %d ' "$done" "$of"
    elif ((done == 1 || done == of)); then
      say "Building: step $done of $of"
    fi
  done
  if ((of)) && [[ -t 1 ]]; then echo; fi
}

# build_tools: builds the box's tools and the examples, and leaves out what only tests need. So somebody who only wants to
# look need not install the test libraries.
build_tools() {
  forget_moved build/release
  if ! grep -qs '^LMAINTE_TESTS:BOOL=ON' build/release/CMakeCache.txt; then
    configure release -DLMAINTE_TESTS=OFF -DLMAINTE_BENCH=OFF || exit 1
  fi
  if ! compile release lmainte lmainte_host control_program spbox monitor_daemon examples 2>&1 |
    tee build/tools.log | count_steps; then
    cat build/tools.log >&2
    die 'the build failed.'
  fi
}

# The libraries that ship, from the lowest.
# shellcheck disable=SC2034  # the checks read it
libraries=(lmainte lmainte_procedure)

# built_library PRESET LIBRARY: prints the path of the shared library. Fails when it is not built, because a check would find
# nothing wrong with it.
built_library() {
  local library=build/$1/lib$2.so.1
  if [[ ! -f $library ]]; then die "$library is not built. './dev check library' builds it."; fi
  echo "$library"
}

# base_commit: prints the commit with which a change is compared: the one at which this branch left origin/main. On main
# itself it is the commit before the last.
base_commit() {
  local base
  base=$(git merge-base HEAD origin/main 2>/dev/null || echo HEAD)
  if [[ $(git rev-parse "$base") == $(git rev-parse HEAD) ]]; then
    base=$(git rev-parse --verify --quiet HEAD~1 || git hash-object -t tree /dev/null)
  fi
  echo "$base"
}

# sources: prints the names of all C and C++ files of the project, separated by NUL.
sources() {
  find include trace_events tests "${code_folders[@]}" \( -name '*.h' -o -name '*.c' -o -name '*.cpp' \) -print0 2>/dev/null
}
