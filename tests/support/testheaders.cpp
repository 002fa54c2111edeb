// SPDX-License-Identifier: Apache-2.0
//
// Nothing of its own: its program is what the headers are compiled for.
