#include "core/pictures/behind.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <vector>

#include "core/format/background.h"

namespace core {
namespace {

constexpr size_t kPiece = 256 << 10;  // bytes that are written at once

class BehindWriter : public PictureWriter {
 public:
  BehindWriter(std::unique_ptr<PictureWriter> writer, size_t stride)
      : writer_(std::move(writer)), stride_(stride), most_(kPiece / stride) {}
  ~BehindWriter() override { End(); }

  bool PutRows(const uint8_t* rgb, uint32_t rows) override {
    for (; rows > 0 && !isRefused_; --rows, rgb += stride_) {
      std::vector<uint8_t>& piece = pieces_[next_];
      piece.insert(piece.end(), rgb, rgb + stride_);
      if (piece.size() == most_ * stride_) isRefused_ = !HandOver();
    }
    return !isRefused_;
  }
  bool Finish() override {
    End();
    if (Told() && !pieces_[next_].empty()) told_ = Put(pieces_[next_]);
    return Told() && writer_->Finish();
  }

 private:
  static constexpr size_t kPieces = 6;

  // What a piece came to.
  struct Outcome {
    bool isGood = true;
    int error = 0;
    std::exception_ptr thrown;
  };
  Outcome Put(std::vector<uint8_t>& piece) const {
    Outcome outcome;
    errno = 0;
    try {
      outcome.isGood = writer_->PutRows(piece.data(), static_cast<uint32_t>(piece.size() / stride_));
    } catch (...) {
      outcome.isGood = false;
      outcome.thrown = std::current_exception();
    }
    outcome.error = errno;
    piece.clear();
    return outcome;
  }
  // Whether all that was written was taken.
  bool Told() const {
    if (told_.thrown != nullptr) std::rethrow_exception(told_.thrown);
    if (!told_.isGood) errno = told_.error;
    return told_.isGood;
  }

  // Puts a full piece in the line of those that wait, and takes up one that is written.
  bool HandOver() {
    if (!running_) running_ = InBackground([this] { WriteAll(); });
    if (!running_) {
      told_ = Put(pieces_[next_]);
      return Told();
    }
    std::unique_lock lock(mutex_);
    next_ = (next_ + 1) % kPieces;
    if (waiting_++ == 0) changed_.notify_one();
    // Threads that wake each other for every piece do little else.
    if (waiting_ == kPieces) changed_.wait(lock, [this] { return waiting_ <= kPieces / 2; });
    return Told();
  }
  void WriteAll() {
    std::unique_lock lock(mutex_);
    for (;; --waiting_) {
      if (waiting_ == kPieces / 2) changed_.notify_one();
      changed_.wait(lock, [this] { return waiting_ > 0 || isEnded_; });
      if (waiting_ == 0) return;
      // Behind a piece that was not taken nothing is written.
      if (!told_.isGood) continue;
      std::vector<uint8_t>& piece = pieces_[(next_ + kPieces - waiting_) % kPieces];
      lock.unlock();
      const Outcome outcome = Put(piece);
      lock.lock();
      told_ = outcome;
    }
  }
  void End() {
    if (!running_) return;
    {
      const std::lock_guard lock(mutex_);
      isEnded_ = true;
      changed_.notify_one();
    }
    running_->wait();
  }

  std::unique_ptr<PictureWriter> writer_;
  size_t stride_, most_;
  std::array<std::vector<uint8_t>, kPieces> pieces_;
  std::optional<std::future<void>> running_;
  std::mutex mutex_;
  std::condition_variable changed_;
  size_t next_ = 0, waiting_ = 0;  // the piece that is filled, and how many in front of it are full
  bool isEnded_ = false, isRefused_ = false;
  Outcome told_;
};

}  // namespace

std::unique_ptr<PictureWriter> WriteBehind(std::unique_ptr<PictureWriter> writer, size_t stride) {
  // Pieces are of whole rows.
  if (!HasSecondCore() || stride == 0 || stride > kPiece) return writer;
  return std::make_unique<BehindWriter>(std::move(writer), stride);
}

}  // namespace core
