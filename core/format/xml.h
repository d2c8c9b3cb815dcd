// XML in data extensions.
#pragma once

#include <string>

#include "core/format/bytes.h"

namespace core {

struct XmlFault {
  uint64_t at = 0;    ///< byte of the data
  std::string words;  ///< empty where the data is well-formed
};
/// Parses data piece by piece; entities of its own and those of other files are refused.
XmlFault FindXmlFault(const PartBytes& bytes);

/// A document of so many bytes at most with a line an element, each as far from the left as it lies deep;
/// empty for one that is not well-formed.
std::string IndentedXml(const std::string& xml);

}  // namespace core
