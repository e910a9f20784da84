#include "Text/UTF8.h"
#include "Text/Unicode.h"
#include "TroviCore/Store.h"

namespace trovi {
namespace {

constexpr const char* upsert =
    R"(INSERT INTO destino(id, name, instruction, color, sort) VALUES (?, ?, ?, ?, ?)
ON CONFLICT(id) DO UPDATE SET name = excluded.name, instruction = excluded.instruction,
    color = excluded.color, sort = excluded.sort)";

}  // namespace

Destino TroviStore::destinoFrom(Row row) {
  auto id = row.takeString("id");
  return {.id = id ? *std::move(id) : newID(),
          .name = row.takeString("name").value_or(""),
          .instruction = row.takeString("instruction").value_or(""),
          .colorHex = row.takeString("color").value_or("#FF6A1C"),
          .sort = row.intValue("sort").value_or(0)};
}

void TroviStore::saveDestino(const Destino& destino) {
  db_.run(upsert, {SQLValue::text(destino.id), SQLValue::text(destino.name),
                   SQLValue::text(destino.instruction), SQLValue::text(destino.colorHex),
                   SQLValue::integer(destino.sort)});
}

std::vector<Destino> TroviStore::destinos() const {
  auto rows = db_.query("SELECT * FROM destino ORDER BY sort, name");
  std::vector<Destino> destinos;
  destinos.reserve(rows.size());
  for (Row& row : rows) destinos.push_back(destinoFrom(std::move(row)));
  return destinos;
}

std::optional<Destino> TroviStore::destino(const std::optional<std::string>& id) const {
  if (!id) return {};
  const auto rows = db_.query("SELECT * FROM destino WHERE id = ?", {SQLValue::text(*id)});
  return rows.empty() ? std::nullopt : std::optional(destinoFrom(rows.front()));
}

std::optional<Destino> TroviStore::destinoNamed(std::string_view name) const {
  const std::string given = platform::repairedUTF8(name);
  const std::string wanted = platform::folded(platform::trimmedBlanks(given));
  for (Destino& destino : destinos()) {
    if (platform::folded(destino.name) == wanted) return std::move(destino);
  }
  return {};
}

void TroviStore::deleteDestino(const std::string& id) {
  db_.run("UPDATE recado SET destino_id = NULL WHERE destino_id = ?", {SQLValue::text(id)});
  db_.run("DELETE FROM destino WHERE id = ?", {SQLValue::text(id)});
}

}  // namespace trovi
