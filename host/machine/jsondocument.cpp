// SPDX-License-Identifier: Apache-2.0
#include "host/machine/jsondocument.h"

#include <algorithm>
#include <set>
#include <vector>

#include "host/text/utf8.h"

namespace velhost {
namespace {

constexpr std::size_t kLongestKey = 60;     // that a complaint shows
constexpr std::size_t kLongestWords = 250;  // of the parser's, which quote the document

// Made visible here already: what() ends at a zero byte.
std::string pointerToken(std::string_view key) {
  std::string token = "/";
  for (const char c : visible(shortened(key, kLongestKey))) {
    if (c == '~') {
      token += "~0";
    } else if (c == '/') {
      token += "~1";
    } else {
      token += c;
    }
  }
  return token;
}

std::string complaint(const std::string& pointer, const std::string& what) {
  return " " + (pointer.empty() ? "/" : pointer) + ": " + visible(what);
}

// The parser's words without the prefix of its library, "[NAME] ", and its own place.
std::string parserWords(const nlohmann::detail::exception& error) {
  const std::string what = error.what();
  const auto place = what.find(": syntax error");
  return what.substr((place != std::string::npos ? place : what.find("] ")) + 2);
}

// Builds the document while it is parsed. The library's own builder drops the first of two equal
// keys without a word and does not say where a number is too large.
class DocumentBuilder : public nlohmann::json_sax<Json> {
 public:
  DocumentBuilder(std::string_view text, std::size_t mostValues)
      : text_(text), mostValues_(mostValues) {}

  Json take() { return std::move(root_); }

  bool null() override { return add(nullptr); }
  bool boolean(bool value) override { return add(value); }
  bool number_integer(number_integer_t value) override { return add(value); }
  bool number_unsigned(number_unsigned_t value) override { return add(value); }
  bool number_float(number_float_t value, const string_t& /*digits*/) override {
    return add(value);
  }
  bool string(string_t& value) override { return add(std::move(value)); }
  bool binary(binary_t& /*value*/) override { return false; }  // JSON texts have none
  bool start_object(std::size_t /*size*/) override { return open(Json::object()); }
  bool end_object() override { return close(); }
  bool start_array(std::size_t /*size*/) override { return open(Json::array()); }
  bool end_array() override { return close(); }

  bool key(string_t& name) override {
    Frame& frame = open_.back();
    frame.key = std::move(name);
    if (!frame.keys.insert(frame.key).second) fail("this key is given twice");
    return true;
  }

  // The position counts from 1.
  bool parse_error(std::size_t position, const std::string& /*token*/,
                   const nlohmann::detail::exception& error) override {
    const auto before = text_.substr(0, std::min(position - 1, text_.size()));
    const auto line = std::count(before.begin(), before.end(), '\n') + 1;
    const auto column = before.size() - (before.rfind('\n') + 1) + 1;
    throw DocumentError(std::to_string(line) + ":" + std::to_string(column) + ": " +
                        shortened(parserWords(error), kLongestWords));
  }

 private:
  struct Frame {
    Json* value;      // stays where it is while it is open: its parent gets no more members
    std::string key;  // of the member that is being read
    std::set<std::string>
        keys{};  // of all members so far: looking through them would take too long
  };

  [[noreturn]] void fail(const std::string& what) const {
    throw DocumentError(complaint(pointer(), what));
  }

  template <class Value>
  bool add(Value&& value) {
    place(Json(std::forward<Value>(value)));
    return true;
  }

  bool open(Json container) {
    Json* const placed = place(std::move(container));
    if (open_.size() == kMostLevels) {
      fail("lies deeper than " + std::to_string(kMostLevels) + " levels");
    }
    open_.push_back({placed, {}});
    return true;
  }

  bool close() {
    open_.pop_back();
    return true;
  }

  // Counted when it is in its place, which the complaint names.
  Json* place(Json value) {
    Json* const placed = put(std::move(value));
    if (++values_ > mostValues_) {
      fail("the file has more than " + std::to_string(mostValues_) + " values");
    }
    return placed;
  }

  Json* put(Json value) {
    if (open_.empty()) return &(root_ = std::move(value));
    Frame& frame = open_.back();
    if (frame.value->is_array()) {
      frame.value->push_back(std::move(value));
      return &frame.value->back();
    }
    // The vector behind the object: key() has looked for an equal key already.
    auto& members = frame.value->get_ref<Json::object_t&>();
    return &members.Container::emplace_back(frame.key, std::move(value)).second;
  }

  std::string pointer() const {
    std::string pointer;
    for (const Frame& frame : open_) {
      pointer += pointerToken(frame.value->is_array() ? std::to_string(frame.value->size() - 1)
                                                      : frame.key);
    }
    return pointer;
  }

  std::string_view text_;
  std::size_t mostValues_;
  Json root_;
  std::size_t values_ = 0;
  std::vector<Frame> open_;
};

}  // namespace

Json parseDocument(std::string_view text, std::size_t mostValues) {
  constexpr bool kWholeText = true;
  constexpr bool kCommentsAllowed = true;
  DocumentBuilder builder(text, mostValues);
  Json::sax_parse(text, &builder, nlohmann::detail::input_format_t::json, kWholeText,
                  kCommentsAllowed);
  return builder.take();
}

std::string Cursor::pointer() const {
  std::string pointer;
  for (const Cursor* at = this; at->parent_ != nullptr; at = at->parent_) {
    const bool isElement = at->parent_->isArray();
    pointer.insert(0, pointerToken(isElement ? std::to_string(at->index_) : std::string(at->key_)));
  }
  return pointer;
}

void Cursor::fail(const std::string& what) const {
  throw DocumentError(complaint(pointer(), what));
}

void Cursor::failAt(std::string_view key, const std::string& what) const {
  throw DocumentError(complaint(pointer() + pointerToken(key), what));
}

void Cursor::spendBytes(std::size_t count) const {
  const Cursor* root = this;
  while (root->parent_ != nullptr) root = root->parent_;
  if (count > kMostBytes - root->bytesSpent_) {
    fail("with it the file has more than " + std::to_string(kMostBytes) + " bytes");
  }
  root->bytesSpent_ += count;
}

const std::string& Cursor::text() const {
  if (!json_->is_string()) fail("must be a text");
  return json_->get_ref<const std::string&>();
}

bool Cursor::boolean() const {
  if (!json_->is_boolean()) fail("must be true or false");
  return json_->get<bool>();
}

const Json::array_t& Cursor::array() const {
  if (!json_->is_array()) fail("must be a list");
  return json_->get_ref<const Json::array_t&>();
}

const Json::object_t& Cursor::object() const {
  if (!json_->is_object()) fail("must be an object");
  return json_->get_ref<const Json::object_t&>();
}

}  // namespace velhost
