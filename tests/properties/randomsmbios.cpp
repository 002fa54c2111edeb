// SPDX-License-Identifier: Apache-2.0
#include "tests/properties/randomsmbios.h"

#include <algorithm>
#include <iterator>

namespace velhost::properties {
namespace {

namespace gen = rc::gen;

constexpr std::size_t kHeaderSize = 4;

enum class Holds { kString, kSerial, kUuid, kDate, kMemorySize, kSmallNumber };

struct Field {
  std::size_t offset;
  Holds holds;
};

struct Layout {
  int type;
  std::size_t size;  // of the formatted area, as DSP0134 3.7 has it
  std::vector<Field> fields;
};

// By DSP0134: the strings, and the fields of which a collector takes few values only.
const std::vector<Layout>& layouts() {
  using enum Holds;
  static const std::vector<Layout> kLayouts = {
      {0, 0x1A, {{0x04, kString}, {0x05, kString}, {0x08, kDate}}},
      {1,
       0x1B,
       {{0x04, kString},
        {0x05, kString},
        {0x06, kString},
        {0x07, kSerial},
        {0x08, kUuid},
        {0x19, kString},
        {0x1A, kString}}},
      {17,
       0x5C,
       {{0x0C, kMemorySize},
        {0x0E, kSmallNumber},
        {0x10, kString},
        {0x11, kString},
        {0x12, kSmallNumber},
        {0x17, kString},
        {0x18, kSerial},
        {0x19, kSerial},
        {0x1A, kString}}},
      {2,
       0x0F,
       {{0x04, kString}, {0x05, kString}, {0x06, kString}, {0x07, kSerial}, {0x08, kSerial}}},
      {3,
       0x15,
       {{0x04, kString}, {0x05, kSmallNumber}, {0x06, kString}, {0x07, kSerial}, {0x08, kSerial}}},
      {4, 0x30, {{0x04, kString}, {0x07, kString}, {0x20, kSerial}, {0x21, kSerial}}},
      {22, 0x1A, {{0x04, kString}, {0x07, kSerial}}},
      {39, 0x16, {{0x05, kString}, {0x08, kSerial}, {0x09, kSerial}}},
      {7, 0x1B, {{0x04, kString}}},
      {127, kHeaderSize, {}},
  };
  return kLayouts;
}

// A structure as it grows: the area without its header, the strings of its set.
class Structure {
 public:
  explicit Structure(const Layout& layout)
      : type_(layout.type), area_(someBytes(layout.size - kHeaderSize)) {
    for (unsigned char& byte : area_)
      byte = byte == 0xFF ? 0xFE : byte;  // else often a string's number
  }

  void put(const Field& field, const Identities& identities);
  void cutShort();
  Json described() const;
  Json raw() const;

 private:
  unsigned char& at(std::size_t offset) { return area_.at(offset - kHeaderSize); }

  unsigned char numberOf(const std::string& text) {
    if (oneIn(6)) return static_cast<unsigned char>(numberUpTo(12));  // none, or another one
    strings_.push_back(text);
    return static_cast<unsigned char>(strings_.size());
  }

  int type_;
  Bytes area_;
  std::vector<std::string> strings_;
};

void Structure::put(const Field& field, const Identities& identities) {
  switch (field.holds) {
    case Holds::kUuid:
      std::ranges::copy(identities.uuid, &at(field.offset));
      break;
    case Holds::kMemorySize:
      at(field.offset) = oneOf<unsigned char>({0x00, 0x10, 0xFF});
      at(field.offset + 1) = oneOf<unsigned char>({0x00, 0x00, 0x20, 0x7F, 0x80, 0xFF});
      break;
    case Holds::kSmallNumber:
      at(field.offset) = static_cast<unsigned char>(numberUpTo(0x40));
      break;
    case Holds::kSerial:
      at(field.offset) = numberOf(oneIn(8) ? oneOf<std::string>({" ", "Not Specified", "None"})
                                           : oneSerial(identities));
      break;
    default:
      at(field.offset) = numberOf(someText(identities));
  }
}

void Structure::cutShort() {
  area_.resize(static_cast<std::size_t>(numberUpTo(static_cast<int>(area_.size()))));
}

Json Structure::described() const {
  return {{"type", type_}, {"data", bytesField(area_)}, {"strings", strings_}};
}

// Header, area and set as they stand, cut somewhere or with bytes changed.
Json Structure::raw() const {
  Bytes bytes = {static_cast<unsigned char>(type_),
                 static_cast<unsigned char>(kHeaderSize + area_.size()), 0x07, 0x00};
  std::ranges::copy(area_, std::back_inserter(bytes));
  for (const std::string& text : strings_) {
    std::ranges::copy(bytesOf(text), std::back_inserter(bytes));
    bytes.push_back(oneIn(9) ? 0xFE : 0x00);
  }
  bytes.push_back(0);
  if (oneIn(2)) bytes[1] = static_cast<unsigned char>(numberUpTo(0xFF));
  if (oneIn(2)) bytes.resize(static_cast<std::size_t>(numberUpTo(static_cast<int>(bytes.size()))));
  return {{"raw", bytesField(bytes)}};
}

Json knownStructure(const Identities& identities) {
  constexpr std::size_t kRead = 3;  // types 0, 1 and 17 are most of what collectors read
  const auto all = static_cast<int>((oneIn(2) ? layouts().size() : kRead) - 1);
  const Layout& layout = layouts()[static_cast<std::size_t>(numberUpTo(all))];
  Structure structure(layout);
  for (const Field& field : layout.fields) structure.put(field, identities);
  if (oneIn(6)) structure.cutShort();
  return oneIn(10) ? structure.raw() : structure.described();
}

Json oemStrings(const Identities& identities) {
  const auto strings =
      some<std::string>(6, gen::exec([identities] { return someText(identities); }));
  const int count = oneIn(6) ? numberUpTo(8) : static_cast<int>(strings.size());
  return {{"type", 11},
          {"data", bytesField({static_cast<unsigned char>(count)})},
          {"strings", strings}};
}

Json foreignStructure(const Identities& identities) {
  return {
      {"type", oneOf({221, 128, 42, 14, 255})},
      {"handle", numberUpTo(0xFFFF)},
      {"data", bytesField(oneIn(2) ? bytesAround(identities)
                                   : someBytes(static_cast<std::size_t>(numberUpTo(40))))},
      {"strings", some<std::string>(3, gen::exec([identities] { return someText(identities); }))}};
}

Json someStructure(const Identities& identities) {
  Json structure;
  switch (numberUpTo(5)) {
    case 5:
      structure = foreignStructure(identities);
      break;
    case 4:
      structure = oemStrings(identities);
      break;
    default:
      structure = knownStructure(identities);
  }
  if (oneIn(25)) structure["status"] = oneOf({3, 5, 7});
  return structure;
}

}  // namespace

Json someSmbios(const Identities& identities) {
  Json section = {
      {"structures", some<Json>(9, gen::exec([identities] { return someStructure(identities); }))}};
  if (oneIn(20)) section["load_status"] = oneOf({0, 2, -1});
  if (oneIn(20)) section["end_status"] = oneOf({5, 3, 7});
  return section;
}

}  // namespace velhost::properties
