#include "core/format/interruption.h"

#include <chrono>
#include <utility>

namespace core {
namespace {

using Clock = std::chrono::steady_clock;
constexpr Clock::rep kInterval = Clock::duration(std::chrono::milliseconds(20)).count();

Clock::rep Now() { return Clock::now().time_since_epoch().count(); }

thread_local Interruption* current = nullptr;
thread_local Clock::rep asked = 0;  // when that was done last

}  // namespace

Interruption::Interruption(std::function<bool()> goesOn)
    : goesOn_(std::move(goesOn)), before_(std::exchange(current, this)) {
  asked = 0;  // the first work asks
}
Interruption::~Interruption() { current = before_; }

void Interruption::Ask() {
  if (current == nullptr || (!current->isStopped_ && Now() - asked < kInterval)) return;
  asked = Now();
  current->isStopped_ = current->isStopped_ || !current->goesOn_();
  if (current->isStopped_) throw StoppedWork();
}

}  // namespace core
