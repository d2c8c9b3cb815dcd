// A file's bytes, read as they are asked for.
#pragma once

#include <cerrno>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

namespace core {

/// A file cannot be read.
class ReadError : public std::runtime_error {
 public:
  ReadError(const std::string& path, const std::string& words) : std::runtime_error(words), path_(path) {}
  const std::string& Path() const { return path_; }

 private:
  std::string path_;
};

/// What errno means, in words.
std::string WordsOfErrno(int error);

/// Repeats a call of the system that a signal broke off.
template <class Call>
auto Restarted(Call call) {
  for (;;) {
    const auto result = call();
    if (result >= 0 || errno != EINTR) return result;
  }
}

/// A descriptor that is closed with its owner.
class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor();
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  int Get() const { return fd_; }
  void Close();
  /// Another one in its place.
  void Take(int fd) {
    Close();
    fd_ = fd;
  }

 private:
  int fd_;
};

/// What tells a file from others, whatever it is called.
struct FileIdentity {
  uint64_t device = 0, node = 0;
  bool operator==(const FileIdentity& other) const = default;
  bool operator<(const FileIdentity& other) const {
    return device != other.device ? device < other.device : node < other.node;
  }
};
/// That of a path; none where there is no file.
std::optional<FileIdentity> IdentityOf(const std::string& path);

/// Writes all of some bytes; false with errno set.
bool WriteAll(int descriptor, const void* bytes, size_t count);

/// All bytes of a file. ReadError when it cannot be read to its end.
std::string ReadWhole(const std::string& path);

/// The bytes of a regular file, or bytes in memory. Reading asks whether the work goes on (Interruption).
class FileBytes {
 public:
  /// A file; one that cannot be opened or is not regular is not open.
  explicit FileBytes(const std::string& path);
  /// Bytes that the caller keeps where they are.
  explicit FileBytes(std::string_view memory);
  /// A file that is open, which is closed with its owner.
  FileBytes(int descriptor, uint64_t size) : descriptor_(descriptor), size_(size) {}
  FileBytes(const FileBytes&) = delete;
  FileBytes& operator=(const FileBytes&) = delete;

  bool IsOpen() const { return memory_.data() != nullptr || descriptor_.Get() >= 0; }
  uint64_t Size() const { return size_; }
  /// Whether a path names this very file.
  bool Is(const std::string& path) const;
  /// Another descriptor of the file, which the caller closes; -1 for bytes in memory.
  int Again() const;
  /// The bytes from an offset on, as many as there are of `count`. ReadError, also for more than memory
  /// is taken for at once.
  std::string At(uint64_t offset, uint64_t count) const;
  /// Copies the bytes from an offset on; false where they are not all there. ReadError.
  [[nodiscard]] bool Read(uint64_t offset, void* to, size_t count) const;
  /// The same, of the bytes as they are stored, whatever is shown in place of the first ones.
  [[nodiscard]] bool ReadStored(uint64_t offset, void* to, size_t count) const;
  /// The first run of bytes that are stored from an offset on, up to an end: what lies in front of it and
  /// behind it is a hole, which reads as zeros. False where there is none.
  bool NextStored(uint64_t offset, uint64_t end, uint64_t& first, uint64_t& last) const;
  /// Shows other bytes in place of the first ones.
  void Replace(std::string front) { front_ = std::move(front); }

 private:
  std::string path_;
  std::string_view memory_;
  Descriptor descriptor_;
  uint64_t size_ = 0;
  std::string front_;
};

/// A part of a file, of which a window is held. ReadError where it cannot be read.
class PartBytes {
 public:
  /// As much of the part as the file has.
  PartBytes(const FileBytes& file, uint64_t offset, uint64_t length);
  uint64_t Size() const { return size_; }
  /// The byte at a place below Size().
  uint8_t At(uint64_t at) const;
  /// The first place of a value from a place on; Size() for none.
  uint64_t Find(uint8_t value, uint64_t from) const;
  /// The first place from a place on whose byte is neither 0 nor 0xFF; Size() for none.
  uint64_t SkipFill(uint64_t from) const;
  std::string Piece(uint64_t at, uint64_t count) const;

 private:
  // Makes a place the first of the window where it is not in it.
  void Hold(uint64_t at) const;

  const FileBytes& file_;
  uint64_t offset_, size_;
  mutable uint64_t first_ = 0;
  mutable std::string window_;
};

}  // namespace core
