#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <locale>
#include <sstream>

#include "JSON.h"

namespace trovi::platform {
std::optional<std::int64_t> JSONNumber::integer() const {
  const char* const end = literal.data() + literal.size();
  std::int64_t whole = 0;
  const auto [stop, error] = std::from_chars(literal.data(), end, whole);
  if (stop == end) return error == std::errc{} ? std::optional(whole) : std::nullopt;

  const std::size_t mark = std::min(literal.find_first_of("eE"), literal.size());
  std::string digits = literal.substr(0, mark);
  std::int64_t zeros = 0;  // to append to them; if negative, that many digits are a fraction
  if (const auto point = digits.find('.'); point != std::string::npos) {
    digits.erase(point, 1);
    zeros = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(digits.size());
  }
  const std::size_t first = digits.find_first_of("123456789");
  if (first == std::string::npos) return 0;
  const std::size_t last = digits.find_last_of("123456789") + 1;
  zeros += static_cast<std::int64_t>(digits.size() - last);

  std::int64_t exponent = 0;
  if (mark < literal.size()) {
    const char* const sign = literal.data() + mark + 1;
    const char* const start = *sign == '+' ? sign + 1 : sign;
    if (std::from_chars(start, end, exponent).ec != std::errc{}) return {};
  }
  constexpr int mostDigits = std::numeric_limits<std::int64_t>::digits10 + 1;
  if (exponent < -zeros || exponent > mostDigits - zeros) return {};

  std::string plain(literal[0] == '-' ? "-" : "");
  plain.append(digits, first, last - first);
  plain.append(static_cast<std::size_t>(zeros + exponent), '0');
  const auto read = std::from_chars(plain.data(), plain.data() + plain.size(), whole);
  return read.ec == std::errc{} ? std::optional(whole) : std::nullopt;
}

std::optional<double> JSONNumber::real() const {
  // Not strtod: in an application that has set its locale, it may expect a decimal comma.
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

JSONValue JSONValue::written(const JSONObject& object) {
  TextBuffer text;
  appendJSON(text, object);
  JSONValue value;
  value.content_ = std::make_shared<const std::string>(text.view());
  return value;
}

JSONValue JSONValue::prettyText(JSONValue payload) {
  JSONValue text;
  text.content_ = std::make_shared<const JSONValue>(std::move(payload));
  return text;
}

bool operator==(const JSONValue& left, const JSONValue& right) {
  const auto isSame = [&]<class Content>(const Content& content) {
    const auto& other = *std::get_if<Content>(&right.content_);
    if constexpr (requires { *content; }) return content == other || *content == *other;
    return content == other;
  };
  return left.content_.index() == right.content_.index() && std::visit(isSame, left.content_);
}

JSONObject::JSONObject(std::vector<Member> members) : members_(std::move(members)) {
  constexpr std::size_t few = 16;
  if (members_.size() <= few) {  // a typical request: not worth sorting
    for (auto at = members_.begin(); at != members_.end();) {
      const bool comesAgain = std::any_of(
          at + 1, members_.end(), [&](const Member& later) { return later.first == at->first; });
      at = comesAgain ? members_.erase(at) : at + 1;
    }
    return;
  }
  const auto order = sorted();
  std::vector<bool> comesAgain(members_.size());
  for (std::size_t i = 1; i < order.size(); ++i) {
    const auto position = static_cast<std::size_t>(order[i - 1] - members_.data());
    comesAgain[position] = order[i - 1]->first == order[i]->first;
  }
  std::size_t kept = 0;
  for (std::size_t i = 0; i < members_.size(); ++i) {
    if (!comesAgain[i]) std::swap(members_[kept++], members_[i]);
  }
  members_.resize(kept);
}

bool JSONObject::isSorted() const {
  return std::is_sorted(members_.begin(), members_.end(), [](const Member& a, const Member& b) {
    return a.first.view() < b.first.view();
  });
}

std::vector<const JSONObject::Member*> JSONObject::sorted() const {
  std::vector<const Member*> order;
  order.reserve(members_.size());
  for (const Member& member : members_) order.push_back(&member);
  std::stable_sort(order.begin(), order.end(), [](const Member* a, const Member* b) {
    return a->first.view() < b->first.view();
  });
  return order;
}

bool operator==(const JSONObject& left, const JSONObject& right) {
  const auto a = left.sorted();
  const auto b = right.sorted();
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](const auto* x, const auto* y) { return *x == *y; });
}

const JSONValue* JSONObject::find(std::string_view key) const {
  for (const auto& [name, value] : members_) {
    if (name.view() == key) return &value;
  }
  return nullptr;
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
