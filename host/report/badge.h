// SPDX-License-Identifier: Apache-2.0
//
// How a place is filled, as a sign and a word.
#pragma once

#include <map>

#include "host/report/html.h"
#include "host/report/machineview.h"

namespace velhost {

// The drawings that the signs refer to: once in a page, before them.
Html signDrawings();

Html badge(Filling filling);

// How many places are filled how; those that say nothing to worry about are left out of a text.
using Tally = std::map<Filling, std::size_t>;

// "2 unanswered", each with its sign; empty where there is nothing to tell.
Html tallyText(const Tally& tally);

}  // namespace velhost
