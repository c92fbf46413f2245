# shellcheck shell=bash
# Installs the packages that a command needs, and touches nothing when they are there.

packages_for() { awk -v use="$1" '!/^#/ && NF && index("," $2 ",", "," use ",") { print $1 }' scripts/packages; }
every_package() { awk '!/^#/ && NF { print $1 }' scripts/packages; }

missing_among() {
  local package
  for package in "$@"; do
    if [[ $(dpkg-query --show --showformat='${db:Status-Status}' "$package" 2>/dev/null) != installed ]]; then
      echo "$package"
    fi
  done
}

# apt_get ARGUMENT...: apt-get as root, asking nothing.
apt_get() {
  local sudo=()
  if ((EUID != 0)); then sudo=(sudo); fi
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq "$@"
}

# need PACKAGE...: the packages are there afterwards. DEV_NO_INSTALL=1 goes on with what the machine has.
need() {
  if [[ ${DEV_NO_INSTALL:-} == 1 ]]; then return 0; fi
  if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    die "only Debian and Ubuntu are known here. Install what these packages hold in your system's own way: $*.
       Then run again with DEV_NO_INSTALL=1 in the environment."
  fi
  local missing
  mapfile -t missing < <(missing_among "$@")
  if ((${#missing[@]} == 0)); then return 0; fi
  if ((EUID != 0)) && ! command -v sudo >/dev/null; then
    die "packages are missing, and installing needs root or sudo. As root, run:
       apt-get update && apt-get install --no-install-recommends ${missing[*]}"
  fi
  say "Installing: ${missing[*]}"
  apt_get update
  apt_get install -y --no-install-recommends "${missing[@]}"
}

need_for() {
  local packages
  mapfile -t packages < <(packages_for "$1")
  need "${packages[@]}"
}
