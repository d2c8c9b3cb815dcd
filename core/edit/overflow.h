// Areas of records, and the data extensions that they overflow to.
#pragma once

#include "core/edit/draft.h"

namespace core {

/// The areas of a kind of header, the one that records are added to last.
std::vector<const AreaLayout*> AreasOf(PartKind kind);
/// The kind of header that an area is of.
PartKind KindOfArea(std::string_view area);
/// The number of the data extension that an area goes on in; 0 for none.
int64_t OverflowNumber(const DraftPart& part, const AreaLayout& area);
/// That extension; null for none.
DraftPart* OverflowOf(Draft& draft, const DraftPart& part, const AreaLayout& area);
/// Gives a header other numbers of its data extensions.
void Renumber(DraftPart& part, const std::function<int64_t(int64_t)>& next);
/// Takes a data extension out; the numbers of those behind it follow.
void EraseExtension(Draft& draft, size_t index);

}  // namespace core
