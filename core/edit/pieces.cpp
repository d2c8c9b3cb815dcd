#include "core/edit/pieces.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#define XXH_INLINE_ALL
#include <xxhash.h>

namespace core {
namespace {

constexpr uint64_t kAtOnce = 256 << 10;

[[noreturn]] void FailToWrite() { throw WriteError(WordsOfErrno(errno)); }

int OpenScratch(const std::string& folder) {
  std::string name = folder + "/.orbntf-XXXXXX";
  const int descriptor = mkostemp(name.data(), O_CLOEXEC);
  if (descriptor >= 0) (void)unlink(name.c_str());
  return descriptor;
}

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

ScratchFile::ScratchFile(const std::string& folder) : descriptor_(-1) {
  int descriptor = OpenScratch(folder.empty() ? "." : folder);
  std::error_code error;
  if (descriptor < 0) descriptor = OpenScratch(std::filesystem::temp_directory_path(error).string());
  if (descriptor < 0) FailToWrite();
  descriptor_.Take(descriptor);
}

void ScratchFile::Write(uint64_t at, const void* bytes, size_t count) {
  constexpr size_t kTogether = 1 << 20;
  if (at != waitingAt_ + waiting_.size() || waiting_.size() + count > kTogether) Flush();
  if (waiting_.empty()) waitingAt_ = at;
  waiting_.append(static_cast<const char*>(bytes), count);
  size_ = std::max(size_, at + count);
}

void ScratchFile::Flush() {
  for (size_t done = 0; done < waiting_.size();) {
    const ssize_t wrote = Restarted([&] {
      return pwrite(descriptor_.Get(), waiting_.data() + done, waiting_.size() - done,
                    static_cast<off_t>(waitingAt_ + done));
    });
    if (wrote < 0) FailToWrite();
    done += static_cast<size_t>(wrote);
  }
  waiting_.clear();
}

void ScratchFile::ReadBack(uint64_t at, void* bytes, size_t count) {
  Flush();
  auto* to = static_cast<char*>(bytes);
  std::fill_n(to, count, '\0');
  for (size_t done = 0; done < count;) {
    const ssize_t got = Restarted(
        [&] { return pread(descriptor_.Get(), to + done, count - done, static_cast<off_t>(at + done)); });
    if (got < 0) FailToWrite();
    if (got == 0) break;
    done += static_cast<size_t>(got);
  }
}

void ScratchFile::Extend(uint64_t size) {
  Flush();
  size_ = std::max(size_, size);
  if (Restarted([&] { return ftruncate(descriptor_.Get(), static_cast<off_t>(size_)); }) != 0)
    FailToWrite();
}

int ScratchFile::Open() {
  Flush();
  const int again = fcntl(descriptor_.Get(), F_DUPFD_CLOEXEC, 0);
  if (again < 0) FailToWrite();
  return again;
}

const FileBytes& ScratchFile::Bytes() {
  Flush();
  if (bytes_ == nullptr || bytes_->Size() != size_) bytes_ = std::make_unique<FileBytes>(Open(), size_);
  return *bytes_;
}

}  // namespace core
