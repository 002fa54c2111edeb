// SPDX-License-Identifier: Apache-2.0
//
// This program answers for the SMBIOS library: its own functions come before the library's.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "vel/osspecific.h"
#include "vel/smbios.h"
#include "velhost/rootobject.h"

namespace NKRXVEL20 {

struct TSmBiosHandle {};

namespace {

using namespace std::string_literals;
using testing::ElementsAre;
using testing::IsEmpty;

struct FakeSmbios {
  int loadStatus = 0;
  bool givesHandle = true;
  int readStatus = kSmBiosRead;
  std::string structure;
  TSmBiosHandle handle;
  std::vector<std::string> calls;
};

FakeSmbios fake;

}  // namespace

int smBiosLoad(TPluginManagerProvider* provider, TSmBiosHandle** handle) {
  fake.calls.push_back(provider == nullptr ? "load" : "load with a provider");
  if (fake.loadStatus == 0 && fake.givesHandle) *handle = &fake.handle;
  return fake.loadStatus;
}

int smBiosGetFirst(TSmBiosHandle* handle, int type, unsigned char* buffer, int* size) {
  fake.calls.push_back(handle == &fake.handle ? "first " + std::to_string(type) : "wrong handle");
  if (fake.readStatus != kSmBiosNoMore) {
    const auto room = std::min(fake.structure.size(), static_cast<std::size_t>(*size));
    std::copy_n(fake.structure.begin(), room, buffer);
  }
  return fake.readStatus;
}

int smBiosGetNext(TSmBiosHandle* /*handle*/, unsigned char* /*buffer*/, int* /*size*/) {
  fake.calls.emplace_back("next");
  return kSmBiosNoMore;
}

int smBiosClose(TSmBiosHandle** handle) {
  fake.calls.emplace_back("close");
  *handle = nullptr;
  return 0;
}

namespace {

class MachineTypeTest : public testing::Test {
 protected:
  MachineTypeTest() { fake = FakeSmbios(); }
  ~MachineTypeTest() override { host::setMachineType(std::nullopt); }
};

// Type 1, length 8, handle 0x0001; Manufacturer string 1, Product Name 2, Version 3, Serial 0.
const std::string kSystemInformation = "\x01\x08\x01\x00\x01\x02\x03\x00"s;

std::string namedProduct(const std::string& name) {
  return kSystemInformation + "Maker\0"s + name +
         "\0"
         "5020AC1\0\0"s;
}

TEST_F(MachineTypeTest, ComesFromTheProductName) {
  const struct {
    const char* what;
    std::string product;
    const char* machineType;
  } kCases[] = {
      {"a type-model alone", "5010AC1", "5010"},
      {"a type-model in brackets", "KRX Server -[5010AC1]-", "5010"},
      {"a type-model in lower case", "KRX 5010ac1", "5010"},
      {"a type-model of digits", "KRX 5010001", "5010"},
      {"a type-model with a letter behind it", "5010AC12", ""},
      {"a type-model with a letter before it", "X5010AC1", ""},
      {"seven characters with three digits", "501XAC1", ""},
      {"the first of two type-models", "5010AC1 5030AC1", "5010"},
      {"a type-model wins over four digits", "3220 5010AC1", "5010"},
      {"four digits alone", "5010", "5010"},
      {"four digits in a text", "KRX Server 5010, Tower", "5010"},
      {"four digits between underlines", "KRX_5010_X", "5010"},
      {"the first of two", "3220/5010", "3220"},
      {"three digits", "KRX 501", ""},
      {"five digits", "KRX 50105", ""},
      {"four digits with a letter behind them", "KRX 5010X", ""},
      {"four digits with a letter before them", "KRX X5010", ""},
      {"four letters", "KRXS", ""},
      {"no digits", "Standard PC", ""},
      {"behind 200 characters", std::string(200, '-') + "5010AC1", "5010"},
  };
  for (const auto& c : kCases) {
    fake.structure = namedProduct(c.product);
    EXPECT_EQ(c.machineType, TOSSpecific::GetMachineTypeFromID()) << c.what;
  }
}

TEST_F(MachineTypeTest, AsksForTheFirstStructureOfType1AndClosesTheTable) {
  fake.structure = namedProduct("5010AC1");
  EXPECT_EQ("5010", TOSSpecific::GetMachineTypeFromID());
  EXPECT_THAT(fake.calls, ElementsAre("load", "first 1", "close"));
}

TEST_F(MachineTypeTest, TheReadStatusDoesNotMatter) {
  fake.structure = namedProduct("5010AC1");
  fake.readStatus = kSmBiosReadFailed;
  EXPECT_EQ("5010", TOSSpecific::GetMachineTypeFromID());
  fake.readStatus = 77;
  EXPECT_EQ("5010", TOSSpecific::GetMachineTypeFromID());
  fake.readStatus = kSmBiosNoMore;
  EXPECT_EQ("", TOSSpecific::GetMachineTypeFromID());
}

TEST_F(MachineTypeTest, IsEmptyWhenTheLibraryCannotBeOpened) {
  fake.structure = namedProduct("5010AC1");
  fake.loadStatus = 1;
  EXPECT_EQ("", TOSSpecific::GetMachineTypeFromID());
  EXPECT_THAT(fake.calls, ElementsAre("load"));
}

TEST_F(MachineTypeTest, IsEmptyWhenTheLibraryGivesNoHandle) {
  fake.structure = namedProduct("5010AC1");
  fake.givesHandle = false;
  EXPECT_EQ("", TOSSpecific::GetMachineTypeFromID());
  EXPECT_THAT(fake.calls, ElementsAre("load"));
}

TEST_F(MachineTypeTest, StaysInsideAHostileStructure) {
  const struct {
    const char* what;
    std::string structure;
    const char* machineType;
  } kCases[] = {
      {"nothing", "", ""},
      {"a header alone",
       "\x01\x04\x01\x00"
       "5010AC1\0\0"s,
       ""},
      {"no byte for the Product Name",
       "\x01\x05\x01\x00\x01"
       "5010AC1\0\0"s,
       ""},
      {"the Product Name's byte is the last",
       "\x01\x06\x01\x00\x00\x01"
       "5010AC1\0\0"s,
       "5010"},
      {"string number 0",
       "\x01\x06\x01\x00\x01\x00"
       "5010AC1\0\0"s,
       ""},
      {"a string past the last",
       "\x01\x06\x01\x00\x01\x02"
       "5010AC1\0\0"s,
       ""},
      {"no string set", "\x01\x06\x01\x00\x01\x01"s, ""},
      {"length beyond the bytes", "\x01\xFF\x01\x00\x01\x01"s, ""},
      {"no zero byte up to the buffer's end",
       "\x01\x06\x01\x00\x01\x01"
       "5010 "s +
           std::string(9000, 'x'),
       "5010"},
  };
  for (const auto& c : kCases) {
    fake.structure = c.structure;
    EXPECT_EQ(c.machineType, TOSSpecific::GetMachineTypeFromID()) << c.what;
  }
}

TEST_F(MachineTypeTest, WhatTheHostSetsComesFirst) {
  fake.structure = namedProduct("5010AC1");
  host::setMachineType("4430");
  EXPECT_EQ("4430", TOSSpecific::GetMachineTypeFromID());
  host::setMachineType("");
  EXPECT_EQ("", TOSSpecific::GetMachineTypeFromID());
  EXPECT_THAT(fake.calls, IsEmpty());
  host::setMachineType(std::nullopt);
  EXPECT_EQ("5010", TOSSpecific::GetMachineTypeFromID());
}

}  // namespace
}  // namespace NKRXVEL20
