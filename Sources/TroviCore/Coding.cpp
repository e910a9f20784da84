#include "TroviCore/Coding.h"

#include <algorithm>
#include <cmath>

#include "Fields.h"
#include "ISO8601.h"
#include "JSON.h"
#include "Unicode.h"

namespace trovi {
namespace {

using platform::JSONObject;
using platform::JSONValue;

using Key = std::string_view;

/// Passes each field to the function for its type.
struct FieldEncoder {
  void operator()(Key key, const std::string& text) { to.encodeText(key, text); }
  void operator()(Key key, std::int64_t integer) { to.encodeInteger(key, integer); }
  void operator()(Key key, double number) { to.encodeNumber(key, number); }
  void operator()(Key key, Date date) { to.encodeDate(key, date); }
  void operator()(Key key, RecadoStatus status) { to.encodeText(key, rawValue(status)); }
  template <class Value>
  void operator()(Key key, const std::optional<Value>& value) {
    if (value) (*this)(key, *value);
  }

  KeyedEncoder& to;
};

struct FieldDecoder {
  void operator()(Key key, std::string& text) { text = from.decodeText(key); }
  void operator()(Key key, std::int64_t& integer) { integer = from.decodeInteger(key); }
  void operator()(Key key, double& number) { number = from.decodeNumber(key); }
  void operator()(Key key, Date& date) { date = from.decodeDate(key); }
  void operator()(Key key, RecadoStatus& status) {
    const std::string text = from.decodeText(key);
    const auto found = fromRawValue<RecadoStatus>(text);
    if (!found) throw CodingError(std::string(key), "no status is called \"" + text + "\"");
    status = *found;
  }
  template <class Value>
  void operator()(Key key, std::optional<Value>& value) {
    if (from.contains(key)) (*this)(key, value.emplace());
  }

  const KeyedDecoder& from;
};

template <class Record>
Record decodedFields(const KeyedDecoder& decoder) {
  Record record{};
  visitFields(record, FieldDecoder{decoder});
  return record;
}

class JSONObjectEncoder : public KeyedEncoder {
 public:
  explicit JSONObjectEncoder(JSONDates dates) : dates_(dates) {}

  std::string text() const {
    std::string text;
    platform::appendJSON(text, object_);
    return text;
  }

  void encodeText(std::string_view key, std::string_view value) override {
    object_.emplace_back(key, platform::repairedUTF8(value));
  }
  void encodeInteger(std::string_view key, std::int64_t value) override {
    object_.emplace_back(key, value);
  }
  void encodeNumber(std::string_view key, double value) override {
    if (!std::isfinite(value)) throw CodingError(std::string(key), "not a finite number");
    object_.emplace_back(key, value);
  }
  void encodeDate(std::string_view key, Date value) override {
    if (dates_ == JSONDates::secondsSince1970) {
      encodeNumber(key, secondsSince1970(value));
    } else if (std::isfinite(secondsSince1970(value))) {
      encodeText(key, platform::internetDateTime(value));
    } else {
      throw CodingError(std::string(key), "not a finite date");
    }
  }

 private:
  JSONDates dates_;
  JSONObject object_;
};

class JSONObjectDecoder : public KeyedDecoder {
 public:
  JSONObjectDecoder(std::string_view text, JSONDates dates) : dates_(dates) {
    auto value = platform::parseJSON(platform::repairedUTF8(text));
    if (!value) throw CodingError("", "not a JSON text");
    if (value->object() == nullptr) throw CodingError("", "not a JSON object");
    object_ = *std::move(value);
  }

  bool contains(std::string_view key) const override { return !object_[key].isNull(); }
  std::string decodeText(std::string_view key) const override {
    if (const auto text = member(key).text()) return std::string(*text);
    throw CodingError(std::string(key), "not a text");
  }
  std::int64_t decodeInteger(std::string_view key) const override {
    if (const auto integer = member(key).integer()) return *integer;
    throw CodingError(std::string(key), "not an integer of 64 bits");
  }
  double decodeNumber(std::string_view key) const override {
    if (const auto real = member(key).real()) return *real;
    throw CodingError(std::string(key), "not a number in the range of a double");
  }
  Date decodeDate(std::string_view key) const override {
    if (dates_ == JSONDates::secondsSince1970) return dateSince1970(decodeNumber(key));
    if (const auto date = platform::instantFrom(decodeText(key))) return *date;
    throw CodingError(std::string(key), "not a date like 2025-06-18T14:03:22Z");
  }

 private:
  const JSONValue& member(std::string_view key) const {
    const auto isIt = [&](const auto& member) { return member.first == key; };
    const JSONObject& members = *object_.object();
    if (std::any_of(members.begin(), members.end(), isIt)) return object_[key];
    throw CodingError(std::string(key), "missing");
  }

  JSONDates dates_;
  JSONValue object_;
};

template <class Record>
std::string toJSONText(const Record& record, JSONDates dates) {
  JSONObjectEncoder encoder(dates);
  encode(record, encoder);
  return encoder.text();
}

}  // namespace

CodingError::CodingError(const std::string& key, const std::string& reason)
    : std::runtime_error(key.empty() ? reason : key + ": " + reason), key_(key), reason_(reason) {}

void encode(const Destino& destino, KeyedEncoder& encoder) {
  visitFields(destino, FieldEncoder{encoder});
}

void encode(const Recado& recado, KeyedEncoder& encoder) {
  visitFields(recado, FieldEncoder{encoder});
}

template <>
Destino decode<Destino>(const KeyedDecoder& decoder) {
  return decodedFields<Destino>(decoder);
}

template <>
Recado decode<Recado>(const KeyedDecoder& decoder) {
  return decodedFields<Recado>(decoder);
}

std::string toJSON(const Destino& destino, JSONDates dates) { return toJSONText(destino, dates); }

std::string toJSON(const Recado& recado, JSONDates dates) { return toJSONText(recado, dates); }

template <>
Destino fromJSON<Destino>(std::string_view text, JSONDates dates) {
  return decode<Destino>(JSONObjectDecoder(text, dates));
}

template <>
Recado fromJSON<Recado>(std::string_view text, JSONDates dates) {
  return decode<Recado>(JSONObjectDecoder(text, dates));
}

}  // namespace trovi
