// What all benchmarks work on: messages that follow from their numbers alone, the same on every
// machine and in every run.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "TemporaryFolder.h"
#include "TroviCore/Store.h"

namespace trovi::benchmarks {

constexpr const char* commonWord = "porque";           ///< in most transcripts
constexpr const char* rareWord = "jabuticaba";         ///< in the oldest one only
constexpr const char* missingWord = "paralelepípedo";  ///< in none

/// Of an inbox so many messages wait, the newest ones; the others are resolved. A list of any
/// length is full in an inbox of any size.
constexpr std::size_t waiting = 100;

/// Message `number`, counted from the oldest: one to two kilobytes of spoken Portuguese, waiting.
Recado generatedRecado(std::size_t number);

/// The user's inbox in a home of its own, with so many messages from number 0 on, filed under the
/// destinations of a new inbox or under none. HOME leads there until the next one is made.
class GeneratedInbox {
 public:
  explicit GeneratedInbox(std::size_t size);

  const std::filesystem::path& home() const { return home_.path(); }
  TroviStore& store() { return store_; }

  /// Some message, another one with every `turn`, all of them in the end.
  const std::string& anyID(std::size_t turn) const { return ids_[turn * 7919 % ids_.size()]; }
  /// Some message that waits, unless it was worked on.
  const std::string& waitingID(std::size_t turn) const {
    return ids_[ids_.size() - 1 - turn % waiting];
  }

 private:
  tests::TemporaryFolder home_;
  TroviStore store_;
  std::vector<std::string> ids_;  ///< of the messages, by number
};

}  // namespace trovi::benchmarks
