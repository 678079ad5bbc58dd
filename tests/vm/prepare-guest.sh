#!/bin/sh
# Makes what the emulator boots: GUEST/vmlinuz, the kernel, and GUEST/initrd.cpio, whose first process plays a group of
# steps with the programs of this build.
#
#     prepare-guest.sh KERNEL-CACHE GUEST PROGRAM-OR-LIBRARY...
#
# The kernel is Debian's package for clouds, fetched once for all build directories into KERNEL-CACHE and never installed.
# What makes the tests impossible here is written to GUEST/unavailable; the exit code is then 77, or 1 in CI.
set -eu
cache=$1
guest=$2
shift 2
here=$(cd "$(dirname "$0")" && pwd)
PATH=$PATH:/usr/sbin:/sbin

unavailable() {
    echo "$*" >"$guest/unavailable"
    echo "SKIPPED: $*"
    [ -z "${CI:-}" ] || exit 1
    exit 77
}

fetch_package() {
    # The package's name holds the kernel's version; the one without depends on it.
    package=$(apt-cache depends linux-image-cloud-amd64 2>/dev/null | awk '$1 == "Depends:" { print $2; exit }')
    [ -n "$package" ] && (cd "$1" && apt-get -qq download "$package" >apt.log 2>&1)
}

# Only what is needed of the package stays, and it appears all at once.
fetch_kernel() {
    fetching=$(mktemp -d "$cache/fetching.XXXXXX")
    trap 'rm -rf "$fetching"' EXIT
    # Lists may be missing, or so old that the package has gone; only root can renew them.
    if ! fetch_package "$fetching"; then
        [ "$(id -u)" != 0 ] || apt-get -qq update >"$fetching/update.log" 2>&1 || true
        fetch_package "$fetching" || unavailable "the package that linux-image-cloud-amd64 depends on cannot be fetched" \
            "$(cat "$fetching/apt.log" 2>/dev/null || true)"
    fi
    dpkg -x "$fetching"/*.deb "$fetching/package"
    mkdir "$fetching/kernel"
    mv "$fetching/package/boot/"vmlinuz-* "$fetching/kernel/vmlinuz"
    # Of Debian 13 they lie below usr/ and are compressed.
    for module in nvme-fabrics nvme-tcp; do
        file=$(find "$fetching/package" -path "*/drivers/nvme/host/$module.ko*")
        case $file in *.xz) xz --decompress "$file" ;; esac
        mv "${file%.xz}" "$fetching/kernel/"
    done
    mv "$fetching/kernel" "$cache/kernel"
    rm -rf "$fetching"
    trap - EXIT
}

# The shared libraries that the loader finds for the given files, those files' own paths being the build's.
libraries_of() {
    for file; do ldd "$file"; done | awk '$2 == "=>" && $3 ~ /^\// { print $3 }' | sort -u
}

# copy DIRECTORY FILE...: without debug information, which the guest has no use for.
copy() {
    directory=$1
    shift
    for file; do strip --strip-debug -o "$directory/$(basename "$file")" "$file"; done
}

rm -rf "$guest"
mkdir -p "$guest" "$cache"
[ "$(dpkg --print-architecture 2>/dev/null)" = amd64 ] || unavailable "the guest is for amd64 only"
for command in qemu-system-x86_64 busybox cpio strip xz; do
    command -v $command >/dev/null || unavailable "there is no $command here"
done
# Several builds may be tested at a time.
exec 9>"$cache/lock"
flock 9
[ -d "$cache/kernel" ] || fetch_kernel
flock -u 9

root=$guest/root
mkdir -p "$root/bin" "$root/lib/modules" "$root/lib64" "$root/dev" "$root/proc" "$root/sys" "$root/run" "$root/tmp"
cp "$here/guest/init" "$here/guest/tools.sh" "$here/guest/grebel.toml" "$root/"
cp -r "$here/guest/groups" "$root/"
cp "$(command -v busybox)" "$root/bin/"
cp "$cache/kernel/"*.ko "$root/lib/modules/"
for file; do
    case $file in
        *.so*) copy "$root/lib" "$file" ;;
        *) copy "$root/bin" "$file" ;;
    esac
done
# shellcheck disable=SC2046 # a list of paths
copy "$root/lib" $(libraries_of "$@")
cp -L /lib64/ld-linux-x86-64.so.2 "$root/lib64/"
chmod +x "$root/init"
(cd "$root" && find . | LC_ALL=C sort | cpio --quiet --create --format=newc --owner=0:0) >"$guest/initrd.cpio"
cp "$cache/kernel/vmlinuz" "$guest/vmlinuz"
rm -rf "$root"
