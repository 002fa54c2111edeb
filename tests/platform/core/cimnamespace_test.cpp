// SPDX-License-Identifier: Apache-2.0
#include "velhost/cimnamespace.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <boost/make_shared.hpp>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "vel/exception.h"
#include "velhost/schema.h"

namespace NKRXVEL20::host {

bool operator==(const PublishedInstance& a, const PublishedInstance& b) {
  return a.className == b.className && a.properties == b.properties;
}

namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using NamespacePtr = boost::shared_ptr<CimNamespace>;
using InstancePtr = boost::shared_ptr<ICIMInstance>;

NamespacePtr makeNamespace(std::vector<std::string> missing = {}, std::vector<Fault> faults = {}) {
  return boost::make_shared<CimNamespace>(std::move(missing), std::move(faults));
}

InstancePtr newInstance(const NamespacePtr& ns, const std::string& className) {
  return ns->GetClass(className, {})->CreateInstance();
}

std::vector<InstancePtr> instancesOf(const NamespacePtr& ns, const std::string& className) {
  std::vector<InstancePtr> found;
  ns->GetClass(className, {})
      ->GetInstances(TAddToVectorCallback<ICIMInstance>(found), true, TCIMValueMap());
  return found;
}

// "Description" of each instance of the class.
std::vector<std::string> descriptionsOf(const NamespacePtr& ns, const std::string& className) {
  std::vector<std::string> texts;
  for (const InstancePtr& instance : instancesOf(ns, className)) {
    texts.push_back(instance->GetProperty("Description", {})->GetValueAsString());
  }
  return texts;
}

// "ok", the code of a TVELException or the text "runtime_error".
std::string outcome(const std::function<void()>& call) {
  try {
    call();
  } catch (const TVELException& e) {
    return std::to_string(e.GetCode());
  } catch (const std::runtime_error&) {
    return "runtime_error";
  }
  return "ok";
}

TEST(CimNamespace, GivesTheClassesOfTheSchema) {
  const auto ns = makeNamespace({"KRXSG_IPMIFRU"});
  EXPECT_EQ("KRXSG_Vpd", ns->GetClass("KRXSG_Vpd", {})->GetName({}));
  EXPECT_EQ("5", outcome([&] { ns->GetClass("KRXSG_Nothing", {}); }));
  EXPECT_EQ("5", outcome([&] { ns->GetClass("KRXSG_IPMIFRU", {}); }));
}

TEST(CimNamespace, ARequestMayNameAMissingClass) {
  const auto ns = makeNamespace({"KRXSG_IPMIFRU"});
  const auto handle = ns->requestClass("KRXSG_IPMIFRU");
  EXPECT_EQ("KRXSG_IPMIFRU", handle->GetName({}));
  EXPECT_EQ("5", outcome([&] { handle->CreateInstance(); }));
  std::vector<InstancePtr> found;
  EXPECT_EQ("5", outcome([&] {
              handle->GetInstances(TAddToVectorCallback<ICIMInstance>(found), true, {});
            }));
  EXPECT_EQ("5", outcome([&] { ns->requestClass("KRXSG_Nothing"); }));
}

TEST(CimNamespace, APropertyNeverSetIsEmpty) {
  const auto ns = makeNamespace();
  const auto property = newInstance(ns, "KRXSG_QLA_ComputerSystem")->GetProperty("SourceNode", {});
  EXPECT_EQ("SourceNode", property->GetName());
  EXPECT_EQ(TCIMValue(), property->GetValue());
  EXPECT_EQ("", property->GetValueAsString());
  EXPECT_EQ(0, property->GetValue().ToUint8());
}

TEST(CimNamespace, APropertyKeepsWhatWasSetLast) {
  const auto ns = makeNamespace();
  const auto instance = newInstance(ns, "KRXSG_QLA_ComputerSystem");
  instance->SetProperty("SourceNode", TCIMValue(std::uint8_t{1}), {});
  instance->SetProperty("SourceNode", TCIMValue(std::uint8_t{2}), {});
  EXPECT_EQ(TCIMValue(std::uint8_t{2}), instance->GetProperty("SourceNode", {})->GetValue());
  EXPECT_EQ("2", instance->GetProperty("SourceNode", {})->GetValueAsString());
}

TEST(CimNamespace, RefusesWhatTheSchemaDoesNotHave) {
  const auto ns = makeNamespace();
  const auto instance = newInstance(ns, "KRXSG_SystemBIOSElement");
  const struct {
    const char* what;
    std::function<void()> call;
    const char* outcome;
  } kCases[] = {
      {"read an unknown name", [&] { instance->GetProperty("Nothing", {}); }, "12"},
      {"read the empty name", [&] { instance->GetProperty("", {}); }, "12"},
      {"set an unknown name", [&] { instance->SetProperty("name", TCIMValue(""), {}); }, "12"},
      {"set a text for a number", [&] { instance->SetProperty("SourceNode", TCIMValue("1"), {}); },
       "13"},
      {"set a wider number",
       [&] { instance->SetProperty("SourceNode", TCIMValue(std::uint16_t{1}), {}); }, "13"},
      {"set a text for a date",
       [&] { instance->SetProperty("ReleaseDate", TCIMValue("03/15/07"), {}); }, "13"},
      {"set an empty value", [&] { instance->SetProperty("Name", TCIMValue(), {}); }, "13"},
      {"set the schema's type", [&] { instance->SetProperty("PrimaryBIOS", TCIMValue(true), {}); },
       "ok"},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.outcome, outcome(c.call)) << c.what;
  instance->AddToClass({});
  EXPECT_THAT(ns->takePublished(),
              ElementsAre(PublishedInstance{"KRXSG_SystemBIOSElement",
                                            {{"PrimaryBIOS", TCIMValue(true)}}}));
}

TEST(CimNamespace, PublishesASnapshotInTheOrderOfFirstSetting) {
  const auto ns = makeNamespace();
  const auto first = newInstance(ns, "KRXSG_Vpd");
  const auto second = newInstance(ns, "KRXSG_cKVM");
  first->SetProperty("Vendor", TCIMValue("V"), {});
  first->SetProperty("Name", TCIMValue("N"), {});
  first->SetProperty("Vendor", TCIMValue("W"), {});
  second->AddToClass({});
  first->AddToClass({});
  first->SetProperty("Location", TCIMValue("L"), {});
  first->AddToClass({});
  EXPECT_THAT(ns->takePublished(),
              ElementsAre(PublishedInstance{"KRXSG_cKVM", {}},
                          PublishedInstance{"KRXSG_Vpd",
                                            {{"Vendor", TCIMValue("W")}, {"Name", TCIMValue("N")}}},
                          PublishedInstance{"KRXSG_Vpd",
                                            {{"Vendor", TCIMValue("W")},
                                             {"Name", TCIMValue("N")},
                                             {"Location", TCIMValue("L")}}}));
  EXPECT_THAT(ns->takePublished(), IsEmpty());
}

TEST(CimNamespace, EnumeratesCompanionsAndWhatWasAddedOnce) {
  const auto ns = makeNamespace();
  ns->addCompanion("KRXSG_USBDevice", {{"Description", TCIMValue("first")}});
  ns->addCompanion("KRXSG_TapeDrive", {{"Description", TCIMValue("other class")}});
  ns->addCompanion("KRXSG_USBDevice", {});
  const auto added = newInstance(ns, "KRXSG_USBDevice");
  added->SetProperty("Description", TCIMValue("added"), {});
  EXPECT_THAT(descriptionsOf(ns, "KRXSG_USBDevice"), ElementsAre("first", ""));
  added->AddToClass({});
  added->AddToClass({});
  EXPECT_THAT(descriptionsOf(ns, "KRXSG_USBDevice"), ElementsAre("first", "", "added"));
  EXPECT_THAT(descriptionsOf(ns, "KRXSG_IPMIFRU"), IsEmpty());
}

TEST(CimNamespace, CompanionsAreNotPublishedUntilAPluginAddsThem) {
  const auto ns = makeNamespace();
  ns->addCompanion("KRXSG_USBDevice", {{"Description", TCIMValue("d")}});
  EXPECT_THAT(ns->takePublished(), IsEmpty());
  instancesOf(ns, "KRXSG_USBDevice").front()->AddToClass({});
  EXPECT_THAT(ns->takePublished(),
              ElementsAre(PublishedInstance{"KRXSG_USBDevice", {{"Description", TCIMValue("d")}}}));
  EXPECT_THAT(descriptionsOf(ns, "KRXSG_USBDevice"), ElementsAre("d"));
}

TEST(CimNamespace, WhatIsSetThroughOneHandleIsReadThroughAnother) {
  const auto ns = makeNamespace();
  ns->addCompanion("KRXSG_USBDevice", {});
  instancesOf(ns, "KRXSG_USBDevice").front()->SetProperty("Description", TCIMValue("set"), {});
  EXPECT_THAT(descriptionsOf(ns, "KRXSG_USBDevice"), ElementsAre("set"));
}

TEST(CimNamespace, EnumerationEndsWhenTheCallbackSaysSo) {
  const auto ns = makeNamespace();
  for (int i = 0; i < 3; ++i) ns->addCompanion("KRXSG_USBDevice", {});
  int seen = 0;
  ns->GetClass("KRXSG_USBDevice", {})
      ->GetInstances([&](InstancePtr) { return ++seen < 2; }, true, {});
  EXPECT_EQ(2, seen);
}

TEST(CimNamespace, ACallbackMayAddToTheClassThatItWalks) {
  const auto ns = makeNamespace();
  ns->addCompanion("KRXSG_USBDevice", {});
  ns->addCompanion("KRXSG_USBDevice", {});
  ns->GetClass("KRXSG_USBDevice", {})
      ->GetInstances(
          [&](InstancePtr) {
            newInstance(ns, "KRXSG_USBDevice")->AddToClass({});
            return true;
          },
          true, {});
  EXPECT_EQ(4U, instancesOf(ns, "KRXSG_USBDevice").size());
}

TEST(CimNamespace, RefusesWrongCompanions) {
  const auto ns = makeNamespace();
  EXPECT_EQ("5", outcome([&] { ns->addCompanion("KRXSG_Nothing", {}); }));
  EXPECT_EQ("12", outcome([&] { ns->addCompanion("KRXSG_USBDevice", {{"X", TCIMValue("")}}); }));
  EXPECT_EQ("13", outcome([&] {
              ns->addCompanion("KRXSG_USBDevice", {{"Description", TCIMValue(true)}});
            }));
  EXPECT_THAT(instancesOf(ns, "KRXSG_USBDevice"), IsEmpty());
}

// A schema of its own, for as long as the test runs.
class CimNamespaceDeep : public testing::Test {
 protected:
  CimNamespaceDeep() : kept_(currentSchema()) {
    const SchemaFile file{"test.mof", R"(
      Qualifier Abstract : boolean = false, Scope(class), Flavor(Restricted);
      [Abstract] class T_Any { string Name; };
      class T_Left : T_Any {};
      class T_Right : T_Any { uint8 Size; };
      class T_LeftLeaf : T_Left {};
      class T_Other { string Name; };)"};
    setSchema(parseSchema({&file, 1}));
  }
  ~CimNamespaceDeep() override { setSchema(kept_); }

  // One instance each, named as its class.
  static NamespacePtr filled(std::vector<std::string> missing = {},
                             std::vector<Fault> faults = {}) {
    auto ns = makeNamespace(std::move(missing), std::move(faults));
    for (const char* const name : {"T_LeftLeaf", "T_Right", "T_Left", "T_Other"}) {
      ns->addCompanion(name, {{"Name", TCIMValue(name)}});
    }
    return ns;
  }

  static std::vector<std::string> names(const NamespacePtr& ns, const std::string& className,
                                        bool deep) {
    std::vector<std::string> found;
    ns->GetClass(className, {})
        ->GetInstances(
            [&](InstancePtr instance) {
              found.push_back(instance->GetProperty("Name", {})->GetValueAsString());
              return true;
            },
            deep, {});
    return found;
  }

 private:
  SchemaPtr kept_;
};

TEST_F(CimNamespaceDeep, GivesTheInstancesOfDerivedClassesToo) {
  const auto ns = filled();
  EXPECT_THAT(names(ns, "T_Any", true), ElementsAre("T_Left", "T_Right", "T_LeftLeaf"));
  EXPECT_THAT(names(ns, "T_Left", true), ElementsAre("T_Left", "T_LeftLeaf"));
  EXPECT_THAT(names(ns, "T_LeftLeaf", true), ElementsAre("T_LeftLeaf"));
  EXPECT_THAT(names(ns, "T_Other", true), ElementsAre("T_Other"));
}

TEST_F(CimNamespaceDeep, WithoutItGivesTheClasssOwnAlone) {
  const auto ns = filled();
  EXPECT_THAT(names(ns, "T_Any", false), IsEmpty());
  EXPECT_THAT(names(ns, "T_Left", false), ElementsAre("T_Left"));
}

TEST_F(CimNamespaceDeep, EachInstanceKeepsTheClassThatItIsOf) {
  const auto ns = filled();
  std::vector<InstancePtr> found;
  ns->GetClass("T_Any", {})->GetInstances(TAddToVectorCallback<ICIMInstance>(found), true, {});
  ASSERT_EQ(3U, found.size());
  EXPECT_EQ("12", outcome([&] { found[0]->GetProperty("Size", {}); }));
  found[1]->SetProperty("Size", TCIMValue(std::uint8_t{1}), {});
  found[1]->AddToClass({});
  EXPECT_EQ("T_Right", ns->takePublished().front().className);
}

TEST_F(CimNamespaceDeep, AMissingClassHasNoInstancesForItsSuperclass) {
  EXPECT_THAT(names(filled({"T_Left"}), "T_Any", true), ElementsAre("T_Right", "T_LeftLeaf"));
}

TEST_F(CimNamespaceDeep, AFaultCountsForTheClassThatIsEnumerated) {
  const auto ns = filled({}, {{CimOperation::kEnumerateInstances, "T_Left", "", {}, false}});
  EXPECT_EQ(3U, names(ns, "T_Any", true).size());
  EXPECT_EQ("1", outcome([&] { names(ns, "T_Left", true); }));
}

TEST_F(CimNamespaceDeep, TheCallbackEndsItAmongDerivedClassesToo) {
  int seen = 0;
  filled()->GetClass("T_Any", {})->GetInstances([&](InstancePtr) { return ++seen < 2; }, true, {});
  EXPECT_EQ(2, seen);
}

TEST_F(CimNamespaceDeep, AnAbstractClassHasNoInstancesOfItsOwn) {
  const auto ns = filled();
  EXPECT_EQ("7", outcome([&] { newInstance(ns, "T_Any"); }));
  EXPECT_EQ("7", outcome([&] { ns->addCompanion("T_Any", {}); }));
}

std::string complaint(const std::function<void()>& call) {
  try {
    call();
  } catch (const TVELException& e) {
    return e.what();
  }
  return "none";
}

TEST_F(CimNamespaceDeep, EachComplaintSaysWhatIsWrong) {
  const auto ns = filled({"T_Other"});
  const auto right = newInstance(ns, "T_Right");
  const struct {
    std::function<void()> call;
    const char* complaint;
  } kCases[] = {
      {[&] { ns->GetClass("T_Nothing", {}); }, "no class T_Nothing"},
      {[&] { ns->requestClass("T_Other")->CreateInstance(); }, "no class T_Other"},
      {[&] { newInstance(ns, "T_Any"); }, "T_Any is abstract: it has no instances of its own"},
      {[&] { right->GetProperty("Colour", {}); }, "T_Right has no property Colour"},
      {[&] { right->SetProperty("Size", TCIMValue("1"), {}); }, "T_Right.Size is a uint8"},
      {[&] { right->SetProperty("Name", TCIMValue("n"), {}); }, "none"},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.complaint, complaint(c.call));
}

TEST_F(CimNamespaceDeep, ANamespaceKeepsTheSchemaThatItWasMadeWith) {
  const auto ns = filled();
  setSchema(nullptr);
  EXPECT_EQ(3U, names(ns, "T_Any", true).size());
  EXPECT_EQ("5", outcome([&] { makeNamespace()->GetClass("T_Any", {}); }));
}

TEST(CimNamespace, HandlesOutliveIt) {
  auto ns = makeNamespace();
  const auto vpd = ns->GetClass("KRXSG_Vpd", {});
  const auto instance = vpd->CreateInstance();
  ns.reset();
  instance->SetProperty("Name", TCIMValue("N"), {});
  instance->AddToClass({});
  std::vector<InstancePtr> found;
  vpd->GetInstances(TAddToVectorCallback<ICIMInstance>(found), false, {});
  ASSERT_EQ(1U, found.size());
  EXPECT_EQ("N", found[0]->GetProperty("Name", {})->GetValueAsString());
}

// Every operation twice, in a fixed order, each with its outcome.
std::vector<std::string> outcomes(const std::vector<Fault>& faults) {
  const auto ns = makeNamespace({}, faults);
  const auto request = ns->requestClass("KRXSG_USBDevice");
  ns->addCompanion("KRXSG_USBDevice", {{"Description", TCIMValue("d")}});
  InstancePtr instance;
  std::vector<std::string> all;
  for (int round = 0; round < 2; ++round) {
    std::vector<InstancePtr> found;
    all.push_back(outcome([&] { ns->GetClass("KRXSG_USBDevice", {}); }));
    all.push_back(outcome(
        [&] { request->GetInstances(TAddToVectorCallback<ICIMInstance>(found), true, {}); }));
    all.push_back(outcome([&] { instance = request->CreateInstance(); }));
    if (instance == nullptr) return all;
    all.push_back(outcome([&] { instance->SetProperty("DeviceID", TCIMValue("x"), {}); }));
    all.push_back(outcome([&] { instance->GetProperty("DeviceID", {}); }));
    all.push_back(outcome([&] { instance->AddToClass({}); }));
  }
  return all;
}

Fault fault(CimOperation operation, std::optional<unsigned> nth = std::nullopt) {
  return {operation, "", "", nth, false};
}

TEST(CimNamespaceFaults, FailTheOperationThatTheyName) {
  using Outcomes = std::vector<std::string>;
  const struct {
    const char* what;
    Fault fault;
    Outcomes outcomes;
  } kCases[] = {
      // Order: get class, enumerate, create, set, get, add; then all again.
      {"get class",
       fault(CimOperation::kGetClass),
       {"1", "ok", "ok", "ok", "ok", "ok", "1", "ok", "ok", "ok", "ok", "ok"}},
      {"enumerate",
       fault(CimOperation::kEnumerateInstances, 1),
       {"ok", "1", "ok", "ok", "ok", "ok", "ok", "ok", "ok", "ok", "ok", "ok"}},
      {"create",
       fault(CimOperation::kCreateInstance, 2),
       {"ok", "ok", "ok", "ok", "ok", "ok", "ok", "ok", "1", "ok", "ok", "ok"}},
      {"create, each", fault(CimOperation::kCreateInstance), {"ok", "ok", "1"}},
      {"set",
       fault(CimOperation::kSetProperty, 1),
       {"ok", "ok", "ok", "1", "ok", "ok", "ok", "ok", "ok", "ok", "ok", "ok"}},
      {"get",
       fault(CimOperation::kGetProperty, 2),
       {"ok", "ok", "ok", "ok", "ok", "ok", "ok", "ok", "ok", "ok", "1", "ok"}},
      {"add",
       fault(CimOperation::kAddToClass),
       {"ok", "ok", "ok", "ok", "ok", "1", "ok", "ok", "ok", "ok", "ok", "1"}},
      {"a third call that never comes", fault(CimOperation::kAddToClass, 3), Outcomes(12, "ok")},
      {"another class",
       {CimOperation::kGetClass, "KRXSG_Vpd", "", std::nullopt, false},
       Outcomes(12, "ok")},
      {"another property",
       {CimOperation::kSetProperty, "KRXSG_USBDevice", "Description", std::nullopt, false},
       Outcomes(12, "ok")},
      {"class and property",
       {CimOperation::kSetProperty, "KRXSG_USBDevice", "DeviceID", 2, true},
       {"ok", "ok", "ok", "ok", "ok", "ok", "ok", "ok", "ok", "runtime_error", "ok", "ok"}},
  };
  for (const auto& c : kCases) EXPECT_EQ(c.outcomes, outcomes({c.fault})) << c.what;
}

TEST(CimNamespaceFaults, ComeBeforeAnythingElse) {
  const auto ns =
      makeNamespace({"KRXSG_IPMIFRU"}, {{CimOperation::kGetClass, "", "", {}, false},
                                        {CimOperation::kGetProperty, "", "", {}, false},
                                        {CimOperation::kSetProperty, "", "", {}, false},
                                        {CimOperation::kAddToClass, "", "", {}, false}});
  const auto instance = ns->requestClass("KRXSG_USBDevice")->CreateInstance();
  EXPECT_EQ("1", outcome([&] { ns->GetClass("KRXSG_Nothing", {}); }));
  EXPECT_EQ("1", outcome([&] { ns->GetClass("KRXSG_IPMIFRU", {}); }));
  EXPECT_EQ("1", outcome([&] { instance->GetProperty("Nothing", {}); }));
  EXPECT_EQ("1", outcome([&] { instance->SetProperty("Nothing", TCIMValue(""), {}); }));
  EXPECT_EQ("1", outcome([&] { instance->AddToClass({}); }));
  EXPECT_THAT(ns->takePublished(), IsEmpty());
}

TEST(CimNamespaceFaults, EachCountsTheCallAndTheFirstDueThrows) {
  // The second call is due in both; the third only in the second fault, whose count went on.
  const auto ns = makeNamespace({}, {{CimOperation::kGetClass, "", "", 2, true},
                                     {CimOperation::kGetClass, "KRXSG_Vpd", "", 2, false},
                                     {CimOperation::kGetClass, "KRXSG_Vpd", "", 3, false}});
  std::vector<std::string> seen;
  for (int i = 0; i < 4; ++i) seen.push_back(outcome([&] { ns->GetClass("KRXSG_Vpd", {}); }));
  EXPECT_THAT(seen, ElementsAre("ok", "runtime_error", "1", "ok"));
}

// An earlier fault that is due throws, whatever each of them names.
TEST(CimNamespaceFaults, TheOrderOfTheListDecides) {
  const Fault each = {CimOperation::kSetProperty, "", "", std::nullopt, false};
  const Fault ofClass = {CimOperation::kSetProperty, "KRXSG_USBDevice", "", 1, true};
  const Fault ofProperty = {CimOperation::kSetProperty, "", "DeviceID", 1, true};
  const Fault ofBoth = {CimOperation::kSetProperty, "KRXSG_USBDevice", "DeviceID", 1, true};
  for (const Fault& narrow : {ofClass, ofProperty, ofBoth}) {
    EXPECT_EQ("runtime_error", outcomes({narrow, each})[3]);
    EXPECT_EQ("1", outcomes({narrow, each})[9]);
    EXPECT_EQ("1", outcomes({each, narrow})[3]);
  }
}

// Each fault held to each call would be ten thousand million comparisons.
TEST(CimNamespaceFaults, ManyAreNotEachHeldToEachCall) {
  constexpr unsigned kCalls = 100'000;
  std::vector<Fault> faults;
  for (unsigned nth = 1; nth <= kCalls; ++nth) {
    faults.push_back(fault(CimOperation::kGetClass, 2 * nth));
  }
  const auto ns = makeNamespace({}, faults);
  unsigned failed = 0;
  for (unsigned i = 0; i < kCalls; ++i) {
    if (outcome([&] { ns->GetClass("KRXSG_Vpd", {}); }) == "1") ++failed;
  }
  EXPECT_EQ(kCalls / 2, failed);
}

TEST(CimNamespaceFaults, TheHostsOwnCallsMeetNoneAndAreNotCounted) {
  const auto ns = makeNamespace(
      {}, {fault(CimOperation::kGetClass, 1), fault(CimOperation::kCreateInstance, 1),
           fault(CimOperation::kSetProperty, 1), fault(CimOperation::kAddToClass, 1)});
  const auto request = ns->requestClass("KRXSG_USBDevice");
  ns->addCompanion("KRXSG_USBDevice", {{"Description", TCIMValue("d")}});
  EXPECT_EQ("1", outcome([&] { ns->GetClass("KRXSG_USBDevice", {}); }));
  EXPECT_EQ("1", outcome([&] { request->CreateInstance(); }));
  const auto instance = request->CreateInstance();
  EXPECT_EQ("1", outcome([&] { instance->SetProperty("DeviceID", TCIMValue("x"), {}); }));
  EXPECT_EQ("1", outcome([&] { instance->AddToClass({}); }));
}

NamespacePtr withUsbDevice() {
  const NamespacePtr ns = makeNamespace();
  ns->addCompanion("KRXSG_USBDevice", {{"Description", TCIMValue("first")}});
  return ns;
}

TEST(CimNamespace, EnumerationIsAnnouncedAndMayFillTheClassOrBeKeptFromIt) {
  const NamespacePtr ns = withUsbDevice();
  std::vector<std::string> announced;
  ns->setOnEnumeration([&](const std::string& name) {
    announced.push_back(name);
    if (name == "KRXSG_USBDevice") ns->addCompanion(name, {{"Description", TCIMValue("second")}});
    return name != "KRXSG_TapeDrive";
  });
  ns->addCompanion("KRXSG_TapeDrive", {{"Description", TCIMValue("kept back")}});
  EXPECT_THAT(descriptionsOf(ns, "KRXSG_USBDevice"), ElementsAre("first", "second"));
  EXPECT_THAT(descriptionsOf(ns, "KRXSG_TapeDrive"), IsEmpty());
  EXPECT_THAT(announced, ElementsAre("KRXSG_USBDevice", "KRXSG_TapeDrive"));
}

TEST(CimNamespace, DeepEnumerationIsAnnouncedForEachClass) {
  const NamespacePtr ns = makeNamespace();
  std::vector<std::string> announced;
  ns->setOnEnumeration([&](const std::string& name) {
    announced.push_back(name);
    return true;
  });
  instancesOf(ns, "CIM_LogicalDevice");
  EXPECT_THAT(announced, ElementsAre("CIM_LogicalDevice", "KRXSG_USBDevice", "KRXSG_TapeDrive"));
}

TEST(CimNamespace, ForgottenInstancesAreNoneOfTheClassUntilTheyAreAddedAnew) {
  const NamespacePtr ns = withUsbDevice();
  const InstancePtr own = newInstance(ns, "KRXSG_USBDevice");
  own->AddToClass({});
  ns->forget("KRXSG_USBDevice");
  EXPECT_THAT(descriptionsOf(ns, "KRXSG_USBDevice"), IsEmpty());
  own->AddToClass({});
  EXPECT_THAT(descriptionsOf(ns, "KRXSG_USBDevice"), ElementsAre(""));
}

TEST(CimNamespace, WhatWasPublishedIsTakenFromAPlaceOn) {
  const NamespacePtr ns = makeNamespace();
  newInstance(ns, "KRXSG_USBDevice")->AddToClass({});
  EXPECT_EQ(ns->publishedCount(), 1U);
  newInstance(ns, "KRXSG_TapeDrive")->AddToClass({});
  EXPECT_THAT(ns->takePublished(1), ElementsAre(PublishedInstance{"KRXSG_TapeDrive", {}}));
  EXPECT_THAT(ns->takePublished(), ElementsAre(PublishedInstance{"KRXSG_USBDevice", {}}));
}

TEST(CimNamespace, TellsWhichCallsItRefused) {
  const auto ns = makeNamespace({"KRXSG_IPMIFRU"},
                                {{CimOperation::kSetProperty, "KRXSG_Vpd", "Vendor", 1, false},
                                 {CimOperation::kAddToClass, "KRXSG_Vpd", "", {}, true}});
  const auto vpd = newInstance(ns, "KRXSG_Vpd");
  EXPECT_THAT(ns->takeRefusedCalls(), IsEmpty());
  EXPECT_EQ("1", outcome([&] { vpd->SetProperty("Vendor", TCIMValue("V"), {}); }));
  EXPECT_EQ("ok", outcome([&] { vpd->SetProperty("Vendor", TCIMValue("V"), {}); }));
  EXPECT_EQ("13", outcome([&] { vpd->SetProperty("Vendor", TCIMValue(true), {}); }));
  EXPECT_EQ("runtime_error", outcome([&] { vpd->AddToClass({}); }));
  EXPECT_EQ("5", outcome([&] { ns->GetClass("KRXSG_IPMIFRU", {}); }));
  EXPECT_EQ("5", outcome([&] { ns->requestClass("KRXSG_IPMIFRU")->CreateInstance(); }));
  EXPECT_THAT(ns->takeRefusedCalls(),
              ElementsAre(RefusedCall{CimOperation::kSetProperty, "KRXSG_Vpd", "Vendor", 2},
                          RefusedCall{CimOperation::kAddToClass, "KRXSG_Vpd", "", 1},
                          RefusedCall{CimOperation::kGetClass, "KRXSG_IPMIFRU", "", 1},
                          RefusedCall{CimOperation::kCreateInstance, "KRXSG_IPMIFRU", "", 1}));
  EXPECT_THAT(ns->takeRefusedCalls(), IsEmpty());
}

TEST(CimNamespace, KeepsNoEndlessListOfRefusedCalls) {
  const auto ns = makeNamespace();
  for (int i = 0; i < 2000; ++i) outcome([&] { ns->GetClass("No_" + std::to_string(i), {}); });
  EXPECT_EQ(1024U, ns->takeRefusedCalls().size());
}

TEST(CimNamespace, ShowsTheHostTheInstancesOfAClass) {
  const auto ns = makeNamespace({}, {{CimOperation::kEnumerateInstances, "", "", {}, false}});
  EXPECT_THAT(ns->instancesOf("KRXSG_USBDevice"), IsEmpty());
  ns->addCompanion("KRXSG_USBDevice", {{"Description", TCIMValue("a")}});
  newInstance(ns, "KRXSG_USBDevice")->AddToClass({});
  EXPECT_THAT(ns->instancesOf("KRXSG_USBDevice"),
              ElementsAre(PublishedInstance{"KRXSG_USBDevice", {{"Description", TCIMValue("a")}}},
                          PublishedInstance{"KRXSG_USBDevice", {}}));
  ns->forget("KRXSG_USBDevice");
  EXPECT_THAT(ns->instancesOf("KRXSG_USBDevice"), IsEmpty());
}

}  // namespace
}  // namespace NKRXVEL20::host
