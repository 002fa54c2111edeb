// SPDX-License-Identifier: Apache-2.0
//
// The SP driver: what kind of service processor (SP) the machine has, and the three ways to ask it.
#pragma once

#include <vector>

#include "vel/export.h"

namespace NKRXVEL20 {

// A dot-command request. Keeps copies of the bytes; a length below 1 means none.
class VEL_API dotCmd {
 public:
  dotCmd(unsigned char type, int commandLength, int dataLength, const unsigned char* command,
         const unsigned char* data);
  ~dotCmd();

  dotCmd(const dotCmd&) = delete;
  dotCmd& operator=(const dotCmd&) = delete;

  unsigned char type;
  std::vector<unsigned char> command;
  std::vector<unsigned char> data;
};

// A request of the Tamber family: four command bytes, data (copied) and two flags that the driver
// passes on.
class VEL_API TamberCmd {
 public:
  TamberCmd(unsigned char byte0, unsigned char byte1, unsigned char byte2, unsigned char byte3,
            unsigned char* data, int dataLength, bool flag0, bool flag1);

  std::vector<unsigned char> command;
  std::vector<unsigned char> data;
  bool flag0;
  bool flag1;
};

class VEL_API SPLibrary {
 public:
  virtual ~SPLibrary();

  // The process-wide object, owned by the driver; null when the driver could not be loaded.
  static SPLibrary* GetSplibraryInstance(int reserved);

  virtual int discoverSPs() = 0;    // number of service processors found
  virtual bool checkSPComm() = 0;   // a dot-command SP answers now
  virtual bool isDotcommand() = 0;  // the SP speaks dot commands
  virtual bool isTamber() = 0;      // the SP is of the Tamber family
  virtual bool isTwgStop() = 0;
  virtual bool isTvmlibrary() = 0;          // a Torvik Management Processor library is loaded
  virtual bool IsBMCMachine() = 0;          // a BMC answers
  virtual bool IsIPMIDriversPresent() = 0;  // the operating system has an IPMI driver
  virtual bool IsIntegratedBMC() = 0;       // the machine's firmware is UEFI
  virtual int GetNumberBMCNode() = 0;       // number of nodes with a BMC

  // Fills the three lists of supported dot commands, 4096 bytes each. False when the SP did not
  // give them.
  virtual bool buildDotCommandList(unsigned char* list0, unsigned char* list1,
                                   unsigned char* list2) = 0;

  // The number of instances of the component that the command reads; -1 when it is not listed.
  virtual int getComponentdotCmdList(unsigned char* command, int commandLength,
                                     unsigned char* list0, unsigned char* list1,
                                     unsigned char* list2) = 0;

  // Each returns true when the SP answered: the reply (cut to the buffer) and its length are set
  // then. A send that fails leaves the reply as it was.
  virtual bool sendDotCommand(dotCmd* command, unsigned char* reply, int* replyLength, int spIndex,
                              int bufferSize) = 0;

  // `reply` holds 255 bytes. The length counts the bytes behind the three of the reply's header.
  virtual bool sendTamberCommand(TamberCmd* command, int* replyLength, unsigned char* reply) = 0;

  // `buffer`, `capacity` bytes, holds the request record and receives the reply record; bytes
  // behind the reply are cleared. Request: interface, responder address, network function, LUN,
  // command, data length (4 bytes, little-endian), data. Reply: the first four bytes as in the
  // request, completion code, data. The length counts the whole record, 0 when the send failed.
  virtual bool sendIPMICommand(unsigned char* buffer, int* length, int capacity, bool wait) = 0;

  // Prints a byte buffer to standard error, for people who debug.
  virtual void printMatrix(const unsigned char* bytes, int length) = 0;
};

}  // namespace NKRXVEL20
