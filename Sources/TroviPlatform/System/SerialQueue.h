#pragma once

#include <atomic>
#include <cstdint>
#include <thread>
#include <utility>

namespace trovi::platform {

/// Runs one piece of work at a time, in order of arrival, each on its caller's thread while the
/// others wait. Thread-safe. Work that calls `sync` on its own queue would deadlock; instead, the
/// program writes a message to standard error and aborts.
class SerialQueue {
 public:
  /// `label` names the queue in that message and must outlive the queue.
  explicit SerialQueue(const char* label) : label_(label) {}
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

  const char* label_;
  std::atomic<std::uint32_t> nextTicket_{0};
  std::atomic<std::uint32_t> serving_{0};
  std::atomic<std::thread::id> owner_{};
};

}  // namespace trovi::platform
