// orbntf locate: where on earth points of an image lie, and the other way round.
#include <charconv>
#include <cmath>
#include <iostream>
#include <limits>

#include "core/format/json_text.h"
#include "core/format/words.h"
#include "core/place/placed.h"
#include "orbntf/orbntf.h"
#include "tools/orbntf/inputs.h"
#include "tools/orbntf/inspect/explain.h"
#include "tools/orbntf/tool.h"

namespace tool {
namespace {

struct LocateOptions {
  std::string file, heightText, pixelLines, atLines;
  std::vector<std::string> pixels, ats;
  uint32_t image = 0;
  std::unique_ptr<RecordDefinitions> definitions;  // made when the command runs
};

void AppendNumber(std::string& text, double number) {
  char digits[32];
  const auto end = std::to_chars(digits, digits + sizeof digits, number);
  text.append(digits, end.ptr);
}

bool ParseNumber(std::string_view text, double& number) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '+')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\r')) text.remove_suffix(1);
  const auto end = std::from_chars(text.data(), text.data() + text.size(), number);
  return end.ec == std::errc() && end.ptr == text.data() + text.size() && !text.empty() &&
         std::isfinite(number);
}

// Two numbers with a comma between them.
bool ParsePair(std::string_view text, double& first, double& second) {
  const size_t comma = text.find(',');
  return comma != std::string_view::npos && ParseNumber(text.substr(0, comma), first) &&
         ParseNumber(text.substr(comma + 1), second);
}

// Answers points, a line of JSON each.
class Locator {
 public:
  Locator(const Placed& placed, std::optional<double> height) : model_(*placed.model) {
    if (!height) height = model_.Height();
    height_ = height.value_or(0);
    JsonText json(false);
    json.BeginObject();
    json.Key("height");
    if (height)
      json.Real(*height);
    else
      json.Null();
    if (height) {
      json.Key("height_above");
      json.String("WGS 84 ellipsoid");
    }
    json.Key("model");
    json.String(model_.Name());
    json.Key("error_m");
    json.Real(model_.Error());
    if (!placed.unused.empty()) {
      json.Key("unused");
      json.BeginArray();
      for (const std::string& tag : placed.unused) json.String(tag);
      json.EndArray();
    }
    json.EndObject();
    end_ = json.Text().substr(1) + "\n";
  }

  void Answer(std::string_view line, bool isPixel) {
    ImagePoint point{};
    GroundPoint ground{0, 0, height_};
    if (!ParsePair(line, isPixel ? point.row : ground.latitude,
                   isPixel ? point.column : ground.longitude))
      return Fail("", isPixel ? "not ROW,COL" : "not LAT,LON");
    if (!isPixel && (std::abs(ground.latitude) > 90 || std::abs(ground.longitude) > 360))
      return Fail(Pair("latitude", ground.latitude, "longitude", ground.longitude),
                  "a latitude is -90 to 90, a longitude -360 to 360");
    const std::string words =
        isPixel ? model_.ToGround(point, height_, ground) : model_.ToImage(ground, point);
    if (!words.empty())
      return Fail(isPixel ? Pair("row", point.row, "column", point.column)
                          : Pair("latitude", ground.latitude, "longitude", ground.longitude),
                  words);
    text_ += "{" + Pair("row", point.row, "column", point.column) +
             Pair("latitude", ground.latitude, "longitude", ground.longitude) + end_;
    Flush(kMostHeld);
  }

  /// Whether every point had an answer.
  bool Finish() {
    Flush(0);
    return !failed_;
  }

 private:
  static constexpr size_t kMostHeld = 1 << 16;
  static std::string Pair(const char* firstName, double first, const char* secondName, double second) {
    std::string text;
    for (const auto& [name, number] : {std::pair{firstName, first}, {secondName, second}}) {
      text.append("\"").append(name).append("\":");
      AppendNumber(text, number);
      text += ',';
    }
    return text;
  }
  void Fail(const std::string& point, const std::string& words) {
    failed_ = true;
    text_.append("{").append(point).append("\"error\":\"").append(words).append("\"}\n");
    Flush(kMostHeld);
  }
  void Flush(size_t most) {
    if (text_.size() <= most) return;
    std::fwrite(text_.data(), 1, text_.size(), stdout);
    text_.clear();
  }

  const PlaceModel& model_;
  double height_ = 0;
  std::string end_, text_;
  bool failed_ = false;
};

// What is wrong with the options; empty for nothing.
std::string Wrong(const LocateOptions& options) {
  const bool isStreamed = !options.pixelLines.empty() || !options.atLines.empty();
  if (options.pixels.empty() && options.ats.empty() && !isStreamed)
    return "give --pixel ROW,COL, --at LAT,LON, --pixels - or --ats -";
  if (!options.pixelLines.empty() && !options.atLines.empty()) return "give either --pixels or --ats";
  if ((isStreamed && options.pixelLines + options.atLines != "-") || (isStreamed && options.file == "-"))
    return "--pixels and --ats read standard input, -";
  return "";
}

// Lines of any length: what is longer than a point can be is none.
void AnswerLines(Locator& locator, bool isPixel) {
  char line[1024];
  while (std::cin.getline(line, sizeof line) || std::cin.gcount() > 0) {
    const bool isWhole = !std::cin.fail();
    if (!isWhole) {
      std::cin.clear();
      std::cin.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
    }
    locator.Answer(isWhole ? line : "", isPixel);
  }
  if (std::cin.bad()) throw ReadError("-", "standard input cannot be read");
}

int Answer(const LocateOptions& options, const Placed& placed, std::optional<double> height) {
  Locator locator(placed, height);
  for (const std::string& pixel : options.pixels) locator.Answer(pixel, true);
  for (const std::string& at : options.ats) locator.Answer(at, false);
  if (!options.pixelLines.empty() || !options.atLines.empty()) {
    std::ios::sync_with_stdio(false);
    AnswerLines(locator, !options.pixelLines.empty());
  }
  return locator.Finish() ? kExitOk : kExitStatus;
}

int RunLocate(LocateOptions& options, const std::string& folder) {
  if (const std::string problem = TakeDefinitions(folder, options.definitions); !problem.empty())
    return Refuse("locate", problem);
  if (const std::string wrong = Wrong(options); !wrong.empty()) return Refuse("locate", wrong);
  std::optional<double> height;
  if (double number = 0; !options.heightText.empty()) {
    if (!ParseNumber(options.heightText, number)) return Refuse("locate", "--height takes metres");
    height = number;
  }
  options.file = TakeInput(options.file);
  const Survey survey(options.file);
  if (const std::string why = WhyUnreadable(options.file); !why.empty())
    return Report("locate", options.file, ORB_SHORT_READ, why);
  const SurveyedPart* image = survey.Find(PartKind::Image, options.image);
  if (image == nullptr) return Report("locate", options.file, ORB_NO_SUCH_RECORD);
  const Placed placed = PlaceOf(*image, survey.Header(), *options.definitions);
  if (placed.model == nullptr) {
    std::string words = "nothing that is used tells where " + image->Title() + " lies";
    for (const std::string& tag : placed.unused) words += "; " + tag + " is there and not used";
    return Report("locate", options.file, ORB_NO_SUCH_RECORD, words);
  }
  return Answer(options, placed, height);
}

}  // namespace

void AddLocate(const Command& top, CommandLine& line) {
  auto options = std::make_shared<LocateOptions>();
  const Command command = top.Add("locate", "Tell where on earth points of an image lie, and back");
  command.Take("FILE", options->file, "file to read").Required();
  command.Take("--pixel", options->pixels, "ROW,COL; 0,0 is the middle of the first pixel").Repeated();
  command.Take("--at", options->ats, "LAT,LON in degrees").Repeated();
  command.Take("--pixels", options->pixelLines, "- reads ROW,COL of each line of standard input");
  command.Take("--ats", options->atLines, "- reads LAT,LON of each line of standard input");
  command.Take("--image", options->image, "image, from 0");
  command.Take("--height", options->heightText,
               "metres above the WGS 84 ellipsoid; else the model's own");
  command.Runs(line.work, [options, &line] { return RunLocate(*options, line.records); });
}

}  // namespace tool
