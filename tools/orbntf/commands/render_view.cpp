// The picture by the published standard.
#include <algorithm>
#include <cerrno>
#include <map>

#include "core/format/words.h"
#include "core/place/georeference.h"
#include "core/place/placed.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/commands/render.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/explain.h"
#include "tools/orbntf/inspect/opening.h"
#include "tools/orbntf/output/beside.h"

namespace tool {
namespace {

ViewRequest RequestOf(const RenderOptions& options) {
  ViewRequest request;
  if (options.region) {
    request.row = options.region->row;
    request.column = options.region->column;
    request.rows = options.region->height;
    request.columns = options.region->width;
  }
  request.scale = options.factor;
  request.size = options.size;
  request.fast = options.fast;
  if (!options.segment.empty()) request.image = options.image;
  request.bands = options.bands;
  request.stretch = options.stretch;
  request.stretch.each = options.stretchEach;
  return request;
}

// Why a file has no picture: it is another kind of file, or not there.
std::string WhyNone(const std::string& file, const Survey& survey) {
  if (std::string why = WhyUnreadable(file); !why.empty()) return why;
  const SurveyedPart& header = survey.Header();
  const std::string mark(header.Text("FHDR")), version(header.Text("FVER"));
  if (IsOneOf(mark + version, "NITF02.10|NSIF01.00")) return "";
  if (mark != "NITF" && mark != "NSIF") return "it is no NITF file";
  return "it is " + mark + " " + version + "; NITF 02.10 and NSIF 01.00 are drawn";
}

// Names what is not in the picture. Whether all is.
bool NameMissing(const std::string& file, const FileView& view) {
  for (const LeftOut& missing : view.Missing())
    std::fprintf(stderr, "orbntf: render: %s: %s is left out: %s\n", Printable(file).c_str(),
                 missing.segment.c_str(), Printable(missing.words).c_str());
  return view.Missing().empty();
}

bool IsOnPicture(const RenderOptions& options, const FileView& view) {
  if (!options.region) return true;
  const Region& part = *options.region;
  return uint64_t{part.row} + part.height <= view.FullHeight() &&
         uint64_t{part.column} + part.width <= view.FullWidth();
}

// The image that tells where a picture lies: the one that is asked for, or the lowest one with a place.
const SurveyedPart* TellingImage(const RenderOptions& options, const Survey& survey, const Places& places,
                                 Placed& placed) {
  static const RecordDefinitions definitions;
  std::map<int64_t, const SurveyedPart*> images;
  for (const SurveyedPart& part : survey.parts) {
    const PlacedSegment* stands = part.kind == PartKind::Image ? places.Of(part) : nullptr;
    if (options.segment.empty() ? stands != nullptr && stands->readable
                                : part.kind == PartKind::Image && part.index == options.image)
      images.emplace(stands == nullptr ? 0 : stands->level, &part);
  }
  for (const auto& [level, image] : images) {
    placed = PlaceOf(*image, survey.Header(), definitions);
    if (placed.model != nullptr) return image;
  }
  return nullptr;
}

// Where a picture lies on earth; none where nothing tells it.
std::optional<Georeference> ReferenceOf(const RenderOptions& options, const Survey& survey,
                                        const ViewRequest& request, const FileView& view) {
  const bool isAlone = !options.segment.empty();
  if (options.form != PictureForm::Tiff && !options.world) return std::nullopt;
  const Places places(survey);
  Placed placed;
  const SurveyedPart* image = TellingImage(options, survey, places, placed);
  if (image == nullptr) return std::nullopt;
  const PlacedSegment* stands = places.Of(*image);
  const uint64_t columns = request.columns != 0 ? request.columns : view.FullWidth() - request.column,
                 rows = request.rows != 0 ? request.rows : view.FullHeight() - request.row;
  PlacedPiece piece;
  piece.row = static_cast<double>(request.row) - (isAlone ? 0.0 : static_cast<double>(stands->top));
  piece.column =
      static_cast<double>(request.column) - (isAlone ? 0.0 : static_cast<double>(stands->left));
  piece.rows = view.Height();
  piece.columns = view.Width();
  const bool isFitted = options.size != 0;
  piece.rowSize = isFitted ? static_cast<double>(rows) / view.Height() : options.factor;
  piece.columnSize = isFitted ? static_cast<double>(columns) / view.Width() : options.factor;
  return GeoreferenceOf(*placed.model, piece);
}

}  // namespace

int RenderView(const RenderOptions& options, const std::string& file, Output& output) {
  const WorkAccount account(file);
  const Survey survey(file);
  if (const std::string why = WhyNone(file, survey); !why.empty())
    return Report("render", file, ORB_BAD_STRUCTURE, why);
  if (!options.segment.empty() && survey.Find(PartKind::Image, options.image) == nullptr)
    return Report("render", file, ORB_NO_SUCH_RECORD);
  const ViewRequest request = RequestOf(options);
  FileView view(survey, request);
  if (const SampleFault fault = view.Start(); fault.Met())
    return Report("render", file, fault.Code(), fault.words);
  if (!IsOnPicture(options, view))
    return Report("render", file, ORB_INVALID_PARAMETER,
                  "--region is not on the picture, which has " + std::to_string(view.FullHeight()) +
                      " rows and " + std::to_string(view.FullWidth()) + " columns");
  WorkAccount::AllowPixels(view.PixelsToMake());
  TiffOptions tiff;
  tiff.reference = ReferenceOf(options, survey, request, view);
  tiff.isCloud = options.cloud;
  if (const std::string why = options.world ? WhyNoWorld(tiff.reference) : ""; !why.empty())
    return Refuse("render", InputName(file) + ": " + why);
  std::FILE* stream = output.Stream();
  if (stream == nullptr) return Report("render", output.Target(), ORB_SHORT_WRITE, output.Problem());
  const auto writer = StartPicture(options.form, stream, view.Width(), view.Height(), tiff);
  errno = 0;
  SampleFault fault = view.Draw([&](uint32_t y, const uint8_t* rgb) {
    if (options.progress) ShowProgress(y, view.Height());
    return writer->PutRow(rgb);
  });
  if (fault.Met() && fault.outcome != media::Outcome::Stopped)
    return Report("render", file, fault.Code(), fault.words);
  const bool isWritten = !fault.Met() && writer->Finish();
  if (!isWritten && errno != 0) output.NoteFailure();
  if (!isWritten || !output.Commit())
    return Report("render", options.output.empty() ? file : options.output, ORB_SHORT_WRITE,
                  output.Problem());
  const int code = options.world ? WriteBeside("render", output.Target(), *tiff.reference) : kExitOk;
  return std::max(code, NameMissing(file, view) || options.partial ? kExitOk : kExitStatus);
}

}  // namespace tool
