# shellcheck shell=bash
# Installs the packages that a command needs. Changes nothing when they are there.

packages_for() { awk -v use="$1" '!/^#/ && NF && index("," $2 ",", "," use ",") { print $1 }' scripts/packages; }
every_package() { awk '!/^#/ && NF { print $1 }' scripts/packages; }

# missing_programs PACKAGE...: the programs of these packages that are not on the PATH.
missing_programs() {
  local package program
  for package in "$@"; do
    program=$(awk -v package="$package" '$1 == package && $3 != "-" { print $3 }' scripts/packages)
    if [[ -n $program ]] && ! command -v "$program" >/dev/null; then echo "$program"; fi
  done
}

is_installed() { [[ $(dpkg-query --show --showformat='${db:Status-Status}' "$1" 2>/dev/null) == installed ]]; }
is_known() { apt-cache show "$1" >/dev/null 2>&1; }

# missing_among PACKAGE...: those that are not installed. A package that this system does not know is not missing where the
# one behind its bar, which contains it there, is installed.
missing_among() {
  local package
  for package in "$@"; do
    if is_installed "${package%|*}"; then continue; fi
    if [[ $package == *'|'* ]] && is_installed "${package#*|}" && ! is_known "${package%|*}"; then continue; fi
    echo "$package"
  done
}

# as_known PACKAGE...: of two packages with a bar between them, prints the one that this system knows.
as_known() {
  local package
  for package in "$@"; do
    if is_known "${package%|*}"; then echo "${package%|*}"; else echo "${package#*|}"; fi
  done
}

# apt_get ARGUMENT...: runs apt-get as root, without questions.
apt_get() {
  local sudo=()
  if ((EUID != 0)); then sudo=(sudo); fi
  "${sudo[@]}" env DEBIAN_FRONTEND=noninteractive apt-get -qq "$@"
}

# may_install PACKAGE...: fails unless the user is root or may use sudo, and says what to ask for.
may_install() {
  if ((EUID == 0)); then return 0; fi
  if command -v sudo >/dev/null && sudo -v; then return 0; fi
  die "packages are missing, and to install them you must be root or allowed to use sudo.
       Ask whoever looks after this machine to run, as root:
         apt-get update && apt-get install --no-install-recommends $*"
}

# amount PACKAGE...: prints what an installation takes: "12 packages, 85.3 MB to download, 338 MB on the disk; some 3 minutes".
amount() {
  LC_ALL=C apt-get install --assume-no --no-install-recommends "$@" 2>/dev/null | awk '
    /newly installed/ { count = $3 }
    /^Need to get/ { sub(/^Need to get /, ""); sub(/ of archives.*/, ""); sub(/.*\//, ""); download = $0 }
    /^After this operation/ { disk = $4 " " $5; megabytes = $5 == "GB" ? 1000 * $4 : $4 }
    END {
      if (!count || disk == "") print "these packages; some minutes"
      else printf "%s packages, %s to download, %s on the disk; some %d minutes", count, download, disk, 2 + megabytes / 200
    }' || true
}

# install_missing PACKAGE...: prints how much it is, and installs it.
install_missing() {
  local packages
  mapfile -t packages < <(as_known "$@")
  may_install "${packages[@]}"
  say "Missing here: ${packages[*]}"
  apt_get update || die 'the lists of packages cannot be fetched: apt-get says why above.'
  mapfile -t packages < <(as_known "$@")
  set -- "${packages[@]}"
  say "Installing $(amount "$@") ..."
  apt_get install -y --no-install-recommends "$@" || die 'the packages cannot be installed: apt-get says why above.'
}

# need PACKAGE...: installs the packages that are missing. With DEV_NO_INSTALL=1 it installs nothing, and fails when a program
# is missing.
need() {
  local missing
  if [[ ${DEV_NO_INSTALL:-} == 1 ]]; then
    mapfile -t missing < <(missing_programs "$@")
    if ((${#missing[@]} == 0)); then return 0; fi
    die "these programs are missing: ${missing[*]}
       Install them in your system's own way; scripts/packages names their packages in Debian. Without DEV_NO_INSTALL=1 in
       the environment, they are installed on Debian and Ubuntu."
  fi
  if ! command -v apt-get >/dev/null || ! command -v dpkg-query >/dev/null; then
    die "packages can be installed on Debian and Ubuntu only. Install what these packages contain in your system's own way: $*.
       Then run again with DEV_NO_INSTALL=1 in the environment."
  fi
  mapfile -t missing < <(missing_among "$@")
  if ((${#missing[@]})); then install_missing "${missing[@]}"; fi
}

need_for() {
  local packages
  mapfile -t packages < <(packages_for "$1")
  need "${packages[@]}"
}
