// Changes to files, for Python.
#include "python/module.h"

namespace orbntf_python {
namespace {

oc::Samples SamplesOf(const py::array& array, uint32_t bits) {
  oc::Samples samples;
  samples.height = static_cast<uint32_t>(array.shape(0));
  samples.width = static_cast<uint32_t>(array.shape(1));
  samples.bands = static_cast<uint32_t>(array.shape(2));
  samples.sampleBytes = static_cast<uint32_t>(array.itemsize());
  samples.bits = samples.significantBits = bits;
  const char kind = array.dtype().kind();
  samples.kind = kind == 'i'   ? oc::SampleKind::Signed
                 : kind == 'f' ? oc::SampleKind::Real
                 : kind == 'c' ? oc::SampleKind::Complex
                               : oc::SampleKind::Unsigned;
  const auto* bytes = static_cast<const uint8_t*>(array.data());
  samples.data.assign(bytes, bytes + array.nbytes());
  return samples;
}

oc::Storage StorageOf(const std::string& way, double number, uint32_t block, const std::string& mode) {
  oc::Storage storage;
  storage.way = way == "jpeg"       ? oc::StorageWay::Jpeg
                : way == "jpeg2000" ? oc::StorageWay::Jpeg2000
                                    : oc::StorageWay::Uncompressed;
  if (way == "jpeg") storage.quality = static_cast<int>(number);
  if (way == "jpeg2000") storage.rate = number;
  storage.block = block;
  storage.mode = mode.empty() ? 'B' : mode[0];
  return storage;
}

oc::Placement PlaceOf(int64_t row, int64_t column) {
  oc::Placement place;
  place.row = row;
  place.column = column;
  return place;
}

// Changes to a file; it is kept open by the package.
struct Changes {
  explicit Changes(OpenFile& open) : file(&open), edit(open.file) {}
  explicit Changes(const std::string& date) : edit(oc::Edit::New(date)) {}
  static oc::SegmentKind Kind(int kind) { return static_cast<oc::SegmentKind>(kind); }

  OpenFile* file = nullptr;
  Turn mutex;
  oc::Edit edit;

  template <class Work>
  auto Alone(Work work) {
    return Unlocked([&] {
      std::unique_lock<Turn> other;
      if (file != nullptr) other = std::unique_lock<Turn>(file->mutex);
      const std::lock_guard<Turn> lock(mutex);
      return work();
    });
  }
};

void DefineFields(py::class_<Changes>& type) {
  type.def(py::init<OpenFile&>(), py::keep_alive<1, 2>())
      .def(py::init<const std::string&>())
      .def("set",
           [](Changes& to, int kind, uint32_t index, const std::string& field, const std::string& value,
              bool force) {
             to.Alone([&] { to.edit.Set(Changes::Kind(kind), index, field, value, force); });
           })
      .def("set_all", [](Changes& to, const std::string& field, const std::string& value,
                         bool force) { to.Alone([&] { to.edit.SetAll(field, value, force); }); })
      .def("set_record",
           [](Changes& to, int kind, uint32_t index, const std::string& tag, const std::string& data) {
             to.Alone([&] { to.edit.SetRecord(Changes::Kind(kind), index, tag, data); });
           })
      .def("set_record_field",
           [](Changes& to, int kind, uint32_t index, const std::string& tag, const std::string& field,
              const std::string& value) {
             to.Alone([&] { to.edit.SetRecordField(Changes::Kind(kind), index, tag, field, value); });
           })
      .def("remove_record",
           [](Changes& to, int kind, uint32_t index, const std::string& tag) {
             to.Alone([&] { to.edit.RemoveRecord(Changes::Kind(kind), index, tag); });
           })
      .def("remove", [](Changes& to, int kind, uint32_t index) {
        to.Alone([&] { to.edit.Remove(Changes::Kind(kind), index); });
      });
}

void DefineAppends(py::class_<Changes>& type) {
  type.def("append_samples",
           [](Changes& to, const py::array& array, uint32_t bits, const std::string& way, double number,
              uint32_t block, const std::string& mode, int64_t row, int64_t column) {
             const oc::Samples samples = SamplesOf(array, bits);
             return to.Alone([&] {
               return to.edit.AppendImage(samples, StorageOf(way, number, block, mode),
                                          PlaceOf(row, column));
             });
           })
      .def("append_picture",
           [](Changes& to, const py::bytes& path, const std::string& way, double number, uint32_t block,
              const std::string& mode, int64_t row, int64_t column) {
             const std::string name = path;
             return to.Alone([&] {
               return to.edit.AppendImage(name, StorageOf(way, number, block, mode),
                                          PlaceOf(row, column));
             });
           })
      .def("append_graphic",
           [](Changes& to, const std::string& metafile, int64_t row, int64_t column) {
             return to.Alone([&] { return to.edit.AppendGraphic(metafile, PlaceOf(row, column)); });
           })
      .def("append_text",
           [](Changes& to, const std::string& text) {
             return to.Alone([&] { return to.edit.AppendText(text); });
           })
      .def("append_data",
           [](Changes& to, const std::string& name, uint32_t version, const std::string& data) {
             return to.Alone([&] { return to.edit.AppendData(name, version, data); });
           });
}

void DefineRest(py::class_<Changes>& type) {
  type.def("recompress",
           [](Changes& to, uint32_t image, const std::string& way, double number, uint32_t block,
              const std::string& mode) {
             to.Alone([&] { to.edit.Recompress(image, StorageOf(way, number, block, mode)); });
           })
      .def("set_level", [](Changes& to, uint32_t level) { to.Alone([&] { to.edit.SetLevel(level); }); })
      .def("save", [](Changes& to, const py::bytes& path, bool force) {
        const std::string name = path;
        to.Alone([&] { to.edit.Save(name, force); });
      });
}

}  // namespace

void DefineEdit(py::module_& module) {
  py::class_<Changes> type(module, "Edit");
  DefineFields(type);
  DefineAppends(type);
  DefineRest(type);
}

}  // namespace orbntf_python
