/// @file
/// SQLite in four types: a value, a row, an error and a connection.
#pragma once

#include <chrono>
#include <concepts>
#include <cstddef>
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
  /// The value, or null if it is absent. A date becomes `real`, in seconds since 1970.
  static SQLValue from(std::optional<std::string> value);
  static SQLValue from(std::optional<double> value);
  static SQLValue from(std::optional<Date> value);
  /// @}
  /// @{
  /// An integer must not become a real unnoticed: use `integer`.
  template <std::integral Integer>
  static SQLValue from(Integer value) = delete;
  template <std::integral Integer>
  static SQLValue from(std::optional<Integer> value) = delete;
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
/// The accessors never convert between texts and numbers, and throw nothing but std::bad_alloc. A
/// value that is missing, null or of another kind is absent, so that the caller can choose a
/// default.
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
  /// All names and values in the order of the columns. They point into the row.
  std::vector<std::pair<std::string_view, const SQLValue*>> columns() const;

  /// The text in a column.
  std::optional<std::string> stringValue(std::string_view column) const;
  /// The same, moved out of the row, which keeps an unspecified text.
  std::optional<std::string> takeString(std::string_view column);
  /// An integer becomes the nearest double.
  std::optional<double> doubleValue(std::string_view column) const;
  /// A real is truncated toward zero; absent if it is not finite or out of range.
  std::optional<std::int64_t> intValue(std::string_view column) const;
  /// An integer or real as seconds since 1970-01-01 00:00:00 UTC.
  std::optional<Date> dateValue(std::string_view column) const;

 private:
  /// The index of the last column with this name.
  std::optional<std::size_t> indexOf(std::string_view column) const;

  std::shared_ptr<const Names> names_;
  std::vector<SQLValue> values_;
};

/// The error of the storage layer. what() is its description: a fixed Portuguese prefix and
/// SQLite's own message. Its code says what a program can do about it; of the common ones, the low
/// byte (`code() & 0xFF`) is
///
/// | code | SQLite's name     | meaning                                                           |
/// |-----:|-------------------|-------------------------------------------------------------------|
/// |    5 | SQLITE_BUSY       | another program held a lock for longer than the busy timeout      |
/// |    7 | SQLITE_NOMEM      | not enough memory                                                 |
/// |    8 | SQLITE_READONLY   | the file or its folder must not be written                        |
/// |   10 | SQLITE_IOERR      | the disk failed, or is full                                       |
/// |   11 | SQLITE_CORRUPT    | the file is damaged                                               |
/// |   13 | SQLITE_FULL       | the disk is full                                                  |
/// |   14 | SQLITE_CANTOPEN   | the file, or one beside it, cannot be opened                      |
/// |   19 | SQLITE_CONSTRAINT | a constraint of the table, such as an id that is taken            |
/// |   26 | SQLITE_NOTADB     | the file is no SQLite database                                    |
class TROVI_EXPORT DatabaseError : public std::runtime_error {
 public:
  /// What failed.
  enum class Kind {
    open,   ///< the file could not be opened
    query,  ///< a statement failed
  };
  /// "Não abri o banco: " + message
  static DatabaseError open(const std::string& message, int code = 0);
  /// "Erro no banco: " + message
  static DatabaseError query(const std::string& message, int code = 0);
  /// @{
  /// A copy throws nothing. There is no move, which would leave an error without its text.
  DatabaseError(const DatabaseError&) = default;
  DatabaseError& operator=(const DatabaseError&) = default;
  /// @}

  Kind kind() const noexcept { return kind_; }        ///< what failed
  int code() const noexcept { return code_; }         ///< SQLite's extended result code, or 0
  std::string description() const { return what(); }  ///< for display to the user
  std::string message() const { return what() + prefixSize_; }  ///< without the prefix

 private:
  DatabaseError(Kind kind, const char* prefix, const std::string& message, int code);

  Kind kind_;
  int code_;
  std::size_t prefixSize_;
};

/// A connection to one SQLite file, with write-ahead logging, foreign keys on, and a busy timeout
/// for locks that other connections hold.
///
/// Thread-safe: statements run one at a time, each on its caller's thread. Each statement is
/// independent; there are no transactions except those that a script opens. Texts end at their
/// first NUL in both directions, and ill-formed UTF-8 is read as U+FFFD. A text that SQLite cannot
/// hold is an error and is never stored as null. Nothing is cached, and the connection closes with
/// the object.
class TROVI_EXPORT Database {
 public:
  /// How long a statement waits for a lock before it fails.
  static constexpr std::chrono::milliseconds busyTimeout{4000};

  /// Opens the file; its folder must exist. A missing file is created. It, its log and its index
  /// get mode 0600, for its user only, where the file system has modes. Throws DatabaseError.
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
  class Connection;
  std::unique_ptr<Connection> connection_;
};

}  // namespace trovi
