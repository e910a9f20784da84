/// @file
/// Converts records to and from keyed documents such as JSON objects. The keys are the field names.
#pragma once

#include <concepts>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

#include "TroviCore/Export.h"
#include "TroviCore/Models.h"

namespace trovi {

/// A record cannot be read from a document, or a document cannot hold a value. what() is the key
/// and the reason, in English: "title: missing".
class TROVI_EXPORT CodingError : public std::runtime_error {
 public:
  /// An error in the value under `key`, or in the whole document if `key` is empty.
  CodingError(const std::string& key, const std::string& reason);
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
  /// The value under `key`. Throws CodingError when it is missing, null or of another kind.
  virtual std::string decodeText(std::string_view key) const = 0;
  virtual std::int64_t decodeInteger(std::string_view key) const = 0;
  virtual double decodeNumber(std::string_view key) const = 0;
  virtual Date decodeDate(std::string_view key) const = 0;
  /// @}
};

/// What is coded as a keyed document: Destino or Recado.
template <class Type>
concept Record = std::same_as<Type, Destino> || std::same_as<Type, Recado>;

/// Passes every field that is present to `encoder`, a status as its raw value. Exceptions of the
/// encoder pass through. Documents with these keys are in use: the keys never change.
template <Record Type>
TROVI_EXPORT void encode(const Type& record, KeyedEncoder& encoder);

/// Reads a record. Optional fields may be missing or null; every other field is required, and a
/// status must be one of the five raw values. Other keys are ignored. Throws CodingError.
template <Record Type>
TROVI_EXPORT Type decode(const KeyedDecoder& decoder);

/// Writes one JSON object: a record by `encode`, other members by the functions below. A date is a
/// number, in seconds since 1970, so that nothing is lost; an encoder of your own may write it
/// otherwise, for example by `toISO8601`. Ill-formed UTF-8 becomes U+FFFD. Throws CodingError for a
/// number or date that is not finite.
class TROVI_EXPORT JSONObjectEncoder : public KeyedEncoder {
 public:
  /// The object as written so far, without white space; `{}` at first.
  const std::string& text() const { return text_; }

  /// @{
  /// Adds a member, whose key must be new.
  void encodeText(std::string_view key, std::string_view value) override;
  void encodeInteger(std::string_view key, std::int64_t value) override;
  void encodeNumber(std::string_view key, double value) override;
  void encodeDate(std::string_view key, Date value) override;
  /// @}

 private:
  std::string text_ = "{}";
};

/// Reads one JSON object: a record by `decode`, other members by the functions of KeyedDecoder. A
/// date is a number of seconds since 1970. Of members with the same key the last one counts. A
/// decoder is copied freely.
class TROVI_EXPORT JSONObjectDecoder : public KeyedDecoder {
 public:
  /// `text` may be any bytes, and is not needed after the call. Throws CodingError unless it is one
  /// JSON object.
  explicit JSONObjectDecoder(std::string_view text);

  bool contains(std::string_view key) const override;
  std::string decodeText(std::string_view key) const override;
  std::int64_t decodeInteger(std::string_view key) const override;
  double decodeNumber(std::string_view key) const override;
  Date decodeDate(std::string_view key) const override;

 private:
  struct Object;
  std::shared_ptr<const Object> object_;
};

/// What has a JSON text of its own: a record as an object, a status as its raw value in quotes.
template <class Type>
concept Codable = Record<Type> || std::same_as<Type, RecadoStatus>;

/// The value as JSON without white space. Throws as JSONObjectEncoder and rawValue do.
template <Codable Type>
TROVI_EXPORT std::string toJSON(const Type& value);

/// Reads a value from one JSON text, which may be any bytes. Throws CodingError.
template <Codable Type>
TROVI_EXPORT Type fromJSON(std::string_view text);

}  // namespace trovi
