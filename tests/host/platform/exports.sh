#!/usr/bin/env bash
# The platform exports the functions that lmainte_platform.h declares, and no others: exports.sh LIBRARY HEADER
set -euo pipefail
export LC_ALL=C
diff --label "exported by ${1##*/}" --label "declared in ${2##*/}" -U0 \
  <(nm -D --defined-only "$1" | awk '$2 != "A" { sub(/@.*/, "", $3); print $3 }' | sort) \
  <(grep -oE '^[a-z0-9_]+ \*?[a-z0-9_]+\(' "$2" | sed -E 's/.* \*?//; s/\(//' | sort)
