// core_look FILE: a file's header, what is wrong with it, and the upper left corner of its first image.
#include <cstdio>

#include <orbntf/core.hpp>

int main(int argc, char** argv) try {
  if (argc != 2) return 2;
  const auto file = orbntf::core::File::Open(argv[1]);
  for (const auto& field : file.Fields(file.Segments().front()))
    std::printf("%-8s %s\n", field.name.c_str(), field.text.c_str());
  for (const auto& finding : file.Check())
    std::printf("%s %s: %s\n", finding.segment.c_str(), finding.field.c_str(), finding.words.c_str());
  orbntf::core::SampleRequest request;
  request.rows = request.columns = 4;
  const auto samples = file.ReadSamples(file.Segment(orbntf::core::SegmentKind::Image), request);
  for (size_t i = 0; i < samples.data.size(); ++i)
    std::printf("%02x%s", samples.data[i],
                (i + 1) % (samples.data.size() / samples.height) == 0 ? "\n" : " ");
} catch (const orbntf::core::Error& error) {
  std::fprintf(stderr, "%s: %s\n", error.Segment().c_str(), error.what());
  return 1;
}
