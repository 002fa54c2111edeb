// SPDX-License-Identifier: Apache-2.0
#include "host/machine/machinefile.h"

#include <algorithm>

#include "host/files/wholefile.h"
#include "host/machine/cimvaluefield.h"
#include "host/machine/jsondocument.h"
#include "host/machine/machinebudget.h"
#include "host/machine/machinedocument.h"
#include "host/machine/machinenames.h"
#include "host/machine/schemanames.h"
#include "host/machine/smbiossection.h"
#include "host/machine/spsection.h"
#include "host/text/hextext.h"
#include "host/text/utf8.h"
#include "velhost/schema.h"

namespace velhost {
namespace {

using NKRXVEL20::host::CimOperation;
using NKRXVEL20::host::ClassSchema;
using NKRXVEL20::host::Fault;
using NKRXVEL20::host::PropertyList;

struct DocumentReading {
  std::filesystem::path folder;
  MachineFile machine;
};

const ClassSchema& classNamed(const Cursor& at, const std::string& name) {
  const ClassSchema* const found = NKRXVEL20::host::findClass(name);
  if (found == nullptr) at.fail("the schema has no class of this name" + classSuggestion(name));
  return *found;
}

std::string readClassName(const Cursor& at) { return std::string(classNamed(at, at.text()).name); }

PropertyList readProperties(const Cursor& at, const ClassSchema& cimClass) {
  PropertyList properties;
  at.eachMember([&](const std::string& name, const Cursor& value) {
    const auto* const property = NKRXVEL20::host::findProperty(cimClass, name);
    if (property == nullptr) {
      value.fail(std::string(cimClass.name) + " has no property of this name" +
                 propertySuggestion(name, cimClass));
    }
    properties.emplace_back(name, cimValue(value, property->type));
  });
  return properties;
}

void readInstances(const Cursor& at, DocumentReading& document) {
  at.eachMember([&](const std::string& name, const Cursor& list) {
    const ClassSchema& cimClass = classNamed(list, name);
    document.machine.givenClasses.push_back(name);
    if (cimClass.isAbstract) list.fail("the class is abstract: it has no instances of its own");
    list.eachElement([&](const Cursor& item) {
      document.machine.instances.push_back({name, readProperties(item, cimClass)});
    });
  });
}

void readCollectors(const Cursor& at, DocumentReading& document) {
  at.eachElement([&](const Cursor& item) { document.machine.collectors.push_back(item.text()); });
}

void readMissingClasses(const Cursor& at, DocumentReading& document) {
  std::vector<std::string>& names = document.machine.missingClasses;
  at.eachElement([&](const Cursor& item) {
    std::string name = readClassName(item);
    if (std::ranges::find(names, name) == names.end()) names.push_back(std::move(name));
  });
}

constexpr Member<Fault> kFaultMembers[] = {
    {"operation", [](const Cursor& at, Fault& f) { f.operation = choice(at, kOperations); }, true},
    {"class", [](const Cursor& at, Fault& f) { f.className = readClassName(at); }},
    {"property", [](const Cursor& at, Fault& f) { f.propertyName = at.text(); }},
    {"nth", [](const Cursor& at, Fault& f) { f.nth = at.integer<unsigned>(1); }},
    {"throw",
     [](const Cursor& at, Fault& f) { f.throwsRuntimeError = choice(at, kThrownAsRuntimeError); }},
};

bool hasProperty(CimOperation operation) {
  return operation == CimOperation::kGetProperty || operation == CimOperation::kSetProperty;
}

bool schemaHasProperty(const std::string& className, const std::string& propertyName) {
  return std::ranges::any_of(NKRXVEL20::host::schema(), [&](const ClassSchema& cimClass) {
    return (className.empty() || cimClass.name == className) &&
           NKRXVEL20::host::findProperty(cimClass, propertyName) != nullptr;
  });
}

Fault readFault(const Cursor& at) {
  Fault fault;
  readMembers(at, kFaultMembers, fault);
  if (!at.has("property")) return fault;
  if (!hasProperty(fault.operation)) at.failAt("property", "the operation has no property");
  if (!schemaHasProperty(fault.className, fault.propertyName)) {
    const std::string who =
        fault.className.empty() ? "no class has a" : fault.className + " has no";
    at.failAt("property", who + " property of this name");
  }
  return fault;
}

void readFaults(const Cursor& at, DocumentReading& document) {
  at.eachElement([&](const Cursor& item) { document.machine.faults.push_back(readFault(item)); });
}

constexpr Member<DocumentReading> kMembers[] = {
    {"format", [](const Cursor&, DocumentReading&) {}, true},  // looked at before all others
    {"$schema", [](const Cursor& at, DocumentReading&) { static_cast<void>(at.text()); }},
    {"name", [](const Cursor& at, DocumentReading& d) { d.machine.name = at.text(); }, true},
    {"description",
     [](const Cursor& at, DocumentReading& d) { d.machine.description = at.text(); }},
    {"machine_type",
     [](const Cursor& at, DocumentReading& d) { d.machine.machineType = at.text(); }},
    {"smbios", [](const Cursor& at,
                  DocumentReading& d) { d.machine.smbios = readSmbiosSection(at, d.folder); }},
    {"sp", [](const Cursor& at, DocumentReading& d) { d.machine.sp = readSpSection(at); }},
    {"instances", readInstances},
    {"collectors", readCollectors},
    {"missing_classes", readMissingClasses},
    {"faults", readFaults},
};

MachineFile machineOfDump(std::string_view dump, const std::filesystem::path& file) {
  MachineFile machine;
  machine.name = toUtf8(file.filename().string());
  try {
    machine.smbios =
        NKRXVEL20::host::parseDmiDump(Bytes(dump.begin(), dump.end()), kMostStructures);
  } catch (const NKRXVEL20::host::DmiDumpError& error) {
    throw MachineFileError(file.string() + ": " + error.what());
  }
  return machine;
}

// Its "$schema" names the language of schemas; that of a machine file names a schema.
bool isJsonSchema(const Json& document) {
  if (!document.is_object() || document.contains("format")) return false;
  const auto language = document.find("$schema");
  return language != document.end() && language->is_string() &&
         language->get_ref<const std::string&>().find("://json-schema.org/") != std::string::npos;
}

// Looked at first: in a document of another format everything else is likely wrong as well.
void checkFormat(const Cursor& document) {
  if (!document.has("format")) return;
  document.eachMember([](const std::string& key, const Cursor& value) {
    if (key == "format" && value.text() != kMachineFormat) {
      value.fail("must be \"" + std::string(kMachineFormat) + '"');
    }
  });
}

}  // namespace

// A DMI dump begins with an entry point (DSP0134, 5.2); no JSON text begins so.
bool isDump(std::string_view text) {
  return text.starts_with("_SM_") || text.starts_with("_SM3_") || text.starts_with("_DMI_");
}

MachineFile machineOfDocument(const Json& document, const std::filesystem::path& file) {
  const Cursor root(document);
  DocumentReading reading{file.parent_path(), {}};
  if (isJsonSchema(document))
    throw JsonSchemaFound(file.string() + ": a JSON Schema, no machine file");
  checkFormat(root);
  readMembers(root, kMembers, reading);
  return std::move(reading.machine);
}

MachineFile parseMachineFile(std::string_view text, const std::filesystem::path& file) {
  if (isDump(text)) return machineOfDump(text, file);
  try {
    return machineOfDocument(parseDocument(text), file);
  } catch (const DocumentError& error) {
    throw MachineFileError(file.string() + ":" + error.what());
  }
}

std::string machineFileName(const std::filesystem::path& file) {
  return file == kStandardInput ? "standard input" : file.string();
}

std::string readInput(const std::filesystem::path& file) {
  try {
    return file == kStandardInput ? readStandardInput()
                                  : readWholeFile(file, ReadFrom::kFileOrStream);
  } catch (const FileReadError& error) {
    throw MachineFileError(machineFileName(file) + ": cannot be read: " + error.what());
  }
}

MachineFile readMachineFile(const std::filesystem::path& file) {
  return parseMachineFile(readInput(file), machineFileName(file));
}

}  // namespace velhost
