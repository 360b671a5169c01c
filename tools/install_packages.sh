#!/usr/bin/env bash
# Installs the Debian packages of one or more lists (tools/packages-NAME.txt)
# that are missing. Asks apt only when something is. A line "PACKAGE COMMAND"
# is satisfied by the command, wherever it comes from.
set -euo pipefail
here=$(cd "$(dirname "$0")" && pwd)

missing=()
for list in "$@"; do
  while read -r package command; do
    [[ -z $package || $package == \#* ]] && continue
    [[ -n $command ]] && command -v "$command" >/dev/null && continue
    dpkg-query -W -f='${Status}' "$package" 2>/dev/null | grep -q 'install ok installed' || missing+=("$package")
  done <"$here/packages-$list.txt"
done
[[ ${#missing[@]} -eq 0 ]] && exit 0

as_root=()
if [[ $(id -u) -ne 0 ]]; then
  command -v sudo >/dev/null || { echo "These packages are missing: ${missing[*]}" >&2; exit 1; }
  as_root=(sudo)
fi
echo "Installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get -o DPkg::Lock::Timeout=400 -qq update
"${as_root[@]}" apt-get -o DPkg::Lock::Timeout=400 -qq -y --no-install-recommends install "${missing[@]}" >/dev/null
