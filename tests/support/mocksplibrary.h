// SPDX-License-Identifier: Apache-2.0
//
// An SP driver whose calls a test scripts one by one, with their very arguments.
#pragma once

#include <gmock/gmock.h>

#include "vel/splibrary.h"

namespace spfirmwarevpd::test {

class MockSPLibrary : public NKRXVEL20::SPLibrary {
 public:
  MOCK_METHOD(int, discoverSPs, (), (override));
  MOCK_METHOD(bool, checkSPComm, (), (override));
  MOCK_METHOD(bool, isDotcommand, (), (override));
  MOCK_METHOD(bool, isTamber, (), (override));
  MOCK_METHOD(bool, isTwgStop, (), (override));
  MOCK_METHOD(bool, isTvmlibrary, (), (override));
  MOCK_METHOD(bool, IsBMCMachine, (), (override));
  MOCK_METHOD(bool, IsIPMIDriversPresent, (), (override));
  MOCK_METHOD(bool, IsIntegratedBMC, (), (override));
  MOCK_METHOD(int, GetNumberBMCNode, (), (override));
  MOCK_METHOD(bool, buildDotCommandList, (unsigned char*, unsigned char*, unsigned char*),
              (override));
  MOCK_METHOD(int, getComponentdotCmdList,
              (unsigned char*, int, unsigned char*, unsigned char*, unsigned char*), (override));
  MOCK_METHOD(bool, sendDotCommand, (NKRXVEL20::dotCmd*, unsigned char*, int*, int, int),
              (override));
  MOCK_METHOD(bool, sendTamberCommand, (NKRXVEL20::TamberCmd*, int*, unsigned char*), (override));
  MOCK_METHOD(bool, sendIPMICommand, (unsigned char*, int*, int, bool), (override));
  MOCK_METHOD(void, printMatrix, (const unsigned char*, int), (override));
};

}  // namespace spfirmwarevpd::test
