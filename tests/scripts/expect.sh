# shellcheck shell=bash
# What the tests of scripts share: a folder that goes away, and words for what does not hold. `says` is the sentence that is
# tested; each test ends with exit "$failed".
work=$(mktemp -d "${TMPDIR:-/tmp}/lmainte-scripts.XXXXXX")
trap 'rm -rf "$work"' EXIT
failed=0
says=''

# wrong REASON...
wrong() {
  # shellcheck disable=SC2034  # the test ends with it
  failed=1
  printf 'WRONG %s\n' "$says" >&2
  printf '      %s\n' "$@" >&2
  sed 's/^/      | /' "$work/output" >&2
}

# ends STATUS COMMAND...: runs the command; what it prints is the output that the others look at.
ends() {
  local status=0
  "${@:2}" >"$work/output" 2>&1 || status=$?
  if [[ $status != "$1" ]]; then wrong "its exit status is $status and not $1"; fi
}
has() { if ! grep -qF -- "$1" "$work/output"; then wrong "its output lacks: $1"; fi; }
lacks() { if grep -qF -- "$1" "$work/output"; then wrong "its output has: $1"; fi; }
# is TEXT [FILE]
is() { if [[ $(<"$work/${2:-output}") != "$1" ]]; then wrong "its ${2:-output} is not: $1"; fi; }
# tells TEXT: it prints this among other things, or nothing where the text is empty.
tells() { if [[ -n $1 ]]; then has "$1"; else is ''; fi; }
