// SPDX-License-Identifier: Apache-2.0
//
// The texts of MOF files, laid end to end, and places in them.
#pragma once

#include <cstdint>
#include <functional>
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
  using Fill = std::function<void(std::span<char> room)>;

  Source();

  // Lays a file of `size` bytes behind the others; `fill` writes them. Throws SchemaError for more
  // text than any schema has and for what is no UTF-8.
  void add(std::string name, std::size_t size, const Fill& fill);

  std::size_t fileCount() const { return files_.size(); }
  Place begin(std::size_t file) const { return files_[file].begin; }
  Place end(std::size_t file) const;  // a NUL stands there, which belongs to no file
  std::string_view text() const { return text_; }
  std::string_view text(Place at, std::size_t length) const { return text().substr(at, length); }

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
