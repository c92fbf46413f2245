# shellcheck shell=bash
# Counts the instructions of each row of the benchmark. Such a count is the same on a busy machine; it leaves out the kernel.
source scripts/lib.sh

# counted_halves PROGRAM: lets callgrind count, and prints a line for each half of a row: "612345;read 24 domains/floor". A count
# is that of one call. The environment is always the same, and the C library copies and compares as on the oldest of its
# processors, because both change the counts a little.
counted_halves() {
  local folder=build/counts names=build/counts/names
  rm -rf "$folder"
  mkdir -p "$folder"
  env -i PATH=/usr/bin:/bin LC_ALL=C LD_BIND_NOW=1 \
    GLIBC_TUNABLES=glibc.cpu.hwcaps=-AVX512F,-AVX2_Usable,-AVX2,-ERMS,-FSRM,-SSE4_2,-SSSE3 \
    valgrind --quiet --tool=callgrind --callgrind-out-file="$folder/%p" --combine-dumps=yes \
    --toggle-collect=bench_counted --dump-after=bench_counted "$1" --counts >"$names" &
  local counter=$!
  wait "$counter" || die 'callgrind could not count.'
  paste -d ' ' <(awk '/^desc: Trigger: .*bench_counted/ { wanted = 1 } /^summary: / && wanted { print $2; wanted = 0 }' "$folder/$counter") "$names" |
    awk '{
      times = $2; count = $1; $1 = $2 = ""; sub(/^ +/, "")
      if ($0 == "nothing") nothing = count
      else printf "%d;%s\n", (count - nothing) / times + 0.5, $0
    }'
}

# count_rows: prints a line for each row, as they are kept: "read 24 domains; 41234; 44444", floor and call.
count_rows() {
  configure release >&2
  compile release bench_lmainte >build/counts.log || { cat build/counts.log >&2; die 'the benchmark cannot be built.'; }
  counted_halves build/release/bench/bench_lmainte | awk -F ';' '
    sub(/\/floor$/, "", $2) { floor = $1; next }
    sub(/\/call$/, "", $2) { printf "%s; %d; %d\n", $2, floor, $1 }'
}

# show_counts: turns such lines into a table with the ratios.
show_counts() {
  awk -F '; ' '
    BEGIN { printf "%-44s %12s %12s %8s\n", "instructions", "floor", "call", "ratio" }
    !/^#/ { printf "%-44s %12d %12d %8.2f\n", $1, $2, $3, $3 / $2 }'
}

# keep_counts: writes such lines into bench/counts, below what stands there in words.
keep_counts() {
  cat <(grep '^#' bench/counts) - >build/counts.kept
  mv build/counts.kept bench/counts
}

# is_the_compiler_of_the_counts: whether the counts that are kept come from a compiler and a C library such as those here.
is_the_compiler_of_the_counts() {
  [[ $(uname -m) == x86_64 && $(g++ -dumpversion) == 12 && $(getconf GNU_LIBC_VERSION) == 'glibc 2.36' ]]
}
