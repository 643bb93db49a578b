#!/usr/bin/env bash
# Clean Debian 12 systems in directories, as root, with mmdebstrap:
#   system.sh make DIRECTORY [ARCHITECTURE]   its image is kept beside it, for others
#   system.sh enter DIRECTORY COMMANDS        runs commands of bash in it; the first that fails ends them
set -euo pipefail
root=$2
case $1 in
make)
    architecture=${3:-$(dpkg --print-architecture)}
    image=$(dirname "$root")/debian-$architecture.tar
    # The release alone: lists of updates may differ between architectures, which then do not go together.
    [ -e "$image" ] || mmdebstrap --quiet --variant=minbase --include=ca-certificates \
        --setup-hook='sed -i /bookworm-/d "$1/etc/apt/sources.list"' \
        --architectures="$architecture" bookworm "$image"
    mkdir -p "$root"
    tar -xf "$image" -C "$root"
    for file in resolv.conf hosts; do
        [ ! -e /etc/$file ] || cp /etc/$file "$root/etc/"
    done
    ;;
enter)
    bits=linux64
    [ -e "$root/lib64/ld-linux-x86-64.so.2" ] || bits=linux32
    $bits unshare --mount --pid --fork --kill-child bash -c '
        mount --rbind /dev "$0/dev" && mount -t proc proc "$0/proc" && exec chroot "$0" env -i HOME=/root \
            PATH=/usr/sbin:/usr/bin:/sbin:/bin LC_ALL=C.UTF-8 DEBIAN_FRONTEND=noninteractive bash -ec "$1"' \
        "$root" "$3"
    ;;
esac
