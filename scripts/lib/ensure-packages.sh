# Sourced by the scripts: ensure_packages LIST... makes sure that the Debian packages which these
# files list are installed.
# shellcheck shell=bash

# Installs what is missing when run as root; otherwise prints the command that would and returns 1.
# Where nothing is missing, apt is not called.
ensure_packages() {
  local -a wanted missing=()
  local package installed
  mapfile -t wanted < <(sed -e 's/#.*//' -e 's/[[:space:]]//g' -e '/^$/d' -- "$@")

  if ! command -v dpkg-query >/dev/null; then
    echo "note: no dpkg here; these Debian packages (or equivalents) are needed: ${wanted[*]}" >&2
    return 0
  fi
  # dpkg-query fails when it does not know one of the packages, but it lists the others.
  installed=$(dpkg-query -W -f='${Package} ${db:Status-Status}\n' "${wanted[@]}" 2>/dev/null || true)
  for package in "${wanted[@]}"; do
    # A command of that name is enough: Node.js from elsewhere has an npm that conflicts with Debian's.
    grep -qxF "$package installed" <<<"$installed" || command -v "$package" >/dev/null ||
      missing+=("$package")
  done
  [[ ${#missing[@]} -gt 0 ]] || return 0

  if [[ $(id -u) -ne 0 ]]; then
    echo "Packages are missing; as root, run:" \
      "apt-get update && apt-get install --no-install-recommends ${missing[*]}" >&2
    return 1
  fi
  echo "Installing ${missing[*]}"
  export DEBIAN_FRONTEND=noninteractive
  # A broken source of other packages must not stop us: the install shows whether ours are available.
  apt-get update -qq || echo "note: apt-get update failed; trying with the present lists" >&2
  apt-get install -y -qq --no-install-recommends "${missing[@]}"
}
