# shellcheck shell=bash
# Builds presets one after the other in the background, so that tests of the first run while the next ones are built. Tests
# that wait for a terminal leave a processor idle.
source scripts/times.sh

declare -A builder

# begin_builds PRESET...
begin_builds() {
  local preset before=''
  mkdir -p build
  # Each in a process group of its own, so that all of a build can be ended.
  set -m
  for preset in "$@"; do
    : >"build/$preset.log"  # who waits for the build reads it, perhaps before the build begins
    build_in_turn "$preset" "$before" >>"build/$preset.log" 2>&1 &
    builder[$preset]=$! before=$!
  done
  set +m
  trap end_builds EXIT
}

# build_in_turn PRESET BEFORE: builds when the process that builds before it has ended. Tests go first, so that none is late
# because something is built.
build_in_turn() {
  if [[ -n $2 ]]; then tail --pid="$2" -s 0.1 -f /dev/null; fi
  renice -n 10 "$BASHPID" >/dev/null
  timed "build $1" make_preset "$1"
}

# shellcheck disable=SC2317  # timed calls it
make_preset() { configure "$1" && compile "$1"; }

# await_build PRESET: counts its steps until it is built, and sets cpu and wall. When it fails, what it said is shown.
await_build() {
  local log=build/$1.log pid=${builder[$1]} status=0
  tail -n +1 -s 0.1 --pid="$pid" -f "$log" | count_steps
  wait "$pid" || status=$?
  unset "builder[$1]"
  if ((status)); then
    grep -vE '^\[[0-9]+/[0-9]+\] ' "$log" >&2 || true
    cpu=0 wall=0
    return 1
  fi
  read_times "build $1"
}

end_builds() {
  local preset
  for preset in "${!builder[@]}"; do kill -- "-${builder[$preset]}" 2>/dev/null || true; done
}
