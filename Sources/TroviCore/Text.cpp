#include "TroviCore/Text.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

#include "Text/UTF8.h"
#include "Text/Unicode.h"

namespace trovi {
namespace {

using platform::firstCluster;

constexpr std::size_t titleClusters = 60;
constexpr std::size_t searchedClusters = 160;

/// Folded, each with its trailing space.
constexpr std::array<std::string_view, 7> leadIns{
    "pro ", "pra ", "para ", "para o ", "para a ", "pro destino ", "no destino "};

bool isSeparator(std::string_view cluster) {
  return cluster == "." || cluster == "!" || cluster == "?" || cluster == "\n";
}

/// The first non-empty piece between separators; all of `text` if there is none.
std::string_view firstSentence(std::string_view text) {
  std::size_t start = 0;
  std::size_t end = 0;
  while (end < text.size()) {
    const std::string_view cluster = firstCluster(text.substr(end));
    if (isSeparator(cluster)) {
      if (end > start) break;
      start = end + cluster.size();
    }
    end += cluster.size();
  }
  return end > start ? text.substr(start, end - start) : text;
}

std::string_view beforeLastSpace(std::string_view text) {
  std::size_t kept = text.size();
  for (std::size_t i = 0; i < text.size();) {
    const std::string_view cluster = firstCluster(text.substr(i));
    if (cluster == " ") kept = i;
    i += cluster.size();
  }
  return text.substr(0, kept);
}

/// A text in which to find sequences of whole characters.
///
/// A search by bytes would be inconsistent: a combining mark after the match would hide it if the
/// two compose to one letter, but not if no such letter exists.
class ClusterText {
 public:
  explicit ClusterText(std::string text) : text_(std::move(text)), isBorder_(text_.size() + 1) {
    for (std::size_t i = 0; i < text_.size();) {
      isBorder_[i] = true;
      i += firstCluster(std::string_view(text_).substr(i)).size();
    }
    isBorder_[text_.size()] = true;
  }

  bool contains(std::string_view part) const {
    for (auto i = text_.find(part); i != std::string::npos; i = text_.find(part, i + 1)) {
      if (isBorder_[i] && isBorder_[i + part.size()]) return true;
    }
    return false;
  }

 private:
  std::string text_;
  std::vector<bool> isBorder_;  ///< by offset: a character begins or the text ends there
};

struct Candidate {
  const Destino* destino;
  std::string name;
  std::size_t length;  ///< of the name, in characters
};

bool isNamed(const Candidate& candidate, const ClusterText& span) {
  const std::string name = platform::folded(candidate.name);
  return !name.empty() && std::any_of(leadIns.begin(), leadIns.end(), [&](std::string_view leadIn) {
    return span.contains(std::string(leadIn) + name);
  });
}

}  // namespace

std::string TroviText::trimmed(std::string_view transcript) {
  std::string storage;
  return std::string(platform::trimmedWhiteSpace(platform::repairedUTF8(transcript, storage)));
}

std::string TroviText::titleFrom(std::string_view transcript) {
  std::string storage;
  const std::string_view text =
      platform::trimmedWhiteSpace(platform::repairedUTF8(transcript, storage));
  if (text.empty()) return "Recado sem fala";
  const std::string_view sentence = firstSentence(text);
  const std::string_view start = platform::firstClusters(sentence, titleClusters);
  if (start.size() == sentence.size()) return std::string(sentence);
  return std::string(beforeLastSpace(start)) + "…";
}

std::optional<Destino> TroviText::destinoMentioned(std::string_view transcript,
                                                   const std::vector<Destino>& destinos) {
  std::string storage;
  const ClusterText span(platform::folded(
      platform::firstClusters(platform::repairedUTF8(transcript, storage), searchedClusters)));
  std::vector<Candidate> candidates;
  candidates.reserve(destinos.size());
  for (const Destino& destino : destinos) {
    std::string name = platform::repairedUTF8(destino.name);
    const std::size_t length = platform::clusterCount(name);
    candidates.push_back({.destino = &destino, .name = std::move(name), .length = length});
  }
  std::stable_sort(candidates.begin(), candidates.end(),
                   [](const Candidate& a, const Candidate& b) { return a.length > b.length; });
  for (const Candidate& candidate : candidates) {
    if (isNamed(candidate, span)) return *candidate.destino;
  }
  return {};
}

}  // namespace trovi
