/// @file
/// The inbox. In the structures that its operations take, fields without a default are required;
/// g++ -Wextra reports one that is left out, clang 14 does not.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "TroviCore/Database.h"
#include "TroviCore/Export.h"
#include "TroviCore/Models.h"

namespace trovi {

/// Which messages `TroviStore::recados` lists. An absent condition matches all.
struct RecadoFilter {
  std::optional<RecadoStatus> status{};    ///< exactly this one
  std::optional<std::string> destinoID{};  ///< filed under this `id`
  /// A text that occurs in the transcript, the title or the result. ASCII letters match in either
  /// case; "%" and "_" are wildcards. A text of only blanks is no condition.
  std::optional<std::string> search{};
  std::int64_t limit = -1;  ///< at most this many; negative: all
};

/// Who claims which message.
struct RecadoClaim {
  std::string id;  ///< of the message
  std::string by;  ///< who claims
};

/// What was done with a message, and by whom.
struct RecadoResolution {
  std::string id;                   ///< of the message
  std::string result;               ///< what was done
  std::optional<std::string> by{};  ///< who resolves; absent: the claimer is kept
};

/// The result of a transcription.
struct FinishedTranscription {
  std::string id;                          ///< of the message
  std::string transcript;                  ///< may be empty
  std::string title;                       ///< see TroviText::titleFrom
  std::optional<std::string> destinoID{};  ///< absent: unfiled
  std::optional<std::string> language{};   ///< absent: cleared
};

/// Where to file a message.
struct RecadoFiling {
  std::string id;                          ///< of the message
  std::optional<std::string> destinoID{};  ///< absent: unfiled
};

/// A message that the remote copy now has as it was in `version`.
struct UploadedVersion {
  std::string id;        ///< of the message
  std::int64_t version;  ///< as `TroviStore::pendingUploads` returned it
};

/// The state of a message in the remote copy. An absent field clears the local one.
struct RemoteStatus {
  std::string id;                          ///< of the message
  RecadoStatus status;                     ///< its status there
  std::optional<std::string> claimedBy{};  ///< who claimed or resolved it
  std::optional<Date> claimedAt{};         ///< when it was claimed
  std::optional<std::string> result{};     ///< what was done
  std::optional<Date> resolvedAt{};        ///< when it was resolved
  double updatedAt;                        ///< time of this state, seconds since 1970
};

/// The inbox in one SQLite file, shared with any other process that has the file open.
///
/// All operations except the static ones may throw DatabaseError, and std::out_of_range for a
/// status that is none of the five. Each runs one SQL statement, or several where its description
/// says so; statements that succeeded before a failure stay applied. An unknown id is not an error,
/// and no argument is validated. Unless stated otherwise, texts are compared by their bytes.
/// Triggers in the file record changes for the synchroniser, whichever process makes them.
///
/// A const operation only reads the file, which other threads and programs may change between two
/// reads.
///
/// Thread-safe; statements run one at a time (see Database). Statements of other threads or
/// processes may run between those of one operation.
class TROVI_EXPORT TroviStore {
 public:
  /// Opens the file and migrates it to the current schema: creates what is missing, adds the
  /// columns and triggers for the synchroniser to a file of the earlier schema, and adds three
  /// destinations unless the file is marked as having had them. The folder must exist. Throws
  /// DatabaseError; what succeeded before the failure stays, and the next open goes on from what
  /// the file holds.
  ///
  /// Stores that are opened at the same time by paths in one folder wait for each other, at most
  /// for `Database::busyTimeout`. A program that is killed meanwhile leaves either all three
  /// destinations or none, and gives the messages of an earlier schema either the time of their
  /// last change or no column for it.
  explicit TroviStore(const std::filesystem::path& path);

  Database& db() { return db_; }  ///< the store's connection, valid as long as the store

  /// @name Messages
  /// @{

  /// The record in a row of the table `recado`. A value that is missing or of the wrong kind gets a
  /// default: an empty text, 0, the current time for `createdAt`, `pendente`, or absent.
  static Recado recadoFrom(Row row);

  /// The message with this id.
  std::optional<Recado> recado(const std::string& id) const;

  /// The messages that meet all conditions, newest first.
  std::vector<Recado> recados(const RecadoFilter& filter) const;

  /// The number of messages by status; a status without messages is left out.
  std::unordered_map<RecadoStatus, std::int64_t> counts() const;

  /// The number of messages recorded since the start of the current month in the user's time zone.
  std::int64_t countThisMonth() const;

  /// Adds a message. An id that is already taken is an error, and nothing changes.
  void insert(const Recado& recado);

  /// Stores the result of a transcription and makes the message `pendente`, whatever its status.
  void finishTranscription(const FinishedTranscription& finished);

  /// Sets the status, and the title if one is given. Nothing else changes, not even claim and
  /// result.
  void setStatus(const std::string& id, RecadoStatus status,
                 const std::optional<std::string>& title = {});

  /// Files the message under a destination, which need not exist, or unfiles it.
  void setDestino(const RecadoFiling& filing);

  /// Sets or clears the path of the recording. The file itself is not touched, and the change is
  /// not marked for upload.
  void setAudioPath(const std::string& id, const std::optional<std::string>& path);

  /// Makes a message `pego` if it is `pendente` or `pego`, and returns it as it is then: an UPDATE,
  /// then a SELECT. Absent, with nothing changed, if the id is unknown or the status does not allow
  /// it.
  [[nodiscard]] std::optional<Recado> claim(const RecadoClaim& claim);

  /// Makes a message `resolvido` if it is `pendente`, `pego` or `resolvido`, and returns it as it
  /// is then: an UPDATE, then a SELECT. Absent, with nothing changed, if the id is unknown or the
  /// status does not allow it. A missing claim time becomes the current time.
  [[nodiscard]] std::optional<Recado> resolve(const RecadoResolution& resolution);

  /// Makes a message `pendente` again, whatever its status, and clears its claim and result.
  void reopen(const std::string& id);

  /// Deletes the message's audio file, if there is one and it can be deleted, then the message.
  void deleteRecado(const std::string& id);

  /// @}
  /// @name Destinations
  /// @{

  /// The record in a row of the table `destino`. A value that is missing or of the wrong kind gets
  /// a default: a new id, an empty text, "#FF6A1C" or 0.
  static Destino destinoFrom(Row row);

  /// Adds a destination, or overwrites the one with its id.
  void saveDestino(const Destino& destino);

  /// All destinations, ordered by `sort`, then by the bytes of their `name`.
  std::vector<Destino> destinos() const;

  /// The destination with this id. Absent, without reading the file, if there is no id.
  std::optional<Destino> destino(const std::optional<std::string>& id) const;

  /// The first destination in list order with this name, ignoring case and accents. Blanks around
  /// the given name are ignored too; those of a stored name are not.
  std::optional<Destino> destinoNamed(std::string_view name) const;

  /// Unfiles the destination's messages, then deletes the destination.
  void deleteDestino(const std::string& id);

  /// @}
  /// @name Synchronisation
  /// What a synchroniser needs to keep a remote copy up to date. Each message has a counter of
  /// local changes. Every change to its content or state increments the counter, except a change of
  /// the recording's path; 0 means uploaded. Each deleted message leaves its id. Nothing is locked
  /// between calls: a message that changes during an upload stays marked. A list that was processed
  /// in part can be processed again.
  /// @{

  /// A message with local changes.
  struct PendingUpload {
    Recado recado;         ///< as stored
    double updatedAt;      ///< last change of state, else the recording; seconds since 1970
    std::int64_t version;  ///< its change counter as read, for `markUploaded`

    /// The part that `markUploaded` needs.
    operator UploadedVersion() const { return {.id = recado.id, .version = version}; }
  };

  /// The messages with local changes, oldest recording first, at most `limit`; negative: all.
  std::vector<PendingUpload> pendingUploads(std::int64_t limit) const;

  /// Marks messages as uploaded, one by one. A message that changed after its `version` was read
  /// stays marked for upload.
  void markUploaded(const std::vector<UploadedVersion>& uploaded);

  /// Marks every message for upload, then forgets the deletions that are not uploaded: for a remote
  /// copy that starts empty.
  void markAllForUpload();

  /// The ids of deleted messages, oldest deletion first, at most `limit`; negative: all. The id of
  /// a message that was inserted again is not among them.
  std::vector<std::string> pendingDeletions(std::int64_t limit) const;

  /// Forgets deletions that were uploaded, one by one.
  void clearDeletions(const std::vector<std::string>& ids);

  /// Applies the remote state to a message that is `pendente`, `pego` or `resolvido`, if it is
  /// newer than the local state. This does not count as a local change, and earlier ones stay
  /// marked for upload. False, with nothing changed, if the id is unknown, the status does not
  /// allow it, or the remote state is not newer.
  [[nodiscard]] bool applyRemoteStatus(const RemoteStatus& remote);

  /// @}
  /// @name Metadata
  /// Texts by key, stored with the inbox, for a synchroniser's own state. The key "seeded" belongs
  /// to the store and never changes.
  /// @{

  /// The text under this key; absent when there is none.
  std::optional<std::string> meta(const std::string& key) const;

  /// Stores a text under this key, replacing an earlier one; without a text, removes the key.
  void setMeta(const std::string& key, const std::optional<std::string>& value);

  /// @}

 private:
  struct Opening;
  TroviStore(const std::filesystem::path& path, const Opening& held);
  void migrate();
  void migrateSync();

  mutable Database db_;  // const operations only read
};

}  // namespace trovi
