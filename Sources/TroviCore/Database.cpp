#include "TroviCore/Database.h"

#include <sqlite3.h>

#include <system_error>

#include "System/Directories.h"
#include "System/SerialQueue.h"
#include "Text/UTF8.h"

namespace trovi {
namespace {

template <auto release>
struct Releaser {
  template <class Resource>
  void operator()(Resource* resource) const {
    release(resource);
  }
};
using Handle = std::unique_ptr<sqlite3, Releaser<sqlite3_close>>;
using Statement = std::unique_ptr<sqlite3_stmt, Releaser<sqlite3_finalize>>;
using Message = std::unique_ptr<char, Releaser<sqlite3_free>>;

/// SQLite's message as valid UTF-8: it may quote damaged bytes of the file.
std::string errorText(const char* message) {
  return message != nullptr ? platform::repairedUTF8(message) : "desconhecido";
}

/// SQLite's result code; after an error, the parameter is null.
int bind(sqlite3_stmt* statement, int index, const SQLValue& value) {
  if (const auto* text = value.asText()) {
    return sqlite3_bind_text(statement, index, text->c_str(), -1, SQLITE_TRANSIENT);
  }
  if (const auto* real = value.asReal()) return sqlite3_bind_double(statement, index, *real);
  if (const auto* integer = value.asInteger()) {
    return sqlite3_bind_int64(statement, index, *integer);
  }
  return sqlite3_bind_null(statement, index);
}

/// The value in a column, read in few calls, since each one locks the connection.
SQLValue column(sqlite3_stmt* statement, int index) {
  switch (sqlite3_column_type(statement, index)) {
    case SQLITE_INTEGER: return SQLValue::integer(sqlite3_column_int64(statement, index));
    case SQLITE_FLOAT: return SQLValue::real(sqlite3_column_double(statement, index));
    case SQLITE_TEXT: {
      const auto* text = reinterpret_cast<const char*>(sqlite3_column_text(statement, index));
      return text != nullptr ? SQLValue::text(platform::repairedUTF8(text)) : SQLValue::null();
    }
    default: return SQLValue::null();
  }
}

std::shared_ptr<const Row::Names> columnNames(sqlite3_stmt* statement) {
  auto names = std::make_shared<Row::Names>();
  const int count = sqlite3_column_count(statement);
  names->reserve(static_cast<std::size_t>(count));
  for (int i = 0; i < count; ++i) {
    const char* name = sqlite3_column_name(statement, i);
    names->emplace_back(name != nullptr ? name : "");  // null: SQLite is out of memory
  }
  return names;
}

}  // namespace

SQLValue SQLValue::from(std::optional<std::string> value) {
  return value ? text(*std::move(value)) : null();
}

SQLValue SQLValue::from(std::optional<double> value) { return value ? real(*value) : null(); }

SQLValue SQLValue::from(std::optional<Date> value) {
  return value ? real(secondsSince1970(*value)) : null();
}

Row::Row(std::shared_ptr<const Names> names, std::vector<SQLValue> values)
    : names_(std::move(names)), values_(std::move(values)) {
  const std::size_t named = names_ ? names_->size() : 0;
  if (values_.size() > named) throw std::invalid_argument("a row with more values than names");
}

Row::Row(std::initializer_list<std::pair<std::string, SQLValue>> columns) {
  auto names = std::make_shared<Names>();
  for (const auto& [name, value] : columns) {
    names->push_back(name);
    values_.push_back(value);
  }
  names_ = std::move(names);
}

std::optional<std::size_t> Row::indexOf(std::string_view column) const {
  for (std::size_t i = values_.size(); i-- > 0;) {
    if ((*names_)[i] == column) return i;
  }
  return {};
}

const SQLValue* Row::find(std::string_view column) const {
  const auto i = indexOf(column);
  return i ? &values_[*i] : nullptr;
}

std::vector<std::pair<std::string_view, const SQLValue*>> Row::columns() const {
  std::vector<std::pair<std::string_view, const SQLValue*>> columns;
  for (std::size_t i = 0; i < values_.size(); ++i) {
    const std::string& name = (*names_)[i];
    if (find(name) == &values_[i]) columns.emplace_back(name, &values_[i]);
  }
  return columns;
}

std::optional<std::string> Row::stringValue(std::string_view column) const {
  const SQLValue* value = find(column);
  const std::string* text = value != nullptr ? value->asText() : nullptr;
  return text != nullptr ? std::optional(*text) : std::nullopt;
}

std::optional<std::string> Row::takeString(std::string_view column) {
  const auto i = indexOf(column);
  auto* text = i ? std::get_if<SQLValue::Text>(&values_[*i].content_) : nullptr;
  return text != nullptr ? std::optional(std::move(text->value)) : std::nullopt;
}

std::optional<double> Row::doubleValue(std::string_view column) const {
  const SQLValue* value = find(column);
  if (value == nullptr) return {};
  if (const auto* real = value->asReal()) return *real;
  if (const auto* integer = value->asInteger()) return static_cast<double>(*integer);
  return {};
}

std::optional<std::int64_t> Row::intValue(std::string_view column) const {
  const SQLValue* value = find(column);
  if (value == nullptr) return {};
  if (const auto* integer = value->asInteger()) return *integer;
  const auto* real = value->asReal();
  if (real == nullptr || !(*real >= -0x1p63 && *real < 0x1p63)) return {};
  return static_cast<std::int64_t>(*real);
}

std::optional<Date> Row::dateValue(std::string_view column) const {
  const auto seconds = doubleValue(column);
  return seconds ? std::optional(dateSince1970(*seconds)) : std::nullopt;
}

DatabaseError::DatabaseError(Kind kind, const char* prefix, const std::string& message, int code)
    : std::runtime_error(prefix + message),
      kind_(kind),
      code_(code),
      prefixSize_(std::char_traits<char>::length(prefix)) {}

DatabaseError DatabaseError::open(const std::string& message, int code) {
  return {Kind::open, "Não abri o banco: ", message, code};
}

DatabaseError DatabaseError::query(const std::string& message, int code) {
  return {Kind::query, "Erro no banco: ", message, code};
}

/// Hidden: otherwise a shared library would export the functions made for its lambdas.
class __attribute__((visibility("hidden"))) Database::Connection {
 public:
  explicit Connection(const std::filesystem::path& path) {
    // Absolute, since SQLite takes "" for a temporary file, ":memory:" for one in memory and
    // "file:" for a URI.
    const auto file = platform::absolutePath(path);
    std::error_code ignored;  // what is wrong with the file, opening it shows
    const bool isNew = !exists(file, ignored);
    sqlite3* opened = nullptr;
    const int code = sqlite3_open_v2(
        file.c_str(), &opened, SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX,
        nullptr);
    handle_.reset(opened);
    if (opened == nullptr) throw DatabaseError::open(errorText(nullptr), code);
    if (code != SQLITE_OK) {
      throw DatabaseError::open(errorText(sqlite3_errmsg(opened)),
                                sqlite3_extended_errcode(opened));
    }
    using std::filesystem::perms;
    // Before the first statement, so that the log and its index get the same mode.
    if (isNew) permissions(file, perms::owner_read | perms::owner_write, ignored);
    sqlite3_busy_timeout(opened, static_cast<int>(busyTimeout.count()));
    execute("PRAGMA journal_mode=WAL;");
    execute("PRAGMA foreign_keys=ON;");
  }

  void execute(const std::string& script) {
    queue_.sync([&] {
      char* text = nullptr;
      const int code = sqlite3_exec(handle_.get(), script.c_str(), nullptr, nullptr, &text);
      const Message message(text);
      if (code != SQLITE_OK) throw failure(text);
    });
  }

  std::int64_t run(const std::string& sql, const std::vector<SQLValue>& parameters) {
    return queue_.sync([&] {
      const Statement statement = prepare(sql, parameters);
      const int code = sqlite3_step(statement.get());
      if (code != SQLITE_ROW && code != SQLITE_DONE) throw failure();
      return std::int64_t{sqlite3_changes(handle_.get())};
    });
  }

  std::vector<Row> query(const std::string& sql, const std::vector<SQLValue>& parameters) {
    return queue_.sync([&] {
      const Statement statement = prepare(sql, parameters);
      std::vector<Row> rows;
      std::shared_ptr<const Row::Names> names;
      for (;;) {
        const int code = sqlite3_step(statement.get());
        if (code == SQLITE_DONE) return rows;
        if (code != SQLITE_ROW) throw failure();
        if (!names) names = columnNames(statement.get());
        std::vector<SQLValue> values;
        values.reserve(names->size());
        for (std::size_t i = 0; i < names->size(); ++i) {
          values.push_back(column(statement.get(), static_cast<int>(i)));
        }
        rows.emplace_back(names, std::move(values));
      }
    });
  }

 private:
  Statement prepare(const std::string& sql, const std::vector<SQLValue>& parameters) {
    sqlite3_stmt* prepared = nullptr;
    const int code = sqlite3_prepare_v2(handle_.get(), sql.c_str(), -1, &prepared, nullptr);
    Statement statement(prepared);
    if (code != SQLITE_OK) throw failure();
    int index = 0;
    for (const SQLValue& parameter : parameters) {
      const int bound = bind(prepared, ++index, parameter);
      if (bound != SQLITE_OK && bound != SQLITE_RANGE) throw failure();  // too many: ignored
    }
    return statement;
  }

  DatabaseError failure() const { return failure(sqlite3_errmsg(handle_.get())); }
  DatabaseError failure(const char* message) const {
    return DatabaseError::query(errorText(message), sqlite3_extended_errcode(handle_.get()));
  }

  Handle handle_;
  platform::SerialQueue queue_;
};

Database::Database(const std::filesystem::path& path)
    : connection_(std::make_unique<Connection>(path)) {}

Database::~Database() = default;

void Database::execute(const std::string& script) { connection_->execute(script); }

std::int64_t Database::run(const std::string& sql, const std::vector<SQLValue>& parameters) {
  return connection_->run(sql, parameters);
}

std::vector<Row> Database::query(const std::string& sql, const std::vector<SQLValue>& parameters) {
  return connection_->query(sql, parameters);
}

}  // namespace trovi
