// The inboxes that the benchmark runs on: each message is generated from its number alone, so it is
// the same on every machine and in every run.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "TemporaryFolder.h"
#include "TroviCore/Store.h"

namespace trovi::benchmarks {

constexpr const char* commonWord = "porque";    ///< in most transcripts
constexpr const char* rareWord = "jabuticaba";  ///< in the oldest one only

/// The number of pending messages in an inbox, the newest ones; the others are resolved. No list is
/// longer, so all are full in an inbox of any size.
constexpr std::size_t waiting = 100;

/// Message `number`, counted from the oldest: one to two kilobytes of spoken Portuguese, pending.
Recado generatedRecado(std::size_t number);

/// The user's inbox in a home folder of its own, with messages from number 0 on, filed under the
/// destinations of a new inbox or under none. HOME is that folder until the next one is made.
class GeneratedInbox {
 public:
  explicit GeneratedInbox(std::size_t size);

  const std::filesystem::path& home() const { return home_.path(); }
  TroviStore& store() { return store_; }

  /// The id of a message: another one each `turn`, and all of them over time.
  const std::string& anyID(std::size_t turn) const { return ids_[turn * 7919 % ids_.size()]; }
  /// The id of a pending message, unless the benchmark changed it.
  const std::string& waitingID(std::size_t turn) const {
    return ids_[ids_.size() - 1 - turn % waiting];
  }

 private:
  tests::TemporaryFolder home_;
  TroviStore store_;
  std::vector<std::string> ids_;  ///< of the messages, by number
};

}  // namespace trovi::benchmarks
