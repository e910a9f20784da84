#include <array>
#include <map>

#include "Inbox.h"

namespace trovi::tests {
namespace {

/// The oldest message that waits for its upload.
TroviStore::PendingUpload pending(TroviStore& store) { return store.pendingUploads(1).at(0); }

RemoteStatus remoteClaim(const std::string& id, double updatedAt) {
  return {.id = id,
          .status = RecadoStatus::pego,
          .claimedBy = "IA remota",
          .claimedAt = dateSince1970(updatedAt),
          .updatedAt = updatedAt};
}

class Sync : public Inbox {};

TEST_F(Sync, OffersMarkedMessagesOldestFirstWithTheTimeOfTheirState) {
  store.insert(someRecado("nova", 3000));
  store.insert(someRecado("velha", 1000));
  store.insert(someRecado("sem estado", 2000));
  other.execute(
      "UPDATE recado SET updated_at = 5000.5 WHERE id = 'nova';"
      "UPDATE recado SET updated_at = NULL WHERE id = 'sem estado';");

  const auto uploads = store.pendingUploads(-1);
  ASSERT_EQ(uploads.size(), 3U);
  EXPECT_EQ(uploads[0].recado, someRecado("velha", 1000));
  EXPECT_EQ(uploads[1].recado.id, "sem estado");
  EXPECT_EQ(uploads[1].updatedAt, 2000);
  EXPECT_EQ(uploads[2].updatedAt, 5000.5);
  EXPECT_EQ(uploads[2].version, 2);
  EXPECT_EQ(store.pendingUploads(2).size(), 2U);
  EXPECT_TRUE(store.pendingUploads(0).empty());

  store.markUploaded({{.id = "nova", .version = 1}, {.id = "velha", .version = 2}});
  EXPECT_EQ(dirty("nova"), 2);
  EXPECT_EQ(dirty("velha"), 0);
  EXPECT_EQ(pending(store).recado.id, "sem estado");
}

TEST_F(Sync, AppliesOnlyANewerStateToAMessageThatIsOpenToIt) {
  constexpr double localTime = 2000;
  struct Case {
    RecadoStatus status;
    double remoteTime;
    bool applied;
  };
  using enum RecadoStatus;
  constexpr std::array cases{
      Case{pendente, 1999.5, false}, Case{pendente, localTime, false},
      Case{pendente, 2000.5, true},  Case{pego, 2000.5, true},
      Case{resolvido, 2000.5, true}, Case{transcrevendo, 2000.5, false},
      Case{falhou, 2000.5, false},
  };
  for (const Case& tried : cases) {
    SCOPED_TRACE(std::string(rawValue(tried.status)) + " at " + std::to_string(tried.remoteTime));
    other.execute("DELETE FROM recado");
    Recado recado = someRecado("r");
    recado.status = tried.status;
    recado.result = "feito";
    recado.resolvedAt = dateSince1970(localTime);
    store.insert(recado);
    other.execute("UPDATE recado SET updated_at = 2000, dirty = 7");

    EXPECT_EQ(store.applyRemoteStatus(remoteClaim("r", tried.remoteTime)), tried.applied);
    if (tried.applied) {
      recado.status = pego;
      recado.claimedBy = "IA remota";
      recado.claimedAt = dateSince1970(tried.remoteTime);
      recado.result.reset();
      recado.resolvedAt.reset();
    }
    const auto now = pending(store);
    EXPECT_EQ(now.recado, recado);
    EXPECT_EQ(now.updatedAt, tried.applied ? tried.remoteTime : localTime);
    EXPECT_EQ(now.version, 7);
  }
  EXPECT_FALSE(store.applyRemoteStatus(remoteClaim("desconhecido", 1e12)));
  other.execute("UPDATE recado SET status = 'pendente', updated_at = NULL");
  EXPECT_TRUE(store.applyRemoteStatus(remoteClaim("r", 1)));
}

TEST_F(Sync, ReportsDeletionsInTheirOrderUntilTheyAreCleared) {
  for (const char* id : {"c", "a", "b"}) {
    store.insert(someRecado(id));
    store.deleteRecado(id);
  }
  other.execute(
      "UPDATE recado_apagado SET deleted_at = 1 WHERE id = 'a';"
      "INSERT INTO recado_apagado VALUES (x'00', 0)");
  const auto ids = store.pendingDeletions(-1);
  EXPECT_EQ(ids, (std::vector<std::string>{"a", "c", "b"}));
  EXPECT_EQ(store.pendingDeletions(2), std::vector<std::string>{"a"});
  store.clearDeletions({"a", "desconhecido", "b"});
  EXPECT_EQ(store.pendingDeletions(10), std::vector<std::string>{"c"});
}

TEST_F(Sync, OffersEverythingAgainToAFreshRemoteCopy) {
  for (const char* id : {"limpo", "marcado", "apagado"}) store.insert(someRecado(id));
  store.markUploaded({{.id = "limpo", .version = 2}});
  store.claim({.id = "marcado", .by = "IA"});
  store.deleteRecado("apagado");
  store.markAllForUpload();
  EXPECT_EQ(dirty("limpo"), 1);
  EXPECT_EQ(dirty("marcado"), 4);
  EXPECT_TRUE(store.pendingDeletions(-1).empty());
}

TEST_F(Sync, KeepsWhatSucceededBeforeAFailure) {
  for (const char* id : {"a", "b", "c"}) store.insert(someRecado(id));
  store.deleteRecado("c");
  other.execute(
      "CREATE TRIGGER quebra BEFORE UPDATE ON recado WHEN OLD.id = 'b'"
      " BEGIN SELECT RAISE(ABORT, 'quebrado'); END");
  EXPECT_EQ(databaseError([&] {
              store.markUploaded({{.id = "a", .version = 2}, {.id = "b", .version = 2}});
            }),
            "Erro no banco: quebrado");
  EXPECT_EQ(dirty("a"), 0);
  EXPECT_EQ(databaseError([&] { store.markAllForUpload(); }), "Erro no banco: quebrado");
  EXPECT_EQ(store.pendingDeletions(-1).size(), 1U) << "forgotten though nothing was marked";
}

TEST_F(Sync, KeepsMetadataAndTellsAnEmptyTextFromNone) {
  EXPECT_EQ(store.meta("seeded"), "1");
  EXPECT_EQ(store.meta("cursor"), std::nullopt);
  store.setMeta("cursor", "antigo");
  store.setMeta("cursor", "");
  EXPECT_EQ(store.meta("cursor"), "");
  store.setMeta("cursor", {});
  store.setMeta("cursor", {});
  EXPECT_EQ(number("SELECT COUNT(*) FROM meta WHERE key = 'cursor'"), 0);
  other.execute("INSERT INTO meta VALUES ('nulo', NULL)");
  EXPECT_EQ(store.meta("nulo"), std::nullopt);
}

using IDs = std::vector<std::string>;

/// The remote side, and the rounds of a synchroniser between it and one copy of an inbox.
class Remote {
 public:
  /// Uploads what `store` offers; `meanwhile` happens between the reading and the marking. Returns
  /// the ids, deletions with a "-".
  template <class Meanwhile>
  IDs upload(TroviStore& store, Meanwhile&& meanwhile) {
    IDs offered;
    std::vector<UploadedVersion> uploaded;
    for (const auto& [recado, updatedAt, version] : store.pendingUploads(-1)) {
      states_[recado.id] = {recado, updatedAt};
      offered.push_back(recado.id);
      uploaded.push_back({.id = recado.id, .version = version});
    }
    const auto deleted = store.pendingDeletions(-1);
    for (const std::string& id : deleted) {
      states_.erase(id);
      offered.push_back("-" + id);
    }
    meanwhile();
    store.markUploaded(uploaded);
    store.clearDeletions(deleted);
    return offered;
  }
  IDs upload(TroviStore& store) {
    return upload(store, [] {});
  }

  /// Brings `store` the messages it lacks and the states that are newer; returns the ids.
  IDs download(TroviStore& store) {
    IDs changed;
    for (const auto& [id, state] : states_) {
      if (!store.recado(id)) {
        store.insert(state.recado);
        for (const auto& upload : store.pendingUploads(-1)) {
          if (upload.recado.id == id) store.markUploaded({{.id = id, .version = upload.version}});
        }
        changed.push_back(id);
        continue;
      }
      const Recado& recado = state.recado;
      if (store.applyRemoteStatus({.id = id,
                                   .status = recado.status,
                                   .claimedBy = recado.claimedBy,
                                   .claimedAt = recado.claimedAt,
                                   .result = recado.result,
                                   .resolvedAt = recado.resolvedAt,
                                   .updatedAt = state.updatedAt})) {
        changed.push_back(id);
      }
    }
    return changed;
  }

  std::map<std::string, Recado> recados() const {
    std::map<std::string, Recado> recados;
    for (const auto& [id, state] : states_) recados.emplace(id, state.recado);
    return recados;
  }

  /// Someone else changes the remote copy.
  void resolve(const std::string& id, double updatedAt) {
    auto& [recado, time] = states_.at(id);
    recado.status = RecadoStatus::resolvido;
    recado.result = "resolvido em outro lugar";
    recado.resolvedAt = dateSince1970(updatedAt);
    time = updatedAt;
  }

 private:
  struct State {
    Recado recado;
    double updatedAt;
  };
  std::map<std::string, State> states_;
};

/// A Mac's inbox with an assistant at work in it, the remote side, and a second Mac's copy; all
/// three hold the messages "a", "b" and "c".
class Rounds : public Inbox {
 protected:
  void SetUp() override {
    for (const char* id : {"a", "b", "c"}) store.insert(someRecado(id));
    EXPECT_EQ(remote.upload(store), (IDs{"a", "b", "c"}));
    EXPECT_EQ(remote.download(copy), (IDs{"a", "b", "c"}));
  }
  /// What holds after every round: nothing is lost, nothing that is clean is offered, and nothing
  /// that was taken over comes back.
  void expectInStep(TroviStore& inbox) {
    std::map<std::string, Recado> contents;
    for (Recado& recado : inbox.recados({.limit = -1})) contents.emplace(recado.id, recado);
    EXPECT_EQ(contents, remote.recados());
    EXPECT_EQ(remote.upload(inbox), IDs{});
    EXPECT_EQ(remote.download(inbox), IDs{});
  }

  TroviStore assistant{file};
  TroviStore copy{folder.path() / "copia.sqlite"};
  Remote remote;
  const double later = secondsSince1970(now()) + 1000;
};

TEST_F(Rounds, LoseNoChangeThatComesDuringAnUpload) {
  store.setDestino({.id = "b", .destinoID = "trabalho"});
  const auto resolved = [&] { assistant.resolve({.id = "b", .result = "feito"}); };
  EXPECT_EQ(remote.upload(store, resolved), IDs{"b"});
  EXPECT_EQ(remote.upload(store), IDs{"b"});
  expectInStep(store);
}

TEST_F(Rounds, TakeOverANewerStateWithoutOfferingItBack) {
  remote.resolve("a", later);
  EXPECT_EQ(remote.download(store), IDs{"a"});
  EXPECT_EQ(remote.download(copy), IDs{"a"});
  expectInStep(store);
  expectInStep(copy);
}

TEST_F(Rounds, LeaveTheLocalStateWhereTheRemoteOneIsOlder) {
  remote.resolve("a", 1);
  EXPECT_EQ(remote.download(store), IDs{});
  EXPECT_EQ(store.recado("a"), someRecado("a"));
  assistant.claim({.id = "a", .by = "IA"});
  EXPECT_EQ(remote.upload(store), IDs{"a"});
  expectInStep(store);
}

TEST_F(Rounds, KeepLocalContentWaitingUnderATakenOverState) {
  store.setDestino({.id = "c", .destinoID = "trabalho"});
  remote.resolve("c", later);
  EXPECT_EQ(remote.download(store), IDs{"c"});
  EXPECT_EQ(remote.upload(store), IDs{"c"});
  EXPECT_EQ(remote.recados().at("c").status, RecadoStatus::resolvido);
  expectInStep(store);
}

TEST_F(Rounds, DeleteWhatIsDeletedDuringAnUpload) {
  store.reopen("b");
  EXPECT_EQ(remote.upload(store, [&] { assistant.deleteRecado("b"); }), IDs{"b"});
  EXPECT_EQ(remote.upload(store), IDs{"-b"});
  expectInStep(store);
}

}  // namespace
}  // namespace trovi::tests
