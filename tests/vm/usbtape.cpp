// SPDX-License-Identifier: Apache-2.0
//
// usbtape FFS VENDOR PRODUCT REVISION: the device side of a USB tape drive, on a mounted FunctionFS.
//
// Speaks the Bulk-Only Transport (USB Mass Storage Class 1.0) and of SCSI what a host asks before it
// calls a drive its own: INQUIRY with the given texts; every other command is accepted or refused.
// Prints "ready" once the gadget may be bound, and runs until it is ended.

#include <fcntl.h>
#include <linux/usb/functionfs.h>
#include <unistd.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

namespace {

using Bytes = std::vector<std::uint8_t>;

constexpr std::size_t kCommandBlockWrapper = 31;
constexpr std::uint8_t kTestUnitReady = 0x00;
constexpr std::uint8_t kRequestSense = 0x03;
constexpr std::uint8_t kInquiry = 0x12;
constexpr std::uint8_t kGetMaxLun = 0xFE;

class File {
 public:
  File(const std::string& path, int flags) : fd_(open(path.c_str(), flags)) {
    if (fd_ < 0) throw std::system_error(errno, std::generic_category(), path);
  }
  File(const File&) = delete;
  File& operator=(const File&) = delete;
  ~File() { close(fd_); }

  [[nodiscard]] Bytes readUpTo(std::size_t size) const {
    Bytes data(size);
    data.resize(checked(read(fd_, data.data(), size)));
    return data;
  }
  void writeAll(const Bytes& data) const {
    if (checked(write(fd_, data.data(), data.size())) != data.size()) {
      throw std::runtime_error("short write");
    }
  }

 private:
  static std::size_t checked(ssize_t result) {
    if (result < 0) throw std::system_error(errno, std::generic_category(), "usbtape");
    return static_cast<std::size_t>(result);
  }
  int fd_;
};

void appendNumber(Bytes& bytes, std::uint32_t value) {
  for (int shift = 0; shift < 32; shift += 8) {
    bytes.push_back(static_cast<std::uint8_t>(value >> shift));
  }
}

std::uint32_t numberAt(const Bytes& bytes, std::size_t offset) {
  std::uint32_t value = 0;
  for (std::size_t i = 4; i-- > 0;) value = value << 8 | bytes.at(offset + i);
  return value;
}

// One interface of the class mass storage, SCSI, bulk-only; an endpoint in and one out.
Bytes interfaceDescriptors(std::uint16_t packet) {
  const auto low = static_cast<std::uint8_t>(packet);
  const auto high = static_cast<std::uint8_t>(packet >> 8);
  return {9, 4, 0,    0, 2,   8,    6, 0x50, 0,  // interface
          7, 5, 0x81, 2, low, high, 0,           // bulk in
          7, 5, 0x02, 2, low, high, 0};          // bulk out
}

Bytes descriptors() {
  Bytes body;
  appendNumber(body, FUNCTIONFS_HAS_FS_DESC | FUNCTIONFS_HAS_HS_DESC);
  appendNumber(body, 3);
  appendNumber(body, 3);
  for (const auto packet : {std::uint16_t{64}, std::uint16_t{512}}) {
    const Bytes some = interfaceDescriptors(packet);
    body.insert(body.end(), some.begin(), some.end());
  }
  Bytes all;
  appendNumber(all, FUNCTIONFS_DESCRIPTORS_MAGIC_V2);
  appendNumber(all, static_cast<std::uint32_t>(body.size() + 8));
  all.insert(all.end(), body.begin(), body.end());
  return all;
}

Bytes noStrings() {
  Bytes all;
  for (const std::uint32_t word : {std::uint32_t{FUNCTIONFS_STRINGS_MAGIC}, 16U, 0U, 0U}) {
    appendNumber(all, word);
  }
  return all;
}

// SCSI pads these texts with blanks.
void appendText(Bytes& bytes, std::string text, std::size_t size) {
  text.resize(size, ' ');
  bytes.insert(bytes.end(), text.begin(), text.end());
}

// Standard INQUIRY data (SPC-3 6.4.2): a removable sequential-access device.
Bytes inquiryData(const std::string& vendor, const std::string& product,
                  const std::string& revision) {
  Bytes data{0x01, 0x80, 0x05, 0x02, 31, 0, 0, 0};
  appendText(data, vendor, 8);
  appendText(data, product, 16);
  appendText(data, revision, 4);
  return data;
}

struct Answer {
  bool good = true;
  Bytes data;
};

Answer answer(const Bytes& command, const Bytes& inquiry) {
  const std::uint8_t operation = command.at(15);
  const bool vitalPage = (command.at(16) & 1) != 0;
  if (operation == kInquiry && !vitalPage) return {true, inquiry};
  if (operation == kTestUnitReady) return {};
  // Fixed format: illegal request, invalid operation code.
  if (operation == kRequestSense) return {true, {0x70, 0, 5, 0, 0, 0, 0, 10, 0, 0, 0, 0, 0x20, 0}};
  return {false, {}};
}

// One command: its wrapper, the data, its status. A host gets as many bytes as it asked for, padded
// with zeros, so no endpoint ever has to stall; the residue tells how many of them were padding.
void serveCommand(const File& in, const File& out, const Bytes& inquiry) {
  const Bytes command = out.readUpTo(512);
  if (command.size() != kCommandBlockWrapper) return;
  const std::uint32_t asked = numberAt(command, 8);
  Answer given = answer(command, inquiry);
  const std::size_t size = std::min<std::size_t>(given.data.size(), asked);
  given.data.resize(asked);
  const bool toHost = (command.at(12) & 0x80) != 0;
  if (asked != 0 && toHost) in.writeAll(given.data);
  if (asked != 0 && !toHost) static_cast<void>(out.readUpTo(asked));
  Bytes status{'U', 'S', 'B', 'S'};
  appendNumber(status, numberAt(command, 4));  // the command's tag
  appendNumber(status, static_cast<std::uint32_t>(asked - size));
  status.push_back(given.good ? 0 : 1);
  in.writeAll(status);
}

// A bus reset or a late bind fails the transfer at hand; the next one goes on.
[[noreturn]] void serveCommands(const std::string& folder, const Bytes& inquiry) {
  const File in(folder + "/ep1", O_RDWR);
  const File out(folder + "/ep2", O_RDWR);
  for (;;) {
    try {
      serveCommand(in, out, inquiry);
    } catch (const std::system_error&) {
      std::this_thread::yield();
    }
  }
}

// Control requests of the interface: Get Max LUN has an answer, all others only an acknowledgement.
[[noreturn]] void serveControl(const File& control) {
  for (;;) {
    const Bytes event = control.readUpTo(sizeof(usb_functionfs_event));
    if (event.size() != sizeof(usb_functionfs_event) || event.at(8) != FUNCTIONFS_SETUP) continue;
    if (event.at(1) == kGetMaxLun) {
      control.writeAll({0});
    } else {
      static_cast<void>(control.readUpTo(0));
    }
  }
}

}  // namespace

int main(int argc, char** argv) try {
  const std::vector<std::string> args(argv, argv + argc);
  const std::string& folder = args.at(1);
  const File control(folder + "/ep0", O_RDWR);
  control.writeAll(descriptors());
  control.writeAll(noStrings());
  std::thread(serveCommands, folder, inquiryData(args.at(2), args.at(3), args.at(4))).detach();
  std::cout << "ready" << std::endl;
  serveControl(control);
} catch (const std::exception& error) {
  std::cerr << "usbtape: " << error.what() << '\n';
  return 1;
}
