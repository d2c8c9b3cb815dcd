// orbntf.hpp: what is given back loses nothing.
#include "orbntf/orbntf.hpp"
#include "tests/support/support.h"

namespace {

using orbntf::Status;
using test::ImageForm;
using test::NitfBuilder;

class WrapperTest : public test::ModuleTest {};

// A file with everything that only Set of the file header concerns.
NitfBuilder Whole() {
  NitfBuilder file = test::FullFile();
  file.header.SetRaw("FBKGC", "\x10\x20\x30");
  file.header.Set("UDHDL", 14).InsertAfter("UDHDL", "UDH", "005TAGUSE00000");
  return file;
}

std::string SavedWith(const std::string& bytes, const std::function<Status(orbntf::Document&)>& change) {
  const test::TempFile in(bytes), out;
  orbntf::Document document;
  EXPECT_EQ(document.Open(in.Path()), Status::Success);
  EXPECT_EQ(change(document), Status::Success);
  EXPECT_EQ(document.Save(out.Path()), Status::Success);
  orbntf::Document again;
  EXPECT_EQ(again.Open(out.Path()), Status::Success) << "what is saved opens";
  return out.Contents();
}

TEST_F(WrapperTest, ARecordGivenBackChangesNothing) {
  const std::string bytes = Whole().Bytes();
  const std::string plain = SavedWith(bytes, [](orbntf::Document&) { return Status::Success; });
  EXPECT_EQ(SavedWith(bytes,
                      [](orbntf::Document& document) {
                        orbntf::FileRecord record;
                        const Status status = document.Get(record);
                        return IsSuccess(status) ? document.Set(record) : status;
                      }),
            plain);
}

TEST_F(WrapperTest, OneTextIsSetByItsField) {
  const std::string bytes = Whole().Bytes();
  std::string expected = SavedWith(bytes, [](orbntf::Document&) { return Status::Success; });
  expected.replace(39, 80, "A title" + std::string(73, ' '));
  EXPECT_EQ(SavedWith(bytes,
                      [](orbntf::Document& document) {
                        EXPECT_EQ(document.Set(&NITFHeader::FTITLE, std::string(81, 'x')),
                                  Status::InvalidParameter);
                        return document.Set(&NITFHeader::FTITLE, "A title");
                      }),
            expected);
}

TEST_F(WrapperTest, WhatWasSetBeforeIsKept) {
  const std::string bytes = Whole().Bytes();
  const std::string saved = SavedWith(bytes, [](orbntf::Document& document) {
    orbntf::FileRecord record;
    EXPECT_EQ(document.Get(record), Status::Success);
    EXPECT_EQ(+record->FBKGC, 0x302010u);
    EXPECT_EQ(+record->UDHOFL, 5);
    record->FBKGC = 0x010203;
    EXPECT_EQ(document.Set(record), Status::Success);
    return document.Set(&NITFHeader::OSTAID, "Station");
  });
  EXPECT_EQ(saved.substr(297, 3), "\x03\x02\x01");
}

TEST_F(WrapperTest, LengthsOfAStreamedFileAreThoseOfItsEnd) {
  NitfBuilder file = Whole();
  const std::string header = file.Bytes().substr(0, 500);
  std::string replacement = header;
  const auto data = [&] { return test::StreamingData(replacement); };
  file.extensions.push_back({test::DataExtensionRecord("STREAMING_FILE_HEADER"), data()});
  const std::string whole = file.Bytes();
  replacement = whole.substr(0, 500);
  file.extensions.back().data = data();
  file.Patch("FL", "999999999999");
  const std::string bytes = file.Bytes();
  SavedWith(bytes, [](orbntf::Document& document) {
    orbntf::FileRecord record;
    EXPECT_EQ(document.Get(record), Status::Success);
    EXPECT_EQ(+record->UDHDL, 14);
    return document.Set(record);
  });
}

TEST_F(WrapperTest, AnEmptyDocumentKeepsItsHeader) {
  const test::TempFile out;
  orbntf::Document document;
  ASSERT_EQ(document.StartEmpty(), Status::Success);
  ASSERT_EQ(document.Set(&NITFHeader::FTITLE, "Fresh"), Status::Success);
  ASSERT_EQ(document.Save(out.Path()), Status::Success);
  orbntf::Document again;
  ASSERT_EQ(again.Open(out.Path()), Status::Success);
  orbntf::FileRecord record;
  ASSERT_EQ(again.Get(record), Status::Success);
  EXPECT_EQ(std::string(record->FTITLE).substr(0, 6), "Fresh ");
  EXPECT_EQ(+record->FBKGC, 0u);
}

}  // namespace
