// SPDX-License-Identifier: Apache-2.0
#include "host/commandline/complaint.h"

#include "host/collectors/requesterror.h"
#include "host/files/standardstreams.h"
#include "host/text/utf8.h"

namespace velhost {
namespace {

constexpr std::size_t kLongestComplaint = 400;  // room for a path, a place and what is wrong there

}  // namespace

void writeErrorLine(const std::string& text) { writeStandardError("velhost: " + text + '\n'); }

void complain(std::string_view what) {
  writeErrorLine(shortened(visible(what), kLongestComplaint));
}

void complainOf(const RequestError& error) {
  complain((error.wasAsked ? "the plug-in refused the request: " : "") + errorText(error));
}

}  // namespace velhost
