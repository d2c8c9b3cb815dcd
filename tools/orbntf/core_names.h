// The tool speaks of files in the words of the core.
#pragma once

namespace core {}
namespace tool {
using namespace core;
}
