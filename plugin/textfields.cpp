// SPDX-License-Identifier: Apache-2.0
#include "plugin/textfields.h"

namespace spfirmwarevpd {

std::string cutText(RecordBytes record, std::size_t offset, std::size_t length) {
  const std::size_t begin = std::min(offset, record.size());
  const RecordBytes field = record.subspan(begin, std::min(length, record.size() - begin));
  return {field.begin(), std::ranges::find(field, 0)};
}

std::string orSpace(std::string text, Empty empty) {
  if (text.empty() && empty == Empty::kSpace) return " ";
  return text;
}

bool setTextFields(const collector::InstanceHandle& instance, std::span<const TextField> fields,
                   RecordBytes record) {
  return std::ranges::all_of(fields, [&](const TextField& field) {
    const std::string text = orSpace(cutText(record, field.offset, field.length), field.empty);
    return collector::setProperty(instance, field.property, NKRXVEL20::TCIMValue(text),
                                  field.failureText);
  });
}

}  // namespace spfirmwarevpd
