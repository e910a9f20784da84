/// @file
/// Converts records to and from keyed documents such as JSON objects. The keys are the field names.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

#include "TroviCore/Export.h"
#include "TroviCore/Models.h"

namespace trovi {

/// A record cannot be read from a document, or a document cannot hold a value. what() is the key
/// and the reason: "title: missing".
class TROVI_EXPORT CodingError : public std::runtime_error {
 public:
  /// An error in the value under `key`, or in the whole document if `key` is empty.
  CodingError(const std::string& key, const std::string& reason);

  const std::string& key() const noexcept { return key_; }        ///< empty: the whole document
  const std::string& reason() const noexcept { return reason_; }  ///< what is wrong, in English

 private:
  std::string key_;
  std::string reason_;
};

/// Receives the fields of one record in the order of their declaration, without absent ones. An
/// implementation decides how it writes a value: a date, for example, arrives as a Date. It may
/// throw any exception, preferably CodingError.
class TROVI_EXPORT KeyedEncoder {
 public:
  virtual ~KeyedEncoder() = default;
  /// @{
  /// Receives the value of one field. `key` and a text are valid only during the call.
  virtual void encodeText(std::string_view key, std::string_view value) = 0;
  virtual void encodeInteger(std::string_view key, std::int64_t value) = 0;
  virtual void encodeNumber(std::string_view key, double value) = 0;
  virtual void encodeDate(std::string_view key, Date value) = 0;
  /// @}
};

/// Provides the values of one document by key.
class TROVI_EXPORT KeyedDecoder {
 public:
  virtual ~KeyedDecoder() = default;
  /// Whether there is a value under `key` other than null.
  virtual bool contains(std::string_view key) const = 0;
  /// @{
  /// The value under `key`. Throws CodingError when it is missing or of another kind.
  virtual std::string decodeText(std::string_view key) const = 0;
  virtual std::int64_t decodeInteger(std::string_view key) const = 0;
  virtual double decodeNumber(std::string_view key) const = 0;
  virtual Date decodeDate(std::string_view key) const = 0;
  /// @}
};

/// @{
/// Passes every field that is present to `encoder`, a status as its raw value. Exceptions of the
/// encoder pass through. Documents with these keys are in use: the keys never change.
TROVI_EXPORT void encode(const Destino& destino, KeyedEncoder& encoder);
TROVI_EXPORT void encode(const Recado& recado, KeyedEncoder& encoder);
/// @}

/// @{
/// Reads a record: Destino or Recado. Optional fields may be missing or null; every other field is
/// required, and a status must be one of the five raw values. Other keys are ignored. Throws
/// CodingError.
template <class Record>
Record decode(const KeyedDecoder& /*decoder*/) {
  static_assert(isKnown<Record>, "decode is there for Destino and Recado");
}
template <>
TROVI_EXPORT Destino decode<Destino>(const KeyedDecoder& decoder);
template <>
TROVI_EXPORT Recado decode<Recado>(const KeyedDecoder& decoder);
/// @}

/// How dates are written in a JSON document.
enum class JSONDates {
  secondsSince1970,  ///< a number with a fraction; nothing is lost
  /// "2025-06-18T14:03:22Z": whole seconds, years 0000 to 9999. On reading, the seconds may have a
  /// fraction, and an offset may replace the Z: "2025-06-18T11:03:22.25-03:00".
  iso8601,
};

/// @{
/// The record as one JSON object without white space. Throws CodingError for a number or date that
/// is not finite.
TROVI_EXPORT std::string toJSON(const Destino& destino,
                                JSONDates dates = JSONDates::secondsSince1970);
TROVI_EXPORT std::string toJSON(const Recado& recado,
                                JSONDates dates = JSONDates::secondsSince1970);
/// @}

/// @{
/// Reads a record, Destino or Recado, from one JSON object. `text` may be any bytes. Throws
/// CodingError.
template <class Record>
Record fromJSON(std::string_view /*text*/, JSONDates /*dates*/ = JSONDates::secondsSince1970) {
  static_assert(isKnown<Record>, "fromJSON reads a Destino or a Recado");
}
template <>
TROVI_EXPORT Destino fromJSON<Destino>(std::string_view text, JSONDates dates);
template <>
TROVI_EXPORT Recado fromJSON<Recado>(std::string_view text, JSONDates dates);
/// @}

}  // namespace trovi
