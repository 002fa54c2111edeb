// SPDX-License-Identifier: Apache-2.0
//
// What a query brought to light, read back from a file that the program wrote, or got from the machine
// that a file describes.
#pragma once

#include <filesystem>
#include <string>

#include "host/collectors/queryresult.h"
#include "velhost/spdriver.h"

namespace velhost {

struct Findings {
  QueryContext context;  // a file without a machine's name has its own for it
  // Has a state for each requested class. No logs, and no traffic unless it was to be kept.
  QueryResult result;
  // False for a file that has no states: a class with instances is present then, one without is absent,
  // with a reason that says that the file does not tell, or failed where the request did.
  bool tellsStates = true;
};

// Recognised by its content: an inventory ("vel-inventory/1"), the last query of a result document
// ("vel-result/1"), the plain JSON of `--format json`; or a machine file or DMI dump, which is asked
// for the classes that `velhost query` asks for, with the collectors beside a program in
// `programFolder`. "-" is standard input.
//
// Values have the types of the schema. Classes and properties that it does not have are taken as they
// stand: texts, booleans, numbers from 0 as uint64, other numbers as texts.
//
// The traffic can be kept of a machine that is asked; documents' is not read.
//
// Throws InputError, one line with the file, the place in it and what is wrong, and PluginLoadError.
Findings findingsOf(const std::filesystem::path& file, const std::filesystem::path& programFolder,
                    NKRXVEL20::host::Traffic traffic = NKRXVEL20::host::Traffic::kForgotten);

}  // namespace velhost
