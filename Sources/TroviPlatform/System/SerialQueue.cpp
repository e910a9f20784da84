#include "SerialQueue.h"

#include <cstdlib>
#include <string>

#include "Descriptors.h"
#include "Output.h"

namespace trovi::platform {

void SerialQueue::enter() {
  // Only this thread can have stored its own id, so a relaxed load is enough.
  if (owner_.load(std::memory_order_relaxed) == std::this_thread::get_id()) {
    write(standardError, std::string(label_) + ": sync called from its own queue\n");
    std::abort();
  }
  const std::uint32_t ticket = nextTicket_.fetch_add(1, std::memory_order_relaxed);
  for (std::uint32_t now = serving_.load(std::memory_order_acquire); now != ticket;
       now = serving_.load(std::memory_order_acquire)) {
    serving_.wait(now, std::memory_order_acquire);
  }
  owner_.store(std::this_thread::get_id(), std::memory_order_relaxed);
}

void SerialQueue::leave() {
  owner_.store(std::thread::id(), std::memory_order_relaxed);
  serving_.fetch_add(1, std::memory_order_release);
  serving_.notify_all();
}

}  // namespace trovi::platform
