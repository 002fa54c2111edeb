// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <map>
#include <stdexcept>

#include "tests/support/namespacespy.h"
#include "tests/support/pluginfixture.h"
#include "vel/exception.h"

namespace spfirmwarevpd::test {
namespace {

using namespace NKRXVEL20;
using ClassRecord = SPFirmwareVpd::ClassRecord;

constexpr char kMain[] = "KRXSG_SPROMFirmwareVPDMain";
constexpr char kBootRom[] = "KRXSG_SPROMFirmwareVPDBootROM";
constexpr char kHardware[] = "KRXSG_HardwareRevisionLevel";
constexpr char kDiagnostics[] = "KRXSG_DiagnosticVPD";

ClassRecord record(const char* className, const char* node, SPFirmwareVpd::PropertyMap more) {
  more.insert({{"TargetOperatingSystem", ""},
               {"SoftwareElementState", ""},
               {"SourceNode", node},
               {"SoftwareElementID", node}});
  return {{className, std::move(more)}};
}

ClassRecord filledDiagnostics(const char* node) {
  return record(kDiagnostics, node, {{"Version", ""}, {"BuildNumber", "DSYT42A"}, {"", "SIG"}});
}

ClassRecord emptyDiagnostics(const char* node) {
  return record(kDiagnostics, node, {{"Version", ""}, {"BuildNumber", ""}});
}

// A namespace that has whatever class and property it is asked for, and keeps what is created and
// set: "create KRXSG_Test", "Version=12".
class OpenNamespace : public ICIMNamespace {
 public:
  boost::shared_ptr<ICIMClass> GetClass(const std::string& name, TCIMValueMap) override {
    return boost::make_shared<Class>(name, steps);
  }

  std::vector<std::string> steps;

 private:
  class Property : public ICIMProperty {
   public:
    Property(std::string name, TCIMValue value)
        : name_(std::move(name)), value_(std::move(value)) {}
    const std::string& GetName() const override { return name_; }
    const TCIMValue& GetValue() const override { return value_; }
    std::string GetValueAsString() const override { return value_.ToString(); }

   private:
    std::string name_;
    TCIMValue value_;
  };

  class Instance : public ICIMInstance {
   public:
    explicit Instance(std::vector<std::string>& steps) : steps_(steps) {}

    boost::shared_ptr<ICIMProperty> GetProperty(const std::string& name,
                                                const TCIMValueMap&) override {
      return boost::make_shared<Property>(name, values_[name]);
    }

    void SetProperty(const std::string& name, const TCIMValue& value,
                     const TCIMValueMap&) override {
      static const std::map<ECIMType, std::string> kTypes = {{ECIMType::kUint8, " (uint8)"},
                                                             {ECIMType::kUint16, " (uint16)"},
                                                             {ECIMType::kDateTime, " (date-time)"}};
      const auto type = kTypes.find(value.GetType());
      steps_.push_back(name + "=" + value.ToString() + (type == kTypes.end() ? "" : type->second));
      values_[name] = value;
    }

    void AddToClass(TCIMValueMap) override {}

   private:
    std::vector<std::string>& steps_;
    std::map<std::string, TCIMValue> values_;
  };

  class Class : public ICIMClass {
   public:
    Class(std::string name, std::vector<std::string>& steps)
        : name_(std::move(name)), steps_(steps) {}
    const std::string& GetName(const TCIMValueMap&) const override { return name_; }
    void GetInstances(const boost::function<bool(boost::shared_ptr<ICIMInstance>)>&, bool,
                      const TCIMValueMap&) override {}
    boost::shared_ptr<ICIMInstance> CreateInstance() override {
      steps_.push_back("create " + name_);
      return boost::make_shared<Instance>(steps_);
    }

   private:
    std::string name_;
    std::vector<std::string>& steps_;
  };
};

class SPFirmwareVpdCollectorTest : public PluginTest {
 protected:
  SPFirmwareVpdCollectorTest() {
    plugin.Init();
    useSP(dotCommandSP());
  }

  int collect() { return plugin.getSPFirmwareVpd(sp(), ns).status; }

  void addComputerSystem(std::uint8_t node, const char* description) {
    ns->addCompanion("KRXSG_QLA_ComputerSystem",
                     {{"SourceNode", TCIMValue(node)}, {"Description", TCIMValue(description)}});
  }

  // What is created and set where nothing is refused.
  std::vector<std::string> collectSteps() {
    const auto open = boost::make_shared<OpenNamespace>();
    EXPECT_EQ(plugin.getSPFirmwareVpd(sp(), open).status, 0);
    return open->steps;
  }

  // The failures that were logged.
  std::vector<std::string> failures() const {
    std::vector<std::string> result;
    for (const auto& [severity, entry] : log) {
      if (severity == 0) result.push_back(entry);
    }
    return result;
  }

  void failProperty(const char* operationClass, const char* property,
                    host::CimOperation operation) {
    useFaults({{.operation = operation,
                .className = operationClass,
                .propertyName = property,
                .nth = std::nullopt,
                .throwsRuntimeError = false}});
  }
};

TEST_F(SPFirmwareVpdCollectorTest, FirmwareInstanceIsNamedAfterTheSPAndItsNode) {
  plugin.parsedVpdRecords = {record(kMain, "1",
                                    {{"BuildDate", "20090714000000.000000+000"},
                                     {"BuildNumber", "YUOO73C"},
                                     {"Checksum", "200"},
                                     {"FileName", "SPMAIN.PKT"},
                                     {"PartNumber", "39Y12345"},
                                     {"Version", "12"}}),
                             record(kBootRom, "1", {{"BuildNumber", "YUBR18A"}})};
  addComputerSystem(1, "KRX Quellon Link Adapter II");
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(published(plugin.spromMainInstances),
            (std::vector<Properties>{{"Name=Node 1 : KRX Quellon Link Adapter II Main VPD",
                                      "BuildDate=20090714000000.000000+000", "BuildNumber=YUOO73C",
                                      "Checksum=200", "FileName=SPMAIN.PKT", "PartNumber=39Y12345",
                                      "SoftwareElementID=1", "SoftwareElementState=3",
                                      "SourceNode=1", "TargetOperatingSystem=66", "Version=12"}}));
  EXPECT_EQ(published(plugin.spromBootRomInstances),
            (std::vector<Properties>{{"Name=Node 1 : KRX Quellon Link Adapter II BootROM VPD",
                                      "BuildNumber=YUBR18A", "SoftwareElementID=1",
                                      "SoftwareElementState=3", "SourceNode=1",
                                      "TargetOperatingSystem=66"}}));
}

TEST_F(SPFirmwareVpdCollectorTest, InstancesWithoutANameOfTheirOwnGetTheNodeBeforeNothing) {
  plugin.parsedVpdRecords = {record(kHardware, "2", {{"Hardwarelevel", "7"}, {"Version", "7"}})};
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(published(plugin.hardwareRevisionInstances),
            (std::vector<Properties>{{"Hardwarelevel=7", "SoftwareElementID=2",
                                      "SoftwareElementState=3", "Name=Node 2 : ", "SourceNode=2",
                                      "TargetOperatingSystem=66", "Version=7"}}));
}

TEST_F(SPFirmwareVpdCollectorTest, SignatureTextNeverReachesAnInstance) {
  plugin.parsedVpdRecords = {filledDiagnostics("1")};
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(published(plugin.diagnosticVpdInstances),
            (std::vector<Properties>{{"BuildNumber=DSYT42A", "SoftwareElementID=1",
                                      "SoftwareElementState=3", "Name=Node 1 : ", "SourceNode=1",
                                      "TargetOperatingSystem=66", "Version="}}));
  EXPECT_EQ(failures(), std::vector<std::string>{});
}

TEST_F(SPFirmwareVpdCollectorTest, EmptyStateAndSystemStillYieldThreeAnd66) {
  plugin.parsedVpdRecords = {record(kHardware, "1", {})};
  collect();
  EXPECT_EQ(
      published(plugin.hardwareRevisionInstances),
      (std::vector<Properties>{{"SoftwareElementID=1", "SoftwareElementState=3",
                                "Name=Node 1 : ", "SourceNode=1", "TargetOperatingSystem=66"}}));
}

TEST_F(SPFirmwareVpdCollectorTest, FilledStateAndSystemYieldThreeAnd66TheSame) {
  plugin.parsedVpdRecords = {
      {{kHardware, {{"SoftwareElementState", "5"}, {"TargetOperatingSystem", "36"}}}}};
  collect();
  EXPECT_EQ(published(plugin.hardwareRevisionInstances),
            (std::vector<Properties>{{"SoftwareElementState=3", "TargetOperatingSystem=66"}}));
}

TEST_F(SPFirmwareVpdCollectorTest, LowestNodeNumberNamesEverySPAndTheFirstOfANodeWins) {
  plugin.parsedVpdRecords = {record(kMain, "1", {}), record(kMain, "2", {})};
  addComputerSystem(7, "Seventh");
  addComputerSystem(2, "Second");
  addComputerSystem(2, "Second again");
  collect();
  const auto rows = published(plugin.spromMainInstances);
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0][0], "Name=Node 1 : Second Main VPD");
  EXPECT_EQ(rows[1][0], "Name=Node 2 : Second Main VPD");
}

TEST_F(SPFirmwareVpdCollectorTest, LowestNodeNumberNamesTheSPWhateverTheRecordsNode) {
  plugin.parsedVpdRecords = {record(kMain, "7", {})};
  addComputerSystem(7, "Seventh");
  addComputerSystem(2, "Second");
  collect();
  EXPECT_EQ(published(plugin.spromMainInstances).at(0).at(0), "Name=Node 7 : Second Main VPD");
}

TEST_F(SPFirmwareVpdCollectorTest, SPNamesAreReadAnewByEachCall) {
  plugin.parsedVpdRecords = {record(kMain, "1", {})};
  addComputerSystem(3, "Before");
  collect();
  useFaults({});
  addComputerSystem(4, "Behind");
  collect();
  useFaults({});
  plugin.smbiosOemEntries = {{"KRX Torvik Management Processor", "x"}};
  collect();
  std::vector<std::string> names;
  for (const auto& instance : plugin.spromMainInstances) {
    names.push_back(instance->GetProperty("Name", {})->GetValueAsString());
  }
  EXPECT_EQ(names, (std::vector<std::string>{"Node 1 : Before Main VPD", "Node 1 : Behind Main VPD",
                                             "Node 1 : KRX Torvik Management Processor Main VPD"}));
}

TEST_F(SPFirmwareVpdCollectorTest, WithoutComputerSystemsSmbiosNamesTheSP) {
  plugin.parsedVpdRecords = {record(kMain, "1", {})};
  plugin.smbiosOemEntries = {{"KRX Torvik Management Processor", "x"}};
  collect();
  EXPECT_EQ(published(plugin.spromMainInstances).at(0).at(0),
            "Name=Node 1 : KRX Torvik Management Processor Main VPD");
}

TEST_F(SPFirmwareVpdCollectorTest, SecondCallReusesTheRecordsOfTheFirst) {
  SimulatedSP description = dotCommandSP();
  answer(description, {4, 3, 5, 6, 1}, zeros(40));
  answer(description, {4, 3, 5, 6, 2}, zeros(40));
  answer(description, {4, 3, 5, 7}, {7});
  answer(description, {4, 3, 5, 1, 1}, zeros(69));
  useSP(description);
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(takeTraffic().size(), 4U);
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(takeTraffic(), std::vector<std::string>{});
  EXPECT_EQ(plugin.spromMainInstances.size(), 2U);
}

TEST_F(SPFirmwareVpdCollectorTest, NoRecordAtAllIsAFailure) {
  EXPECT_EQ(collect(), 3);
  EXPECT_TRUE(plugin.parsedVpdRecords.empty());
}

TEST_F(SPFirmwareVpdCollectorTest, FilledThenEmptyDiagnosticsBothBecomeInstances) {
  plugin.smbiosOemEntries = {{"KRX Diagnostics", "KRXDiagnostics102"}};
  plugin.parsedVpdRecords = {filledDiagnostics("1"), emptyDiagnostics("2")};
  collect();
  const auto rows = published(plugin.diagnosticVpdInstances);
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0][0], "BuildNumber=DSYT42A");
  EXPECT_EQ(rows[1][0], "BuildNumber=");
}

TEST_F(SPFirmwareVpdCollectorTest, EmptyThenFilledDiagnosticsFallBackForTheFirstOnly) {
  plugin.smbiosOemEntries = {{"KRX Diagnostics", "KRXDiagnostics102"}};
  plugin.parsedVpdRecords = {emptyDiagnostics("1"), filledDiagnostics("2")};
  collect();
  const auto rows = published(plugin.diagnosticVpdInstances);
  ASSERT_EQ(rows.size(), 2U);
  EXPECT_EQ(rows[0][0], "BuildNumber=KRXDiagnostics");  // from SMBIOS
  EXPECT_EQ(rows[1][0], "BuildNumber=DSYT42A");
}

TEST_F(SPFirmwareVpdCollectorTest, EachEmptyDiagnosticsRecordFallsBackAnew) {
  plugin.smbiosOemEntries = {{"KRX Diagnostics", "KRXDiagnostics102"}};
  plugin.parsedVpdRecords = {emptyDiagnostics("1"), emptyDiagnostics("2")};
  collect();
  EXPECT_EQ(plugin.diagnosticVpdInstances.size(), 2U);
}

TEST_F(SPFirmwareVpdCollectorTest, EveryClassIsTracedForEveryRecord) {
  plugin.parsedVpdRecords = {record(kHardware, "1", {})};
  collect();
  Log expected;
  for (std::size_t k = 0; k < 8; ++k) {
    expected.emplace_back(3, "IN getSPFirmwareVpd:: Current Class = " + plugin.classNames[k] +
                                 ". Current Iter = KRXSG_HardwareRevisionLevel");
  }
  EXPECT_EQ(log, expected);
}

TEST_F(SPFirmwareVpdCollectorTest, OnlyTheCountedClassesTakeRecords) {
  plugin.parsedVpdRecords = {record(kHardware, "1", {}), record(kMain, "1", {})};
  plugin.classCount = 4;  // up to the hardware revision
  collect();
  EXPECT_EQ(plugin.hardwareRevisionInstances.size(), 1U);
  EXPECT_EQ(plugin.spromMainInstances.size(), 0U);
  EXPECT_EQ(log.size(), 2U * 4);
}

TEST_F(SPFirmwareVpdCollectorTest, ClassNamesAreLookedForWithinTheRecordsClass) {
  plugin.smbiosOemEntries = {{"KRX Torvik Management Processor", "x"},
                             {"KRX Diagnostics", "KRXDiagnostics102"}};
  const struct {
    const char* what;
    ClassRecord record;
    std::vector<std::string> steps;
  } cases[] = {
      {"main firmware",
       {{"A KRXSG_SPROMFirmwareVPDMain 2", {{"Version", "1"}}}},
       {"create A KRXSG_SPROMFirmwareVPDMain 2", "Name=KRX Torvik Management Processor Main VPD",
        "Version=1"}},
      {"boot ROM firmware",
       {{"A KRXSG_SPROMFirmwareVPDBootROM 2", {}}},
       {"create A KRXSG_SPROMFirmwareVPDBootROM 2",
        "Name=KRX Torvik Management Processor BootROM VPD"}},
      {"a class that is not named after the SP",
       {{"A KRXSG_Vpd 2", {{"Version", "1"}}}},
       {"create A KRXSG_Vpd 2", "Version=1"}},
      {"filled diagnostics",
       {{"A KRXSG_DiagnosticVPD 2", {{"A BuildNumber 2", "1"}}}},
       {"create A KRXSG_DiagnosticVPD 2", "A BuildNumber 2=1"}},
      {"empty diagnostics, for which SMBIOS stands in",
       {{"A KRXSG_DiagnosticVPD 2", {{"BuildNumber", ""}, {"Version", "1"}}}},
       {"create KRXSG_DiagnosticVPD", "BuildNumber=KRXDiagnostics", "Version=102",
        "SoftwareElementID= ", "SoftwareElementState=3 (uint16)",
        "TargetOperatingSystem=66 (uint16)"}},
      {"a part of a class name", {{"KRXSG_SPROMFirmwareVPDMai", {{"Version", "1"}}}}, {}},
  };
  for (const auto& c : cases) {
    plugin.parsedVpdRecords = {c.record};
    EXPECT_EQ(collectSteps(), c.steps) << c.what;
  }
}

TEST_F(SPFirmwareVpdCollectorTest, RulesLookForTheirWordsWithinThePropertyName) {
  plugin.parsedVpdRecords = {{{kHardware,
                               {{"A BuildDate 2", "20090714000000.000000+000"},
                                {"B SoftwareElementState 2", "x"},
                                {"C SourceNode 2", "7"},
                                {"D TargetOperatingSystem 2", "x"},
                                {"E Build Date", "x"}}}}};
  EXPECT_EQ(collectSteps(),
            (std::vector<std::string>{"create KRXSG_HardwareRevisionLevel",
                                      "A BuildDate 2=20090714000000.000000+000 (date-time)",
                                      "B SoftwareElementState 2=3 (uint16)",
                                      "Name=Node 7 : ", "C SourceNode 2=7 (uint8)",
                                      "D TargetOperatingSystem 2=66 (uint16)", "E Build Date=x"}));
}

// Classes are looked up as a plug-in; everything else gets an empty map.
TEST_F(SPFirmwareVpdCollectorTest, ContextGoesToTheClassLookUpsOnly) {
  plugin.parsedVpdRecords = {record(kMain, "1", {{"Version", "2"}})};
  addComputerSystem(1, "KRX Quellon Link Adapter II");
  const auto spy = boost::make_shared<NamespaceSpy>(ns);
  EXPECT_EQ(plugin.getSPFirmwareVpd(sp(), spy).status, 0);
  EXPECT_EQ(
      spy->takeCalls(),
      (Calls{
          "get KRXSG_QLA_ComputerSystem as a plug-in", "enumerate KRXSG_QLA_ComputerSystem",
          "read KRXSG_QLA_ComputerSystem.SourceNode", "read KRXSG_QLA_ComputerSystem.Description",
          "get KRXSG_SPROMFirmwareVPDMain as a plug-in", "create KRXSG_SPROMFirmwareVPDMain",
          "set KRXSG_SPROMFirmwareVPDMain.Name", "set KRXSG_SPROMFirmwareVPDMain.SoftwareElementID",
          "set KRXSG_SPROMFirmwareVPDMain.SoftwareElementState",
          "read KRXSG_SPROMFirmwareVPDMain.Name", "set KRXSG_SPROMFirmwareVPDMain.Name",
          "set KRXSG_SPROMFirmwareVPDMain.SourceNode",
          "set KRXSG_SPROMFirmwareVPDMain.TargetOperatingSystem",
          "set KRXSG_SPROMFirmwareVPDMain.Version"}));
}

TEST_F(SPFirmwareVpdCollectorTest, NothingIsAttemptedBehindARefusal) {
  const struct {
    const char* property;
    Calls sets;
  } cases[] = {
      {"Name", {"Name"}},
      {"Checksum", {"Name", "Checksum"}},
      {"SourceNode",
       {"Name", "Checksum", "SoftwareElementID", "SoftwareElementState", "Name", "SourceNode"}},
  };
  for (const auto& c : cases) {
    plugin.parsedVpdRecords = {record(kMain, "1", {{"Checksum", "1"}, {"Version", "2"}})};
    failProperty(kMain, c.property, host::CimOperation::kSetProperty);
    const auto spy = boost::make_shared<NamespaceSpy>(ns);
    EXPECT_EQ(plugin.getSPFirmwareVpd(sp(), spy).status, 0);
    Calls sets;
    const std::string prefix = std::string("set ") + kMain + ".";
    for (const std::string& call : spy->takeCalls()) {
      if (call.starts_with(prefix)) sets.push_back(call.substr(prefix.size()));
    }
    EXPECT_EQ(sets, c.sets) << c.property;
  }
}

TEST_F(SPFirmwareVpdCollectorTest, ClassThatIsNotThereAbandonsItsRecordOnly) {
  plugin.parsedVpdRecords = {record(kMain, "1", {}), record(kHardware, "1", {})};
  useFaults({}, {kMain});
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(failures(),
            (std::vector<std::string>{"Error adding Class KRXSG_SPROMFirmwareVPDMain"}));
  EXPECT_TRUE(plugin.spromMainInstances.empty());
  EXPECT_EQ(plugin.hardwareRevisionInstances.size(), 1U);
}

TEST_F(SPFirmwareVpdCollectorTest, RefusedPropertyAbandonsTheRecordAndIsNamed) {
  const struct {
    const char* what;
    const char* property;
    host::CimOperation operation;
    const char* failure;
  } cases[] = {
      {"the SP's name", "Name", host::CimOperation::kSetProperty, "Error adding SP Name property"},
      {"a text", "Checksum", host::CimOperation::kSetProperty, "Error adding Property Checksum"},
      {"the node", "SourceNode", host::CimOperation::kSetProperty,
       "Error adding Property SourceNode"},
      {"the name read for the node", "Name", host::CimOperation::kGetProperty,
       "Error adding Property SourceNode"},
  };
  for (const auto& c : cases) {
    plugin.parsedVpdRecords = {record(kMain, "1", {{"Checksum", "1"}, {"Version", "2"}})};
    failProperty(kMain, c.property, c.operation);
    log.clear();
    EXPECT_EQ(collect(), 0) << c.what;
    EXPECT_EQ(failures(), std::vector<std::string>{c.failure}) << c.what;
    EXPECT_TRUE(plugin.spromMainInstances.empty()) << c.what;
  }
}

TEST_F(SPFirmwareVpdCollectorTest, PropertyThatTheClassDoesNotHaveIsNamed) {
  plugin.parsedVpdRecords = {record(kHardware, "1", {{"NoSuchProperty", "1"}})};
  collect();
  EXPECT_EQ(failures(), std::vector<std::string>{"Error adding Property NoSuchProperty"});
}

TEST_F(SPFirmwareVpdCollectorTest, MissingComputerSystemClassPasses) {
  plugin.parsedVpdRecords = {record(kHardware, "1", {})};
  useFaults({}, {"KRXSG_QLA_ComputerSystem"});
  EXPECT_THROW(collect(), TVELException);
}

TEST_F(SPFirmwareVpdCollectorTest, ComputerSystemsAreReadWithoutACatch) {
  const struct {
    const char* what;
    host::CimOperation operation;
    const char* property;
  } cases[] = {
      {"class lookup", host::CimOperation::kGetClass, ""},
      {"enumeration", host::CimOperation::kEnumerateInstances, ""},
      {"node number", host::CimOperation::kGetProperty, "SourceNode"},
      {"description", host::CimOperation::kGetProperty, "Description"},
  };
  for (const auto& c : cases) {
    plugin.parsedVpdRecords = {record(kHardware, "1", {})};
    failProperty("KRXSG_QLA_ComputerSystem", c.property, c.operation);
    addComputerSystem(1, "KRX Quellon Link Adapter II");
    EXPECT_THROW(collect(), TVELException) << c.what;
    EXPECT_EQ(log, Log{}) << c.what;
    EXPECT_TRUE(plugin.hardwareRevisionInstances.empty()) << c.what;
  }
}

TEST_F(SPFirmwareVpdCollectorTest, OtherExceptionsPass) {
  const struct {
    const char* what;
    host::CimOperation operation;
    const char* property;
  } cases[] = {
      {"class lookup", host::CimOperation::kGetClass, ""},
      {"creation", host::CimOperation::kCreateInstance, ""},
      {"the SP's name", host::CimOperation::kSetProperty, "Name"},
      {"a text", host::CimOperation::kSetProperty, "Version"},
      {"the name read for the node", host::CimOperation::kGetProperty, "Name"},
      {"the node", host::CimOperation::kSetProperty, "SourceNode"},
  };
  for (const auto& c : cases) {
    plugin.parsedVpdRecords = {record(kMain, "1", {{"Version", "2"}})};
    useFaults({{.operation = c.operation,
                .className = kMain,
                .propertyName = c.property,
                .nth = std::nullopt,
                .throwsRuntimeError = true}});
    EXPECT_THROW(collect(), std::runtime_error) << c.what;
    EXPECT_EQ(failures(), std::vector<std::string>{}) << c.what;
    EXPECT_TRUE(plugin.spromMainInstances.empty()) << c.what;
  }
}

TEST_F(SPFirmwareVpdCollectorTest, RecordWithoutAClassBecomesNoInstance) {
  plugin.parsedVpdRecords = {record("", "1", {})};
  EXPECT_EQ(collect(), 0);
  EXPECT_EQ(failures(), std::vector<std::string>{});
}

}  // namespace
}  // namespace spfirmwarevpd::test
