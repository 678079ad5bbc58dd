# shellcheck shell=sh
# What the shell steps of the groups use. A chip is given by its address, like 0x48, on the bus of the kernel's i2c-stub.

# What plays the steps, and what it finds.
session() { chip_session "$@"; }
set_up() {
    printf 'Level=2\n' >/etc/tarn/log.conf
    cp /sensors3.conf /etc/
}

# bus_of NAME: the directory of the bus whose name begins so. The kernel gives its number anew at each boot.
bus_of() {
    for name in /sys/bus/i2c/devices/i2c-*/name; do
        case $(cat "$name") in "$1"*) echo "${name%/name}" ;; esac
    done
}

# stub ADDRESS...: makes the bus with these chips, whose registers are 0.
stub() {
    modprobe i2c-dev
    modprobe i2c-stub chip_addr="$(echo "$*" | tr ' ' ,)"
    bus_of 'SMBus stub driver' >/run/bus
}

# bytes ADDRESS REGISTER BYTE...: from this register on; word ADDRESS REGISTER WORD: its low byte first. i2cset takes
# every number for a hexadecimal one; -f, since a driver may hold the address.
bytes() { set_registers i "$@"; }
word() { set_registers w "$@"; }
set_registers() {
    mode=$1
    shift
    read -r bus </run/bus
    i2cset -f -y "${bus##*/i2c-}" "$@" "$mode"
}

# add TYPE ADDRESS, remove ADDRESS: a chip that no driver finds by itself.
add() { echo "$1" "$2" >"$(cat /run/bus)/new_device"; }
remove() { echo "$1" >"$(cat /run/bus)/delete_device"; }

# bind DRIVER ADDRESS, unbind DRIVER ADDRESS: gives a chip to its driver, and takes it away.
bind() { device "$2" >"/sys/bus/i2c/drivers/$1/bind"; }
unbind() { device "$2" >"/sys/bus/i2c/drivers/$1/unbind"; }
device() {
    read -r bus </run/bus
    echo "${bus##*/i2c-}-00${1#0x}"
}

# monitored: each chip's number of the kernel's, and what it is.
monitored() {
    for directory in /sys/class/hwmon/hwmon*; do echo "${directory##*/} $(readlink -f "$directory/device")"; done
}

# fill: the registers of all chips. Sensors.h knows what their readings and limits then are.
fill() {
    word 0x48 0x00 0x8019 && word 0x48 0x02 0x004b && word 0x48 0x03 0x0050
    word 0x4a 0x00 0x001f && word 0x4a 0x02 0x0046 && word 0x4a 0x03 0x0055
    fill_max6659
    fill_lm85
    fill_max16065
    bytes 0x44 0x04 0x20 0x64 0x80
    word 0x40 0xe3 0x6866 && word 0x40 0xe5 0x0072
}
# Readings of 36 and 58.125 degrees; the limits of the second sensor, then those of both that stand apart.
fill_max6659() {
    bytes 0x4c 0xfe 0x4d 0x00
    bytes 0x4c 0x00 0x24 0x3a
    bytes 0x4c 0x05 0x50 0x05 0x5a 0x02
    bytes 0x4c 0x10 0x20
    bytes 0x4c 0x16 0x6e 0x69
    bytes 0x4c 0x19 0x64
    bytes 0x4c 0x20 0x5f 0x0a
}
# Voltages, temperatures, fans; a sensor that is broken, the third one for temperatures; limits, of which those of the
# last voltage, the second temperature and three fans are as the chip has them before anybody sets it up.
fill_lm85() {
    bytes 0x2e 0x3e 0x01 0x62 0x05
    bytes 0x2e 0x42 0x80
    bytes 0x2e 0x20 0xc0 0xc0 0xc0 0xc0 0xc0 0x2f 0x27 0x34 0x00 0x10 0x00 0x08 0xff 0xff 0x00 0x20
    bytes 0x2e 0x44 0xad 0xd3 0xad 0xd3 0xad 0xd3 0xad 0xd3 0x00 0x00
    bytes 0x2e 0x4e 0x05 0x55 0x81 0x7f 0x0a 0x5f 0x00 0x20 0xff 0xff 0x01 0x00 0x00 0x00
}
# Twelve voltages; for each a limit below, then one above, then another below.
fill_max16065() {
    bytes 0x50 0x73 0x00
    bytes 0x50 0x47 0x01
    bytes 0x50 0x18 0x60
    for channel in 0 1 2 3 4 5 6 7 8 9 a b; do word 0x50 "0x$(printf %x $((0x$channel * 2)))" "0x9$channel"; done
    bytes 0x50 0x48 0x80 0xa0 0x70 0x81 0xa1 0x71 0x82 0xa2 0x72 0x83 0xa3 0x73 0x84 0xa4 0x74 0x85 0xa5 0x75
    bytes 0x50 0x5a 0x86 0xa6 0x76 0x87 0xa7 0x77 0x88 0xa8 0x78 0x89 0xa9 0x79 0x8a 0xaa 0x7a 0x8b 0xab 0x7b
}

# disturbances: what goes and comes while requests go on, each line VALUE PATH. After all of them everything is back, but
# the chips of one kind have each other's numbers of the kernel's.
disturbances() {
    read -r bus </run/bus
    drivers=/sys/bus/i2c/drivers
    drive=$(basename "$(readlink /sys/class/nvme/nvme0/device)")
    echo "$(device 0x48) $drivers/lm75/unbind"
    echo "$(device 0x4a) $drivers/lm75/unbind"
    echo "$(device 0x4a) $drivers/lm75/bind"
    echo "$(device 0x48) $drivers/lm75/bind"
    echo "0x44 $bus/delete_device"
    echo "$(device 0x2e) $drivers/lm85/unbind"
    echo "ltc4215 0x44 $bus/new_device"
    echo "$drive /sys/bus/pci/drivers/nvme/unbind"
    echo "$(device 0x50) $drivers/max16065/unbind"
    echo "$(device 0x2e) $drivers/lm85/bind"
    echo "$(device 0x50) $drivers/max16065/bind"
    echo "$drive /sys/bus/pci/drivers/nvme/bind"
}

# host ARGUMENTS: zelhost with this guest's libraries.
host() {
    zelhost "$@" --provider /lib/libzelsensors.so.0 --chip linux
}
