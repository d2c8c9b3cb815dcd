// What the parts of the library's surface share.
#pragma once

#include <map>
#include <new>

#include "core/edit/draft.h"
#include "core/format/definitions.h"
#include "core/format/interruption.h"
#include "core/format/survey.h"
#include "core/pictures/raster.h"
#include "core/place/placed.h"
#include "core/samples/image.h"
#include "core/samples/stream_cache.h"
#include "orbntf/core.hpp"

namespace orbntf::core {

using ::core::SurveyedPart;

// Runs what may throw what the library does not.
template <class Work>
decltype(auto) Guarded(Work work) {
  try {
    return work();
  } catch (const Error&) {
    throw;
  } catch (const ::core::StoppedWork& stopped) {
    throw Error(ErrorKind::Stopped, stopped.what());
  } catch (const ::core::ReadError& error) {
    throw Error(ErrorKind::Unreadable, error.what());
  } catch (const ::core::EditError& error) {
    throw Error(ErrorKind::Invalid, error.what());
  } catch (const ::core::WriteError& error) {
    throw Error(ErrorKind::NotWritten, error.what());
  } catch (const ::core::PictureError& error) {
    throw Error(ErrorKind::Unsupported, error.what());
  } catch (const std::bad_alloc&) {
    throw Error(ErrorKind::TooMuch, "there is not enough memory");
  } catch (const std::exception& error) {
    throw Error(ErrorKind::Damaged, error.what());
  }
}

// Invalid for a path that the system would cut short.
inline void RequirePath(const std::string& path) {
  if (path.empty() || path.find('\0') != std::string::npos)
    throw Error(ErrorKind::Invalid, "a path has bytes, and no zero among them");
}
SegmentInfo InfoOf(const SurveyedPart& part);
ErrorKind KindOf(media::Outcome outcome);
Error ErrorOf(const ::core::SampleFault& fault, const SegmentInfo& image, const SurveyedPart& part);
Samples SamplesOf(::core::SampleImage&& image);

struct File::State {
  template <class Source>
  explicit State(const Source& source) : survey(source) {
    for (const SurveyedPart& part : survey.parts) segments.push_back(InfoOf(part));
  }
  const SurveyedPart& Part(const SegmentInfo& segment) const {
    const SurveyedPart* part = survey.Find(static_cast<::core::PartKind>(segment.kind), segment.index);
    if (part == nullptr) throw Error(ErrorKind::Invalid, "there is no such segment", segment.title);
    return *part;
  }

  // Invalid where nothing tells where an image lies.
  const ::core::PlaceModel& Model(const SurveyedPart& image) const;

  ::core::Survey survey;
  ::core::RecordDefinitions definitions;
  mutable std::map<uint32_t, ::core::Placed> placed;  ///< of the images that were asked
  // The stream that was read last, to go on with where the next window lies below.
  mutable ::core::StreamCache reading;
  mutable const SurveyedPart* readImage = nullptr;
  std::string_view memory;  ///< where the file is bytes of the caller
  std::vector<SegmentInfo> segments;
};

}  // namespace orbntf::core
