# SPDX-License-Identifier: Apache-2.0
#
# Shell functions for a guest: USB devices made of configfs gadgets on dummy_hcd, each controller of
# which (dummy_hcd num=N) is a host and a device that are wired to each other.

gadgets=/sys/kernel/config/usb_gadget

# usb_gadget NAME MAKER PRODUCT SERIAL FUNCTION: describes a device with one function, not bound yet.
usb_gadget() {
  [ -d $gadgets ] || mount -t configfs none /sys/kernel/config
  mkdir -p $gadgets/$1/strings/0x409 $gadgets/$1/configs/c.1 $gadgets/$1/functions/$5
  echo 0x1d6b >$gadgets/$1/idVendor
  echo 0x0104 >$gadgets/$1/idProduct
  echo "$2" >$gadgets/$1/strings/0x409/manufacturer
  echo "$3" >$gadgets/$1/strings/0x409/product
  echo "$4" >$gadgets/$1/strings/0x409/serialnumber
  ln -s $gadgets/$1/functions/$5 $gadgets/$1/configs/c.1
}

# plug_in NAME CONTROLLER: binds it, and waits until the host side has read its texts.
plug_in() {
  echo dummy_udc.$2 >$gadgets/$1/UDC
  await "grep -qx '$(cat $gadgets/$1/strings/0x409/serialnumber)' /sys/bus/usb/devices/*/serial"
}

# usb_tape CONTROLLER VENDOR PRODUCT REVISION SERIAL: plugs in a tape drive, and waits until the host
# side has made it a SCSI tape.
usb_tape() {
  usb_gadget tape Tapeworks "USB tape" "$5" ffs.tape
  mkdir /ffs
  mount -t functionfs tape /ffs
  usbtape /ffs "$2" "$3" "$4" >/tmp/usbtape 2>&1 &
  await "grep -q ready /tmp/usbtape"
  plug_in tape $1
  await "ls -d /sys/bus/usb/devices/*/*/host*/target*/*/scsi_tape"
}

# await COMMAND: repeats it until it succeeds, for 20 seconds.
await() {
  for _ in $(seq 200); do
    if eval "$1" >/dev/null 2>&1; then return; fi
    sleep 0.1
  done
  echo "waited in vain for: $1" >&2
  return 1
}
