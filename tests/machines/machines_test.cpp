// SPDX-License-Identifier: Apache-2.0
//
// Every machine file with the result expected of it: whole documents are compared.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "tests/host/programrun.h"

namespace {

namespace fs = std::filesystem;
using nlohmann::json;
using nlohmann::ordered_json;

struct MachineCase {
  std::string name;
  const char* suffix;  // of the expected result, behind the name
  std::vector<std::string> options;
};

std::ostream& operator<<(std::ostream& out, const MachineCase& c) {
  return out << c.name << c.suffix;
}

constexpr std::ptrdiff_t kShown = 10;  // differences in a failure
constexpr char kSuffix[] = ".json";

fs::path expectedOf(const MachineCase& c) {
  return fs::path(MACHINES_DIR) / "expected" / (c.name + c.suffix);
}

bool isMachineFile(const std::string& file) {
  return file.ends_with(kSuffix) && file != "machine.schema.json";
}

// A result of the plain query is asked of every machine, one of repeated queries where it is there.
std::vector<MachineCase> allCases() {
  std::vector<MachineCase> cases;
  for (const auto& entry : fs::directory_iterator(MACHINES_DIR)) {
    if (!isMachineFile(entry.path().filename().string())) continue;
    const std::string name = entry.path().stem().string();
    cases.push_back({name, kSuffix, {}});
    const MachineCase again{name, ".reinit.json", {"--repeat", "2", "--reinit"}};
    if (fs::exists(expectedOf(again))) cases.push_back(again);
  }
  std::ranges::sort(cases, {}, [](const MachineCase& c) { return c.name + c.suffix; });
  return cases;
}

bool hasError(const json& document) {
  return std::ranges::any_of(document["queries"],
                             [](const json& query) { return !query["error"].is_null(); });
}

// The order of properties counts, so they become a list; that of other members does not. The words
// of an error are the framework's own: an expected null stands for any.
json comparable(const ordered_json& document) {
  json result = json::parse(document.dump());
  for (std::size_t q = 0; q < document.at("queries").size(); ++q) {
    json& query = result["queries"][q];
    if (query["error"].is_object()) query["error"].erase("what");
    const ordered_json& instances = document["queries"][q].at("instances");
    for (std::size_t i = 0; i < instances.size(); ++i) {
      json properties = json::array();
      for (const auto& [name, value] : instances[i].at("properties").items()) {
        properties.push_back({name, value});
      }
      query["instances"][i]["properties"] = properties;
    }
  }
  return result;
}

class MachinesTest : public ::testing::TestWithParam<MachineCase> {};

TEST_P(MachinesTest, GivesItsExpectedResult) {
  const MachineCase& c = GetParam();
  std::ifstream expectedFile(expectedOf(c));
  ASSERT_TRUE(expectedFile) << "no expected result beside " << c.name;
  const json expected = comparable(ordered_json::parse(expectedFile));
  std::vector<std::string> arguments = {"query", "--machine",
                                        (fs::path(MACHINES_DIR) / (c.name + kSuffix)).string(),
                                        "--format", "trace"};
  arguments.insert(arguments.end(), c.options.begin(), c.options.end());
  const velhost::ProgramOutcome outcome = velhost::runProgram(VELHOST, {arguments, {}});
  const json actual = comparable(ordered_json::parse(outcome.out));
  EXPECT_EQ(outcome.status, hasError(expected) ? 1 : 0);  // the sanitizers have one of their own
  if (actual == expected) return;
  json difference = json::diff(expected, actual);
  const std::size_t count = difference.size();
  if (count > static_cast<std::size_t>(kShown))
    difference.erase(difference.begin() + kShown, difference.end());
  FAIL() << count << " differences, the first of them:\n" << difference.dump(2);
}

INSTANTIATE_TEST_SUITE_P(All, MachinesTest, ::testing::ValuesIn(allCases()), [](const auto& test) {
  std::string name = test.param.name + test.param.suffix;
  std::erase_if(name, [](unsigned char c) { return std::isalnum(c) == 0; });
  return name;
});

}  // namespace
