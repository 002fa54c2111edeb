// SPDX-License-Identifier: Apache-2.0
#include "tests/properties/randombmc.h"

#include <algorithm>
#include <iterator>
#include <numeric>
#include <string_view>

namespace velhost::properties {
namespace {

namespace gen = rc::gen;

constexpr unsigned char kApplication = 0x06;
constexpr unsigned char kStorage = 0x0A;

void append(Bytes& bytes, const Bytes& more) { std::ranges::copy(more, std::back_inserter(bytes)); }

unsigned char low(std::size_t number) { return static_cast<unsigned char>(number & 0xFFU); }

unsigned char high(std::size_t number) { return low(number >> 8U); }

// ---------------------------------------------------------------------------------------------
// Conversations: a request matches by what it begins with, so one entry answers any count.

Bytes requestOf(unsigned char function, unsigned char command, const Bytes& data,
                std::size_t wholeSize) {
  Bytes request = {0x01, 0x20, function, 0x00, command, low(wholeSize), 0, 0, 0};
  append(request, data);
  return request;
}

Json answered(const Bytes& request, unsigned char completion, const Bytes& data) {
  Bytes reply(request.begin(), request.begin() + 4);
  reply[2] = static_cast<unsigned char>(reply[2] + 4);
  reply.push_back(completion);
  append(reply, data);
  Json entry = {{"request", hexOf(request)}, {"reply", bytesField(reply)}};
  if (oneIn(60)) entry["length"] = oneOf({0, 3, 5, 300, -1});
  return entry;
}

// Sometimes the BMC has another answer: busy, unknown, not there, or none at all.
Json answeredMostly(const Bytes& request, const Bytes& data) {
  if (oneIn(80)) return {{"request", hexOf(request)}, {"fail", true}};
  if (oneIn(30)) return answered(request, oneOf<unsigned char>({0xC1, 0xC3, 0x81, 0xCB, 0xFF}), {});
  return answered(request, 0x00, data);
}

// ---------------------------------------------------------------------------------------------
// FRU information (the FRU definition 1.0 rev. 1.3, 8 to 13)

Bytes sixBit(const std::string& text) {
  Bytes packed((text.size() * 6 + 7) / 8);
  for (std::size_t bit = 0; bit < text.size() * 6; ++bit) {
    const auto code = static_cast<unsigned>(static_cast<unsigned char>(text[bit / 6])) - 0x20U;
    const unsigned value = code >> bit % 6 & 1U;
    packed[bit / 8] = static_cast<unsigned char>(packed[bit / 8] | value << bit % 8);
  }
  return packed;
}

Bytes bcdPlus(std::string text) {
  static constexpr std::string_view kCharacters = "0123456789 -.:,_";
  if (text.size() % 2 != 0) text += ' ';
  Bytes packed;
  for (std::size_t at = 0; at < text.size(); at += 2) {
    packed.push_back(static_cast<unsigned char>(kCharacters.find(text[at]) << 4U |
                                                kCharacters.find(text[at + 1])));
  }
  return packed;
}

Bytes utf16(const std::string& ascii) {
  Bytes bytes;
  for (const char c : ascii) append(bytes, {static_cast<unsigned char>(c), 0});
  return bytes;
}

bool isWritable(const std::string& text, char first, char last) {
  return std::ranges::all_of(text, [=](char c) { return c >= first && c <= last; });
}

Bytes field(unsigned char encoding, Bytes bytes) {
  constexpr std::size_t kMost = 0x3F;
  bytes.resize(std::min(bytes.size(), kMost));
  if (encoding == 3 && bytes.size() == 1) bytes.push_back(' ');  // one byte of text ends the fields
  Bytes whole = {static_cast<unsigned char>(std::size_t{encoding} << 6U | bytes.size())};
  append(whole, bytes);
  return whole;
}

// A text in one of the encodings that have its characters.
Bytes textField(const std::string& text, bool isEnglish) {
  const int encoding = numberUpTo(3);
  if (encoding == 1 && isWritable(text, '0', '9')) return field(1, bcdPlus(text));
  if (encoding == 2 && isWritable(text, ' ', '_')) return field(2, sixBit(text));
  if (encoding == 3 && oneIn(3))
    return field(0, someBytes(static_cast<std::size_t>(numberUpTo(6))));
  return field(3, isEnglish ? bytesOf(text) : utf16(text));
}

// The last byte makes the sum of all zero.
Bytes checked(Bytes bytes) {
  const unsigned sum = std::accumulate(bytes.begin(), bytes.end(), 0U);
  bytes.push_back(low(0x100U - (sum & 0xFFU)));
  if (oneIn(25)) ++bytes.back();
  return bytes;
}

struct AreaKind {
  Bytes start;  // between the length and the first field, the language first
  std::vector<bool> isSerial;
};

const std::vector<AreaKind>& areaKinds() {
  static const std::vector<AreaKind> kKinds = {
      {{0x17}, {false, true}},
      {{0x19, 0x2D, 0xBA, 0xE0}, {false, false, true, false, false}},
      {{0x19}, {false, false, false, false, true, true, false}},
  };
  return kKinds;
}

Bytes fruArea(const AreaKind& kind, const Identities& identities) {
  Bytes area = {0x01, 0x00};
  append(area, kind.start);
  const bool isGerman = oneIn(6) && &kind != areaKinds().data();
  if (isGerman) area[2] = 0x16;
  for (const bool isSerial : kind.isSerial) {
    append(area, apart([=] {
             if (!mostly(6)) return Bytes{0xC0};
             const std::string text = isSerial ? oneSerial(identities) : someText(identities);
             return textField(text, !isGerman);
           }));
  }
  if (oneIn(4)) append(area, field(3, bytesAround(identities)));  // a custom field
  area.push_back(oneIn(30) ? 0xC0 : 0xC1);
  area.resize((area.size() + 1 + 7) / 8 * 8 - 1);
  area[1] = low((area.size() + 1) / 8 + (oneIn(40) ? 5 : 0));
  if (oneIn(40)) area[0] = 0x02;
  return checked(std::move(area));
}

Bytes fruDevice(const Identities& identities) {
  Bytes header = {0x01, 0x00, 0x00, 0x00, 0x00, 0x00, 0x00};
  Bytes areas;
  for (std::size_t kind = 0; kind < areaKinds().size(); ++kind) {
    if (!mostly(3)) continue;
    header[2 + kind] = low((8 + areas.size()) / 8);
    append(areas, apart([=] { return fruArea(areaKinds()[kind], identities); }));
  }
  Bytes device = checked(std::move(header));
  append(device, areas);
  if (oneIn(4)) device.resize(device.size() + 16, 0xFF);
  if (oneIn(40)) device.resize(device.size() / 2);
  return device;
}

// Each read gets so many bytes at most, as from a BMC with a small buffer.
void addFru(unsigned char number, const Identities& identities, Json& entries) {
  constexpr std::size_t kMostRead = 24;
  const Bytes device = apart([=] { return fruDevice(identities); });
  const std::size_t word = oneIn(5) ? 2 : 1;
  entries.push_back(answeredMostly(requestOf(kStorage, 0x10, {number}, 1),
                                   {low(device.size()), high(device.size()), low(word - 1)}));
  for (std::size_t at = 0; at < device.size(); at += 8) {
    const Bytes part(
        device.begin() + static_cast<std::ptrdiff_t>(at),
        device.begin() + static_cast<std::ptrdiff_t>(std::min(at + kMostRead, device.size())));
    Bytes data = {low(part.size() / word)};
    append(data, part);
    entries.push_back(answered(
        requestOf(kStorage, 0x11, {number, low(at / word), high(at / word)}, 4), 0x00, data));
  }
}

// ---------------------------------------------------------------------------------------------
// The repository (IPMI 2.0, 43)

Bytes record(std::size_t id, unsigned char kind, const Bytes& body) {
  Bytes whole = {low(id), high(id), 0x51, kind, low(body.size())};
  append(whole, body);
  return whole;
}

Bytes name(const Identities& identities) {
  constexpr std::size_t kMost = 16;
  std::string text = someText(identities);
  text.resize(std::min(text.size(), kMost));
  if (oneIn(3) && isWritable(text, ' ', '_')) {
    Bytes packed = sixBit(text);
    packed.insert(packed.begin(), static_cast<unsigned char>(0x80 | packed.size()));
    return packed;
  }
  Bytes whole = {static_cast<unsigned char>(0xC0 | text.size())};
  append(whole, bytesOf(text));
  return whole;
}

// A FRU device's, mostly of a logical device of the BMC itself.
Bytes fruLocator(std::size_t id, unsigned char number, const Identities& identities) {
  Bytes body = {static_cast<unsigned char>(oneIn(15) ? 0xC0 : 0x20),
                number,
                static_cast<unsigned char>(oneIn(15) ? 0x00 : 0x80),
                0x00,
                0x00,
                0x10,
                oneOf<unsigned char>({0x02, 0x02, 0x02, 0x00, 0x01}),
                static_cast<unsigned char>(numberUpTo(56)),
                static_cast<unsigned char>(1 + numberUpTo(3)),
                0x00};
  append(body, name(identities));
  return record(id, 0x11, body);
}

Bytes controllerLocator(std::size_t id, const Identities& identities) {
  Bytes body = {0x20, 0x00, 0x00, static_cast<unsigned char>(oneIn(5) ? 0x00 : 0xBF), 0, 0, 0,
                7,    1,    0};
  append(body, name(identities));
  return record(id, 0x12, body);
}

void addRepository(const std::vector<unsigned char>& frus, const Identities& identities,
                   Json& entries) {
  std::vector<Bytes> records;
  if (mostly(3)) records.push_back(controllerLocator(1, identities));
  for (const unsigned char number : frus) {
    if (oneIn(4)) records.push_back(record(records.size() + 1, 0x01, someBytes(12)));
    if (mostly(8)) records.push_back(fruLocator(records.size() + 1, number, identities));
  }
  for (std::size_t i = 0; i < records.size(); ++i) {
    const std::size_t id = i == 0 ? 0 : i + 1;  // 0: the first one
    const std::size_t next = i + 1 == records.size() ? (oneIn(20) ? 1 : 0xFFFF) : i + 2;
    Bytes data = {low(next), high(next)};
    append(data, records[i]);
    entries.push_back(
        answeredMostly(requestOf(kStorage, 0x23, {0, 0, low(id), high(id), 0, 0xFF}, 6), data));
  }
}

// ---------------------------------------------------------------------------------------------
// The controller and the cKVM

Bytes deviceId() {
  Bytes said = someBytes(15);
  if (mostly(5)) said[5] = static_cast<unsigned char>(said[5] | 0x02U);  // has a repository
  if (oneIn(8)) said.resize(static_cast<std::size_t>(numberUpTo(14)));
  return said;
}

Json ckvm(const Identities& identities) {
  const Bytes request = {0x01, 0x20, 0x06, 0x00, 0x52};
  Bytes data = {0x00, 0x00, 0x00, static_cast<unsigned char>(oneIn(10) ? 0x01 : 0x00)};
  append(data, bytesOf(someText(identities)));
  return answeredMostly(request, data);
}

}  // namespace

Json someBmc(const Identities& identities) {
  Json entries = Json::array();
  if (mostly(10)) {
    entries.push_back(answeredMostly(requestOf(kApplication, 0x01, {}, 0), deviceId()));
  }
  if (mostly(4)) {
    const Bytes guid =
        oneIn(8) ? Bytes(16, static_cast<unsigned char>(oneOf({0x00, 0xFF}))) : identities.uuid;
    entries.push_back(answeredMostly(requestOf(kApplication, 0x08, {}, 0), guid));
  }
  std::vector<unsigned char> frus;
  for (const unsigned char number : Bytes{0, 1, 2, 0x20}) {
    if (mostly(2)) frus.push_back(number);
  }
  addRepository(frus, identities, entries);
  for (const unsigned char number : frus) {
    if (mostly(10)) addFru(number, identities, entries);
  }
  if (mostly(3)) entries.push_back(ckvm(identities));
  return entries;
}

}  // namespace velhost::properties
