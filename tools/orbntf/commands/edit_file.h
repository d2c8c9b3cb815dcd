// What the commands that change files share: opening, naming parts, writing.
#pragma once

#include <memory>

#include "core/edit/draft.h"
#include "core/edit/record_edits.h"
#include "tools/orbntf/tool.h"

namespace tool {

/// Options of every command that changes files.
struct EditOptions {
  bool force = false;  ///< write what breaks rules
  bool mend = false;   ///< set wrong lengths first
};
void AddEditOptions(const Command& command, EditOptions& options);
/// --force alone, for one that makes files.
void AddForce(const Command& command, EditOptions& options);

/// Opens a file to change; with `mend` its lengths are set and told. EditError where it is none of the
/// format; ReadError.
std::unique_ptr<Survey> OpenToEdit(const std::string& command, const std::string& path, bool mend);
/// A file that begins as another one is.
Draft DraftOf(const Survey& survey, bool mended);

/// Takes "image:N", "graphic:N", "text:N", "data:N" or "file"; false for anything else.
bool ParsePart(const std::string& text, PartKind& kind, size_t& index);
/// The segment that a command line names. EditError where it is not there.
DraftPart& NamedPart(Draft& draft, const std::string& text);

/// "lowest" or a number.
void AddLevelOption(const Command& command, std::string& level);
/// Sets the complexity level that was asked for; without one it is raised where `raise` says so and the
/// file needs it, which is said.
void ApplyLevel(const std::string& command, Draft& draft, const std::string& level, bool raise);

/// Writes and proves a file as an Output of a name, and prints what `tell` says of it. The exit code.
int SaveDraft(const std::string& command, Draft& draft, const std::string& output,
              const EditOptions& options,
              const std::function<std::string(const std::string& path)>& tell = {});
/// Does the work of a command, and reports what it throws. The exit code.
int Edited(const std::string& command, const std::string& file, const std::function<int()>& work);

}  // namespace tool
