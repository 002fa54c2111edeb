// SPDX-License-Identifier: Apache-2.0
#include "host/recording/redaction.h"

#include <algorithm>
#include <functional>

#include "host/machine/smbiosparts.h"
#include "host/recording/fruimage.h"
#include "host/recording/identifyingfields.h"
#include "host/recording/knownvalues.h"
#include "host/recording/packedtext.h"
#include "host/recording/pseudonyms.h"

namespace velhost {
namespace {

using NKRXVEL20::TCIMValue;
using NKRXVEL20::host::SimulatedReply;

// What in front of a record says what it is, and holds no values.
constexpr std::size_t kTamberReplyHeader = 3;
constexpr std::size_t kIpmiRequestHeader = 9;
constexpr std::size_t kIpmiReplyHeader = 5;

// A shorter number's digits could stand anywhere.
constexpr std::size_t kShortestNumber = 4;

// Bytes that may hold a value, and the fields of which it is known that they do.
struct Place {
  std::span<unsigned char> bytes;
  std::size_t header;  // this many bytes stay
  IdentifyingFields fields;
};

using Visit = std::function<void(const Place&)>;

// How the texts of a field are read and put back; null: they stand there as they are.
struct Packing {
  Bytes (*read)(std::span<const unsigned char> field);
  void (*write)(const Bytes& text, std::span<unsigned char> field);
};

const Packing* packingOf(Notation notation) {
  static constexpr Packing kWide{readWide, writeWide};
  static constexpr Packing kBcdPlus{readBcdPlus, writeBcdPlus};
  static constexpr Packing kSixBit{readSixBit, writeSixBit};
  switch (notation) {
    case Notation::kWideText:
      return &kWide;
    case Notation::kBcdPlus:
      return &kBcdPlus;
    case Notation::kSixBit:
      return &kSixBit;
    default:
      return nullptr;
  }
}

void visitText(std::string& text, IdentifyingFields fields, const Visit& visit) {
  Bytes bytes(text.begin(), text.end());
  visit({bytes, 0, std::move(fields)});
  text.assign(bytes.begin(), bytes.end());
}

void visitProperty(std::string_view name, TCIMValue& value, const Visit& visit) {
  if (value.GetType() != NKRXVEL20::ECIMType::kString) return;
  std::string text = value.ToString();
  visitText(text, fieldsOfProperty(name, text), visit);
  value = TCIMValue(text);
}

void visitReplies(std::vector<SimulatedReply>& replies, std::size_t header, const Visit& visit) {
  for (SimulatedReply& reply : replies) visit({reply.bytes, header, {}});
}

// What a FRU device holds does not end where a reply does.
void visitFruDevices(NKRXVEL20::host::SimulatedSP& sp, const Visit& visit) {
  for (FruImage& image : fruImages(sp)) {
    visit({image.bytes(), 0, fieldsOfFru(image.bytes())});
    image.writeBack();
  }
}

void visitIpmiCommands(NKRXVEL20::host::SimulatedSP& sp, const Visit& visit) {
  visitFruDevices(sp, visit);
  for (auto& entry : sp.ipmiCommands) {
    visit({entry.request, kIpmiRequestHeader, {}});
    if (isReadOfFru(entry)) continue;
    for (SimulatedReply& reply : entry.replies) {
      visit({reply.bytes, kIpmiReplyHeader, fieldsOfIpmiReply(entry.request, reply.bytes.size())});
    }
  }
}

void visitSP(NKRXVEL20::host::SimulatedSP& sp, const Visit& visit) {
  for (auto& entry : sp.dotCommands) {
    if (entry.data) visit({*entry.data, 0, {}});
    for (auto& reply : entry.replies) {
      visit({reply.bytes, 0, fieldsOfReply(entry.command, reply.bytes.size())});
    }
  }
  for (auto& entry : sp.tamberCommands) {
    if (entry.data) visit({*entry.data, 0, {}});
    visitReplies(entry.replies, kTamberReplyHeader, visit);
  }
  visitIpmiCommands(sp, visit);
}

void visitPlaces(MachineFile& machine, const Visit& visit) {
  if (machine.smbios) {
    for (auto& structure : machine.smbios->structures) {
      visit({structure.bytes, kSmbiosHeaderSize, fieldsOfStructure(structure.bytes)});
    }
  }
  visitSP(machine.sp, visit);
  for (Companion& companion : machine.instances) {
    for (auto& [name, value] : companion.properties) visitProperty(name, value, visit);
  }
  visitText(machine.name, {}, visit);
  visitText(machine.description, {}, visit);
}

class Redaction {
 public:
  // First every field's values get their pseudonyms.
  void learn(const Place& place) {
    for (const IdentifyingField& field : place.fields) {
      const auto bytes = place.bytes.subspan(field.offset, field.size);
      if (field.notation == Notation::kNumber) {
        learnNumber(bytes);
      } else {
        const Packing* const packing = packingOf(field.notation);
        Bytes text = packing == nullptr ? Bytes(bytes.begin(), bytes.end()) : packing->read(bytes);
        learnTexts(text);
      }
    }
  }

  void endOfLearning() { known_.seal(); }

  // Then the fields are replaced, and what stands between them is searched.
  void replace(Place place) {
    std::ranges::sort(place.fields, {}, &IdentifyingField::offset);
    std::size_t at = std::min(place.header, place.bytes.size());
    for (const IdentifyingField& field : place.fields) {
      if (field.offset > at) known_.replaceIn(place.bytes.subspan(at, field.offset - at));
      replaceField(place.bytes.subspan(field.offset, field.size), field.notation);
      at = std::max(at, field.offset + field.size);
    }
    known_.replaceIn(place.bytes.subspan(at));
  }

 private:
  void learnTexts(std::span<unsigned char> field) {
    for (const auto text : textsIn(field)) {
      const std::string value(text.begin(), text.end());
      known_.add(value, pseudonyms_.of(value));
    }
  }

  void learnNumber(std::span<const unsigned char> field) {
    if (!isNumber(field)) return;
    const std::string digits = hexOfBytes(field);
    const std::string& pseudonym = pseudonyms_.of(digits);
    if (field.size() >= kShortestNumber) known_.add(digits, pseudonym);
  }

  void replaceField(std::span<unsigned char> field, Notation notation) {
    if (const Packing* const packing = packingOf(notation)) {
      Bytes text = packing->read(field);
      pseudonyms_.replaceText(text);
      packing->write(text, field);
    } else if (notation == Notation::kNumber) {
      pseudonyms_.replaceBytes(field);
    } else {
      pseudonyms_.replaceText(field);
    }
  }

  Pseudonyms pseudonyms_;
  KnownValues known_;
};

}  // namespace

void redact(MachineFile& machine) {
  Redaction redaction;
  visitPlaces(machine, [&](const Place& place) { redaction.learn(place); });
  redaction.endOfLearning();
  visitPlaces(machine, [&](const Place& place) { redaction.replace(place); });
}

}  // namespace velhost
