// orbntf diff: what differs between two files.
#include <algorithm>
#include <cerrno>

#include "core/check/rule.h"
#include "core/compare/compare.h"
#include "core/compare/compare_pixels.h"
#include "core/format/words.h"
#include "core/pictures/picture.h"
#include "tools/orbntf/document.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/compare_json.h"
#include "tools/orbntf/inspect/opening.h"
#include "tools/orbntf/output/output.h"

namespace tool {
namespace {

struct DiffOptions {
  std::string a, b;
  std::string pixels;  // the difference picture's name; empty for none
  PictureForm form = PictureForm::Png;
  bool json = false;
  std::unique_ptr<RecordDefinitions> definitions;  // made when the command runs
};

std::string Shown(const std::optional<std::string>& text) {
  return text ? Quoted(TrimmedText(*text)) : "(none)";
}
std::string Shown(const std::optional<uint64_t>& length) {
  return length ? std::to_string(*length) + " bytes" : "(none)";
}

// Texts side by side; of long ones the parts around the first character that differs.
std::pair<std::string, std::string> Excerpts(const TextDifference& difference) {
  const auto trimmed = [](const std::optional<std::string>& text) {
    return text ? std::optional(std::string(TrimmedText(*text))) : std::nullopt;
  };
  const std::optional<std::string> a = trimmed(difference.a), b = trimmed(difference.b);
  constexpr size_t kShort = 40, kBefore = 12, kShown = 36;
  if (!a || !b || std::max(a->size(), b->size()) <= kShort) return {Shown(a), Shown(b)};
  const size_t common = std::min(a->size(), b->size());
  size_t first = 0;
  while (first < common && (*a)[first] == (*b)[first]) ++first;
  const size_t begin = first - std::min(first, kBefore);
  const auto part = [&](const std::string& text) {
    return (begin > 0 ? "…" : "") + Quoted(text.substr(begin, kShown)) +
           (begin + kShown < text.size() ? "…" : "");
  };
  return {part(*a), part(*b) + ", from byte " + std::to_string(first)};
}

void PrintTexts(const std::vector<TextDifference>& differences, const char* what) {
  for (const TextDifference& difference : differences) {
    const auto [a, b] = Excerpts(difference);
    const std::string field = difference.field.empty() ? "" : " " + difference.field;
    std::printf("%s%s, %s%s: %s | %s\n", what, difference.part.c_str(),
                Printable(ToUtf8(difference.name)).c_str(), Printable(field).c_str(), a.c_str(),
                b.c_str());
  }
}

void PrintPixels(const PixelDifference& pixels) {
  if (!pixels.Differs()) return;
  if (!pixels.BothDraw()) {
    const auto words = [](const SampleFault& fault) {
      return fault.Met() ? Printable(fault.words) : "it is drawn";
    };
    std::printf("drawing: %s | %s\n", words(pixels.a).c_str(), words(pixels.b).c_str());
  } else if (!pixels.SameSize()) {
    std::printf("pixels: %u x %u | %u x %u\n", pixels.widthA, pixels.heightA, pixels.widthB,
                pixels.heightB);
  } else {
    std::printf("pixels: %llu differ, by up to %d, in rows %u to %u, columns %u to %u\n",
                static_cast<unsigned long long>(pixels.count), pixels.largest, pixels.top, pixels.bottom,
                pixels.left, pixels.right);
  }
}

void Print(const Comparison& comparison, const PixelDifference& pixels) {
  PrintTexts(comparison.fields, "");
  PrintTexts(comparison.records, "record of ");
  for (const DataDifference& difference : comparison.segments) {
    const std::string from =
        difference.firstOffset ? ", from byte " + std::to_string(*difference.firstOffset) : "";
    std::printf("%s: %s | %s%s\n", difference.part.c_str(), Shown(difference.a).c_str(),
                Shown(difference.b).c_str(), from.c_str());
  }
  for (const SampleDifference& samples : comparison.samples)
    std::printf("%s: %s\n", samples.part.c_str(), WordsOf(samples).c_str());
  PrintPixels(pixels);
}

// Writes the differences, the greatest one as white. False with the output's problem.
bool WriteDifferences(const DiffOptions& options, const PixelDifference& pixels, ScratchFile& scratch,
                      Output& output) {
  std::FILE* stream = output.Problem().empty() ? output.Stream() : nullptr;
  if (stream == nullptr) return false;
  const auto writer = StartPicture(options.form, stream, pixels.widthA, pixels.heightA);
  std::vector<uint8_t> row(size_t{3} * pixels.widthA);
  errno = 0;
  bool isWritten = true;
  for (uint32_t y = 0; isWritten && y < pixels.heightA; ++y) {
    if (pixels.count != 0) scratch.ReadBack(uint64_t{y} * row.size(), row.data(), row.size());
    for (uint8_t& sample : row) sample = static_cast<uint8_t>(sample * 255 / std::max(1, pixels.largest));
    isWritten = writer->PutRow(row.data());
  }
  isWritten = isWritten && writer->Finish();
  if (!isWritten && errno != 0) output.NoteFailure();
  return isWritten && output.Commit();
}

// The difference picture, where one is wanted and there can be one. Returns the exit code.
int WritePicture(const DiffOptions& options, const PixelDifference& pixels, ScratchFile& scratch) {
  if (options.pixels.empty()) return kExitOk;
  if (!pixels.BothDraw() || !pixels.SameSize())
    return Report("diff", options.pixels, ORB_INVALID_PARAMETER,
                  "no difference picture: the two have no pictures of one size");
  Output output(options.pixels,
                options.form == PictureForm::Tiff ? Output::Way::ByName : Output::Way::InOrder);
  const bool isWritten = WriteDifferences(options, pixels, scratch, output);
  return Report("diff", options.pixels, isWritten ? ORB_SUCCESS : ORB_SHORT_WRITE, output.Problem());
}

// Takes the difference picture's form; why it cannot be, empty where it can.
std::string TakeForm(DiffOptions& options) {
  if (options.pixels.empty()) return "";
  const size_t dot = options.pixels.rfind('.');
  const auto form =
      dot == std::string::npos ? std::nullopt : PictureFormOf(options.pixels.substr(dot + 1));
  if (!form) return "the difference picture's name ends in .png, .ppm, .jpg or .tif";
  options.form = *form;
  return Inputs({options.a, options.b}).Hold(options.pixels)
             ? "the output is the input; give another name"
             : "";
}

// 0 for files that are the same to all of this, 1 for others, as `diff` has it.
int RunDiff(DiffOptions& options, const std::string& folder) {
  if (const std::string problem = TakeForm(options); !problem.empty()) return Refuse("diff", problem);
  if (const std::string problem = TakeDefinitions(folder, options.definitions); !problem.empty())
    return Refuse("diff", problem);
  const Survey a(TakeInput(options.a)), b(TakeInput(options.b));
  for (const Survey* survey : {&a, &b}) {
    if (!survey->file.IsOpen()) return ReportFile("diff", survey->path, ORB_SHORT_READ);
  }
  const WorkAccount account(a.file.Size() < b.file.Size() ? b.path : a.path);
  const Comparison comparison = Compare(a, b, *options.definitions);
  ScratchFile scratch("");
  const PixelDifference pixels =
      comparison.Differs() ? ComparePixels(a, b, scratch) : ComparePictureSizes(a, b);
  if (options.json)
    std::printf("%s\n", ComparisonJson(options.a, options.b, comparison, pixels).c_str());
  else
    Print(comparison, pixels);
  const int written = WritePicture(options, pixels, scratch);
  return std::max(written, comparison.Differs() || pixels.Differs() ? kExitStatus : kExitOk);
}

}  // namespace

void AddDiff(const Command& top, CommandLine& line) {
  auto options = std::make_shared<DiffOptions>();
  const Command command = top.Add("diff", "Tell what differs between two files");
  command.Take("A", options->a, "a file").Required();
  command.Take("B", options->b, "another one").Required();
  command.Take("--pixels", options->pixels, "write a picture of the differences, the greatest one white");
  command.Flag("--json", options->json, "print JSON");
  command.Runs(line.work, [options, &line] { return RunDiff(*options, line.records); });
}

}  // namespace tool
