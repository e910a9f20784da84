/// @file
/// The inbox. In the structures that it takes, the fields without a default are required.
#pragma once

#include <array>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "TroviCore/Database.h"
#include "TroviCore/Export.h"
#include "TroviCore/Models.h"

namespace trovi {

/// Which messages `TroviStore::recados` lists; an absent condition admits all.
struct RecadoFilter {
  std::optional<RecadoStatus> status{};    ///< exactly this one
  std::optional<std::string> destinoID{};  ///< filed under this `id`
  /// A text anywhere in the transcript, the title or the result. ASCII letters match in either
  /// case; "%" and "_" are wildcards. A text of blanks only is no condition.
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
  std::optional<std::string> by{};  ///< who resolves; absent: the claimer stays
};

/// What a transcription yielded.
struct FinishedTranscription {
  std::string id;                          ///< of the message
  std::string transcript;                  ///< may be empty
  std::string title;                       ///< see TroviText::titleFrom
  std::optional<std::string> destinoID{};  ///< absent: unfiled
  std::optional<std::string> language{};   ///< absent: cleared
};

/// Where a message goes.
struct RecadoFiling {
  std::string id;                          ///< of the message
  std::optional<std::string> destinoID{};  ///< absent: unfiled
};

/// A message that the remote copy now holds as it was in `version`.
struct UploadedVersion {
  std::string id;            ///< of the message
  std::int64_t version = 0;  ///< as `TroviStore::pendingUploads` gave it
};

/// The state of a message in the remote copy. An absent field clears the local one.
struct RemoteStatus {
  std::string id;                                ///< of the message
  RecadoStatus status = RecadoStatus::pendente;  ///< where it stands there
  std::optional<std::string> claimedBy{};        ///< who claimed or resolved it
  std::optional<Date> claimedAt{};               ///< when it was claimed
  std::optional<std::string> result{};           ///< what was done
  std::optional<Date> resolvedAt{};              ///< when it was resolved
  double updatedAt = 0;                          ///< when it came about, seconds since 1970
};

/// The inbox in one SQLite file, shared with any other process that has the file open.
///
/// Every operation but the static ones may throw DatabaseError, and std::out_of_range for a status
/// that is none of the five. Texts are compared by their bytes. Each is one SQL statement, or as
/// many as it says, and what succeeded before a failure stays. An id that names nothing is not an
/// error, and no argument is validated. Triggers in the file keep the books of the synchroniser,
/// whichever process makes a change.
///
/// An operation that is const only reads the file. What it reads may be another thing each time:
/// other threads and programs change the file meanwhile.
///
/// Safe from any thread; statements run one at a time (see Database). Another thread's or process's
/// statement may come between the two of one operation.
class TROVI_EXPORT TroviStore {
 public:
  /// Opens the file and brings it to the current layout: creates what is missing, adds the columns
  /// and triggers of the synchroniser to a file of the earlier layout, and seeds three destinations
  /// once in the life of a file. The folder must exist. Throws DatabaseError; what was brought
  /// about until then stays, and the next opening goes on from there.
  ///
  /// A missing file is made under another name, "….draft-" and a UUID, and appears whole, if the
  /// file system has hard links. A program that is killed meanwhile may leave a draft behind, which
  /// nobody reads: it can be deleted.
  explicit TroviStore(const std::filesystem::path& path);

  Database& db() { return db_; }  ///< the store's connection, which lives as long as the store

  /// @name Messages
  /// @{

  /// The record in a row of the table `recado`. What is missing or of the wrong kind takes a
  /// default: an empty text, 0, the current time for `createdAt`, `pendente`, or absent.
  static Recado recadoFrom(Row row);

  /// The message with this id.
  std::optional<Recado> recado(const std::string& id) const;

  /// The messages that meet all conditions, newest first.
  std::vector<Recado> recados(const RecadoFilter& filter) const;

  /// How many messages stand where; a status without messages is left out.
  std::unordered_map<RecadoStatus, std::int64_t> counts() const;

  /// How many messages were recorded since the current month began in the user's time zone.
  std::int64_t countThisMonth() const;

  /// Adds a message. An id that is taken is an error and changes nothing.
  void insert(const Recado& recado);

  /// Stores what a transcription yielded and makes the message `pendente`, whatever it was.
  void finishTranscription(const FinishedTranscription& finished);

  /// Sets the status, and the title if one is given. Nothing else changes: no claim, no result.
  void setStatus(const std::string& id, RecadoStatus status,
                 const std::optional<std::string>& title = {});

  /// Files the message under a destination, which need not exist, or unfiles it.
  void setDestino(const RecadoFiling& filing);

  /// Sets where the recording is. The file itself is not touched, and there is nothing to upload.
  void setAudioPath(const std::string& id, const std::optional<std::string>& path);

  /// Makes a message `pego` that is `pendente` or `pego`, and returns it as it then stands: an
  /// UPDATE, then a read. Absent, with nothing changed, when the id is unknown or the status
  /// refuses.
  std::optional<Recado> claim(const RecadoClaim& claim);

  /// Makes a message `resolvido` that is `pendente`, `pego` or `resolvido`, and returns it as it
  /// then stands: an UPDATE, then a read. Absent, with nothing changed, when the id is unknown or
  /// the status refuses. A message that was never claimed counts as claimed now.
  std::optional<Recado> resolve(const RecadoResolution& resolution);

  /// Makes a message `pendente` again, whatever it was, without claim and result.
  void reopen(const std::string& id);

  /// Removes the message's audio file, if it has one and that can be done, then the message.
  void deleteRecado(const std::string& id);

  /// @}
  /// @name Destinations
  /// @{

  /// The record in a row of the table `destino`. What is missing or of the wrong kind takes a
  /// default: a new id, an empty text, "#FF6A1C" or 0.
  static Destino destinoFrom(Row row);

  /// Adds a destination, or overwrites the one with its id.
  void saveDestino(const Destino& destino);

  /// All destinations by `sort`, then by the bytes of their `name`.
  std::vector<Destino> destinos() const;

  /// The destination with this id; absent, without a look at the file, when there is no id.
  std::optional<Destino> destino(const std::optional<std::string>& id) const;

  /// The first destination in list order that bears this name, whatever the case and the accents.
  /// Blanks around the given name do not count; those of a stored name do.
  std::optional<Destino> destinoNamed(const std::string& name) const;

  /// Unfiles the destination's messages, then removes it.
  void deleteDestino(const std::string& id);

  /// @}
  /// @name Synchronisation
  /// What a synchroniser needs to keep a remote copy in step. Each message has a counter of its
  /// local changes, of content and of state, which every change but that of the recording's place
  /// raises and 0 calls uploaded; each deleted message leaves its id. Messages and ids change hands
  /// without locks: what changes while an upload is under way stays marked. Repeating a list that
  /// was worked off in part is harmless.
  /// @{

  /// A message with local changes.
  struct PendingUpload {
    Recado recado;             ///< as stored
    double updatedAt = 0;      ///< last change of state, or else the recording; seconds since 1970
    std::int64_t version = 0;  ///< its counter of changes as read, for `markUploaded`

    /// What `markUploaded` needs of it.
    operator UploadedVersion() const { return {.id = recado.id, .version = version}; }
  };

  /// The messages with local changes, oldest recording first, at most `limit`; negative: all.
  std::vector<PendingUpload> pendingUploads(std::int64_t limit) const;

  /// Marks messages as uploaded, one by one. One that changed after its `version` was read stays
  /// marked and is offered again.
  void markUploaded(const std::vector<UploadedVersion>& uploaded);
  /// The same for what `pendingUploads` returned, or a part of it.
  template <std::same_as<PendingUpload> Upload>
  void markUploaded(const std::vector<Upload>& uploads) {
    markUploaded(std::vector<UploadedVersion>(uploads.begin(), uploads.end()));
  }

  /// Offers every message for upload again, then forgets the deletions that are not uploaded: for
  /// a remote copy that starts afresh.
  void markAllForUpload();

  /// The ids of deleted messages, oldest deletion first, at most `limit`; negative: all. A message
  /// that was inserted again under its id is not among them.
  std::vector<std::string> pendingDeletions(std::int64_t limit) const;

  /// Forgets deletions that are uploaded, one by one.
  void clearDeletions(const std::vector<std::string>& ids);

  /// Takes over the remote state of a message that is `pendente`, `pego` or `resolvido`, if it is
  /// newer than the local one. It does not count as a local change, and local changes that wait
  /// for their upload go on waiting. False, with nothing changed, when the id is unknown, the
  /// status refuses, or the local state is newer or of the same time.
  bool applyRemoteStatus(const RemoteStatus& remote);

  /// @}
  /// @name Metadata
  /// Texts by key, kept with the inbox: a synchroniser's own state. The key "seeded" is the store's
  /// and never changes.
  /// @{

  /// The text under this key; absent when there is none.
  std::optional<std::string> meta(const std::string& key) const;

  /// Stores a text under this key in place of an earlier one; without a text, removes the key.
  void setMeta(const std::string& key, const std::optional<std::string>& value);

  /// @}

 private:
  TroviStore(const std::filesystem::path& path, Database::Draft draft);
  /// Where the rows of one result have a message's columns.
  using Places = std::array<std::size_t, 13>;
  static Places placesOf(const Row& row);
  static Recado recadoFrom(Row& row, const Places& places);
  static const std::filesystem::path& made(const std::filesystem::path& path);
  void migrate();
  void migrateSync();

  mutable Database db_;  // where the store is const, for reading only
};

}  // namespace trovi
