// SPDX-License-Identifier: Apache-2.0
//
// How the instances of a machine with several nodes are marked.
#pragma once

#include <string>

namespace spfirmwarevpd {

// "Node 2"; nodes count from 1.
inline std::string nodeLabel(int nodeNumber) { return "Node " + std::to_string(nodeNumber); }

// "Node 2 : UEFI"
inline std::string nodeElementName(const std::string& nodeNumber, const std::string& element) {
  return "Node " + nodeNumber + " : " + element;
}

inline std::string nodeElementName(int nodeNumber, const std::string& element) {
  return nodeElementName(std::to_string(nodeNumber), element);
}

}  // namespace spfirmwarevpd
