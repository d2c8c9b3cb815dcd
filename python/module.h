// What the parts of the module share.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <atomic>
#include <chrono>
#include <exception>
#include <mutex>
#include <new>
#include <optional>
#include <string>
#include <thread>
#include <type_traits>

#include "orbntf/core.hpp"

namespace orbntf_python {

namespace py = pybind11;
namespace oc = orbntf::core;

/// The thread that the interpreter gives signals to.
inline unsigned long mainThread = 0;

/// Takes the interpreter's lock again. A thread that asks for it when the interpreter ends is to end
/// there: it waits for the process to end instead, since what it holds is the interpreter's.
inline void TakeLock(PyThreadState* state) {
  try {
    PyEval_RestoreThread(state);
  } catch (...) {  // what ends the thread: nothing else is thrown there
    for (;;) std::this_thread::sleep_for(std::chrono::hours(1));
  }
}

/// Does some work without the interpreter's lock. In the main thread signals are looked at meanwhile:
/// what their handlers raise, as Ctrl-C does, ends the work.
template <class Work>
auto Unlocked(Work work) {
  PyThreadState* state = PyEval_SaveThread();
  std::exception_ptr thrown;
  std::optional<std::conditional_t<std::is_void_v<decltype(work())>, bool, decltype(work())>> result;
  try {
    std::optional<oc::Interruption> interruption;
    if (PyThread_get_thread_ident() == mainThread)
      interruption.emplace([] {
        const py::gil_scoped_acquire acquired;
        return PyErr_CheckSignals() == 0;
      });
    if constexpr (std::is_void_v<decltype(work())>) {
      work();
    } else {
      result.emplace(work());
    }
  } catch (const std::bad_alloc&) {
    thrown = std::make_exception_ptr(oc::Error(oc::ErrorKind::TooMuch, "there is not enough memory"));
  } catch (...) {
    thrown = std::current_exception();
  }
  TakeLock(state);
  if (thrown != nullptr) std::rethrow_exception(thrown);
  if constexpr (!std::is_void_v<decltype(work())>) return std::move(*result);
}

/// Lets one call at a time work with a file. A call within another one of its thread, as a signal's
/// handler would make, is Invalid.
class Turn {
 public:
  void lock() {
    if (owner_ == std::this_thread::get_id())
      throw oc::Error(oc::ErrorKind::Invalid, "this thread is at work with the file already");
    mutex_.lock();
    owner_ = std::this_thread::get_id();
  }
  bool try_lock() {
    if (owner_ == std::this_thread::get_id() || !mutex_.try_lock()) return false;
    owner_ = std::this_thread::get_id();
    return true;
  }
  void unlock() {
    owner_ = std::thread::id();
    mutex_.unlock();
  }

 private:
  std::mutex mutex_;
  std::atomic<std::thread::id> owner_;
};

/// A file and what keeps its bytes; calls from several threads wait for each other.
struct OpenFile {
  explicit OpenFile(const py::bytes& path) : file(Open(path)) {}
  OpenFile(py::bytes bytes, bool) : memory(std::move(bytes)), file(FromMemory(memory)) {}

  static oc::File Open(const std::string& path) {
    return Unlocked([&] { return oc::File::Open(path); });
  }
  static oc::File FromMemory(const py::bytes& bytes) {
    const std::string_view view = bytes;
    return oc::File::FromMemory(view.data(), view.size());
  }
  /// Without the interpreter's lock, one call at a time.
  template <class Work>
  auto Alone(Work work) {
    return Unlocked([&] {
      const std::lock_guard<Turn> lock(mutex);
      return work();
    });
  }
  const oc::SegmentInfo& Segment(int kind, uint32_t index) {
    return file.Segment(static_cast<oc::SegmentKind>(kind), index);
  }

  py::bytes memory;
  Turn mutex;
  oc::File file;
};

void DefineEdit(py::module_& module);

}  // namespace orbntf_python
