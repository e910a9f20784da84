#include <algorithm>
#include <charconv>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <locale>
#include <sstream>

#include "Text/JSON.h"

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
  // Not a stream: that of libc++ cuts long numbers. strtod expects the decimal point of the locale
  // that the application has set.
  std::string literal = number->literal;
  if (const auto point = literal.find('.'); point != std::string::npos) {
    literal.replace(point, 1, std::localeconv()->decimal_point);
  }
  const double value = std::strtod(literal.c_str(), nullptr);
  return std::isfinite(value) ? std::optional(value) : std::nullopt;
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
