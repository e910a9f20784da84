#include <ctime>
#include <filesystem>

#include "System/Calendar.h"
#include "Text/UTF8.h"
#include "Text/Unicode.h"
#include "TroviCore/Store.h"

namespace trovi {
namespace {

constexpr const char* insertRecado =
    R"(INSERT INTO recado(id, created_at, duration, audio_path, transcript, title, destino_id, status,
    claimed_by, claimed_at, result, resolved_at, language)
VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?))";

constexpr const char* updateTranscription =
    R"(UPDATE recado SET transcript = ?, title = ?, destino_id = ?, language = ?, status = ?
WHERE id = ?)";

constexpr const char* updateClaim =
    R"(UPDATE recado SET status = ?, claimed_by = ?, claimed_at = ?
WHERE id = ? AND status IN ('pendente', 'pego'))";

constexpr const char* updateResolution =
    R"(UPDATE recado SET status = ?, result = ?, resolved_at = ?,
    claimed_by = COALESCE(?, claimed_by), claimed_at = COALESCE(claimed_at, ?)
WHERE id = ? AND status IN ('pendente', 'pego', 'resolvido'))";

constexpr const char* updateReopened =
    R"(UPDATE recado SET status = 'pendente', claimed_by = NULL, claimed_at = NULL,
    result = NULL, resolved_at = NULL WHERE id = ?)";

SQLValue value(RecadoStatus status) { return SQLValue::text(std::string(rawValue(status))); }

}  // namespace

Recado TroviStore::recadoFrom(Row row) {
  const auto text = [&](std::string_view column) {
    return row.takeString(column).value_or(std::string());
  };
  return {.id = text("id"),
          .createdAt = row.dateValue("created_at").value_or(now()),
          .duration = row.doubleValue("duration").value_or(0),
          .audioPath = row.takeString("audio_path"),
          .transcript = text("transcript"),
          .title = text("title"),
          .destinoID = row.takeString("destino_id"),
          .status = fromRawValue(text("status")).value_or(RecadoStatus::pendente),
          .claimedBy = row.takeString("claimed_by"),
          .claimedAt = row.dateValue("claimed_at"),
          .result = row.takeString("result"),
          .resolvedAt = row.dateValue("resolved_at"),
          .language = row.takeString("language")};
}

std::optional<Recado> TroviStore::recado(const std::string& id) const {
  auto rows = db_.query("SELECT * FROM recado WHERE id = ?", {SQLValue::text(id)});
  return rows.empty() ? std::nullopt : std::optional(recadoFrom(std::move(rows.front())));
}

std::vector<Recado> TroviStore::recados(const RecadoFilter& filter) const {
  std::string conditions;
  std::vector<SQLValue> parameters;
  const auto add = [&](const char* condition) {
    conditions += conditions.empty() ? "WHERE " : " AND ";
    conditions += condition;
  };
  if (filter.status) {
    add("status = ?");
    parameters.push_back(value(*filter.status));
  }
  if (filter.destinoID) {
    add("destino_id = ?");
    parameters.push_back(SQLValue::text(*filter.destinoID));
  }
  if (filter.search && !platform::trimmedBlanks(platform::repairedUTF8(*filter.search)).empty()) {
    add("(transcript LIKE ? OR title LIKE ? OR IFNULL(result, '') LIKE ?)");
    parameters.insert(parameters.end(), 3, SQLValue::text("%" + *filter.search + "%"));
  }
  parameters.push_back(SQLValue::integer(filter.limit));

  std::vector<Recado> recados;
  auto rows = db_.query("SELECT * FROM recado " + conditions + " ORDER BY created_at DESC LIMIT ?",
                        parameters);
  recados.reserve(rows.size());
  for (Row& row : rows) recados.push_back(recadoFrom(std::move(row)));
  return recados;
}

std::unordered_map<RecadoStatus, std::int64_t> TroviStore::counts() const {
  std::unordered_map<RecadoStatus, std::int64_t> counts;
  for (const Row& row : db_.query("SELECT status, COUNT(*) AS n FROM recado GROUP BY status")) {
    const auto status = fromRawValue(row.stringValue("status").value_or(""));
    if (status) counts[*status] = row.intValue("n").value_or(0);
  }
  return counts;
}

std::int64_t TroviStore::countThisMonth() const {
  const auto current = static_cast<std::time_t>(secondsSince1970(now()));
  const auto start = static_cast<double>(platform::startOfMonth(current));
  const auto rows =
      db_.query("SELECT COUNT(*) AS n FROM recado WHERE created_at >= ?", {SQLValue::real(start)});
  return rows.empty() ? 0 : rows.front().intValue("n").value_or(0);
}

void TroviStore::insert(const Recado& recado) {
  db_.run(insertRecado,
          {SQLValue::text(recado.id), SQLValue::from(recado.createdAt),
           SQLValue::real(recado.duration), SQLValue::from(recado.audioPath),
           SQLValue::text(recado.transcript), SQLValue::text(recado.title),
           SQLValue::from(recado.destinoID), value(recado.status), SQLValue::from(recado.claimedBy),
           SQLValue::from(recado.claimedAt), SQLValue::from(recado.result),
           SQLValue::from(recado.resolvedAt), SQLValue::from(recado.language)});
}

void TroviStore::finishTranscription(const FinishedTranscription& finished) {
  db_.run(updateTranscription,
          {SQLValue::text(finished.transcript), SQLValue::text(finished.title),
           SQLValue::from(finished.destinoID), SQLValue::from(finished.language),
           value(RecadoStatus::pendente), SQLValue::text(finished.id)});
}

void TroviStore::setStatus(const std::string& id, RecadoStatus status,
                           const std::optional<std::string>& title) {
  if (title) {
    db_.run("UPDATE recado SET status = ?, title = ? WHERE id = ?",
            {value(status), SQLValue::text(*title), SQLValue::text(id)});
  } else {
    db_.run("UPDATE recado SET status = ? WHERE id = ?", {value(status), SQLValue::text(id)});
  }
}

void TroviStore::setDestino(const RecadoFiling& filing) {
  db_.run("UPDATE recado SET destino_id = ? WHERE id = ?",
          {SQLValue::from(filing.destinoID), SQLValue::text(filing.id)});
}

void TroviStore::setAudioPath(const std::string& id, const std::optional<std::string>& path) {
  db_.run("UPDATE recado SET audio_path = ? WHERE id = ?",
          {SQLValue::from(path), SQLValue::text(id)});
}

std::optional<Recado> TroviStore::claim(const RecadoClaim& claim) {
  const auto changed = db_.run(updateClaim, {value(RecadoStatus::pego), SQLValue::text(claim.by),
                                             SQLValue::from(now()), SQLValue::text(claim.id)});
  return changed > 0 ? recado(claim.id) : std::nullopt;
}

std::optional<Recado> TroviStore::resolve(const RecadoResolution& resolution) {
  const SQLValue resolvedAt = SQLValue::from(now());
  const auto changed =
      db_.run(updateResolution,
              {value(RecadoStatus::resolvido), SQLValue::text(resolution.result), resolvedAt,
               SQLValue::from(resolution.by), resolvedAt, SQLValue::text(resolution.id)});
  return changed > 0 ? recado(resolution.id) : std::nullopt;
}

void TroviStore::reopen(const std::string& id) { db_.run(updateReopened, {SQLValue::text(id)}); }

void TroviStore::deleteRecado(const std::string& id) {
  if (const auto found = recado(id); found && found->audioPath) {
    std::error_code ignored;  // no reason to keep the message: the file may be gone already
    std::filesystem::remove(*found->audioPath, ignored);
  }
  db_.run("DELETE FROM recado WHERE id = ?", {SQLValue::text(id)});
}

}  // namespace trovi
