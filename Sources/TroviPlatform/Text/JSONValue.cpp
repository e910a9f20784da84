#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

#include "JSON.h"

namespace trovi::platform {

JSONValue::JSONValue(double value) {
  for (int digits = 15; digits <= std::numeric_limits<double>::max_digits10; ++digits) {
    std::ostringstream stream;
    stream.imbue(std::locale::classic());
    stream.precision(digits);
    stream << value;
    content = JSONNumber{stream.str()};
    if (real() == value) return;
  }
}

std::optional<std::string_view> JSONValue::text() const {
  const auto* text = std::get_if<std::string>(&content);
  return text != nullptr ? std::optional<std::string_view>(*text) : std::nullopt;
}

std::optional<std::int64_t> JSONValue::integer() const {
  const auto* number = std::get_if<JSONNumber>(&content);
  if (number == nullptr) return {};
  const char* const end = number->literal.data() + number->literal.size();
  std::int64_t whole = 0;
  const auto [stop, error] = std::from_chars(number->literal.data(), end, whole);
  if (stop == end) return error == std::errc{} ? std::optional(whole) : std::nullopt;
  const double value = real().value_or(std::numeric_limits<double>::infinity());
  const bool isInRange = value >= -0x1p63 && value < 0x1p63;
  if (!isInRange || std::trunc(value) != value) return {};
  return static_cast<std::int64_t>(value);
}

std::optional<double> JSONValue::real() const {
  const auto* number = std::get_if<JSONNumber>(&content);
  if (number == nullptr) return {};
  // Not strtod: in an application that has set its locale, it may expect a decimal comma.
  std::istringstream stream(number->literal);
  stream.imbue(std::locale::classic());
  double value = 0;
  stream >> value;
  const bool isTooLarge = stream.fail() && std::abs(value) > 1;  // it may fail at tiny ones too
  return std::isfinite(value) && !isTooLarge ? std::optional(value) : std::nullopt;
}

const JSONValue& JSONValue::operator[](std::string_view key) const {
  static const JSONValue null;
  const JSONObject* members = object();
  if (members == nullptr) return null;
  const auto found = std::find_if(members->rbegin(), members->rend(),
                                  [&](const auto& member) { return member.first == key; });
  return found != members->rend() ? found->second : null;
}

}  // namespace trovi::platform
