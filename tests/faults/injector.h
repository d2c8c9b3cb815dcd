// Which call of the host operations is to fail, and which calls there were.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>

namespace faults {

/// A call in the module's source.
struct Site {
  std::string operation, file;  ///< the file without its folder
  int line;
  auto operator<=>(const Site&) const = default;
};
std::string Describe(const Site& site);

/// Counts the calls of each site while `work` runs.
std::map<Site, int> Record(const std::function<void()>& work);
/// Runs `work` with the n-th call of a site failing, or with all from it on. Whether there was one.
bool Fail(const Site& site, int n, bool fromThenOn, const std::function<void()>& work);
/// Runs `work` with the n-th allocation by operator new failing, in the module and its host alike.
/// Whether there was one.
bool FailAllocation(int n, bool fromThenOn, const std::function<void()>& work);

/// Whether the allocation that is asked for is to fail.
bool AllocationFails();

/// Every call of a host operation that can fail in the module's source, found by reading it.
std::set<Site> SitesInSource();

}  // namespace faults
