#pragma once

#include <thread>

namespace trovi::tests {

/// A thread that is waited for at the end of its scope.
class Thread : public std::thread {
 public:
  using std::thread::thread;
  Thread(Thread&&) = default;
  ~Thread() {
    if (joinable()) join();
  }
};

}  // namespace trovi::tests
