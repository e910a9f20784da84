/// @file
/// SQLite in four types: a value, a row, an error and a connection.
#pragma once

#include <concepts>
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "TroviCore/Date.h"
#include "TroviCore/Export.h"

namespace trovi {

/// A value that is bound to a statement or read from a column. There are no blobs: the file
/// contains none, and any that is found reads as null.
class TROVI_EXPORT SQLValue {
 public:
  /// @{
  /// A value of one kind. Text is UTF-8.
  static SQLValue text(std::string value) { return SQLValue(Text{std::move(value)}); }
  static SQLValue real(double value) { return SQLValue(value); }
  static SQLValue integer(std::int64_t value) { return SQLValue(value); }
  static SQLValue null() { return SQLValue(std::monostate{}); }
  /// @}

  /// @{
  /// The value, or null if it is absent. An integer becomes `integer`; a date becomes `real`, in
  /// seconds since 1970.
  static SQLValue from(std::optional<std::string> value);
  static SQLValue from(std::optional<double> value);
  static SQLValue from(std::optional<Date> value);
  static SQLValue from(std::nullopt_t /*absent*/) { return null(); }
  static SQLValue from(std::floating_point auto value) { return real(value); }
  static SQLValue from(std::integral auto value) {
    return integer(static_cast<std::int64_t>(value));
  }
  template <std::integral Integer>
  static SQLValue from(std::optional<Integer> value) {
    return value ? from(*value) : null();
  }
  /// @}

  /// @{
  /// The value as one kind, or a null pointer if it is of another. It points into this object.
  const std::string* asText() const {
    const auto* text = std::get_if<Text>(&content_);
    return text != nullptr ? &text->value : nullptr;
  }
  const double* asReal() const { return std::get_if<double>(&content_); }
  const std::int64_t* asInteger() const { return std::get_if<std::int64_t>(&content_); }
  /// @}
  /// Whether it is SQL NULL.
  bool isNull() const { return std::holds_alternative<std::monostate>(content_); }

 private:
  friend class Row;

  // With a bare std::string, libstdc++ 12 assumes that the variant always has a value. A copy that
  // runs out of memory would then destroy a string that was never constructed.
  struct Text {
    std::string value;
  };
  template <class Content>
  explicit SQLValue(Content content) : content_(std::move(content)) {}

  std::variant<Text, double, std::int64_t, std::monostate> content_;
};

/// One row of a result: a map from column name to value, copied freely. If columns have the same
/// name, the last one counts. The rows of one result share their names.
///
/// The accessors never convert between texts and numbers, and throw nothing but std::bad_alloc when
/// they copy a text. A value that is missing,
/// null or of another kind is absent, so that the caller can choose a default.
class TROVI_EXPORT Row {
 public:
  using Names = std::vector<std::string>;  ///< of the columns, in order

  /// A row of `values`, each with the name at the same index. Throws std::invalid_argument if there
  /// are more values than names.
  Row(std::shared_ptr<const Names> names, std::vector<SQLValue> values);
  /// A row with its own names, for one that is built by hand.
  Row(std::initializer_list<std::pair<std::string, SQLValue>> columns);

  /// The value of a column, which may be null; a null pointer if the row has no such column.
  const SQLValue* find(std::string_view column) const;

  /// The text in a column.
  std::optional<std::string> stringValue(std::string_view column) const;
  /// An integer becomes the nearest double.
  std::optional<double> doubleValue(std::string_view name) const { return doubleAt(place(name)); }
  /// A real is truncated toward zero; absent if it is not finite or out of range.
  std::optional<std::int64_t> intValue(std::string_view column) const;
  /// An integer or real as seconds since 1970-01-01 00:00:00 UTC.
  std::optional<Date> dateValue(std::string_view column) const { return dateAt(place(column)); }

 private:
  friend class TroviStore;

  /// The index of the last column with this name, plus one; 0 if there is none. It is the same in
  /// all rows of a result.
  std::size_t place(std::string_view column) const;
  std::optional<double> doubleAt(std::size_t place) const;
  std::optional<Date> dateAt(std::size_t place) const;
  /// Moves the text out, which leaves an unspecified one.
  std::optional<std::string> takeAt(std::size_t place);

  std::shared_ptr<const Names> names_;
  std::vector<SQLValue> values_;
};

/// The error of the storage layer. what() is its description: a fixed Portuguese prefix and
/// SQLite's own message.
class TROVI_EXPORT DatabaseError : public std::runtime_error {
 public:
  /// What failed.
  enum class Kind {
    open,   ///< the file could not be opened
    query,  ///< a statement failed
  };
  static DatabaseError open(const std::string& message);   ///< "Não abri o banco: " + message
  static DatabaseError query(const std::string& message);  ///< "Erro no banco: " + message

  Kind kind() const noexcept { return kind_; }        ///< what failed
  std::string description() const { return what(); }  ///< for display to the user

 private:
  DatabaseError(Kind kind, const std::string& description);

  Kind kind_;
};

/// A connection to one SQLite file, with write-ahead logging, foreign keys on, and a busy timeout
/// of 4 seconds for locks that other connections hold.
///
/// Thread-safe: statements run one at a time, each on its caller's thread, in order of arrival.
/// Each statement is independent; there are no transactions except those that a script opens. Texts
/// end at their first NUL in both directions, and ill-formed UTF-8 is read as U+FFFD. A text that
/// SQLite cannot hold is an error and is never stored as null. Nothing is cached, and the
/// connection closes with the object.
class TROVI_EXPORT Database {
 public:
  /// Opens the file. A missing file is created for its user only (mode 0600); its folder must
  /// exist. Throws DatabaseError.
  explicit Database(const std::filesystem::path& path);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// Runs all statements of a script, without parameters. Throws DatabaseError at the first that
  /// fails; those before it stay applied.
  void execute(const std::string& script);

  /// Runs the first statement of `sql`, up to its first row. `parameters` are bound to its "?" in
  /// order; extra ones are ignored, and missing ones are null. Returns the number of rows that an
  /// INSERT, UPDATE or DELETE changed, not counting those that its triggers changed; for other
  /// statements the number means nothing. Throws DatabaseError.
  std::int64_t run(const std::string& sql, const std::vector<SQLValue>& parameters = {});

  /// Runs the first statement of `sql`, with parameters as in `run`, and returns all its rows in
  /// order. Throws DatabaseError.
  std::vector<Row> query(const std::string& sql, const std::vector<SQLValue>& parameters = {});

 private:
  friend class TroviStore;
  /// A file that nobody else knows yet: it has no journal file and does not wait for the disk.
  struct Draft {};
  Database(const std::filesystem::path& path, Draft draft);

  class Connection;
  std::unique_ptr<Connection> connection_;
};

}  // namespace trovi
