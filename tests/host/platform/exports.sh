#!/usr/bin/env bash
# The platform exports the functions that its headers declare, and no others: exports.sh LIBRARY HEADER...
set -euo pipefail
export LC_ALL=C
library=$1
shift
diff --label "exported by ${library##*/}" --label "declared in ${*##*/}" -U0 \
  <(nm -D --defined-only "$library" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | sort) \
  <(grep -ohE '^[a-z0-9_]+ \*?[a-z0-9_]+\(' "$@" | sed -E 's/.* \*?//; s/\(//' | sort)
