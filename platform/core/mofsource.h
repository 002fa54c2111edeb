// SPDX-License-Identifier: Apache-2.0
//
// The texts of MOF files, laid end to end, and places in them.
#pragma once

#include <cstdint>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "velhost/schema.h"

namespace NKRXVEL20::mof {

using Place = std::uint32_t;  // offset in the texts laid end to end

// What is wrong, and where. Comes out of the reader as a SchemaError with the file, line and column.
class Fault : public std::runtime_error {
 public:
  Fault(Place at, const std::string& what) : std::runtime_error(what), at_(at) {}

  Place at() const { return at_; }

 private:
  Place at_;
};

class Source {
 public:
  // Throws SchemaError for more text than any schema has and for what is no UTF-8.
  explicit Source(std::span<const host::SchemaFile> files);

  std::size_t fileCount() const { return files_.size(); }
  Place begin(std::size_t file) const { return files_[file].begin; }
  Place end(std::size_t file) const;  // a line feed stands there, which belongs to no file
  std::string_view text() const { return text_; }

  // "FILE:LINE:COLUMN", both from 1, the column in characters.
  std::string where(Place at) const;

 private:
  struct File {
    std::string name;
    Place begin;
  };

  std::string text_;
  std::vector<File> files_;
};

}  // namespace NKRXVEL20::mof
