// /proc/bus/input/devices of a machine with common devices, for tests.
#pragma once

namespace toolkit::quorvah {

inline constexpr char kInputDevices[] =
    "I: Bus=0019 Vendor=0000 Product=0001 Version=0000\n"
    "N: Name=\"Power Button\"\nP: Phys=PNP0C0C/button/input0\n"
    "S: Sysfs=/devices/LNXSYSTM:00/LNXPWRBN:00/input/input0\nU: Uniq=\nH: Handlers=kbd event0 \n"
    "B: PROP=0\nB: EV=3\nB: KEY=8000 10000000000000 0\n\n"
    "I: Bus=0011 Vendor=0001 Product=0001 Version=ab41\n"
    "N: Name=\"AT Translated Set 2 keyboard\"\nP: Phys=isa0060/serio0/input0\n"
    "S: Sysfs=/devices/platform/i8042/serio0/input/input3\nU: Uniq=\n"
    "H: Handlers=sysrq kbd event3 leds \nB: PROP=0\nB: EV=120013\n"
    "B: KEY=402000000 3803078f800d001 feffffdfffefffff fffffffffffffffe\nB: MSC=10\nB: LED=7\n\n"
    "I: Bus=0003 Vendor=046d Product=c077 Version=0111\n"
    "N: Name=\"Logitech USB Optical Mouse\"\nP: Phys=usb-0000:00:14.0-3/input0\n"
    "S: Sysfs=/devices/pci0000:00/0000:00:14.0/usb1/1-3/1-3:1.0/0003:046D:C077.0001/input/input11\n"
    "U: Uniq=M-42\nH: Handlers=mouse0 event5 \nB: PROP=0\nB: EV=17\n"
    "B: KEY=ff0000 0 0 0 0\nB: REL=903\nB: MSC=10\n\n"
    "I: Bus=0018 Vendor=06cb Product=cd41 Version=0100\n"
    "N: Name=\"SYNA2393:00 06CB:CD41 Touchpad\"\nP: Phys=i2c-SYNA2393:00\n"
    "S: Sysfs=/devices/pci0000:00/0000:00:15.0/i2c_designware.0/i2c-0/i2c-SYNA2393:00/input/input13\nU: "
    "Uniq=\n"
    "H: Handlers=mouse1 event7 \nB: PROP=5\nB: EV=1b\n"
    "B: KEY=e520 10000 0 0 0 0\nB: ABS=2e0800000000003\nB: MSC=20\n\n"
    "I: Bus=0003 Vendor=0627 Product=0001 Version=0001\n"
    "N: Name=\"QEMU QEMU USB Tablet\"\nP: Phys=usb-0000:00:04.0-1/input0\n"
    "S: Sysfs=/devices/pci0000:00/0000:00:04.0/usb2/2-1/2-1:1.0/0003:0627:0001.0001/input/input14\nU: "
    "Uniq=42\n"
    "H: Handlers=mouse2 event8 js0 \nB: PROP=0\nB: EV=1f\n"
    "B: KEY=70000 0 0 0 0\nB: REL=900\nB: ABS=3\nB: MSC=10\n\n";

}  // namespace toolkit::quorvah
