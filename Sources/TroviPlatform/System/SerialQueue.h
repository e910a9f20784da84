#pragma once

#include <atomic>
#include <cstdint>
#include <thread>
#include <utility>

namespace trovi::platform {

/// Runs one piece of work at a time, in order of arrival, each on its caller's own thread while the
/// others wait. Safe from any thread. Work that enters its own queue would wait for itself for
/// ever; instead it ends the program with a sentence on standard error.
class SerialQueue {
 public:
  /// `label` names the queue in that sentence and must outlive it.
  explicit SerialQueue(const char* label) : label_(label) {}
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  /// Runs `work` and returns its result when it is done; an exception passes through.
  template <class Work>
  auto sync(Work&& work) {
    const Turn turn(*this);
    return std::forward<Work>(work)();
  }

  /// How many callers have arrived and are not done: the one whose work runs, and those that wait.
  /// For tests, which cannot know otherwise that a thread waits.
  std::uint32_t length() const {
    const std::uint32_t done = serving_;  // first, or those who come meanwhile would be missed
    return nextTicket_ - done;
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

  const char* label_;
  std::atomic<std::uint32_t> nextTicket_{0};
  std::atomic<std::uint32_t> serving_{0};
  std::atomic<std::thread::id> owner_{};
};

}  // namespace trovi::platform
