// What a file is put together from: runs of bytes of files that there are, and new ones.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "core/format/bytes.h"
#include "core/format/scratch.h"

namespace core {

/// Bytes of a file that outlives it, or new ones.
struct Piece {
  const FileBytes* file = nullptr;  ///< null where the bytes are here
  uint64_t offset = 0, length = 0;
  std::string bytes = {};

  uint64_t Length() const { return file != nullptr ? length : bytes.size(); }
};
using Pieces = std::vector<Piece>;

inline Piece PieceOf(std::string bytes) { return {nullptr, 0, 0, std::move(bytes)}; }
uint64_t LengthOf(const Pieces& pieces);
/// All bytes of some pieces. ReadError, also for more than memory is taken for at once.
std::string BytesOf(const Pieces& pieces);

/// 128 bits that stand for a run of bytes.
struct ContentHash {
  uint64_t low = 0, high = 0;
  friend bool operator==(const ContentHash&, const ContentHash&) = default;
};

/// Takes bytes as they come, and passes over runs of zeros without looking at them.
class Hasher {
 public:
  void Take(const char* bytes, size_t count);
  void TakeZeros(uint64_t count);
  ContentHash Value();

 private:
  static constexpr size_t kChunk = 64 << 10;
  void Close();
  std::string chunk_;
  uint64_t index_ = 0;
  ContentHash value_;
};

/// The hash of a run of a file's bytes as they are stored. ReadError.
ContentHash HashOf(const FileBytes& file, uint64_t offset, uint64_t length);

/// Writes into an empty regular file. Holes of what is written stay holes.
class PieceWriter {
 public:
  explicit PieceWriter(int descriptor) : descriptor_(descriptor) {}
  /// WriteError; ReadError.
  void Write(std::string_view bytes);
  ContentHash Write(const Pieces& pieces);
  /// Gives the file its size. WriteError.
  void Finish();
  uint64_t Written() const { return at_; }

 private:
  void Copy(const Piece& piece, Hasher& hasher);
  int descriptor_;
  uint64_t at_ = 0;
  bool afterHole_ = false;
};

}  // namespace core
