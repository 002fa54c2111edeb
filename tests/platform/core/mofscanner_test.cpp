// SPDX-License-Identifier: Apache-2.0
#include "platform/core/mofscanner.h"

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cstring>
#include <string>

namespace NKRXVEL20::mof {
namespace {

// A page, and one behind it that must not be touched.
class LastPage {
 public:
  LastPage()
      : size_(static_cast<std::size_t>(sysconf(_SC_PAGESIZE))),
        begin_(
            mmap(nullptr, 2 * size_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {}
  ~LastPage() { munmap(begin_, 2 * size_); }
  LastPage(const LastPage&) = delete;
  LastPage& operator=(const LastPage&) = delete;

  bool isReady() const { return begin_ != MAP_FAILED && mprotect(end(), size_, PROT_NONE) == 0; }

  // With the NUL that ends it, the last byte of the page.
  std::string_view lay(const std::string& text) const {
    char* const at = end() - text.size() - 1;
    std::memcpy(at, text.c_str(), text.size() + 1);
    return {at, text.size() + 1};
  }

 private:
  char* end() const { return static_cast<char*>(begin_) + size_; }

  std::size_t size_;
  void* begin_;
};

// It steps over eight bytes of a string at a time.
TEST(MofScanner, ReadsNothingBehindTheNulOfTheText) {
  const LastPage page;
  ASSERT_TRUE(page.isReady());
  for (std::size_t length = 0; length < 24; ++length) {
    const std::string said(length, 'a');
    const std::string_view text = page.lay(R"(/* one */ ")" + said + '"');
    std::string decoded;
    Scanner scanner(text, 0, static_cast<Place>(text.size() - 1), decoded);
    EXPECT_EQ(said, scanner.token().text);
    EXPECT_TRUE(scanner.isAtEnd()) << length;
  }
}

}  // namespace
}  // namespace NKRXVEL20::mof
