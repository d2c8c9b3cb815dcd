// What calls of the core end with.
#pragma once

#include <functional>
#include <optional>

#include <gtest/gtest.h>

#include "orbntf/core.hpp"

namespace test {

/// The error that some work ends with; none where it ends well.
inline std::optional<orbntf::core::Error> ErrorOf(const std::function<void()>& work) {
  try {
    work();
  } catch (const orbntf::core::Error& error) {
    EXPECT_STRNE(error.what(), "");
    return error;
  }
  return std::nullopt;
}
inline std::optional<orbntf::core::ErrorKind> KindOf(const std::function<void()>& work) {
  const auto error = ErrorOf(work);
  return error ? std::optional(error->Kind()) : std::nullopt;
}

}  // namespace test
