#include "core/edit/pieces.h"

#include <unistd.h>

#include <algorithm>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace core {
namespace {

constexpr uint64_t kAtOnce = 256 << 10;

}  // namespace

uint64_t LengthOf(const Pieces& pieces) {
  uint64_t length = 0;
  for (const Piece& piece : pieces) length += piece.Length();
  return length;
}

std::string BytesOf(const Pieces& pieces) {
  std::string all;
  for (const Piece& piece : pieces)
    all += piece.file != nullptr ? piece.file->At(piece.offset, piece.length) : piece.bytes;
  return all;
}

// ---------------------------------------------------------------- hashes

// A chunk of zeros adds nothing, so that a hole need not be read.
void Hasher::Close() {
  static const std::string zeros(kChunk, '\0');
  if (!chunk_.empty() && zeros.compare(0, chunk_.size(), chunk_) != 0) {
    const XXH128_hash_t hash = XXH3_128bits_withSeed(chunk_.data(), chunk_.size(), index_);
    value_.low += hash.low64;
    value_.high += hash.high64;
  }
  chunk_.clear();
  ++index_;
}

void Hasher::Take(const char* bytes, size_t count) {
  while (count > 0) {
    const size_t some = std::min(count, kChunk - chunk_.size());
    chunk_.append(bytes, some);
    bytes += some;
    count -= some;
    if (chunk_.size() == kChunk) Close();
  }
}

void Hasher::TakeZeros(uint64_t count) {
  while (count > 0) {
    if (chunk_.empty() && count >= kChunk) {
      index_ += count / kChunk;
      count %= kChunk;
      continue;
    }
    const auto some = static_cast<size_t>(std::min<uint64_t>(count, kChunk - chunk_.size()));
    chunk_.append(some, '\0');
    count -= some;
    if (chunk_.size() == kChunk) Close();
  }
}

ContentHash Hasher::Value() {
  Close();
  return value_;
}

namespace {

// Gives the bytes of a run that are stored to one receiver and the lengths of its holes to another.
template <class TakeBytes, class TakeHole>
void Walk(const FileBytes& file, uint64_t offset, uint64_t length, TakeBytes takeBytes,
          TakeHole takeHole) {
  const uint64_t end = offset + length;
  std::string piece;
  for (uint64_t at = offset; at < end;) {
    uint64_t first = 0, last = 0;
    if (!file.NextStored(at, end, first, last)) first = last = end;
    takeHole(std::min(first, end) - at);
    for (at = first; at < last;) {
      piece.resize(static_cast<size_t>(std::min(kAtOnce, last - at)));
      if (!file.ReadStored(at, piece.data(), piece.size()))
        throw WriteError("what it is made from became shorter");
      takeBytes(piece);
      at += piece.size();
    }
  }
}

}  // namespace

ContentHash HashOf(const FileBytes& file, uint64_t offset, uint64_t length) {
  Hasher hasher;
  Walk(
      file, offset, length, [&](const std::string& bytes) { hasher.Take(bytes.data(), bytes.size()); },
      [&](uint64_t zeros) { hasher.TakeZeros(zeros); });
  return hasher.Value();
}

// ---------------------------------------------------------------- writing

void PieceWriter::Write(std::string_view bytes) {
  if (afterHole_ && lseek(descriptor_, static_cast<off_t>(at_), SEEK_SET) < 0) FailToWrite();
  afterHole_ = false;
  if (!WriteAll(descriptor_, bytes.data(), bytes.size())) FailToWrite();
  at_ += bytes.size();
}

void PieceWriter::Copy(const Piece& piece, Hasher& hasher) {
  Walk(
      *piece.file, piece.offset, piece.length,
      [&](const std::string& bytes) {
        hasher.Take(bytes.data(), bytes.size());
        Write(bytes);
      },
      [&](uint64_t zeros) {
        hasher.TakeZeros(zeros);
        at_ += zeros;
        afterHole_ = afterHole_ || zeros != 0;
      });
}

ContentHash PieceWriter::Write(const Pieces& pieces) {
  Hasher hasher;
  for (const Piece& piece : pieces) {
    if (piece.file != nullptr) {
      Copy(piece, hasher);
    } else {
      hasher.Take(piece.bytes.data(), piece.bytes.size());
      Write(piece.bytes);
    }
  }
  return hasher.Value();
}

void PieceWriter::Finish() {
  if (Restarted([this] { return ftruncate(descriptor_, static_cast<off_t>(at_)); }) != 0) FailToWrite();
}

}  // namespace core
