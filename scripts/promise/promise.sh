# shellcheck shell=bash
# What a release promises: abi/VERSION has the layouts and signatures of both libraries on both machines, the constants and the
# platform's functions of the headers, and the tests of the oddities; docs/compatibility.md has the table of records.
source scripts/lib.sh

page=docs/compatibility.md

# each_library RELEASE: prints the path of each built library and that of its promise.
each_library() {
  local release=$1 preset name
  for preset in release powerpc; do
    for name in "${libraries[@]}"; do echo "$(built_library "$preset" "$name") $release/$name.$preset.abi"; done
  done
}

# last_release MAJOR: prints the folder of the last one with this major version, if there is one.
last_release() { find abi -mindepth 1 -maxdepth 1 -name "$1.*" | sort -V | tail -n 1; }

# is_kept RELEASE: prints what is built otherwise than this one promised, and fails then. Names may be added to a library. To the
# platform's functions none may be: a board's platform does not have it, and a library that needs it is not loaded there.
is_kept() {
  local kept=0 library promise
  while read -r library promise; do
    if ! abidiff --no-added-syms --no-show-locs "$promise" "$library"; then kept=1; fi
  done < <(each_library "$1")
  headers_keep "$1" || kept=1
  oddities_stay "$1" || kept=1
  return "$kept"
}

# headers_keep RELEASE: the same for what no library shows.
headers_keep() {
  local kept=0 compiler added
  for compiler in gcc powerpc-linux-gnu-gcc; do
    if ! "$compiler" -std=c11 -fsyntax-only -Iinclude -Ihost/include "$1/headers.c"; then
      say "The headers do not keep $1/headers.c."
      kept=1
    fi
  done
  added=$(comm -13 <(platform_functions "$1/headers.c") <(scripts/promise/headers . | platform_functions -))
  if [[ -n $added ]]; then
    say "A platform of $1 has no $(paste -sd ' ' <<<"$added")."
    kept=1
  fi
  return "$kept"
}

platform_functions() { sed -nE 's/.*_Generic\(&(\w+),.*/\1/p' "$1" | sort; }

# oddity_rows: prints the rows of the page's oddities. The first two lines of the table are its head.
oddity_rows() { sed -n '/^## Oddities/,/^## Records/p' "$page" | grep '^|' | tail -n +3; }

# test_of ROW: prints the test that the row names.
# shellcheck disable=SC2016  # the backticks are the page's
test_of() { sed -nE 's/.* \| `(\w+\.\w+)` \|$/\1/p' <<<"$1"; }

# oddity_tests: prints the test of each oddity.
oddity_tests() {
  local row
  while IFS= read -r row; do test_of "$row"; done < <(oddity_rows) | sort -u
}

# oddities_stay RELEASE: prints the test of each oddity that was promised and is none now, and fails then.
oddities_stay() {
  local gone
  gone=$(comm -23 <(sort -u "$1/oddities") <(oddity_tests))
  if [[ -z $gone ]]; then return 0; fi
  say "$page has no oddity any more with the test $(paste -sd ' ' <<<"$gone"), and $1 promised it."
  return 1
}

# oddities_are_tested: prints each row of the page's oddities that names no test that there is, and fails then.
oddities_are_tested() {
  local kept=0 row test rows
  mapfile -t rows < <(oddity_rows)
  for row in "${rows[@]}"; do
    test=$(test_of "$row")
    if [[ -z $test ]]; then
      say "$page names no test in this row: $row"
      kept=1
    elif ! grep -rqE "^TEST(_F|_P)?\(${test/./, }\)" tests; then
      say "$page names a test that there is not: $test"
      kept=1
    fi
  done
  if ((${#rows[@]} == 0)); then
    say "$page has no oddities."
    kept=1
  fi
  return "$kept"
}

# described LIBRARY: its layouts and signatures, without what a build of its own would change.
described() {
  abidw --exported-interfaces-only --headers-dir include --drop-private-types --drop-undefined-syms --no-show-locs \
    --no-corpus-path --no-comp-dir-path --no-parameter-names --no-write-default-sizes "$1"
}

# page_now: the page with the table of records as they are built.
page_now() {
  sed '/^<!-- the records -->$/,$d' "$page"
  echo '<!-- the records -->'
  scripts/promise/records build/powerpc build/release
  echo '<!-- until here -->'
  sed '1,/^<!-- until here -->$/d' "$page"
}
