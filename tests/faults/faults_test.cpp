// Every call of the module to its host fails in turn, and every allocation.
#include <algorithm>
#include <new>

#include "host/display.h"
#include "host/windows.h"
#include "orbntf/orbntf.h"
#include "tests/faults/injector.h"
#include "tests/faults/result.h"
#include "tests/faults/scenarios.h"

namespace {

using faults::kInjected;
using faults::Scenario;
using faults::Site;

// What a failing call comes to. The host's own code is passed on unless a row says otherwise. A row is
// for a file, for a scenario, or for all; several statuses depend on what the call was for.
struct Outcome {
  const char* operation;
  const char* where;
  std::set<int32_t> statuses;
};
const Outcome kOutcomes[] = {
    // Samples are shown without their range where no memory is left to find it.
    {"KernelAllocate", "32 bits", {ORB_OUT_OF_MEMORY, ORB_SUCCESS}},
    {"KernelAllocate", nullptr, {ORB_OUT_OF_MEMORY}},
    {"KernelReallocate", nullptr, {ORB_OUT_OF_MEMORY}},
    {"KernelMakePaletteTable", nullptr, {ORB_OUT_OF_MEMORY}},
    {"KernelCreatePalette", nullptr, {ORB_OUT_OF_MEMORY}},
    {"KernelCreateBitmapDc", nullptr, {ORB_OUT_OF_MEMORY}},
    {"KernelWiden", nullptr, {ORB_OUT_OF_MEMORY}},
    {"GlobalLock", nullptr, {ORB_OUT_OF_MEMORY}},
    // The range of samples is that of the data that there is.
    {"KernelRead", "32 bits", {ORB_SHORT_READ, ORB_SUCCESS}},
    {"KernelSeek", "32 bits", {ORB_SHORT_READ, ORB_SUCCESS}},
    // A stream whose end is not to be found is the last one.
    {"KernelRead", "JPEG band by band", {ORB_SHORT_READ, ORB_SUCCESS}},
    {"KernelSeek", "JPEG band by band", {ORB_SHORT_READ, ORB_SUCCESS}},
    {"KernelRead", nullptr, {ORB_SHORT_READ}},
    {"KernelWrite", nullptr, {ORB_SHORT_WRITE}},
    {"KernelOpen", nullptr, {ORB_SHORT_READ, ORB_SHORT_WRITE, ORB_TEXT_NOT_OPENED}},
    {"WideAccess", nullptr, {ORB_FILE_NOT_FOUND}},
    {"KernelSeek", "Append.cpp", {ORB_SHORT_READ, ORB_INVALID_PARAMETER}},
    {"KernelSeek", "FieldRows.cpp", {ORB_SUCCESS}},  // where a fault would be reported
    {"KernelSeek", "Ntf.cpp", {ORB_SUCCESS}},        // the host's own handle
    {"KernelSeek", "SaveNitf.cpp", {ORB_SHORT_WRITE, ORB_SHORT_READ}},
    {"KernelSeek", nullptr, {ORB_SHORT_READ}},
    // A close of a file that was only read loses nothing.
    {"KernelClose", nullptr, {ORB_SUCCESS, ORB_SHORT_WRITE}},
    // Streams that are not recognised leave their blocks empty; a palette is for screens that need one.
    {"FileFormatInfoMemory", nullptr, {ORB_SUCCESS}},
    {"DisplayCreatePalette", nullptr, {ORB_SUCCESS}},
    {"ColourHistogram", nullptr, {ORB_SUCCESS}},
    {"ColourAdjust", nullptr, {ORB_SUCCESS}},
    // What is freed or readied anew.
    {"KernelDeleteBitmapDc", nullptr, {ORB_SUCCESS}},
    {"KernelDeleteObject", nullptr, {ORB_SUCCESS}},
    {"KernelFreeBitmap", nullptr, {ORB_SUCCESS}},
    {"KernelFreeGlobal", nullptr, {ORB_SUCCESS}},
    {"KernelInitialiseBitmap", nullptr, {ORB_SUCCESS}},
    {"KernelPrepareScratchBitmap", nullptr, {ORB_SUCCESS}},
    {"KernelReleaseBitmap", nullptr, {ORB_SUCCESS}},
    {"VectorFree", nullptr, {ORB_SUCCESS}},
    {"VectorInitialise", nullptr, {ORB_SUCCESS}},
    // Colours of a bitmap that has no palette.
    {"KernelPutColours", nullptr, {kInjected, ORB_SUCCESS}},
    // Settings that a drawing may do without.
    {"VectorResetOrigin", nullptr, {ORB_SUCCESS}},
    {"VectorResetRotation", nullptr, {ORB_SUCCESS}},
    {"VectorResetScale", nullptr, {ORB_SUCCESS}},
    {"VectorSetBackground", nullptr, {ORB_SUCCESS}},
    {"VectorSetPaintMode", nullptr, {ORB_SUCCESS}},
};

std::set<int32_t> ExpectedOf(const Site& site, const Scenario& scenario) {
  const auto row = std::find_if(std::begin(kOutcomes), std::end(kOutcomes), [&](const Outcome& outcome) {
    return site.operation == outcome.operation &&
           (outcome.where == nullptr || site.file == outcome.where || scenario.name == outcome.where);
  });
  return row != std::end(kOutcomes) ? row->statuses : std::set<int32_t>{kInjected};
}

class FaultTest : public test::ModuleTest {
 protected:
  // Runs a scenario with a fault: its status, nothing held, and the file it began with as it was.
  template <class Inject>
  bool Run(const Scenario& scenario, const std::set<int32_t>& expected, const std::string& what,
           Inject inject) {
    const std::string before = scenario.state != nullptr ? scenario.state() : "";
    int32_t status = 0;
    const bool met = inject([&] {
      // The module is built without exceptions: one from the host would go through it.
      try {
        status = scenario.run();
      } catch (const std::bad_alloc&) {
        ADD_FAILURE() << scenario.name << ", " << what << ": thrown through the module";
      }
    });
    EXPECT_TRUE(expected.contains(status) || status == faults::kNoResult)
        << scenario.name << ", " << what << ": status " << status;
    test::ExpectNoLeaks();
    EXPECT_TRUE(scenario.state == nullptr || scenario.state() == before) << scenario.name << ", " << what;
    return met;
  }
};

TEST_F(FaultTest, EveryCallToTheHostFailsInTurn) {
  std::set<Site> failed;
  for (const Scenario& scenario : faults::Scenarios()) {
    int32_t clean = 0;
    const auto calls = faults::Record([&] { clean = scenario.run(); });
    ASSERT_EQ(clean, ORB_SUCCESS) << scenario.name;
    for (const auto& call : calls) {
      const Site& site = call.first;
      const int count = call.second;
      failed.insert(site);
      const std::set<int32_t> expected = ExpectedOf(site, scenario);
      // Calls from the first to the last of a place, once each; and all from the first one on.
      std::set<int> which = {1, 2, 3, 4, 5, 6, count / 2, count};
      for (const int n : which) {
        if (n < 1 || n > count) continue;
        Run(scenario, expected, faults::Describe(site) + ", call " + std::to_string(n),
            [&](const auto& work) { return faults::Fail(site, n, false, work); });
      }
      Run(scenario, expected, faults::Describe(site) + ", from call 1 on",
          [&](const auto& work) { return faults::Fail(site, 1, true, work); });
    }
  }
  // A call that is spread over lines counts where its operation stands.
  for (const Site& site : faults::SitesInSource()) {
    constexpr int kMostLines = 6;
    EXPECT_TRUE(std::any_of(failed.begin(), failed.end(),
                            [&](const Site& f) {
                              return f.operation == site.operation && f.file == site.file &&
                                     f.line >= site.line && f.line <= site.line + kMostLines;
                            }))
        << "never failed: " << faults::Describe(site);
  }
}

// Arguments at the end of calls that are the same wherever the module makes them.
const std::map<std::string, std::vector<int64_t>> kLastArguments = {
    {"DisplayPaintBitmap", {SRCCOPY}},
    {"EffectsPaintTransparent", {0, 0, SRCCOPY}},
    {"ImageEffectsCombine", {0, 0, kCombineCopy}},
    {"KernelAllocateBitmap", {0, 0}},
    {"VectorCopy", {0}},
    {"VectorPaint", {0, 0}},
    {"VectorResetOrigin", {0, 0}},
    {"VectorResetRotation", {0}},
    {"VectorResetScale", {0}},
    {"VectorResetTranslation", {0, 0}},
    {"VectorSetPaintMode", {1}},
    {"VectorSetTranslation", {0, 0}},
};

TEST_F(FaultTest, TheHostIsAskedForWhatItsDeclarationsSay) {
  std::set<std::string> seen;
  for (const Scenario& scenario : faults::Scenarios()) {
    for (const auto& [operation, last] : kLastArguments) {
      for (const faults::HostCall& call : faults::CallsOf(operation, scenario.run)) {
        if (call.operation != operation) continue;
        seen.insert(operation);
        ASSERT_GE(call.arguments.size(), last.size());
        EXPECT_TRUE(std::equal(last.rbegin(), last.rend(), call.arguments.rbegin()))
            << scenario.name << ": " << operation;
      }
    }
  }
  EXPECT_EQ(seen.size(), kLastArguments.size());
}

// Each strip of a block of uncompressed data is readied, filled and put to its place.
TEST_F(FaultTest, ScratchBitmapsAreReadiedForEveryStrip) {
  int scenarios = 0;
  for (const Scenario& scenario : faults::Scenarios()) {
    int readied = 0, placed = 0;
    for (const faults::HostCall& call : faults::CallsOf("", scenario.run)) {
      readied += call.operation == "KernelPrepareScratchBitmap";
      if (call.operation != "ImageEffectsCombine") continue;
      ++placed;
      if (readied != 0) {
        EXPECT_EQ(readied, placed) << scenario.name;
      }
    }
    scenarios += readied != 0;
  }
  EXPECT_GT(scenarios, 5);
}

// A drawing is readied, then painted into all of its place; one that is appended has nothing set.
TEST_F(FaultTest, DrawingsAreReadiedBeforeTheyAreUsed) {
  int painted = 0, placed = 0;
  for (const Scenario& scenario : faults::Scenarios()) {
    const std::vector<faults::HostCall> calls = faults::CallsOf("Vector", scenario.run);
    for (size_t i = 0; i < calls.size(); ++i) {
      if (calls[i].operation == "VectorPaint") {
        ++painted;
        ASSERT_GE(i, 2u) << scenario.name;
        EXPECT_EQ(calls[i - 2].operation, "VectorSetPaintMode");
        EXPECT_EQ(calls[i - 1].operation, "VectorSetBackground");
        const auto& asked = calls[i].arguments;
        EXPECT_EQ(asked[2] << 32 | asked[3], asked[6]) << "the size is that of the place";
      }
      if (calls[i].operation != "VectorSetViewRectangle") continue;
      ++placed;
      ASSERT_LT(i + 3, calls.size()) << scenario.name;
      EXPECT_EQ(calls[i + 1].operation, "VectorResetOrigin");
      EXPECT_EQ(calls[i + 2].operation, "VectorResetRotation");
      EXPECT_EQ(calls[i + 3].operation, "VectorResetScale");
    }
  }
  EXPECT_GT(painted, 0);
  EXPECT_GT(placed, 0);
}

TEST_F(FaultTest, EveryOperationOfTheHostIsInItsHands) {
  // These cannot fail: they have no result, or none that says so.
  const std::set<std::string> sure = {
      "KernelFree",          "KernelCopyMemory",      "KernelFillMemory",
      "KernelTrackResource", "KernelUntrackResource", "FileFormatSetLoadInfoCallback"};
  const std::set<std::string> hooked = faults::HookedOperations();
  for (const std::string& name : faults::OperationsOfTheHost())
    EXPECT_TRUE(hooked.contains(name) || sure.contains(name)) << name;
  EXPECT_GT(faults::OperationsOfTheHost().size(), 60u);
}

TEST_F(FaultTest, EveryAllocationFailsInTurn) {
  // Also those of the host's libraries: what they say is passed on, and a file that cannot be read is
  // short.
  const std::set<int32_t> expected = {ORB_OUT_OF_MEMORY, ORB_SHORT_READ,     ORB_SHORT_WRITE,
                                      ORB_BAD_STRUCTURE, ORB_FILE_NOT_FOUND, ORB_TEXT_NOT_OPENED,
                                      ORB_SUCCESS,       kInjected};
  int injected = 0;
  for (const Scenario& scenario : faults::Scenarios()) {
    for (const bool fromThenOn : {false, true}) {
      constexpr int kMost = 60;
      for (int n = 1; n <= kMost; ++n) {
        const bool met =
            Run(scenario, expected, "allocation " + std::to_string(n),
                [&](const auto& work) { return faults::FailAllocation(n, fromThenOn, work); });
        if (!met || HasFailure()) break;
        ++injected;
      }
    }
  }
  EXPECT_GT(injected, 1000);
}

}  // namespace
