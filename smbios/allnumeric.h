// SPDX-License-Identifier: Apache-2.0
#pragma once

// The text, looked at up to its end or for `length` characters, holds digits and points only. True
// when there is nothing to look at.
bool isAllNumeric(const char* text, int length);
