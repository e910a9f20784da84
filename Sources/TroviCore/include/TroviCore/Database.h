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

/// One value that is bound to a statement or read from a column. There is no blob: the file holds
/// none, and one that is found reads as null.
class TROVI_EXPORT SQLValue {
 public:
  /// @{
  /// A value of one kind. A text is UTF-8.
  static SQLValue text(std::string value) { return SQLValue(Text{std::move(value)}); }
  static SQLValue real(double value) { return SQLValue(value); }
  static SQLValue integer(std::int64_t value) { return SQLValue(value); }
  static SQLValue null() { return SQLValue(std::monostate{}); }
  /// @}

  /// @{
  /// The value, or null when it is absent: an integer as `integer`, a date as `real` seconds since
  /// 1970.
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
  /// The value as one kind, a null pointer when it is of another. It points into the value.
  const std::string* asText() const {
    const auto* text = std::get_if<Text>(&content_);
    return text != nullptr ? &text->value : nullptr;
  }
  const double* asReal() const { return std::get_if<double>(&content_); }
  const std::int64_t* asInteger() const { return std::get_if<std::int64_t>(&content_); }
  /// @}
  /// Whether it is SQL's null.
  bool isNull() const { return std::holds_alternative<std::monostate>(content_); }

 private:
  friend class Row;

  // With a bare string in it, libstdc++ 12 holds the variant never to be without a value, and a
  // copy for which there is no memory destroys what was not made.
  struct Text {
    std::string value;
  };
  template <class Content>
  explicit SQLValue(Content content) : content_(std::move(content)) {}

  std::variant<Text, double, std::int64_t, std::monostate> content_;
};

/// One row of a result: a dictionary from column name to value, a plain value. Of columns with the
/// same name the last one counts. The rows of one result share their names.
///
/// The readers never throw and never convert between texts and numbers: what is missing, null or of
/// another kind is absent, and the caller has its default.
class TROVI_EXPORT Row {
 public:
  using Names = std::vector<std::string>;  ///< of the columns, in their order

  /// A row of `values`, each with the name at its place. Throws std::invalid_argument when there
  /// are more values than names.
  Row(std::shared_ptr<const Names> names, std::vector<SQLValue> values);
  /// A row of its own, for those who make one by hand.
  Row(std::initializer_list<std::pair<std::string, SQLValue>> columns);

  /// The value of a column, null included; a null pointer for a name that is not in the row.
  const SQLValue* find(std::string_view column) const;

  /// The text in a column.
  std::optional<std::string> stringValue(std::string_view column) const;
  /// An integer counts as the nearest double.
  std::optional<double> doubleValue(std::string_view name) const { return doubleAt(place(name)); }
  /// A real is truncated toward zero, and absent when it is not finite or out of range.
  std::optional<std::int64_t> intValue(std::string_view column) const;
  /// An integer or real as seconds since 1970-01-01 00:00:00 UTC.
  std::optional<Date> dateValue(std::string_view column) const { return dateAt(place(column)); }

 private:
  friend class TroviStore;

  /// One more than the index of the last column of this name, or 0. It is the same in all rows of a
  /// result.
  std::size_t place(std::string_view column) const;
  std::optional<double> doubleAt(std::size_t place) const;
  std::optional<Date> dateAt(std::size_t place) const;
  /// Moves the text out and leaves an unspecified one.
  std::optional<std::string> takeAt(std::size_t place);

  std::shared_ptr<const Names> names_;
  std::vector<SQLValue> values_;
};

/// The one error of the storage layer. what() is its description: a Portuguese prefix that never
/// changes, and SQLite's own message.
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
  std::string description() const { return what(); }  ///< as the user may read it

 private:
  DatabaseError(Kind kind, const std::string& description);

  Kind kind_;
};

/// A connection to one SQLite file: write-ahead logging, foreign keys on, and 4 seconds of patience
/// with a lock that another connection holds.
///
/// Safe from any thread: statements run one at a time, each on its caller's thread, in order of
/// arrival. Every statement stands for itself; there are no transactions beyond those that a script
/// opens. Texts end at their first NUL, on the way in and out; ill-formed UTF-8 that is read
/// becomes U+FFFD; one for which SQLite has no room is an error and never stored as null. Nothing
/// is cached, and the connection closes with the object.
class TROVI_EXPORT Database {
 public:
  /// Opens the file, creating it for its user alone (mode 0600) when it is missing; its folder must
  /// exist. Throws DatabaseError.
  explicit Database(const std::filesystem::path& path);
  ~Database();
  Database(const Database&) = delete;
  Database& operator=(const Database&) = delete;

  /// Runs every statement of a script, binding nothing. Throws DatabaseError at the first that
  /// fails; those before it stay applied.
  void execute(const std::string& script);

  /// Runs the first statement of `sql` with `parameters` bound to its "?" in order (those in excess
  /// are ignored, those that lack are null), up to its first row. Returns the number of rows that
  /// it inserted, changed or deleted itself; those that triggers change do not count. Throws
  /// DatabaseError.
  std::int64_t run(const std::string& sql, const std::vector<SQLValue>& parameters = {});

  /// Runs the first statement of `sql` as `run` does and returns all its rows in order. Throws
  /// DatabaseError.
  std::vector<Row> query(const std::string& sql, const std::vector<SQLValue>& parameters = {});

 private:
  friend class TroviStore;
  /// A file that nobody else knows: it stays one file, and nothing waits for the disk.
  struct Draft {};
  Database(const std::filesystem::path& path, Draft draft);

  class Connection;
  std::unique_ptr<Connection> connection_;
};

}  // namespace trovi
