// Which call of the host operations is to fail, and which calls there were.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "host/fileformat.h"

namespace faults {

/// A call in the module's source.
struct Site {
  std::string operation, file;  ///< the file without its folder
  int line;
  auto operator<=>(const Site&) const = default;
};
std::string Describe(const Site& site);

/// A call as it was made: its arguments as numbers.
struct HostCall {
  std::string operation;
  std::vector<int64_t> arguments;
};
/// The calls of the operations that begin with a text, or of all, while `work` runs, in their order.
std::vector<HostCall> CallsOf(const std::string& begin, const std::function<void()>& work);

/// Counts the calls of each site while `work` runs.
std::map<Site, int> Record(const std::function<void()>& work);
/// Runs `work` with the n-th call of a site failing, or with all from it on. Whether there was one.
bool Fail(const Site& site, int n, bool fromThenOn, const std::function<void()>& work);
/// Runs `work` with the n-th allocation by operator new failing, in the module and its host alike.
/// Whether there was one.
bool FailAllocation(int n, bool fromThenOn, const std::function<void()>& work);

/// Whether the allocation that is asked for is to fail.
bool AllocationFails();

/// FileFormatLoadMemory for a load record, through which the module calls it.
int32_t ORB_CALL LoadMemoryOrFail(const void* bytes, KernelBitmap* bitmap, uint32_t recordSize,
                                  uint32_t bitsPerPixel, uint32_t order, uint32_t byteCount,
                                  const HostLoadOptions* options, HostFileInfo* info);

/// The operations that the fault tests have in their hands, and those that the host offers.
std::set<std::string> HookedOperations();
std::set<std::string> OperationsOfTheHost();
/// Every call of a host operation that can fail in the module's source, found by reading it.
std::set<Site> SitesInSource();

}  // namespace faults
