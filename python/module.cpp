// The library's surface for Python: plain calls and texts, from which the package makes its classes.
#include "python/module.h"

#include <cstring>

namespace orbntf_python {
namespace {

constexpr const char* kStatus[] = {"unreadable", "not_nitf", "truncated", "damaged",     "unsupported",
                                   "invalid",    "too_much", "stopped",   "not_written", "breaks_rule"};

// An array that takes over a vector's bytes.
py::array ArrayOf(std::vector<uint8_t>&& data, const py::dtype& type, std::vector<py::ssize_t> shape) {
  auto* kept = new std::vector<uint8_t>(std::move(data));
  const py::capsule owner(kept, [](void* bytes) { delete static_cast<std::vector<uint8_t>*>(bytes); });
  return py::array(type, std::move(shape), kept->data(), owner);
}

py::dtype TypeOf(const oc::Samples& samples) {
  constexpr const char kKinds[] = {'u', 'i', 'f', 'c'};
  return py::dtype(kKinds[static_cast<size_t>(samples.kind)] + std::to_string(samples.sampleBytes));
}

py::dict Describe(OpenFile& open, uint32_t image) {
  const oc::Samples form = open.Alone([&] { return open.file.DescribeSamples(open.Segment(1, image)); });
  py::dict told;
  told["shape"] = py::make_tuple(form.bands, form.height, form.width);
  told["dtype"] = TypeOf(form);
  told["bits"] = form.bits;
  told["significant_bits"] = form.significantBits;
  told["no_data"] = form.noData;
  told["palette"] = py::bytes(reinterpret_cast<const char*>(form.palette.data()), form.palette.size());
  return told;
}

using Window = std::array<uint64_t, 4>;  // row, column, rows, columns

oc::SampleRequest RequestOf(const Window& window, const std::vector<uint32_t>& bands, uint32_t reduce) {
  oc::SampleRequest request;
  request.row = window[0];
  request.column = window[1];
  request.rows = window[2];
  request.columns = window[3];
  request.bands = bands;
  request.reduce = reduce;
  return request;
}

// Rows, columns and bands.
py::array Read(OpenFile& open, uint32_t image, const Window& window, const std::vector<uint32_t>& bands,
               uint32_t reduce) {
  oc::Samples samples = open.Alone(
      [&] { return open.file.ReadSamples(open.Segment(1, image), RequestOf(window, bands, reduce)); });
  const std::vector<py::ssize_t> shape = {samples.height, samples.width, samples.bands};
  return ArrayOf(std::move(samples.data), TypeOf(samples), shape);
}

py::array Mask(OpenFile& open, uint32_t image, const Window& window, const std::vector<uint32_t>& bands,
               std::array<py::ssize_t, 2> shape) {
  std::vector<uint8_t> mask =
      open.Alone([&] { return open.file.ReadMask(open.Segment(1, image), RequestOf(window, bands, 0)); });
  return ArrayOf(std::move(mask), py::dtype("bool"), {shape[0], shape[1]});
}

py::tuple FieldOf(const oc::FieldText& field) {
  return py::make_tuple(field.name, py::bytes(field.text), field.meaning, field.offset);
}

py::list TreeOf(const std::vector<oc::RecordFieldText>& fields) {
  py::list all;
  for (const oc::RecordFieldText& field : fields) {
    py::list turns;
    for (const auto& turn : field.turns) turns.append(TreeOf(turn));
    all.append(py::make_tuple(field.name, field.unit, py::bytes(field.text), turns));
  }
  return all;
}

py::list Records(OpenFile& open, int kind, uint32_t index) {
  py::list all;
  for (const oc::Record& record :
       open.Alone([&] { return open.file.Records(open.Segment(kind, index)); }))
    all.append(py::make_tuple(py::bytes(record.tag), record.area, record.offset, py::bytes(record.bytes),
                              record.problem, TreeOf(record.fields)));
  return all;
}

py::list Check(OpenFile& open, const std::string& profile) {
  constexpr const char* kSeverities[] = {"note", "warning", "error"};
  py::list all;
  for (const oc::Finding& found : open.Alone([&] { return open.file.Check({}, profile); }))
    all.append(py::make_tuple(kSeverities[static_cast<size_t>(found.severity)], found.rule, found.segment,
                              found.field, found.offset, found.words, found.sentence, found.standard));
  return all;
}

struct PictureWords {
  Window window;
  uint32_t size, scale;
  bool fast;
  std::optional<uint32_t> image;
  std::vector<uint32_t> bands;
  int stretch;
  double low, high;
  bool each;
};

oc::PictureRequest RequestOf(const PictureWords& words) {
  oc::PictureRequest request;
  request.row = words.window[0];
  request.column = words.window[1];
  request.rows = words.window[2];
  request.columns = words.window[3];
  request.size = words.size;
  request.scale = words.scale;
  request.fast = words.fast;
  request.image = words.image;
  request.bands = words.bands;
  request.stretch = static_cast<oc::StretchBy>(words.stretch);
  request.low = words.low;
  request.high = words.high;
  request.stretchEach = words.each;
  return request;
}

// A picture, and what is missing from it.
py::tuple Draw(OpenFile& open, const Window& window, uint32_t size, uint32_t scale, bool fast,
               std::optional<uint32_t> image, const std::vector<uint32_t>& bands, int stretch, double low,
               double high, bool each) {
  const oc::PictureRequest request =
      RequestOf({window, size, scale, fast, image, bands, stretch, low, high, each});
  std::vector<uint8_t> pixels;
  const oc::PictureInfo info = open.Alone([&] {
    const oc::PictureInfo wanted = open.file.DescribePicture(request);
    const size_t stride = size_t{3} * wanted.width;
    pixels.resize(stride * wanted.height);
    return open.file.Draw(request, [&](uint32_t row, const uint8_t* rgb) {
      std::memcpy(&pixels[row * stride], rgb, stride);
      return true;
    });
  });
  py::list missing;
  for (const oc::MissingSegment& segment : info.missing)
    missing.append(py::make_tuple(segment.segment, segment.words));
  return py::make_tuple(ArrayOf(std::move(pixels), py::dtype("u1"), {info.height, info.width, 3}),
                        missing);
}

void DefineHeaders(py::class_<OpenFile>& type) {
  type.def(py::init<const py::bytes&>())
      .def(py::init<py::bytes, bool>())
      .def("size", [](OpenFile& open) { return open.file.Size(); })
      .def("segments",
           [](OpenFile& open) {
             py::list all;
             for (const oc::SegmentInfo& info : open.file.Segments())
               all.append(py::make_tuple(static_cast<int>(info.kind), info.index, info.title, info.offset,
                                         info.headerLength, info.dataOffset, info.dataLength,
                                         info.complete));
             return all;
           })
      .def("fields",
           [](OpenFile& open, int kind, uint32_t index) {
             py::list all;
             for (const oc::FieldText& field :
                  open.Alone([&] { return open.file.Fields(open.Segment(kind, index)); }))
               all.append(FieldOf(field));
             return all;
           })
      .def("values",
           [](OpenFile& open, int kind, uint32_t index) {
             return open.Alone([&] { return open.file.ValuesJson(open.Segment(kind, index)); });
           })
      .def("records", &Records);
}

void DefineData(py::class_<OpenFile>& type) {
  type.def("data",
           [](OpenFile& open, int kind, uint32_t index, uint64_t offset, uint64_t count) {
             return py::bytes(
                 open.Alone([&] { return open.file.Data(open.Segment(kind, index), offset, count); }));
           })
      .def("check", &Check)
      .def("describe", &Describe)
      .def("read", &Read)
      .def("mask", &Mask)
      .def("draw", &Draw);
}

void DefinePlaces(py::class_<OpenFile>& type) {
  type.def("to_ground",
           [](OpenFile& open, uint32_t image, double row, double column, std::optional<double> height) {
             const oc::GroundPlace at = open.Alone(
                 [&] { return open.file.ToGround(open.Segment(1, image), row, column, height); });
             return py::make_tuple(at.latitude, at.longitude, at.height, at.model, at.error);
           })
      .def("to_image",
           [](OpenFile& open, uint32_t image, double latitude, double longitude,
              std::optional<double> height) {
             const oc::ImagePlace at = open.Alone(
                 [&] { return open.file.ToImage(open.Segment(1, image), latitude, longitude, height); });
             return py::make_tuple(at.row, at.column, at.model, at.error);
           })
      .def("report", [](OpenFile& open, const std::string& title) {
        return py::bytes(open.Alone([&] { return open.file.Report(title); }));
      });
}

py::list Compare(OpenFile& a, OpenFile& b) {
  constexpr const char* kKinds[] = {"field", "record", "data", "samples"};
  const auto found = Unlocked([&] {
    if (&a == &b) return std::vector<oc::Difference>();
    const std::scoped_lock lock(a.mutex, b.mutex);
    return oc::Compare(a.file, b.file);
  });
  py::list all;
  const auto text = [](const std::optional<std::string>& bytes) {
    return bytes ? py::object(py::bytes(*bytes)) : py::object(py::none());
  };
  for (const oc::Difference& one : found)
    all.append(py::make_tuple(kKinds[static_cast<size_t>(one.kind)], one.segment, one.name, one.field,
                              text(one.a), text(one.b), one.words));
  return all;
}

}  // namespace
}  // namespace orbntf_python

PYBIND11_MODULE(_core, module) {
  using namespace orbntf_python;
  module.doc() = "Calls of the library; the package orbntf makes its classes of them.";
  module.attr("version") = oc::Version();
  mainThread = py::module_::import("threading").attr("main_thread")().attr("ident").cast<unsigned long>();
  // The package's exception, which it gives here.
  module.def("use_error", [](const py::object& error) {
    static PyObject* made = nullptr;
    made = error.inc_ref().ptr();
    // NOLINTNEXTLINE(performance-unnecessary-value-param): the translator's own form.
    py::register_local_exception_translator([](std::exception_ptr thrown) {
      try {
        if (thrown) std::rethrow_exception(thrown);
      } catch (const oc::Error& failed) {
        // What a signal's handler raised ends the work and is raised itself.
        if (PyErr_Occurred() != nullptr) return;
        const py::object value = py::reinterpret_borrow<py::object>(made)(
            py::str(failed.what()), failed.Field(), failed.Segment(), failed.Byte(),
            kStatus[static_cast<size_t>(failed.Kind())]);
        PyErr_SetObject(made, value.ptr());
      }
    });
  });
  py::class_<OpenFile> type(module, "File");
  DefineHeaders(type);
  DefineData(type);
  DefinePlaces(type);
  module.def("compare", &Compare);
  DefineEdit(module);
}
