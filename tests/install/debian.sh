#!/bin/bash
# usage: debian.sh BUILD_DIR [OUTPUT_DIR]
#
# Makes the Debian packages of a build and uses them in a system root that holds nothing else:
# installs them with dpkg, which checks their dependencies, builds and runs an application from that
# root, puts a maker's proxy library in the place of the default one and takes it away again, and
# removes the packages. With OUTPUT_DIR the packages are left there.
set -euo pipefail

build=$1
output=${2:-}
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
root=$work/root

fail() { echo "$*" >&2; exit 1; }

echo "== packages"
(cd "$build" && cpack -G DEB -B "$work/debs") >"$work/cpack.log" 2>&1 ||
  { cat "$work/cpack.log"; exit 1; }
basename -a "$work"/debs/*.deb
lintian --fail-on error --allow-root "$work"/debs/*.deb

echo "== installing into an empty root"
mkdir -p "$root/var/lib/dpkg/"{info,updates,triggers,alternatives} "$root/etc/alternatives" \
  "$root/var/log" "$work/bin"
# What the packages stand on counts as installed there, as it is on this machine.
for deb in "$work"/debs/*.deb; do
  dpkg-deb -f "$deb" Depends
done | tr ',|' '\n\n' | sed 's/(.*//; s/ //g' | sort -u | grep -v mvserver |
  xargs dpkg-query -s | awk '/^Package:/ && NR > 1 { print "" } NF' >"$root/var/lib/dpkg/status"
# The dynamic linker's cache is that of the root.
printf '#!/bin/sh\nexec /sbin/ldconfig -X -r "$DPKG_ROOT"\n' >"$work/bin/ldconfig"
chmod +x "$work/bin/ldconfig"
in_root() {
  PATH=$work/bin:$PATH dpkg --root="$root" --force-not-root --force-script-chrootless \
    --log="$work/dpkg.log" "$@" >"$work/dpkg.out" 2>&1 || { cat "$work/dpkg.out"; return 1; }
}
in_root --install "$work"/debs/*.deb
libraries=$(dirname "$(find "$root/usr/lib" -name libMvServerCppBinding.so)")
triplet_path=${libraries#"$root"}

# The link of the alternatives system is absolute; seen from outside it leads into the root.
link=$libraries/libMvServerBindingv16064.so
chosen() { readlink "$root$(readlink "$link")"; }
default=$triplet_path/mvserverbinding/default/libMvServerBindingv16064.so
[ "$(chosen)" = "$default" ] || fail "the default proxy library is not chosen: $(chosen)"

echo "== using it from there"
g++ -std=c++17 "$here/consumer/exchange.cpp" -o "$work/exchange" "-I$root/usr/include" \
  "-L$libraries" -lMvServerCppBinding "$root$default"
gcc -std=c99 "$here/consumer/one_call.c" -o "$work/one_call" "-I$root/usr/include" \
  "-L$libraries" -lMvServerCppBinding "$root$default"
# run PROGRAM [ARGUMENT...]: with the libraries that the root has chosen.
run() { LD_LIBRARY_PATH="$libraries:$(dirname "$root$(chosen)")" "$@"; }
export -f run chosen
export root link libraries
"$here/../support/with_hub.sh" "$root/usr/bin/mvhub" -- bash -euc \
  'run "$0/exchange" "$MV_SERVERPROXY_HUB"; run "$0/one_call" "$MV_SERVERPROXY_HUB"' "$work"
[ ! -e "$root/usr/bin/mvserver" ] || run "$root/usr/bin/mvserver" --version

echo "== a maker's library in its place"
maker=/usr/lib/maker/libMvServerBindingv16064.so
mkdir -p "$root/usr/lib/maker"
gcc -std=c99 -shared -fPIC "-I$root/usr/include" -Wl,-soname,libMvServerBindingv16064.so \
  "$here/maker.c" -o "$root$maker"
choose() { update-alternatives --root "$root" --quiet "$@"; }
choose --install "$triplet_path/libMvServerBindingv16064.so" libMvServerBindingv16064.so "$maker" 50
[ "$(chosen)" = "$maker" ] || fail "the maker's library is not chosen: $(chosen)"
TEMP=$work run "$work/one_call" >"$work/said" || grep -x "c 199901: the maker's library speaks" "$work/said"
choose --remove libMvServerBindingv16064.so "$maker"
[ "$(chosen)" = "$default" ] || fail "the default proxy library is not back: $(chosen)"

echo "== removing"
mapfile -t packages < <(for deb in "$work"/debs/*.deb; do dpkg-deb -f "$deb" Package; done)
in_root --purge "${packages[@]}"
left=$(find "$root/usr" ! -type d ! -path "*/maker/*")
[ -z "$left" ] || fail "left behind: $left"

if [ -n "$output" ]; then
  mkdir -p "$output"
  cp "$work"/debs/*.deb "$output"
fi
echo "packages are sound"
