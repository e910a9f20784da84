// One piece of work at a time, for a connection that several threads use.
#pragma once

#include <atomic>
#include <cstdint>
#include <utility>

namespace trovi::platform {

/// Runs one piece of work at a time, each on its caller's thread while the others wait.
/// Thread-safe. Work must not call `sync` on its own queue: that would never return.
class SerialQueue {
 public:
  SerialQueue() = default;
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  /// Runs `work` and returns its result; exceptions pass through.
  template <class Work>
  auto sync(Work&& work) {
    const Turn turn(*this);
    return std::forward<Work>(work)();
  }

 private:
  class Turn {
   public:
    explicit Turn(SerialQueue& queue) : queue_(queue) { queue_.enter(); }
    ~Turn() { queue_.leave(); }
    Turn(const Turn&) = delete;
    Turn& operator=(const Turn&) = delete;

   private:
    SerialQueue& queue_;
  };

  void enter();
  void leave();

  // A ticket lock, which starves nobody: a mutex may serve the thread that has just left it again.
  std::atomic<std::uint32_t> nextTicket_{0};
  std::atomic<std::uint32_t> serving_{0};
};

}  // namespace trovi::platform
