// SPDX-License-Identifier: Apache-2.0
//
// What of the page stands in files of its own: CMake puts page.css and signs.svg into a source.
#pragma once

#include "host/report/html.h"

namespace velhost {

Html pageStyle();
Html pageSigns();

}  // namespace velhost
