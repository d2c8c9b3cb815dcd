#include "core/format/interruption.h"

#include <chrono>
#include <utility>

namespace core {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kInterval = std::chrono::milliseconds(20);

thread_local Interruption* current = nullptr;
thread_local Clock::time_point asked;

}  // namespace

Interruption::Interruption(std::function<bool()> goesOn)
    : goesOn_(std::move(goesOn)), before_(std::exchange(current, this)) {
  asked = {};  // the first work asks
}
Interruption::~Interruption() { current = before_; }

void Interruption::Ask() {
  if (current == nullptr || Clock::now() - asked < kInterval) return;
  asked = Clock::now();
  if (!current->goesOn_()) throw StoppedWork();
}

}  // namespace core
