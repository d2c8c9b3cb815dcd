// A page that tells what is in a file, where it is, whether it is sound, and what the module does with
// it.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <vector>

#include "core/check/check_file.h"
#include "core/report/pictures.h"

namespace core {

/// How much of a file a page shows.
struct PageDetail {
  size_t rows, allRows;  ///< of a table of fields, and of all of them
  size_t records;
  size_t segmentPictures;  ///< images and graphics that are shown by themselves
  size_t findings;
  size_t textBytes;
  uint32_t shrink;  ///< of the composite's sides; 0 for no picture
};

/// A file as the sections of its report see it.
struct ReportedFile {
  ReportedFile(const std::string& from, const std::string& prefix, const RecordDefinitions& known)
      : path(from), id(prefix), definitions(known), survey(from) {}
  /// Of bytes that the caller keeps where they are, by a name that is shown.
  ReportedFile(std::string_view memory, const std::string& name, const std::string& prefix,
               const RecordDefinitions& known)
      : path(name), id(prefix), definitions(known), survey(memory) {}
  /// Of an open file of a size, which is closed with this.
  ReportedFile(int descriptor, uint64_t size, const std::string& name, const std::string& prefix,
               const RecordDefinitions& known)
      : path(name), id(prefix), definitions(known), survey(descriptor, size) {}

  const std::string path;
  const std::string id;  ///< in front of the ids of its elements
  const RecordDefinitions& definitions;
  const Survey survey;
  bool readerDraws = false;  ///< the module
  std::string readerWords;  ///< what it says of the file: "drawn, 640 x 400"; empty where it is not asked
  std::vector<Finding> findings;
  Composite picture;                         ///< by the published standard
  std::optional<Composite> module;           ///< as the module draws it, where it is to be shown
  std::vector<std::string> segmentPictures;  ///< as HTML, of the first images and graphics
};

/// Bytes that a page has at most, whatever is in its files.
inline constexpr size_t kMostPageBytes = 4 << 20;

/// Examines and draws the file, of which the caller has set the module's words; the report of it as HTML,
/// of at most so many bytes as far as it goes with less detail, which it then says.
std::string ReportOf(ReportedFile& file, size_t mostBytes = kMostPageBytes);
/// A whole page of reports, made by a version of the program.
std::string PageOf(const std::string& version, const std::string& title,
                   const std::vector<std::string>& reports, const std::vector<std::string>& names);

// The sections, as HTML.
std::string SummarySection(const ReportedFile& file);
/// `rows` are the ids of the fields that the page shows, to which findings lead.
std::string FindingsSection(const ReportedFile& file, const PageDetail& detail,
                            const std::set<std::string>& rows);
std::string PictureSection(const ReportedFile& file, const PageDetail& detail);
std::string SegmentsSection(const ReportedFile& file, const PageDetail& detail);
std::string LocationSection(const ReportedFile& file);
/// Gives an id to the fields that findings name and notes those that are shown in `rows`.
std::string FieldsSection(const ReportedFile& file, const PageDetail& detail,
                          std::set<std::string>& rows);
std::string RecordsSection(const ReportedFile& file, const PageDetail& detail);
std::string TextsSection(const ReportedFile& file, const PageDetail& detail);
std::string LayoutSection(const ReportedFile& file, const PageDetail& detail);

/// The id of a field's row.
std::string RowId(const ReportedFile& file, const std::string& part, const std::string& field);

/// Draws the first images and graphics by themselves.
void DrawSegments(ReportedFile& file, size_t most);

/// A histogram of each band, as SVG.
std::string Histograms(const SampleImage& image);

}  // namespace core
