#!/bin/sh
# Makes the Debian packages, checks them with lintian, installs them into a scratch root, uses what they installed
# there, and looks at what their removal leaves behind.
#
# usage: packages-test.sh SOURCE-DIRECTORY WORK-DIRECTORY IN-PRIVATE-MOUNTS
set -eu
source=$1
work=$2
PATH=$PATH:/usr/sbin:/sbin

skip() {
    echo "SKIPPED: $*"
    exit 77
}

fail() {
    echo "FAILED: $*"
    exit 1
}

step() { echo "==> $*"; }

for tool in chroot cpack dpkg dpkg-deb dpkg-shlibdeps file lintian ninja readelf; do
    command -v "$tool" >/dev/null || skip "$tool is not installed"
done
# What is mounted into the scratch root goes with the namespace.
if [ -z "${PACKAGES_TEST_NAMESPACE:-}" ]; then
    "$3" true || skip "the system gives no private mount namespace"
    PACKAGES_TEST_NAMESPACE=yes exec "$3" sh "$0" "$@"
fi

mkdir -p "$work"
root=$work/root
rm -rf "$root" "$work/packages" "$work/install"
mkdir -p "$root" "$work/packages"

step "Building"
build=$source/build/package
(cd "$source" && . tools/setup.sh && build package) || fail "the preset does not build"

step "Packing"
(cd "$work/packages" && cpack --config "$build/CPackConfig.cmake" -B "$work/packages") >"$work/cpack.log" 2>&1 ||
    { cat "$work/cpack.log"; fail "cpack failed"; }
provider=$(ls "$work"/packages/zelsensors_*.deb)
simulator=$(ls "$work"/packages/zelsensors-simulator_*.deb)
linux=$(ls "$work"/packages/zelsensors-linux_*.deb)
host=$(ls "$work"/packages/zelhost_*.deb)
metrics=$(ls "$work"/packages/zelsensors-metrics_*.deb)
fleet=$(ls "$work"/packages/zelsensors-fleet_*_all.deb)

step "lintian"
# Other init systems have the commands, since zelhost runs under any of them; the sandbox is systemd's alone. Debian
# 13's lintian does not ask for it any more.
case $(lintian --print-version) in
    2.116.*) suppressed="package-supports-alternative-init-but-no-init.d-script" ;;
    *) suppressed= ;;
esac
lintian ${suppressed:+--suppress-tags "$suppressed"} --allow-root --display-info --fail-on error,warning,info \
    "$provider" "$linux" "$simulator" "$host" "$metrics" "$fleet" ||
    fail "lintian has found something"

step "What the packages hold"
dpkg-deb -c "$provider" >"$work/provider.list"
if grep -E 'zelchip|scenarios|zelhost' "$work/provider.list"; then fail "the provider's package ships the above"; fi
libraries=$(sed -n 's|.* \./\(usr/lib/[^ ]*\)/libzelsensors\.so\.0$|\1|p' "$work/provider.list")
[ -n "$libraries" ] || fail "no libzelsensors.so.0"
dpkg-deb -f "$provider" Depends >"$work/depends"
for library in libc6 libgcc-s1 libstdc++6; do
    grep -qF "$library" "$work/depends" || fail "it does not depend on $library: $(cat "$work/depends")"
done
if grep -q 'zel' "$work/depends"; then fail "it depends on one of ours: $(cat "$work/depends")"; fi
dpkg-deb -c "$simulator" >"$work/simulator.list"
grep -qF ' ./usr/share/doc/zelsensors-simulator/scenario-format.md' "$work/simulator.list" ||
    fail "the simulator's package does not contain scenario-format.md"
grep -qF ' ./usr/share/man/man5/zelsensors-scenario.5.gz' "$work/simulator.list" ||
    fail "the simulator's package does not contain the manual page of scenarios"
dpkg-deb -c "$host" >"$work/host.list"
for file in usr/share/bash-completion/completions/zelhost usr/share/zsh/vendor-completions/_zelhost \
    usr/share/zelsensors/json/sensors.schema.json usr/share/zelsensors/json/servers.schema.json; do
    grep -qF " ./$file" "$work/host.list" || fail "no $file in the package of zelhost"
done
dpkg-deb -c "$linux" >"$work/linux.list"
for file in "$libraries/libzelchip.so.0" "$libraries/zelsensors-linux/privatecopy.so" \
    usr/share/doc/zelsensors-linux/linux-machines.md; do
    grep -qF " ./$file" "$work/linux.list" || fail "no $file in the package of the chip library for Linux machines"
done
dpkg-deb -c "$metrics" >"$work/metrics.list"
for file in lib/systemd/system/zelsensors-metrics.service lib/systemd/system/zelsensors-event-log.service \
    etc/default/zelsensors-metrics usr/share/doc/zelsensors-metrics/metrics.md; do
    grep -qE " \./(usr/)?$file\$" "$work/metrics.list" || fail "no $file in the package of the services"
done
[ "$(dpkg-deb -f "$metrics" Architecture)" = all ] || fail "the services' package is not for all architectures"
[ "$(dpkg-deb -f "$metrics" Recommends)" = prometheus-node-exporter ] || fail "it does not recommend node_exporter"
dpkg-deb -c "$fleet" >"$work/fleet.list"
for file in etc/prometheus/rules/zelsensors-recording.yml etc/prometheus/rules/zelsensors-alerting.yml \
    etc/prometheus/consoles/terminals.html usr/share/doc/zelsensors-fleet/fleet.md \
    usr/share/doc/zelsensors-fleet/examples/prometheus.yml; do
    grep -qF " ./$file" "$work/fleet.list" || fail "no $file in the package for many terminals"
done
# What is there is the administrator's; Prometheus' own configuration is nobody's here.
dpkg-deb --info "$fleet" conffiles | sort >"$work/conffiles"
sed -n 's|.* \./\(etc/[^ ]*[^/]\)$|/\1|p' "$work/fleet.list" | sort | diff -u "$work/conffiles" - ||
    fail "files below /etc and conffiles differ"
if grep -q 'etc/prometheus/prometheus.yml\|etc/default' "$work/fleet.list"; then fail "it ships Prometheus' configuration"; fi
dpkg-deb -f "$linux" Depends | grep -q libsensors5 || fail "the chip library for Linux machines does not depend on libsensors5"
dpkg-deb -f "$provider" Description | grep -q 'libzelchip\.so\.0' || fail "its description does not name the chip library"

step "A scratch root"
# Enough to run maintainer scripts and our programs: a shell and the few tools that they use, with their libraries.
mkdir -p "$root/var/lib/dpkg/info" "$root/var/lib/dpkg/updates" "$root/var/lib/dpkg/triggers" "$root/usr/bin" \
    "$root/usr/sbin" "$root/usr/lib" "$root/usr/lib64" "$root/proc" "$root/sys" "$root/dev" "$root/tmp" "$root/etc" \
    "$root/var/log"
for directory in bin sbin lib lib64; do ln -s "usr/$directory" "$root/$directory"; done
copy_program() {
    program=$(command -v "$1")
    cp -L "$program" "$root/usr/bin/"
    ldd "$program" 2>/dev/null | grep -o '/[^ ]*' | while read -r library; do
        mkdir -p "$root${library%/*}"
        cp -L "$library" "$root$library"
    done
}
for program in sh rm rmdir cat readlink awk cmp cp ln mkdir mv sort timeout perl; do copy_program "$program"; done
cp -L /sbin/ldconfig "$root/usr/sbin/"
# The packages' own dependencies, as this machine has them.
of_host=$(dpkg-deb -f "$host" Depends | tr ',' '\n' | sed 's/^ *//; s/ .*//' | grep -E '^lib(curl|prometheus-cpp|pugixml)')
[ "$(echo "$of_host" | wc -l)" = 3 ] || fail "zelhost does not depend on libcurl, prometheus-cpp and pugixml"
needed="libc6 libgcc-s1 libstdc++6 libsensors-config libsensors5 $of_host"
# What enables services is a script in Perl.
cp -L /usr/bin/deb-systemd-helper /usr/bin/deb-systemd-invoke "$root/usr/bin/"
mkdir -p "$root/var/lib/systemd" "$root/etc/systemd/system"
for file in $(dpkg-query -L perl-base); do
    [ -f "$file" ] || continue
    mkdir -p "$root${file%/*}"
    cp -L "$file" "$root$file"
done
: >"$root/var/lib/dpkg/status"
for package in $needed; do
    dpkg-query -s "$package" >>"$root/var/lib/dpkg/status"
    echo >>"$root/var/lib/dpkg/status"
    case $(dpkg-query -W -f '${Multi-Arch}' "$package") in
        same) dpkg-query -L "$package" >"$root/var/lib/dpkg/info/$package:$(dpkg --print-architecture).list" ;;
        *) dpkg-query -L "$package" >"$root/var/lib/dpkg/info/$package.list" ;;
    esac
    for library in $(dpkg-query -L "$package" | grep -E '\.so[.0-9]*$'); do
        [ -f "$library" ] || continue
        # With the libraries that it needs in turn.
        ldd "$library" 2>/dev/null | grep -o '/[^ ]*' | while read -r deeper; do
            mkdir -p "$root${deeper%/*}"
            cp -L "$deeper" "$root$deeper"
        done
        mkdir -p "$root${library%/*}"
        cp -L "$library" "$root$library"
    done
done
mount --rbind /proc "$root/proc"
mount --rbind /dev "$root/dev"
# libsensors asks that /sys be the kernel's; the only chip is a directory here.
mount --rbind /sys "$root/sys"
mount -t tmpfs tmpfs "$root/sys/class"
mkdir -p "$root/sys/class/hwmon/hwmon0"
echo oven >"$root/sys/class/hwmon/hwmon0/name"
echo 42500 >"$root/sys/class/hwmon/hwmon0/temp1_input"
inside() { PATH=/usr/sbin:/usr/bin:/sbin:/bin TZ='' LC_ALL=C chroot "$root" "$@"; }
# What is there but the package manager's own files and what is mounted.
contents() { find "$root" -path "$root/var/lib/dpkg" -prune -o -path "$root/proc" -prune -o -path "$root/sys" -prune -o -path "$root/dev" -prune -o \
    -path "$root/etc/ld.so.cache" -prune -o -path "$root/var/cache" -prune -o -path "$root/opt" -prune -o -print |
    sed "s|^$root||" | sort; }
# Stand-ins for the tools of both object managers, neither of which has the DMTF schema; /var/lib/sfcb is where packages
# of sfcb have its directory.
manager=$root/opt/manager
mkdir -p "$manager/bin" "$manager/lib" "$manager/share/sfcb/CIM" "$manager/var/lib/sfcb/stage/mofs/root/cimv2" \
    "$manager/var/lib/sfcb/stage/regs" "$manager/var/lib/sfcb/registration" "$manager/var/qualifiers" \
    "$manager/var/namespaces/root/cimv2" "$root/var/lib"
for tool in sfcbstage sfcbunstage sfcbrepos; do cp "$source/tests/install/managers/sfcb.sh" "$manager/bin/$tool"; done
for tool in cimconfig cimprovider cimmof cimcli; do cp "$source/tests/install/managers/pegasus.sh" "$manager/bin/$tool"; done
chmod +x "$manager"/bin/*
echo lib >"$manager/var/providerDir"
for file in running calls modules; do : >"$manager/var/$file"; done
: >"$manager/share/sfcb/CIM/CIM_Schema.mof"
ln -s /opt/manager/var/lib/sfcb "$root/var/lib/sfcb"
# As Debian's Prometheus has them.
mkdir -p "$root/etc/prometheus/consoles"
echo 'global: {}' >"$root/etc/prometheus/prometheus.yml"
contents >"$work/before"

step "Installing"
dpkg --root="$root" --log=/dev/null -i "$provider" "$simulator" "$host" "$metrics" "$fleet" >"$work/install.log" \
    2>&1 ||
    { cat "$work/install.log"; fail "the packages do not install"; }
[ "$(readlink "$root/$libraries/cmpi/libzelsensors.so")" = ../libzelsensors.so.0 ] ||
    fail "no link in the object managers' directory"
[ "$(cat "$root/etc/prometheus/prometheus.yml")" = 'global: {}' ] || fail "Prometheus' configuration has changed"
[ -d "$root/var/log/tarn" ] || fail "no /var/log/tarn"
[ -f "$root/etc/logrotate.d/zelsensors" ] || fail "no rule for logrotate"
for example in log.conf sensor.conf; do
    file=$root/usr/share/doc/zelsensors/examples/$example
    [ -z "$(tail -c 1 "$file")" ] || fail "$example ends without a newline"
    if grep -vE '^(FileName|Level|MaxLength|NvmeReadings)=[^ ]+$' "$file"; then fail "$example has the above"; fi
done

# There is no systemd in the scratch root: nothing is started, and nothing fails for that.
enabled=$root/etc/systemd/system/multi-user.target.wants
for unit in zelsensors-metrics.service zelsensors-event-log.service; do
    [ "$(readlink "$enabled/$unit" | sed 's|^/usr||')" = "/lib/systemd/system/$unit" ] || fail "$unit is not enabled"
done
[ "$(readlink "$root/var/lib/prometheus/node-exporter/zelsensors.prom")" = /run/zelsensors-metrics/zelsensors.prom ] ||
    fail "no link to the page where node_exporter looks"
# Whoever disables a service finds it disabled after the next version.
rm "$enabled/zelsensors-event-log.service"
dpkg --root="$root" --log=/dev/null -i "$metrics" >"$work/install-again.log" 2>&1 ||
    { cat "$work/install-again.log"; fail "the services do not install over themselves"; }
[ ! -e "$enabled/zelsensors-event-log.service" ] || fail "a disabled service is enabled by the next version"
[ -L "$enabled/zelsensors-metrics.service" ] || fail "an enabled service is disabled by the next version"

step "Using what is installed"
mkdir -p "$root/etc/tarn"
cp "$root"/usr/share/doc/zelsensors/examples/*.conf "$root/etc/tarn/"
inside zelhost instances >"$work/instances" || fail "zelhost instances failed"
grep -q 'CPU Temperature(00000010)' "$work/instances" || { cat "$work/instances"; fail "no CPU temperature"; }
inside zelhost log >"$work/log" || fail "zelhost log failed"
inside zelhost --provider "/$libraries/cmpi/libzelsensors.so" names >"$work/names" ||
    fail "the provider does not load by its link"
[ -s "$root/var/log/tarn/tarn.log" ] || fail "the provider has not logged"
# The simulated chip library stays out of the loader's sight.
status=0
inside zelhost --chip system names >"$work/names" 2>&1 || status=$?
[ "$status" = 3 ] || fail "the provider without a chip library: status $status instead of 3"

step "The chip library of any Linux machine"
# Whoever asks for it by its word never gets another, and is told what to install.
cp "$root/$libraries/zelsensors/libzelchip.so.0" "$root/$libraries/"
status=0
inside zelhost --chip linux names >"$work/names" 2>&1 || status=$?
[ "$status" = 2 ] || fail "zelhost --chip linux without the package: status $status instead of 2"
grep -q 'the package zelsensors-linux brings it' "$work/names" || { cat "$work/names"; fail "it names no package"; }
rm "$root/$libraries/libzelchip.so.0"
install_linux() { dpkg --root="$root" --log=/dev/null -i "$linux" >"$work/install-linux.log" 2>&1; }
cp "$root/$libraries/zelsensors/libzelchip.so.0" "$root/usr/lib/"
inside ldconfig >"$work/ldconfig.log" 2>&1
if install_linux; then fail "it is installed beside a chip library that is there"; fi
grep -q 'has a chip library already: .*/libzelchip\.so\.0' "$work/install-linux.log" ||
    { cat "$work/install-linux.log"; fail "the refusal does not name the chip library that is there"; }
rm "$root/usr/lib/libzelchip.so.0"
inside ldconfig >"$work/ldconfig.log" 2>&1
mkdir -p "$work/terminal/DEBIAN"
printf '%s\n' 'Package: terminal-chip' 'Version: 1' 'Architecture: all' 'Provides: libzelchip0' \
    'Maintainer: nobody <nobody@quorvel.example>' 'Description: stands for a terminal' >"$work/terminal/DEBIAN/control"
dpkg-deb --build "$work/terminal" "$work/terminal.deb" >/dev/null
dpkg --root="$root" --log=/dev/null -i "$work/terminal.deb" >"$work/terminal.log" 2>&1
if install_linux; then fail "it is installed beside a package that has the terminal's chip library"; fi
grep -q 'terminal-chip provides libzelchip0' "$work/install-linux.log" ||
    { cat "$work/install-linux.log"; fail "the refusal does not name the terminal's package"; }
dpkg --root="$root" --log=/dev/null -P terminal-chip >"$work/terminal.log" 2>&1
[ ! -e "$root/$libraries/libzelchip.so.0" ] || fail "a refused package has left the chip library"
install_linux || { cat "$work/install-linux.log"; fail "it does not install"; }
install_linux || { cat "$work/install-linux.log"; fail "it does not install over itself"; }
inside zelhost --chip system instances >"$work/instances" || fail "zelhost instances failed on it"
grep -q '^oven temp1(.*42\.5' "$work/instances" || { cat "$work/instances"; fail "no temperature of the chip"; }
inside zelhost --chip linux instances >"$work/instances" || fail "zelhost --chip linux failed on it"
grep -q '^oven temp1(' "$work/instances" || { cat "$work/instances"; fail "no temperature with --chip linux"; }
inside zelhost instances >"$work/instances" || fail "zelhost instances failed without --chip"
grep -q '^oven temp1(' "$work/instances" || fail "an installed zelhost does not take the system's chip library"
inside zelhost --chip simulated instances >"$work/instances" || fail "zelhost instances failed beside it"
grep -q 'CPU Temperature(00000010)' "$work/instances" || fail "the simulated chip library does not play where asked for"

step "Registering without a manager"
status=0
inside zelsensors-register add >"$work/register" 2>&1 || status=$?
[ "$status" = 1 ] || fail "zelsensors-register without a manager: status $status instead of 1"
grep -q 'no object manager found' "$work/register" || fail "zelsensors-register: $(cat "$work/register")"

step "Registering"
by_managers() { PATH=/opt/manager/bin:/usr/sbin:/usr/bin:/sbin:/bin TZ='' LC_ALL=C chroot "$root" "$@"; }
by_managers zelsensors-register add >"$work/register" 2>&1 || { cat "$work/register"; fail "it did not register"; }
for file in mofs/root/cimv2/tqaqualifiers.mof mofs/root/cimv2/tqs.mof regs/tqs.reg; do
    [ -s "$manager/var/lib/sfcb/stage/$file" ] || fail "$file is not staged for sfcb"
done
[ "$(readlink "$root/opt/manager/lib/libzelsensors.so")" = "/$libraries/libzelsensors.so.0" ] ||
    fail "no link in OpenPegasus's provider directory"

# left_after WHAT EXPECTED...: compares what is there more than before.
left_after() {
    what=$1
    shift
    printf '%s\n' "$@" | sort >"$work/expected"
    contents | comm -13 "$work/before" - >"$work/left"
    diff -u "$work/expected" "$work/left" || fail "other files than expected are left after $what"
}

step "Removing"
PATH=/opt/manager/bin:$PATH dpkg --root="$root" --log=/dev/null -r zelsensors zelsensors-linux zelsensors-simulator \
    zelhost zelsensors-metrics zelsensors-fleet >"$work/remove.log" 2>&1 ||
    { cat "$work/remove.log"; fail "the packages cannot be removed"; }
[ ! -L "$manager/lib/libzelsensors.so" ] || fail "the link in OpenPegasus's provider directory is left"
[ ! -s "$manager/var/modules" ] || fail "OpenPegasus has the module still"
grep -qF 'sfcbunstage -n root/cimv2 -r tqs.reg tqs.mof && sfcbrepos -f' "$work/remove.log" ||
    fail "the removal does not say that sfcb has the provider still"
# dpkg keeps the settings, deb-systemd-helper what enables a service, for the case that the package comes back.
left_after removal /etc/default /etc/default/zelsensors-metrics /etc/logrotate.d /etc/logrotate.d/zelsensors \
    /etc/systemd/system/multi-user.target.wants /etc/systemd/system/multi-user.target.wants/zelsensors-metrics.service \
    /etc/tarn /etc/tarn/log.conf /etc/tarn/sensor.conf /var/lib/systemd/deb-systemd-helper-enabled \
    /var/lib/systemd/deb-systemd-helper-enabled/multi-user.target.wants \
    /var/lib/systemd/deb-systemd-helper-enabled/multi-user.target.wants/zelsensors-event-log.service \
    /var/lib/systemd/deb-systemd-helper-enabled/multi-user.target.wants/zelsensors-metrics.service \
    /var/lib/systemd/deb-systemd-helper-enabled/zelsensors-event-log.service.dsh-also \
    /var/lib/systemd/deb-systemd-helper-enabled/zelsensors-metrics.service.dsh-also \
    /etc/prometheus/consoles/terminals.html /etc/prometheus/rules /etc/prometheus/rules/zelsensors-alerting.yml \
    /etc/prometheus/rules/zelsensors-recording.yml \
    /var/log/tarn /var/log/tarn/tarn.log

step "Purging"
: >"$root/var/log/tarn/tarn.log.1"
: >"$root/var/log/tarn/somebodys"
mkdir -p "$root/var/lib/zelsensors-metrics"
: >"$root/var/lib/zelsensors-metrics/event-log.state"
dpkg --root="$root" --log=/dev/null -P zelsensors zelsensors-linux zelsensors-simulator zelhost \
    zelsensors-metrics zelsensors-fleet >"$work/purge.log" 2>&1 ||
    { cat "$work/purge.log"; fail "the packages cannot be purged"; }
left_after purging /etc/tarn /etc/tarn/log.conf /etc/tarn/sensor.conf /var/log/tarn /var/log/tarn/somebodys
echo "The packages: all steps passed"
