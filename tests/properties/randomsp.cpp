// SPDX-License-Identifier: Apache-2.0
#include "tests/properties/randomsp.h"

#include <algorithm>
#include <iterator>
#include <limits>

#include "tests/properties/randombmc.h"

namespace velhost::properties {
namespace {

namespace gen = rc::gen;

constexpr int kMostSPs = 3;

// A field of a reply that is more than any bytes.
enum class Holds { kSerial, kNumber, kDate };

struct Field {
  Holds holds;
  std::size_t offset;
  std::size_t size;
};

struct Conversation {
  const char* command;
  const char* data;  // null: none is sent
  std::size_t size;  // of the record
  std::vector<Field> fields;
};

// What the firmware collector asks; the numbers of components run on from SP to SP.
const std::vector<Conversation>& conversations() {
  using enum Holds;
  static const std::vector<Conversation> kConversations = {
      {"04 03 05 06 01", nullptr, 40, {{kDate, 23, 8}}},
      {"04 03 05 06 02", nullptr, 40, {{kDate, 23, 8}}},
      {"04 03 05 07", nullptr, 1, {}},
      {"04 03 05 01 01", nullptr, 69, {{kSerial, 22, 7}, {kSerial, 29, 11}, {kDate, 48, 8}}},
      {"04 03 05 01", nullptr, 69, {{kSerial, 22, 7}, {kSerial, 29, 11}}},
      {"04 03 05 0B 01", "00 00 7F 00", 128, {{kNumber, 95, 4}}},
      {"04 03 05 0B 02", "00 00 7F 00", 128, {{kNumber, 95, 4}}},
      {"04 03 05 0B 03", "00 00 7F 00", 128, {{kNumber, 95, 4}}},
      {"04 03 05 0C 01", "00 00 80 00", 55, {{kSerial, 38, 6}}},
      {"04 03 05 0C 02", "00 00 80 00", 55, {{kSerial, 38, 6}}},
      {"04 03 05 0D 01", "00 00 81 00", 55, {{kSerial, 38, 6}}},
      {"04 03 05 0D 01", "00 00 80 00", 55, {{kSerial, 38, 6}}},
      {"04 03 05 03 01", "00 00 A0 00", 55, {{kSerial, 38, 6}}},
      {"04 03 05 0E 01", "00 00 70 00", 55, {{kSerial, 38, 6}}},
      {"04 03 05 0E 02", "00 00 70 00", 55, {{kSerial, 38, 6}}},
      {"04 03 05 02 01", "10 00 10 00", 55, {{kSerial, 0, 6}}},
      {"", nullptr, 12, {}},
  };
  return kConversations;
}

Bytes valueOf(const Field& field, const Identities& identities) {
  if (field.holds == Holds::kNumber) return identities.number;
  if (field.holds == Holds::kSerial) return serialField(identities, field.size);
  Bytes date = bytesOf(someText(identities));
  date.resize(field.size);
  return date;
}

Bytes someRecord(const Conversation& conversation, const Identities& identities) {
  Bytes record = someBytes(conversation.size);
  for (const Field& field : conversation.fields) {
    std::ranges::copy(valueOf(field, identities),
                      record.begin() + static_cast<std::ptrdiff_t>(field.offset));
  }
  if (oneIn(6))
    record.resize(static_cast<std::size_t>(numberUpTo(static_cast<int>(record.size()))));
  if (oneIn(6)) std::ranges::copy(bytesAround(identities), std::back_inserter(record));
  if (oneIn(20)) std::ranges::fill(record, static_cast<unsigned char>(oneOf({0x00, 0xFF, 0x20})));
  return record;
}

// One reply for ever, several in turn, or none; sometimes with another length than the true one.
template <class Reply>
void addAnswer(Json& entry, Reply reply) {
  if (oneIn(12)) {
    entry["fail"] = true;
  } else if (oneIn(10)) {
    entry["replies"] =
        Json::array({oneIn(2) ? Json("fail") : bytesField(reply()), bytesField(reply())});
  } else {
    entry["reply"] = bytesField(reply());
  }
  if (oneIn(20)) {
    entry["length"] = oneOf(
        {0, 1, -1, 300, 3000, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()});
  }
}

Json dotCommand(const Conversation& conversation, const Identities& identities) {
  Json entry = {{"sp", numberUpTo(kMostSPs - 1)}, {"command", conversation.command}};
  if (conversation.data != nullptr && mostly(8)) entry["data"] = conversation.data;
  addAnswer(entry, [&] { return someRecord(conversation, identities); });
  return entry;
}

// Each conversation with each SP, but for some; before them some in any order.
Json dotCommands(const Identities& identities, int count) {
  Json entries = some<Json>(3, gen::exec([identities] {
                              return dotCommand(*gen::elementOf(conversations()), identities);
                            }));
  for (int sp = 0; sp < count; ++sp) {
    for (const Conversation& conversation : conversations()) {
      Json entry = apart([=] {
        const bool isThere = mostly(conversation.command[0] == '\0' ? 2 : 8);
        return isThere ? dotCommand(conversation, identities) : Json();
      });
      if (entry.is_null()) continue;
      entry["sp"] = sp;
      entries.push_back(std::move(entry));
    }
  }
  return entries;
}

Json tamberCommand(const Identities& identities) {
  Json entry = {{"command", "01 F1 F1 0F"}};
  if (oneIn(6)) entry["data"] = oneOf({"", "00"});
  addAnswer(entry, [&] {
    Bytes reply = {0, 0, 0};
    std::ranges::copy(bytesOf(someText(identities)), std::back_inserter(reply));
    return reply;
  });
  return entry;
}

Json components() {
  Json counts = Json::object();
  for (const char* const component : {"04 03 05 0B", "04 03 05 0C", "04 03 05 0E", "0403050D"}) {
    if (mostly(5)) counts[component] = oneIn(20) ? -1 : numberUpTo(3);
  }
  return counts;
}

void addFacts(Json& sp) {
  for (const char* const fact :
       {"bmc", "ipmi_drivers", "integrated_bmc", "twg_stop", "tvm_library"}) {
    if (oneIn(4)) sp[fact] = true;
  }
  if (oneIn(12)) sp["answers"] = false;
  if (oneIn(12)) sp["command_list"] = false;
  if (oneIn(3)) sp["bmc_nodes"] = numberUpTo(3);
  sp["components"] = components();
}

}  // namespace

Json someSP(const Identities& identities) {
  Json sp = {{"kind", oneOf({"dot-command", "dot-command", "tamber", "none"})}};
  const int count = oneIn(25) ? -1 : numberUpTo(kMostSPs);
  if (mostly(5)) sp["count"] = count;
  addFacts(sp);
  if (sp["kind"] == "dot-command") {
    sp["dot_commands"] = apart([=] { return dotCommands(identities, std::max(count, 1)); });
  }
  if (sp["kind"] == "tamber" && mostly(8)) {
    sp["tamber_commands"] = Json::array({tamberCommand(identities)});
  }
  if (mostly(3)) sp["ipmi_commands"] = apart([=] { return someBmc(identities); });
  return sp;
}

}  // namespace velhost::properties
