// What the work on a stream or a drawing came to.
#pragma once

#include <cstdint>

namespace media {

/// The values are those of the statuses that the stand-in toolkit has for the same.
enum class [[nodiscard]] Outcome : int32_t{
    Ok = 1,
    NoMemory = -1,        ///< more memory than there is, or more pixels than are allowed
    NotTaken = -5,        ///< a file or a receiver did not take what was made
    ShortData = -7,       ///< bytes end too early
    BadData = -9,         ///< bytes that are not what they should be
    Invalid = -13,        ///< an argument that makes no sense
    Unsupported = -16,    ///< a form that is not handled
    NotRecognised = -20,  ///< no known form
    Stopped = -30,        ///< a receiver did not want more
    OverBudget = -31,     ///< more work or memory than the bytes are worth
};

}  // namespace media
