#include "tests/faults/injector.h"

#include <cctype>
#include <filesystem>
#include <fstream>

#include "hostkit/hostkit.h"
#include "tests/faults/names.h"

namespace faults {
namespace {

struct Plan {
  bool recording = false;
  std::map<Site, int> calls;
  const Site* site = nullptr;
  int n = 0, seen = 0;
  bool fromThenOn = false;
  int allocation = 0, allocations = 0;
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

std::set<Site> SitesInSource() {
  std::set<Site> sites;
  for (const auto& entry : std::filesystem::directory_iterator(PROJECT_SOURCE_DIR "/Common")) {
    std::ifstream source(entry.path());
    std::string line;
    for (int number = 1; std::getline(source, line); ++number) {
      for (const char* name : kFailing) {
        const size_t at = line.find(name + std::string("("));
        const bool whole = at == 0 || (at != std::string::npos && std::isalnum(line[at - 1]) == 0);
        if (at != std::string::npos && whole)
          sites.insert({name, entry.path().filename().string(), number});
      }
    }
  }
  return sites;
}

}  // namespace faults
