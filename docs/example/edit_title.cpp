// Opens a NITF file as a document, prints its segments, changes its title and saves it.
// Usage: edit_title IN OUT TITLE
#include <cstdio>

#include <orbntf/orbntf.hpp>

namespace {

int Fail(const char* what, orbntf::Status status) {
  std::fprintf(stderr, "%s: status %d: %s\n", what, static_cast<int>(status), orbntf::TextOf(status));
  return 1;
}

void PrintSegments(orbntf::Document& document) {
  orbntf::ImageRecord image;
  for (uint32_t i = 0; i < document.ImageCount(); ++i) {
    if (IsSuccess(document.Get(i, image)))
      std::printf("image %u: %s %s, %d x %d\n", i, image->IID1, image->IC, int{image->NCOLS},
                  int{image->NROWS});
  }
  orbntf::TextRecord text;
  for (uint32_t i = 0; i < document.TextCount(); ++i) {
    if (IsSuccess(document.Get(i, text))) std::printf("text %u: %s\n", i, text->TXTITL);
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 4) return Fail("usage: edit_title IN OUT TITLE", orbntf::Status::InvalidParameter);
  orbntf::Document document;
  orbntf::Status status = document.Open(argv[1]);
  if (!IsSuccess(status)) return Fail(argv[1], status);
  PrintSegments(document);
  status = document.Set(&NITFHeader::FTITLE, argv[3]);
  if (IsSuccess(status)) status = document.Save(argv[2]);
  return IsSuccess(status) ? 0 : Fail(argv[2], status);
}
