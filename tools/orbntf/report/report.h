// A page that tells what is in a file, where it is, whether it is sound, and what the module does with
// it.
#pragma once

#include <string>
#include <vector>

#include "tools/orbntf/check/check_file.h"
#include "tools/orbntf/report/pictures.h"

namespace tool {

/// A file as the sections of its report see it.
struct ReportedFile {
  ReportedFile(const std::string& from, const std::string& prefix, const RecordDefinitions& known)
      : path(from), id(prefix), definitions(known), survey(from) {}

  const std::string path;
  const std::string id;  ///< in front of the ids of its elements
  const RecordDefinitions& definitions;
  const Survey survey;
  Verdict verdict;
  std::vector<Finding> findings;
};

/// Draws and examines the file; the report of it, as HTML.
std::string ReportOf(ReportedFile& file);
/// A whole page of reports.
std::string PageOf(const std::string& title, const std::vector<std::string>& reports,
                   const std::vector<std::string>& names);

// The sections, as HTML.
std::string FindingsSection(const ReportedFile& file);
std::string PictureSection(const ReportedFile& file, const Composite& module, const Composite& standard);
std::string SegmentsSection(const ReportedFile& file);
std::string LocationSection(const ReportedFile& file);
std::string FieldsSection(const ReportedFile& file);
std::string RecordsSection(const ReportedFile& file);
std::string TextsSection(const ReportedFile& file);
std::string LayoutSection(const ReportedFile& file);

/// A histogram of each band, as SVG.
std::string Histograms(const SampleImage& image);

}  // namespace tool
