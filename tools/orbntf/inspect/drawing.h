// Drawing a file's composite, the work bounded by its bytes and its canvas.
#pragma once

#include <string>

#include "host/fileformat.h"
#include "tools/orbntf/document.h"

namespace tool {

/// Asks the filter for the composite's size, with the flags of a host's load options.
int32_t AskFilterSize(const std::string& path, uint32_t flags, HostFileInfo& info);
/// Has the filter give its rows, as to a host.
int32_t LoadThroughFilter(const std::string& path, uint32_t flags, HostRowCallback take, void* userData);

/// Draws an opened document; the size is that of its canvas, also where drawing fails.
int32_t DrawDocument(const std::string& path, Document& document, OwnedBitmap& canvas, uint32_t& width,
                     uint32_t& height);

}  // namespace tool
