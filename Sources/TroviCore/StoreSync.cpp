#include "TroviCore/Store.h"

namespace trovi {
namespace {

constexpr const char* updateRemoteStatus =
    R"(UPDATE recado SET status = ?, claimed_by = ?, claimed_at = ?, result = ?, resolved_at = ?, updated_at = ?
WHERE id = ? AND status IN ('pendente', 'pego', 'resolvido') AND (updated_at IS NULL OR updated_at < ?))";

}  // namespace

std::vector<TroviStore::PendingUpload> TroviStore::pendingUploads(std::int64_t limit) const {
  auto rows = db_.query("SELECT * FROM recado WHERE dirty > 0 ORDER BY created_at LIMIT ?",
                        {SQLValue::integer(limit)});
  std::vector<PendingUpload> uploads;
  uploads.reserve(rows.size());
  for (Row& row : rows) {
    const auto updatedAt = row.doubleValue("updated_at");
    const double changedAt = updatedAt ? *updatedAt : row.doubleValue("created_at").value_or(0);
    const std::int64_t version = row.intValue("dirty").value_or(0);
    uploads.push_back(
        {.recado = recadoFrom(std::move(row)), .updatedAt = changedAt, .version = version});
  }
  return uploads;
}

void TroviStore::markUploaded(const std::vector<UploadedVersion>& uploaded) {
  for (const auto& [id, version] : uploaded) {
    db_.run("UPDATE recado SET dirty = 0 WHERE id = ? AND dirty = ?",
            {SQLValue::text(id), SQLValue::integer(version)});
  }
}

void TroviStore::markAllForUpload() {
  db_.run("UPDATE recado SET dirty = dirty + 1");
  db_.run("DELETE FROM recado_apagado");
}

std::vector<std::string> TroviStore::pendingDeletions(std::int64_t limit) const {
  std::vector<std::string> ids;
  for (Row& row : db_.query("SELECT id FROM recado_apagado ORDER BY deleted_at LIMIT ?",
                            {SQLValue::integer(limit)})) {
    if (auto id = row.takeString("id")) ids.push_back(*std::move(id));
  }
  return ids;
}

void TroviStore::clearDeletions(const std::vector<std::string>& ids) {
  for (const std::string& id : ids) {
    db_.run("DELETE FROM recado_apagado WHERE id = ?", {SQLValue::text(id)});
  }
}

bool TroviStore::applyRemoteStatus(const RemoteStatus& remote) {
  const SQLValue updatedAt = SQLValue::real(remote.updatedAt);
  const auto changed = db_.run(
      updateRemoteStatus,
      {SQLValue::text(std::string(rawValue(remote.status))), SQLValue::from(remote.claimedBy),
       SQLValue::from(remote.claimedAt), SQLValue::from(remote.result),
       SQLValue::from(remote.resolvedAt), updatedAt, SQLValue::text(remote.id), updatedAt});
  return changed > 0;
}

}  // namespace trovi
