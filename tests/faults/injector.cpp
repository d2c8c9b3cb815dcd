#include "tests/faults/injector.h"

#include <cctype>
#include <filesystem>
#include <fstream>
#include <initializer_list>

#include "tests/faults/result.h"

namespace faults {
namespace {

struct Plan {
  bool recording = false;
  std::map<Site, int> calls;
  const Site* site = nullptr;
  int n = 0, seen = 0;
  bool fromThenOn = false;
  int allocation = 0, allocations = 0;
  bool keeps = false;
  std::string kept;  // what the operations that are kept begin with
  std::vector<HostCall> keptCalls;
};
Plan plan;
bool inside = false;  // the injector's own allocations are not the module's

struct Inside {
  Inside() { inside = true; }
  ~Inside() { inside = false; }
};

bool Met(int seen) { return plan.fromThenOn ? seen >= plan.n : seen == plan.n; }

}  // namespace

bool AllocationFails() {
  if (plan.allocation == 0 || inside) return false;
  ++plan.allocations;
  return plan.fromThenOn ? plan.allocations >= plan.allocation : plan.allocations == plan.allocation;
}

bool ShouldFail(const char* name, const char* file, int line) {
  if (!plan.recording && plan.site == nullptr) return false;
  const Inside guard;
  const Site site = {name, std::filesystem::path(file).filename().string(), line};
  if (plan.recording) ++plan.calls[site];
  return plan.site != nullptr && site == *plan.site && Met(++plan.seen);
}

void Keep(const char* name, std::initializer_list<int64_t> arguments) {
  if (!plan.keeps || std::string_view(name).substr(0, plan.kept.size()) != plan.kept) return;
  const Inside guard;
  plan.keptCalls.push_back({name, arguments});
}

std::vector<HostCall> CallsOf(const std::string& begin, const std::function<void()>& work) {
  plan = {};
  plan.keeps = true;
  plan.kept = begin;
  work();
  std::vector<HostCall> calls = std::move(plan.keptCalls);
  plan = {};
  return calls;
}

std::string Describe(const Site& site) {
  return site.operation + " at " + site.file + ":" + std::to_string(site.line);
}

std::map<Site, int> Record(const std::function<void()>& work) {
  plan = {};
  plan.recording = true;
  work();
  std::map<Site, int> calls = std::move(plan.calls);
  plan = {};
  return calls;
}

bool Fail(const Site& site, int n, bool fromThenOn, const std::function<void()>& work) {
  plan = {};
  plan.site = &site;
  plan.n = n;
  plan.fromThenOn = fromThenOn;
  work();
  const bool met = plan.seen >= n;
  plan = {};
  return met;
}

bool FailAllocation(int n, bool fromThenOn, const std::function<void()>& work) {
  plan = {};
  plan.allocation = n;
  plan.fromThenOn = fromThenOn;
  work();
  const bool met = plan.allocations >= n;
  plan = {};
  return met;
}

int32_t ORB_CALL LoadMemoryOrFail(const void* bytes, KernelBitmap* bitmap, uint32_t recordSize,
                                  uint32_t bitsPerPixel, uint32_t order, uint32_t byteCount,
                                  const HostLoadOptions* options, HostFileInfo* info) {
  if (ShouldFail("FileFormatLoadMemory", "load record", 0)) return kInjected;
  return FileFormatLoadMemory(bytes, bitmap, recordSize, bitsPerPixel, order, byteCount, options, info);
}

std::set<std::string> HookedOperations() {
  std::set<std::string> names = {"FileFormatLoadMemory"};
  std::ifstream hooks(PROJECT_SOURCE_DIR "/tests/faults/hooks.h");
  for (std::string line; std::getline(hooks, line);) {
    const size_t open = line.find("(...) HOST_CALL(");
    if (line.rfind("#define ", 0) == 0 && open != std::string::npos)
      names.insert(line.substr(8, open - 8));
  }
  return names;
}

std::set<std::string> OperationsOfTheHost() {
  std::set<std::string> names;
  for (const char* library : {"kernel", "vector", "fileformat", "display"}) {
    std::ifstream definition(PROJECT_SOURCE_DIR "/host/" + std::string(library) + ".def");
    for (std::string line; std::getline(definition, line);) {
      const size_t at = line.find('@');
      if (line.rfind("  ", 0) == 0 && at != std::string::npos) names.insert(line.substr(2, at - 2));
    }
  }
  return names;
}

std::set<Site> SitesInSource() {
  std::set<Site> sites;
  const std::set<std::string> names = HookedOperations();
  for (const auto& entry : std::filesystem::directory_iterator(PROJECT_SOURCE_DIR "/Common")) {
    std::ifstream source(entry.path());
    std::string line;
    for (int number = 1; std::getline(source, line); ++number) {
      for (const std::string& name : names) {
        const size_t at = line.find(name + "(");
        const bool whole = at == 0 || (at != std::string::npos && std::isalnum(line[at - 1]) == 0);
        if (at != std::string::npos && whole)
          sites.insert({name, entry.path().filename().string(), number});
      }
    }
  }
  sites.erase(sites.lower_bound({"VectorIsEmpty", "", 0}), sites.upper_bound({"VectorIsEmpty", "~", 0}));
  return sites;
}

}  // namespace faults
