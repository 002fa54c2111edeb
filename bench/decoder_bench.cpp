// SPDX-License-Identifier: Apache-2.0
//
// What turns bytes into values: the plug-in's records, walks over SMBIOS tables, FRU areas and SDRs.
#include <benchmark/benchmark.h>

#include <array>
#include <string>

#include "bench/usedschema.h"
#include "collectors/ipmiinventory/fruarea.h"
#include "collectors/ipmiinventory/sdrrecord.h"
#include "plugin/dotcommand.h"
#include "plugin/spfirmwarevpd.h"
#include "smbios/smbioswalk.h"
#include "tests/collectors/ipmibytes.h"
#include "tests/support/pluginonmachine.h"
#include "velhost/smbios.h"

namespace {

namespace host = NKRXVEL20::host;
using spfirmwarevpd::ReplyBuffer;

constexpr char kMachine[] = MACHINES_DIR "/1x8.json";

// The collectors themselves, linked in, on a machine.
struct Collectors {
  velhost::PluginOnMachine platform{kMachine};
  NKRXVEL20::SPLibrary* sp = NKRXVEL20::SPLibrary::GetSplibraryInstance(0);
  boost::shared_ptr<NKRXVEL20::ICIMNamespace> ns = platform.ns();
  SPFirmwareVpd plugin;
};

ReplyBuffer replyTo(NKRXVEL20::SPLibrary& sp, unsigned char component, unsigned char data) {
  const std::array<unsigned char, 5> path{4, 3, 5, component, 1};
  const std::array<unsigned char, 4> block{0, 0, data, 0};
  NKRXVEL20::dotCmd command(spfirmwarevpd::kDotCommandType, 5, 4, path.data(), block.data());
  ReplyBuffer reply{};
  int length = 0;
  sp.sendDotCommand(&command, reply.data(), &length, 0, spfirmwarevpd::kReplySize);
  return reply;
}

// Each record becomes an instance, which is let go.
template <typename Decode>
void decodeRecord(benchmark::State& state, unsigned char component, unsigned char data,
                  Decode decode) {
  Collectors collectors;
  ReplyBuffer reply = replyTo(*collectors.sp, component, data);
  for (auto _ : state) {
    decode(collectors, reply);
    collectors.plugin.vpdInstances.clear();
  }
}

void dimmRecord(benchmark::State& state) {
  std::string name = "DIMM";
  decodeRecord(state, 0x0B, 0x7F, [&](Collectors& collectors, ReplyBuffer& reply) {
    collectors.plugin.printMemoryVpdData(name.data(), "Node 1 :", reply.data(), 1, collectors.ns);
  });
}

void commonRecord(benchmark::State& state) {
  std::string name = "Power Supply 1";
  decodeRecord(state, 0x0C, 0x80, [&](Collectors& collectors, ReplyBuffer& reply) {
    collectors.plugin.printVpdData(name.data(), "Node 1 :", reply.data(), collectors.ns);
  });
}

void planarRecord(benchmark::State& state) {
  std::string name = "Planar";
  decodeRecord(state, 0x02, 0x10, [&](Collectors& collectors, ReplyBuffer& reply) {
    collectors.plugin.printPlanarVpd(name.data(), "Node 1 :", reply.data(), collectors.ns);
  });
}

// All records of the SP command descriptor table, with their sends.
void descriptorTable(benchmark::State& state) {
  Collectors collectors;
  collectors.plugin.Init();
  for (auto _ : state) {
    benchmark::DoNotOptimize(collectors.plugin.getParseVPD(collectors.sp, collectors.ns));
  }
}

void biosStructure(benchmark::State& state) {
  Collectors collectors;
  collectors.plugin.Init();
  for (auto _ : state) {
    collectors.plugin.getBIOSstructure(collectors.sp, collectors.ns);
    collectors.plugin.systemBiosElementInstances.clear();
    collectors.plugin.postBiosVpdInstances.clear();
  }
}

void memoryMaker(benchmark::State& state) {
  Collectors collectors;
  std::array<unsigned char, 8> identity{0x7F, 0x7F, 0x7F, 0x7F, 0xCD};
  for (auto _ : state) {
    benchmark::DoNotOptimize(collectors.plugin.getMDManufacturer(identity.data()));
  }
}

// A table of so many structures of type 17, each with two strings.
host::SmbiosTable memoryDevices(std::int64_t count) {
  ipmiinventory::Bytes bytes(40);
  bytes[0] = 17;
  bytes[1] = 40;
  for (const char* const text : {"DIMM 1", "Bank 1"}) {
    const std::string string = text;
    bytes.insert(bytes.end(), string.begin(), string.end());
    bytes.push_back(0);
  }
  bytes.push_back(0);
  return {std::vector<host::SmbiosStructure>(static_cast<std::size_t>(count), {bytes, 0})};
}

void smbiosWalk(benchmark::State& state) {
  host::setSmbiosTable(memoryDevices(state.range(0)));
  const spfirmwarevpd::SmbiosWalk walk{
      .type = 17, .openFailedText = "", .process = [](const auto& structure) {
        benchmark::DoNotOptimize(structure[0]);
        return true;
      }};
  for (auto _ : state) spfirmwarevpd::walkSmbios(walk);
  state.SetComplexityN(state.range(0));
}

void tableSplit(benchmark::State& state) {
  ipmiinventory::Bytes table;
  for (const auto& structure : memoryDevices(state.range(0)).structures) {
    table.insert(table.end(), structure.bytes.begin(), structure.bytes.end());
  }
  for (auto _ : state) benchmark::DoNotOptimize(host::splitTable(table, {}));
  state.SetComplexityN(state.range(0));
}

// version, 5 units, English, a date, then fields in each of the encodings
void fruBoardArea(benchmark::State& state) {
  using namespace ipmiinventory;
  const Bytes area =
      checked(hex("01 05 19 C0 0A 08 C2") + "KR" + hex("C4") + "Main" + hex("83 29 DC A6") +
              hex("01 7F") + hex("C4") + "File" + hex("C6") + "custom" + hex("C1"));
  for (auto _ : state) benchmark::DoNotOptimize(decodeArea(fruAreaLayouts()[1], area));
}

void sdrLocator(benchmark::State& state) {
  using namespace ipmiinventory;
  const Bytes record = hex("34 12 51 11 10 20 05 80 00 00 10 02 0A 01 00 C5 50 53 55 20 31");
  for (auto _ : state) {
    benchmark::DoNotOptimize(parseSdrHeader(record));
    benchmark::DoNotOptimize(parseFruLocator(record));
  }
}

BENCHMARK(dimmRecord)->Setup(bench::useSchema);
BENCHMARK(commonRecord)->Setup(bench::useSchema);
BENCHMARK(planarRecord)->Setup(bench::useSchema);
BENCHMARK(descriptorTable)->Setup(bench::useSchema);
BENCHMARK(biosStructure)->Setup(bench::useSchema);
BENCHMARK(memoryMaker)->Setup(bench::useSchema);
BENCHMARK(smbiosWalk)->RangeMultiplier(16)->Range(16, 65536)->Complexity();
BENCHMARK(tableSplit)->RangeMultiplier(16)->Range(16, 65536)->Complexity();
BENCHMARK(fruBoardArea);
BENCHMARK(sdrLocator);

}  // namespace

BENCHMARK_MAIN();
