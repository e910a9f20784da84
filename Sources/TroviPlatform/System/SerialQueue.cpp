#include "System/SerialQueue.h"

namespace trovi::platform {

void SerialQueue::enter() {
  const std::uint32_t ticket = nextTicket_.fetch_add(1, std::memory_order_relaxed);
  for (std::uint32_t now = serving_.load(std::memory_order_acquire); now != ticket;
       now = serving_.load(std::memory_order_acquire)) {
    serving_.wait(now, std::memory_order_acquire);
  }
}

void SerialQueue::leave() {
  serving_.fetch_add(1, std::memory_order_release);
  serving_.notify_all();
}

}  // namespace trovi::platform
