// Saving where the file system has symbolic links and files can be limited in size.
#include <sys/resource.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>

#include "tests/support/support.h"

namespace {

class PosixTest : public test::ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    ASSERT_EQ(Orb_NITFCreate(&handle_, file_.Wide()), 1);
  }
  void TearDown() override {
    EXPECT_EQ(Orb_NITFDestroy(&handle_), 1);
    ModuleTest::TearDown();
  }

  const std::string bytes_ = test::NitfBuilder()
                                 .Image(test::ImageForm{}, std::string(64, 'i'))
                                 .Text("some text")
                                 .Text("")
                                 .Bytes();
  const test::TempFile file_{bytes_};
  NitfHandle handle_ = nullptr;
};

TEST_F(PosixTest, ALinkToTheSourceIsNotOverwritten) {
  const std::string link = file_.Path() + ".link";
  ASSERT_EQ(symlink(file_.Path().c_str(), link.c_str()), 0);
  EXPECT_EQ(Orb_NITFSaveFileA(handle_, link.c_str()), ORB_INVALID_PARAMETER);
  unlink(link.c_str());
  EXPECT_EQ(file_.Contents(), bytes_);
}

TEST_F(PosixTest, TheSourceIsKnownByItselfAndNotByItsName) {
  namespace fs = std::filesystem;
  const fs::path folder = file_.Path() + ".folder";
  fs::create_directories(folder / "other");
  const fs::path before = fs::current_path();
  fs::copy_file(file_.Path(), folder / "name.ntf");
  fs::current_path(folder);
  NitfHandle handle = nullptr;
  ASSERT_EQ(Orb_NITFCreateA(&handle, "name.ntf"), 1);
  fs::create_hard_link("name.ntf", "hard.ntf");
  fs::create_symlink("name.ntf", "soft.ntf");
  for (const char* name : {"name.ntf", "hard.ntf", "soft.ntf", "other/../name.ntf"})
    EXPECT_EQ(Orb_NITFSaveFileA(handle, name), ORB_INVALID_PARAMETER) << name;
  fs::current_path("other");
  EXPECT_EQ(Orb_NITFSaveFileA(handle, "../hard.ntf"), ORB_INVALID_PARAMETER);
  EXPECT_EQ(Orb_NITFSaveFileA(handle, "name.ntf"), 1) << "an unrelated file of the same relative name";
  EXPECT_EQ(test::ReadFile("name.ntf"), bytes_);
  EXPECT_EQ(Orb_NITFSaveFileA(handle, "name.ntf"), 1) << "also once it is there";
  fs::rename(folder / "name.ntf", folder / "renamed.ntf");
  EXPECT_EQ(Orb_NITFSaveFileA(handle, "../renamed.ntf"), ORB_INVALID_PARAMETER);
  EXPECT_EQ(Orb_NITFSaveFileA(handle, "../name.ntf"), 1) << "the old name is free";
  EXPECT_EQ(test::ReadFile("../renamed.ntf"), bytes_);
  EXPECT_EQ(Orb_NITFDestroy(&handle), 1);
  fs::current_path(before);
  fs::remove_all(folder);
}

TEST_F(PosixTest, AFullDiskIsAShortWriteAndASecondSaveSucceeds) {
  rlimit old;
  getrlimit(RLIMIT_FSIZE, &old);
  std::signal(SIGXFSZ, SIG_IGN);
  for (rlim_t limit = 0; limit < bytes_.size(); limit += 97) {
    const test::TempFile out;
    const rlimit small = {limit, old.rlim_max};
    setrlimit(RLIMIT_FSIZE, &small);
    const int32_t status = Orb_NITFSaveFile(handle_, out.Wide());
    setrlimit(RLIMIT_FSIZE, &old);
    ASSERT_EQ(status, ORB_SHORT_WRITE) << limit;
  }
  const test::TempFile out;
  EXPECT_EQ(Orb_NITFSaveFile(handle_, out.Wide()), 1);
  EXPECT_EQ(out.Contents(), bytes_);
}

}  // namespace
