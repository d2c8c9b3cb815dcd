// What the parts of the module share.
#pragma once

#include <pybind11/numpy.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <mutex>
#include <new>
#include <string>

#include "orbntf/core.hpp"

namespace orbntf_python {

namespace py = pybind11;
namespace oc = orbntf::core;

/// A file and what keeps its bytes; calls from several threads wait for each other.
struct OpenFile {
  explicit OpenFile(const py::bytes& path) : file(Open(path)) {}
  OpenFile(py::bytes bytes, bool) : memory(std::move(bytes)), file(FromMemory(memory)) {}

  static oc::File Open(const std::string& path) {
    const py::gil_scoped_release released;
    return oc::File::Open(path);
  }
  static oc::File FromMemory(const py::bytes& bytes) {
    const std::string_view view = bytes;
    return oc::File::FromMemory(view.data(), view.size());
  }
  /// Without the interpreter's lock, one call at a time.
  template <class Work>
  auto Alone(Work work) {
    const py::gil_scoped_release released;
    const std::lock_guard<std::mutex> lock(mutex);
    try {
      return work();
    } catch (const std::bad_alloc&) {
      throw oc::Error(oc::ErrorKind::TooMuch, "there is not enough memory");
    }
  }
  const oc::SegmentInfo& Segment(int kind, uint32_t index) {
    return file.Segment(static_cast<oc::SegmentKind>(kind), index);
  }

  py::bytes memory;
  std::mutex mutex;
  oc::File file;
};

void DefineEdit(py::module_& module);

}  // namespace orbntf_python
