// Rules shown by what breaks and what keeps them.
#pragma once

#include <string_view>

namespace core {

struct RuleExample {
  const char *rule, *breaks, *keeps;
};
/// That of a rule; null for none.
const RuleExample* ExampleOf(std::string_view rule);

}  // namespace core
