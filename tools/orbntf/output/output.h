// Where a command writes.
#pragma once

#include <cerrno>
#include <cstdio>
#include <string>

#include "tools/orbntf/output/signals.h"

namespace tool {

/// An output of a name. A regular or new file appears under its name only when it is complete, with the
/// permissions of the one that it replaces; a symbolic link keeps pointing at the name that is replaced.
/// What goes to a FIFO, a device or "-" is written there in order and nothing is replaced.
class Output {
 public:
  /// How the output is written: from its start to its end, or by name or going back in it, which takes a
  /// file also for what is sent on in order.
  enum class Way { InOrder, ByName };
  explicit Output(const std::string& path, Way way = Way::ByName);
  ~Output();
  Output(const Output&) = delete;
  Output& operator=(const Output&) = delete;

  /// Why nothing can be written there; empty when it can.
  const std::string& Problem() const { return problem_; }
  /// What the name stands for.
  const std::string& Target() const { return target_; }
  /// The name of the file that is to be written, by whatever opens it by name.
  const std::string& Path();
  /// Or a stream to write to; null when it cannot be had.
  std::FILE* Stream();
  /// A write has just failed: what errno says is the problem.
  void NoteFailure();
  /// Completes the output. False when not all of it is there; Problem says why.
  bool Commit();

 private:
  bool Fail(const std::string& words);
  bool FailByErrno();
  bool MakeTemporary();
  bool CloseStream();
  bool Replace();
  bool Sync();
  bool SendOn();
  bool IsStraight() const { return inOrder_ && way_ == Way::InOrder; }
  std::FILE* OpenInOrder();

  Way way_;
  std::string target_;     // what the name stands for
  bool inOrder_ = false;   // no file to be replaced
  bool replaces_ = false;  // a file, whose permissions are kept
  unsigned mode_ = 0, owner_ = 0, group_ = 0;
  std::string problem_;
  TemporaryFile temporary_;
  std::FILE* stream_ = nullptr;
};

/// While there is one, new files get their names before they are on the disk, and Finish puts there what
/// a folder's file system has, once for all of them. Files that replace others wait for the disk as
/// always.
class SyncTogether {
 public:
  explicit SyncTogether(const std::string& folder);
  ~SyncTogether();
  SyncTogether(const SyncTogether&) = delete;
  SyncTogether& operator=(const SyncTogether&) = delete;
  /// False when the disk does not take it, with errno set.
  bool Finish();

 private:
  std::string folder_;
};

/// Closes standard output; false when something that was written to it is not there.
bool CloseStandardOutput();
/// Gives the three standard descriptors that the caller closed something to stand for, so that no file
/// gets their numbers.
void HoldStandardDescriptors();

}  // namespace tool
