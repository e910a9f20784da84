#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

#include "JSON.h"

namespace trovi::platform {
namespace {

struct KeyLess {
  bool operator()(const JSONObject::Member& left, const JSONObject::Member& right) const {
    return left.first < right.first;
  }
  bool operator()(const JSONObject::Member& member, std::string_view key) const {
    return member.first < key;
  }
};

template <class Container>
bool sameContent(const Container* left, const Container* right) {
  return left == right || (left != nullptr && right != nullptr && *left == *right);
}

}  // namespace

std::optional<std::int64_t> JSONNumber::integer() const {
  const char* end = literal.data() + literal.size();
  std::int64_t whole = 0;
  const auto [stop, error] = std::from_chars(literal.data(), end, whole);
  if (stop == end) return error == std::errc{} ? std::optional(whole) : std::nullopt;

  const auto value = real();
  if (!value || !(*value >= -0x1p63 && *value < 0x1p63) || std::trunc(*value) != *value) return {};
  return static_cast<std::int64_t>(*value);
}

std::optional<double> JSONNumber::real() const {
  // Not strtod: an application that set its locale would make it wait for a comma.
  std::istringstream stream(literal);
  stream.imbue(std::locale::classic());
  double value = 0;
  stream >> value;
  return std::isfinite(value) && (!stream.fail() || std::abs(value) < 1) ? std::optional(value)
                                                                         : std::nullopt;
}

JSONNumber JSONNumber::from(double value) {
  JSONNumber number;
  for (const int digits : {15, std::numeric_limits<double>::max_digits10}) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.precision(digits);
    stream << value;
    number.literal = stream.str();
    if (number.real() == value) break;
  }
  return number;
}

JSONValue::JSONValue(JSONArray array)
    : content_(std::make_shared<const JSONArray>(std::move(array))) {}

JSONValue::JSONValue(JSONObject object)
    : content_(std::make_shared<const JSONObject>(std::move(object))) {}

bool operator==(const JSONValue& left, const JSONValue& right) {
  if (left.content_.index() != right.content_.index()) return false;
  if (left.array() != nullptr) return sameContent(left.array(), right.array());
  if (left.object() != nullptr) return sameContent(left.object(), right.object());
  return left.content_ == right.content_;
}

JSONObject::JSONObject(std::vector<Member> members) : members_(std::move(members)) {
  const auto first = members_.begin();
  constexpr std::ptrdiff_t few = 16;
  if (members_.end() - first > few) {
    std::stable_sort(first, members_.end(), KeyLess{});
  } else {  // the usual request; the general sort would allocate
    for (auto next = first; next != members_.end(); ++next) {
      const auto place = std::upper_bound(first, next, *next, KeyLess{});
      if (place != next) std::rotate(place, next, next + 1);
    }
  }
  // Keeps the last of each run of equal keys: backwards it is the first.
  const auto sameKey = [](const Member& a, const Member& b) { return a.first == b.first; };
  if (std::adjacent_find(first, members_.end(), sameKey) != members_.end()) {
    const auto kept = std::unique(members_.rbegin(), members_.rend(), sameKey);
    members_.erase(first, kept.base());
  }
}

void JSONObject::set(std::string key, JSONValue value) {
  if (members_.empty() || members_.back().first < key) {
    members_.emplace_back(std::move(key), std::move(value));
    return;
  }
  const auto at =
      std::lower_bound(members_.begin(), members_.end(), std::string_view(key), KeyLess{});
  if (at != members_.end() && at->first == key) {
    at->second = std::move(value);
  } else {
    members_.emplace(at, std::move(key), std::move(value));
  }
}

const JSONValue* JSONObject::find(std::string_view key) const {
  const auto at = std::lower_bound(members_.begin(), members_.end(), key, KeyLess{});
  return at != members_.end() && at->first == key ? &at->second : nullptr;
}

std::optional<std::string_view> JSONObject::text(std::string_view key) const {
  const JSONValue* value = find(key);
  const std::string* text = value != nullptr ? value->text() : nullptr;
  return text != nullptr ? std::optional<std::string_view>(*text) : std::nullopt;
}

std::optional<std::int64_t> JSONObject::integer(std::string_view key) const {
  const JSONValue* value = find(key);
  const JSONNumber* number = value != nullptr ? value->number() : nullptr;
  return number != nullptr ? number->integer() : std::nullopt;
}

const JSONObject* JSONObject::object(std::string_view key) const {
  const JSONValue* value = find(key);
  return value != nullptr ? value->object() : nullptr;
}

}  // namespace trovi::platform
