#include "Text/UTF8.h"

#include <algorithm>

#include "Text/ByteScan.h"

namespace trovi::platform {
namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

struct Sequence {
  std::size_t size;  ///< in bytes: a whole character, or a maximal ill-formed part
  bool wellFormed;
};

/// How many bytes follow a lead byte, and the range of the first of them; 0 for an ill-formed lead
/// byte.
struct Lead {
  std::size_t following;
  unsigned char low, high;
};

constexpr Lead lead(unsigned char byte) {
  if (byte >= 0xC2 && byte <= 0xDF) return {1, 0x80, 0xBF};
  if (byte == 0xE0) return {2, 0xA0, 0xBF};
  if (byte == 0xED) return {2, 0x80, 0x9F};
  if (byte >= 0xE1 && byte <= 0xEF) return {2, 0x80, 0xBF};
  if (byte == 0xF0) return {3, 0x90, 0xBF};
  if (byte >= 0xF1 && byte <= 0xF3) return {3, 0x80, 0xBF};
  if (byte == 0xF4) return {3, 0x80, 0x8F};
  return {0, 0, 0};
}

/// The sequence at the start of `bytes`, whose first byte is not ASCII.
Sequence sequence(std::string_view bytes) {
  auto [following, low, high] = lead(static_cast<unsigned char>(bytes[0]));
  std::size_t taken = 1;
  for (; taken <= following && taken < bytes.size(); ++taken) {
    const auto byte = static_cast<unsigned char>(bytes[taken]);
    if (byte < low || byte > high) break;
    low = 0x80;
    high = 0xBF;
  }
  return {taken, following > 0 && taken == following + 1};
}

/// The length of the longest valid prefix.
std::size_t validPrefix(std::string_view bytes) {
  std::size_t i = 0;
  while (i < bytes.size()) {
    i += latinPrefix(bytes.substr(i));
    for (const std::size_t end = std::min(i + bytescan::blockSize, bytes.size()); i < end;) {
      if (static_cast<unsigned char>(bytes[i]) < 0x80) {
        ++i;
        continue;
      }
      const Sequence next = sequence(bytes.substr(i));
      if (!next.wellFormed) return i;
      i += next.size;
    }
  }
  return i;
}

}  // namespace

std::string repairedUTF8(std::string_view bytes) {
  std::string storage;
  const std::string_view text = repairedUTF8(bytes, storage);
  return storage.empty() ? std::string(text) : storage;
}

std::string_view repairedUTF8(std::string_view bytes, std::string& storage) {
  std::size_t valid = validPrefix(bytes);
  if (valid == bytes.size()) return bytes;
  storage.clear();
  for (; valid < bytes.size(); valid = validPrefix(bytes)) {
    storage.append(bytes, 0, valid);
    storage += replacement;
    bytes.remove_prefix(valid + sequence(bytes.substr(valid)).size);
  }
  return storage += bytes;
}

}  // namespace trovi::platform
