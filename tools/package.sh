#!/usr/bin/env bash
# A source package and Debian packages for amd64 and i386, in build/package, which apt takes as an
# archive: built in clean Debian 12 systems, checked by lintian, and in other clean systems each test of
# debian/tests installed with what it depends on, run, and purged. As root; needs mmdebstrap and python3.
set -euo pipefail
cd "$(dirname "$0")/.."
out=$PWD/build/package work=$(mktemp -d)
trap 'rm -rf --one-file-system "$work"' EXIT

say() { echo "== $*"; }
fail() { echo "failed: $1" >&2; exit 1; }
inside() { tools/system.sh enter "$work/$1" "$2" </dev/null; } # system commands
logged() { # log system commands
    inside "$2" "$3" >"$out/$1.log" 2>&1 ||
        { tail -n 40 "$out/$1.log" >&2; fail "see build/package/$1.log"; }
}
install="apt-get install -y --no-install-recommends"
version=$(sed -n '1s/.*(\(.*\)).*/\1/p' debian/changelog)
rm -rf "$out" && mkdir -p "$out"

for architecture in amd64 i386; do
    say "building for $architecture"
    system=build-$architecture what=binary dependencies=
    [ $architecture = amd64 ] || what=any dependencies=--arch-only
    tools/system.sh make "$work/$system" $architecture
    logged prepare-$architecture $system "apt-get update; $install build-essential"
    if [ $architecture = amd64 ]; then
        PYTHONPATH=tools PYTHONDONTWRITEBYTECODE=1 python3 -c 'import documents, pathlib, sys
documents.copy_tree(pathlib.Path(sys.argv[1]))' "$work/$system/root/source/kef-$version"
        logged source $system "cd /root; dpkg-source --build source/kef-$version"
        mv "$work/$system"/root/kef_* "$out"
    fi
    cp "$out/kef_$version".{dsc,tar.xz} "$work/$system/root"
    logged build-$architecture $system "
        cd /root; apt-get build-dep -y --no-install-recommends $dependencies ./kef_$version.dsc
        dpkg-source --extract kef_$version.dsc; cd kef-$version
        DEB_BUILD_OPTIONS=parallel=$(nproc) dpkg-buildpackage --no-sign --build=$what"
    mv "$work/$system"/root/*.{deb,changes,buildinfo} "$out"
done

say "lintian"
mkdir "$work/build-amd64/packages"
cp "$out"/kef_* "$out"/*.deb "$work/build-amd64/packages"
logged prepare-lintian build-amd64 "$install lintian; cd /packages; dpkg-scanpackages --multiversion . >Packages"
cp "$work/build-amd64/packages/Packages" "$out"
inside build-amd64 "cd /packages; lintian --allow-root --fail-on error --tag-display-limit 0 *.dsc *.changes" |
    tee "$out/lintian.log"

# What a system has, but for what every installation leaves: logs, caches, backups, and apt's own lists.
listing() { # system
    (
        cd "$work/$1"
        find etc opt root srv usr var \( -path var/cache -o -path var/log -o -path var/lib/apt -o -path var/lib/dpkg \) \
            -prune -o -print | grep -v '[~-]$' | sort
        find var/lib/dpkg/info -name '*kef*'
    )
}
listed="dpkg-query -W -f '\${binary:Package}\n' | sort"
# Those of debian/tests/control, and programs of 32 bits on a machine of 64: PACKAGE,... COMMAND
tests() { # architecture
    sed -n 's/^Tests: *//p; s/^Depends: *//p' debian/tests/control | sed 's/, */,/g' |
        while read -r name && read -r packages; do echo "$packages $name"; done
    [ "$1" = i386 ] || echo "libkef-dev,libkef-dev:i386,g++-multilib,cmake,make,pkg-config develop -m32"
}
for architecture in amd64 i386; do
    system=user-$architecture
    tools/system.sh make "$work/$system" $architecture
    mkdir "$work/$system/packages"
    cp "$out"/{Packages,*.deb} "$work/$system/packages"
    echo 'deb [trusted=yes] file:/packages ./' >"$work/$system/etc/apt/sources.list.d/kef.list"
    mkdir "$work/$system/source"
    tar -xJf "$out/kef_$version.tar.xz" -C "$work/$system/source"
    [ $architecture = i386 ] || inside $system "dpkg --add-architecture i386"
    logged prepare-user-$architecture $system "apt-get update"
    while read -r packages name; do
        say "$name for $architecture"
        listing $system >"$work/before"
        logged "install-${name// }-$architecture" $system "$listed >/tmp/packages; $install ${packages//,/ }"
        inside $system "cd /source/kef-$version; debian/tests/$name"
        logged "purge-${name// }-$architecture" $system "
            $listed | comm -13 /tmp/packages - | xargs apt-get purge -y --allow-remove-essential"
        listing $system | diff "$work/before" - || fail "left behind by the purge"
    done < <(tests $architecture)
done
say "packages in build/package"
