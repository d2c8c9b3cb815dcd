// Pictures whose rows are written while the next ones are made.
#pragma once

#include <cstddef>
#include <memory>

#include "core/pictures/picture_writer.h"

namespace core {

/// Hands rows of `stride` bytes to a writer in pieces, on another thread while the next piece is put.
/// What a piece came to is told with a later one, or by Finish, with its errno.
std::unique_ptr<PictureWriter> WriteBehind(std::unique_ptr<PictureWriter> writer, size_t stride);

}  // namespace core
