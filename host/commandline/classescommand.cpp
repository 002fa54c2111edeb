// SPDX-License-Identifier: Apache-2.0
#include <string>

#include "host/collectors/collectorfiles.h"
#include "host/collectors/schemafolder.h"
#include "host/commandline/classnames.h"
#include "host/commandline/commands.h"
#include "host/files/outputscreen.h"
#include "host/files/standardstreams.h"
#include "host/formats/schemaformat.h"

namespace velhost {
namespace {

using NKRXVEL20::host::ClassSchema;

// Classes that have instances: the abstract ones are shown to those who name them.
ClassList concreteClasses() {
  ClassList classes;
  for (const ClassSchema& cimClass : NKRXVEL20::host::schema()) {
    if (!cimClass.isAbstract) classes.push_back(&cimClass);
  }
  return classes;
}

std::string classesText(Format format, const ClassList& named) {
  if (format == Format::kMof) {
    const auto schema = NKRXVEL20::host::currentSchema();
    return named.empty() ? mofText(*schema) : mofText(*schema, named);
  }
  const ClassList classes = named.empty() ? concreteClasses() : named;
  return format == Format::kJson ? schemaJson(classes)
                                 : schemaTable(classes, standardOutputScreen());
}

}  // namespace

int run(const ClassesCommand& command) {
  useSchema(programFolder());
  ClassList classes;
  for (const std::string& name : command.classes) classes.push_back(schemaClass(name));
  writeStandardOutput(classesText(command.format, classes));
  return kAnswered;
}

}  // namespace velhost
