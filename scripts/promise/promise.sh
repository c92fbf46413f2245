# shellcheck shell=bash
# What a release promises: abi/VERSION has the layouts and signatures of both libraries on both machines, docs/compatibility.md the table of
# records.
source scripts/lib.sh

page=docs/compatibility.md

# each_library: prints the path of each built library and that of its promise.
each_library() {
  local release preset name
  release=abi/$(last_release)
  for preset in release powerpc; do
    for name in "${libraries[@]}"; do echo "$(built_library "$preset" "$name") $release/$name.$preset.abi"; done
  done
}

last_release() { find abi -mindepth 1 -maxdepth 1 -printf '%f\n' | sort -V | tail -n 1; }

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
