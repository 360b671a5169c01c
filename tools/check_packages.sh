#!/usr/bin/env bash
# Makes the packages, looks them over, installs them in a clean Debian root and
# backs up an address book from there.
set -euo pipefail
cd "$(dirname "$0")/.."

cmake --workflow --preset package
packages=$PWD/build/packages
for package in varnokctl varnok-desktop varnok; do
  [[ -f $(echo "$packages/${package}"_*.deb) ]] || { echo "there is no package $package" >&2; exit 1; }
done
lintian --fail-on error --allow-root "$packages"/*.deb

if [[ $(id -u) -ne 0 ]] || ! unshare --mount true 2>/dev/null; then
  echo "A clean root cannot be made here: the packages were not installed." >&2
  exit 0
fi

root=$(mktemp -d)
chmod 755 "$root"
trap 'rm -rf --one-file-system "$root"' EXIT
# shellcheck disable=SC2016 # These are apt's own.
mirror=$(apt-get indextargets --format '$(SITE)' 'Created-By: Packages' 'Codename: bookworm' | head -n 1)
debootstrap --variant=minbase bookworm "$root" "$mirror" >/dev/null

# The way to the archive that apt uses here.
apt-config dump | grep -E '^Acquire::(https?::Proxy|Check-)' >"$root/etc/apt/apt.conf.d/99way" || true
mkdir "$root/packages"
cp "$packages"/*.deb resources/sample/people.vcf "$root/packages/"
cat >"$root/packages/try.sh" <<'INSIDE'
set -euo pipefail
export DEBIAN_FRONTEND=noninteractive LC_ALL=C.UTF-8
apt-get -qq update
apt-get -qq -y --no-install-recommends install ./packages/varnokctl_*.deb >/dev/null
useradd --create-home person
as_person() { setpriv --reuid person --regid person --clear-groups env -i HOME=/home/person PATH=/usr/bin:/bin LC_ALL=C.UTF-8 "$@"; }
as_person varnokctl import /packages/people.vcf
as_person varnokctl backup --single
as_person varnokctl --language de backup --type csv
test "$(as_person varnokctl --json backups --all | grep -o '"name"' | wc -l)" = 2

apt-get -qq -y --no-install-recommends install ./packages/varnok-desktop_*.deb ./packages/varnok_*.deb >/dev/null
as_person QT_QPA_PLATFORM=offscreen varnok --version
# The window opens with what the packages depend on, and stays until it is ended.
as_person QT_QPA_PLATFORM=offscreen QT_QUICK_BACKEND=software timeout 5 varnok 2>/tmp/window || test $? = 124
if grep -E 'qrc:|not installed|\.qml' /tmp/window; then exit 1; fi
test -z "$(ldd /usr/bin/varnok /usr/lib/*/varnok/*.so | grep 'not found')"
apt-get -qq -y purge varnok varnok-desktop varnokctl >/dev/null
test -z "$(find / -xdev -name '*varnok*' -not -path '/home/*' -not -path '/packages/*' -not -path '/var/*' -not -path '/proc/*')"
INSIDE
# shellcheck disable=SC2016 # Of the inner shell.
unshare --mount --pid --fork bash -c 'mount -t proc proc "$1/proc" && exec chroot "$1" bash /packages/try.sh' _ "$root"
