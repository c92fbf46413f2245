#!/usr/bin/env bash
# The platform exports the functions that its headers declare, those of the C library before which it stands, and no others:
# exports.sh LIBRARY CALLS HEADER...
set -euo pipefail
export LC_ALL=C
library=$1 calls=$2
shift 2
diff --label "exported by ${library##*/}" --label "declared in ${*##*/}" -U0 \
  <(nm -D --defined-only "$library" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | sort) \
  <({ grep -ohE '^[a-z0-9_]+ \*?[a-z0-9_]+\(' "$@"; grep -ohE '^EXPORT [A-Za-z_]+ \*?[a-z0-9_]+\(' "$calls"; } |
    sed -E 's/.* \*?//; s/\(//' | sort)
