#include "TroviCore/Coding.h"

#include <cmath>

#include "Fields.h"
#include "Text/JSON.h"
#include "Text/UTF8.h"

namespace trovi {

using platform::JSONValue;

struct JSONObjectDecoder::Object {
  JSONValue value;

  const JSONValue& member(std::string_view key) const {
    const JSONValue& found = value[key];
    if (found.isNull()) throw CodingError(std::string(key), "missing");
    return found;
  }
};

namespace {

using Key = std::string_view;

RecadoStatus statusFrom(Key key, const std::string& text) {
  if (const auto status = fromRawValue(text)) return *status;
  throw CodingError(std::string(key), "no status is called \"" + text + "\"");
}

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
  void operator()(Key key, RecadoStatus& status) { status = statusFrom(key, from.decodeText(key)); }
  template <class Value>
  void operator()(Key key, std::optional<Value>& value) {
    if (from.contains(key)) (*this)(key, value.emplace());
  }

  const KeyedDecoder& from;
};

/// Adds a member to the text of an object.
void add(std::string& object, Key key, const JSONValue& value) {
  std::string member(object == "{}" ? "" : ",");
  platform::appendJSON(member, platform::repairedUTF8(key));
  member += ':';
  platform::appendJSON(member, value);
  object.insert(object.size() - 1, member);
}

JSONValue parsed(std::string_view text) {
  if (auto value = platform::parseJSON(platform::repairedUTF8(text))) return *std::move(value);
  throw CodingError("", "not a JSON text");
}

}  // namespace

CodingError::CodingError(const std::string& key, const std::string& reason)
    : std::runtime_error(key.empty() ? reason : key + ": " + reason) {}

void JSONObjectEncoder::encodeText(Key key, std::string_view value) {
  add(text_, key, platform::repairedUTF8(value));
}

void JSONObjectEncoder::encodeInteger(Key key, std::int64_t value) { add(text_, key, value); }

void JSONObjectEncoder::encodeNumber(Key key, double value) {
  if (!std::isfinite(value)) throw CodingError(std::string(key), "not a finite number");
  add(text_, key, value);
}

void JSONObjectEncoder::encodeDate(Key key, Date value) {
  encodeNumber(key, secondsSince1970(value));
}

JSONObjectDecoder::JSONObjectDecoder(std::string_view text) {
  JSONValue value = parsed(text);
  if (value.object() == nullptr) throw CodingError("", "not a JSON object");
  object_ = std::make_shared<const Object>(Object{std::move(value)});
}

bool JSONObjectDecoder::contains(Key key) const { return !object_->value[key].isNull(); }

std::string JSONObjectDecoder::decodeText(Key key) const {
  if (const auto text = object_->member(key).text()) return std::string(*text);
  throw CodingError(std::string(key), "not a text");
}

std::int64_t JSONObjectDecoder::decodeInteger(Key key) const {
  if (const auto integer = object_->member(key).integer()) return *integer;
  throw CodingError(std::string(key), "not an integer of 64 bits");
}

double JSONObjectDecoder::decodeNumber(Key key) const {
  if (const auto real = object_->member(key).real()) return *real;
  throw CodingError(std::string(key), "not a number in the range of a double");
}

Date JSONObjectDecoder::decodeDate(Key key) const { return dateSince1970(decodeNumber(key)); }

template <Record Type>
void encode(const Type& record, KeyedEncoder& encoder) {
  visitFields(record, FieldEncoder{encoder});
}

template <Record Type>
Type decode(const KeyedDecoder& decoder) {
  Type record{};
  visitFields(record, FieldDecoder{decoder});
  return record;
}

template <Codable Type>
std::string toJSON(const Type& value) {
  if constexpr (Record<Type>) {
    JSONObjectEncoder encoder;
    encode(value, encoder);
    return encoder.text();
  } else {
    return '"' + std::string(rawValue(value)) + '"';
  }
}

template <Codable Type>
Type fromJSON(std::string_view text) {
  if constexpr (Record<Type>) {
    return decode<Type>(JSONObjectDecoder(text));
  } else {
    const JSONValue value = parsed(text);
    if (const auto status = value.text()) return statusFrom("", std::string(*status));
    throw CodingError("", "not a text");
  }
}

template void encode(const Destino& record, KeyedEncoder& encoder);
template void encode(const Recado& record, KeyedEncoder& encoder);
template Destino decode(const KeyedDecoder& decoder);
template Recado decode(const KeyedDecoder& decoder);
template std::string toJSON(const Destino& value);
template std::string toJSON(const Recado& value);
template std::string toJSON(const RecadoStatus& value);
template Destino fromJSON(std::string_view text);
template Recado fromJSON(std::string_view text);
template RecadoStatus fromJSON(std::string_view text);

}  // namespace trovi
