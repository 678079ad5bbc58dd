# shellcheck shell=sh
# What the shell steps of the groups use. A drive is named by its number in /dev/nvmeN.

# What plays the steps, and what it finds.
session() { drive_session "$@"; }
set_up() {
    printf 'NvmeReadings=1\n' >/etc/tarn/sensor.conf
    printf 'Level=4\n' >/etc/tarn/log.conf
    export ZELCHIP_SCENARIO=/grebel.toml
    ifconfig lo 127.0.0.1 up
}

# drive N [KEY=VALUE ...]: how the scripted controller behaves from now on; what is not named is as it was at first.
drive() {
    number=$1
    shift
    printf '%s\n' "$@" >"/run/drive-$number/next"
    mv "/run/drive-$number/next" "/run/drive-$number/behaviour"
}

# await N STATE: until the driver says so.
await() {
    until [ "$(cat "/sys/class/nvme/nvme$1/state" 2>/dev/null)" = "$2" ]; do usleep 20000; done
}

# connect N: starts a scripted controller and lets the kernel's driver connect to it. N must be the next free number.
connect() {
    [ -e /dev/nvme-fabrics ] || modprobe nvme-tcp
    mkdir -p "/run/drive-$1"
    drive "$1"
    scripted_controller "$((4420 + $1))" "/run/drive-$1"
    address=transport=tcp,traddr=127.0.0.1,trsvcid=$((4420 + $1)),nqn=nqn.2014-08.org.nvmexpress.discovery
    # On a machine that is very busy it may take the driver more than one try.
    until echo "$address,reconnect_delay=1,ctrl_loss_tmo=-1" >/dev/nvme-fabrics; do usleep 100000; done
    await "$1" live
    commands "$1" >/dev/null
}

# commands N: what the scripted controller was sent since the last time.
commands() {
    cat "/run/drive-$1/commands"
    rm "/run/drive-$1/commands"
}

# unplug N: takes a PCI controller from its driver.
unplug() {
    basename "$(readlink "/sys/class/nvme/nvme$1/device")" >/sys/bus/pci/drivers/nvme/unbind
    while [ -e "/dev/nvme$1" ]; do usleep 20000; done
}

# host ARGUMENTS: zelhost with this guest's libraries.
host() {
    zelhost "$@" --provider /lib/libzelsensors.so.0 --chip /lib/libzelchip.so.0 --scenario /grebel.toml
}
