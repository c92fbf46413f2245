# shellcheck shell=bash
# Measures how long building and testing takes. build/times has a line for each thing that was measured last: its name, the
# seconds of CPU time (user and system, of all its processes), and the seconds of wall time. scripts/cpu_aims has the aims.
source scripts/lib.sh

# timed NAME COMMAND...: runs the command in a shell of its own, whose processes are counted and no others, keeps its times
# under the name, and sets cpu and wall.
timed() {
  local name=$1 status=0 file user kernel TIMEFORMAT='%U %S %R'
  shift
  mkdir -p build
  file=$(mktemp build/times.XXXXXX)
  (time "$@" 2>&4) 4>&2 2>"$file" || status=$?
  read -r user kernel wall <"$file"
  rm -f "$file"
  cpu=$(awk -v user="$user" -v kernel="$kernel" 'BEGIN { printf "%.1f", user + kernel }')
  keep_times "$name" "$cpu" "$wall"
  return "$status"
}

# keep_times NAME CPU WALL: builds and tests may end at the same time.
keep_times() (
  exec 9>build/times.lock
  flock 9
  touch build/times
  awk -F ';' -v name="$1" '$1 != name' build/times >build/times.new
  printf '%s;%s;%s\n' "$1" "$2" "$3" >>build/times.new
  mv build/times.new build/times
)

# read_times NAME: sets cpu and wall to what was kept.
read_times() { IFS=';' read -r _ cpu wall < <(grep "^$1;" build/times); }

# calibrate: measures how long the compiler needs now for a known file, on all processors of this machine at once.
calibrate() {
  timed calibration xargs -P "$jobs" -I '{}' g++ -std=c++20 -O1 -S -o - scripts/calibration.cpp < <(seq "$jobs") >/dev/null
  keep_times calibration "$(awk -v cpu="$cpu" -v jobs="$jobs" 'BEGIN { printf "%.2f", cpu / jobs }')" "$wall"
}

# above_aims ROOM: prints what took longer than ROOM times its aim in scripts/cpu_aims, scaled to the speed of this machine.
above_aims() {
  awk -F ' *; *' -v room="$1" '
    FNR == NR { if (!/^#/ && NF) aim[$1] = $2; next }
    { cpu[$1] = $2 }
    END {
      machine = ("calibration" in cpu) ? cpu["calibration"] / aim["calibration"] : 1
      for (name in cpu)
        if (!(name in aim)) printf "%s has no aim in scripts/cpu_aims\n", name
      for (name in aim)
        if (name != "calibration" && cpu[name] > aim[name] * machine * room)
          printf "%s took %d s of CPU; its aim is %d s, which is %d s on this machine now\n", name, cpu[name], aim[name], aim[name] * machine
    }' scripts/cpu_aims build/times | sort
}
