// The fuzz targets. Each takes any bytes and ends the process when something is wrong.
#pragma once

#include <cstddef>
#include <cstdint>

namespace fuzz {

using Target = int (*)(const uint8_t* data, size_t size);

/// A file through fltInfo and fltLoad; its last byte chooses the options.
int Filter(const uint8_t* data, size_t size);
/// A document through the API: Get, Set, appends, save, reopen, compare. The last bytes choose what is
/// done.
int Api(const uint8_t* data, size_t size);
/// Streams of the codecs; the last bytes choose the options, or describe the raw facsimile data.
int Jpeg(const uint8_t* data, size_t size);
int Jpeg2000(const uint8_t* data, size_t size);
int Facsimile(const uint8_t* data, size_t size);
/// A vector-quantised image whose header the first bytes make, so that its sizes agree more often.
int Vector(const uint8_t* data, size_t size);
/// A metafile read, measured, painted, written and read again.
int Drawing(const uint8_t* data, size_t size);
/// What new files are made of: pictures, metafiles and texts; the last bytes choose how they are stored.
int Input(const uint8_t* data, size_t size);
/// What the tool tells of a file; the last byte chooses how far samples are reduced. It replays what is
/// kept for `filter` as well.
int Insight(const uint8_t* data, size_t size);

/// The core as programs use it; the last bytes choose a window. It replays what is kept for `filter` as
/// well.
int Core(const uint8_t* data, size_t size);

/// A file that is changed by splicing, and proven. It replays what is kept for `filter` as well.
int Edit(const uint8_t* data, size_t size);

/// Where an image lies: its corners, if the last byte says so, and its tagged records.
int Place(const uint8_t* data, size_t size);

struct NamedTarget {
  const char* name;
  Target run;
};
inline constexpr NamedTarget kTargets[] = {
    {"filter", &Filter},       {"api", &Api},       {"jpeg", &Jpeg},       {"jpeg2000", &Jpeg2000},
    {"facsimile", &Facsimile}, {"vector", &Vector}, {"drawing", &Drawing}, {"input", &Input},
    {"insight", &Insight},     {"core", &Core},     {"edit", &Edit},       {"place", &Place},
};

}  // namespace fuzz
