#!/bin/sh
# Makes what the emulator boots: GUEST/vmlinuz, the kernel, and GUEST/initrd.cpio, whose first process plays a group of
# steps with the programs of this build.
#
#     prepare-guest.sh SOURCES KERNELS GUEST FILE...
#
# Of the files, a library comes into the guest's /lib, and a program into its /bin; FILE=DIRECTORY names another
# directory. SOURCES is a guest's directory here: its files for the guest, the list `kernel` and any tables of ACPI
# (*.dsl), which become GUEST/*.aml. The list's first line names a package that depends on the package of a kernel, the
# second one the modules that the guest loads. The kernel is fetched once for all build directories into KERNELS and
# never installed. What makes the tests impossible here is written to GUEST/unavailable; the exit code is then 77, or 1
# in CI.
set -eu
sources=$1
kernels=$2
guest=$3
shift 3
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
    package=$(apt-cache depends "$kernel" 2>/dev/null | awk '$1 == "Depends:" { print $2; exit }')
    [ -n "$package" ] && (cd "$1" && apt-get -qq download "$package" >apt.log 2>&1)
}

# with_dependencies DIRECTORY VERSION MODULE...: DIRECTORY's files of these modules and of those that they need. Of
# Debian 13 the modules lie below usr/ and are compressed, and kmod looks for them there.
with_dependencies() {
    tree=$1
    version=$2
    shift 2
    mkdir -p "$tree/usr/lib" "$tree/lib"
    [ -e "$tree/lib/modules" ] || ln -s ../usr/lib/modules "$tree/lib/modules"
    [ -e "$tree/usr/lib/modules" ] || ln -s ../../lib/modules "$tree/usr/lib/modules"
    depmod -b "$tree" "$version" 2>>"$tree/depmod.log"
    modprobe -d "$tree" -S "$version" --show-depends --all "$@" | awk '$1 == "insmod" { print $2 }' | sort -u
}

# Only what is needed of the package stays, and it appears all at once.
fetch_kernel() {
    fetching=$(mktemp -d "$kernels/fetching.XXXXXX")
    trap 'rm -rf "$fetching"' EXIT
    # Lists may be missing, or so old that the package has gone; only root can renew them.
    if ! fetch_package "$fetching"; then
        [ "$(id -u)" != 0 ] || apt-get -qq update >"$fetching/update.log" 2>&1 || true
        fetch_package "$fetching" || unavailable "the package that $kernel depends on cannot be fetched" \
            "$(cat "$fetching/apt.log" 2>/dev/null || true)"
    fi
    dpkg -x "$fetching"/*.deb "$fetching/package"
    version=$(basename "$fetching/package/boot/"vmlinuz-*)
    version=${version#vmlinuz-}
    mkdir -p "$fetching/kernel/lib/modules/$version"
    mv "$fetching/package/boot/vmlinuz-$version" "$fetching/kernel/vmlinuz"
    # shellcheck disable=SC2086 # a list
    with_dependencies "$fetching/package" "$version" $modules >"$fetching/modules"
    xargs cp -t "$fetching/kernel/lib/modules/$version" <"$fetching/modules"
    find "$fetching/kernel" -name '*.xz' -exec xz --decompress {} +
    # shellcheck disable=SC2086 # a list
    with_dependencies "$fetching/kernel" "$version" $modules >/dev/null
    cp "$sources/kernel" "$fetching/kernel/list"
    rm -rf "${kernels:?}/$kernel"
    mv "$fetching/kernel" "$kernels/$kernel"
    rm -rf "$fetching"
    trap - EXIT
}

# The shared libraries that the loader finds for the given files, those files' own paths being the build's.
libraries_of() {
    for file; do ldd "${file%%=*}" || true; done 2>/dev/null | awk '$2 == "=>" && $3 ~ /^\// { print $3 }' | sort -u
}

# copy DIRECTORY FILE...: without debug information, which the guest has no use for.
copy() {
    directory=$1
    shift
    for file; do strip --strip-debug -o "$directory/$(basename "$file")" "$file"; done
}

rm -rf "$guest"
mkdir -p "$guest" "$kernels"
[ "$(dpkg --print-architecture 2>/dev/null)" = amd64 ] || unavailable "the guest is for amd64 only"
for command in qemu-system-x86_64 busybox cpio depmod iasl modprobe strip xz; do
    command -v $command >/dev/null || unavailable "there is no $command here"
done
for file; do [ -e "${file%%=*}" ] || unavailable "there is no ${file%%=*} here"; done
{ read -r kernel && read -r modules; } <"$sources/kernel"
# Several builds may be tested at a time.
exec 9>"$kernels/lock"
flock 9
cmp -s "$sources/kernel" "$kernels/$kernel/list" || fetch_kernel
flock -u 9

for table in "$sources"/*.dsl; do
    [ -e "$table" ] || continue
    compiled=$guest/$(basename "$table" .dsl)
    iasl -p "$compiled" "$table" >"$compiled.log" 2>&1 || { cat "$compiled.log"; exit 1; }
done

root=$guest/root
mkdir -p "$root/bin" "$root/lib64" "$root/dev" "$root/proc" "$root/sys" "$root/run" "$root/tmp"
cp "$here/init" "$root/"
cp -r "$sources/." "$root/"
cp "$(command -v busybox)" "$root/bin/"
cp -r "$kernels/$kernel/lib" "$root/"
for file; do
    case $file in
        *=*) mkdir -p "$root/${file#*=}" && cp "${file%%=*}" "$root/${file#*=}/" ;;
        *.so*) copy "$root/lib" "$file" ;;
        *) copy "$root/bin" "$file" ;;
    esac
done
# A given library may stand in for another of its name.
for library in $(libraries_of "$@"); do
    [ -e "$root/lib/$(basename "$library")" ] || copy "$root/lib" "$library"
done
# The loader looks for itself by name where a library has a name space of its own.
cp -L /lib64/ld-linux-x86-64.so.2 "$root/lib/"
ln -s ../lib/ld-linux-x86-64.so.2 "$root/lib64/"
chmod +x "$root/init"
(cd "$root" && find . | LC_ALL=C sort | cpio --quiet --create --format=newc --owner=0:0) >"$guest/initrd.cpio"
cp "$kernels/$kernel/vmlinuz" "$guest/vmlinuz"
rm -rf "$root"
