// What the fault tests do: every export, over every kind of content.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "tests/support/support.h"

namespace faults {

/// What a scenario gives where an export says no more than that it failed.
inline constexpr int32_t kNoResult = -1000;

/// Something that is done on a document or a file, from a fresh start each time.
struct Scenario {
  std::string name;
  std::function<int32_t()> run;        ///< the status, 1 when all went well
  std::function<std::string()> state;  ///< what a run leaves where it may be looked at, else null
};
/// All of them; what they work on lives as long as the list.
std::vector<Scenario> Scenarios();

}  // namespace faults
