#include "Inbox.h"

namespace trovi {
namespace {

using tests::databaseError;
using Texts = std::vector<std::string>;

class Sync : public tests::Inbox {};

TEST_F(Sync, OffersMarkedMessagesOldestFirstWithTheTimeOfTheirState) {
  store.insert(tests::someRecado("nova", 3000));
  store.insert(tests::someRecado("velha", 1000));
  store.insert(tests::someRecado("sem estado", 2000));
  other.execute(
      "UPDATE recado SET updated_at = 5000.5 WHERE id = 'nova';"
      "UPDATE recado SET updated_at = NULL, dirty = 1 WHERE id = 'sem estado';");
  const auto uploads = store.pendingUploads(-1);
  EXPECT_EQ(uploads.at(0).recado, tests::someRecado("velha", 1000));
  EXPECT_EQ(uploads.at(1).updatedAt, 2000);
  EXPECT_EQ(uploads.at(1).version, 1);
  EXPECT_EQ(uploads.at(2).updatedAt, 5000.5);
  store.markUploaded(std::vector<UploadedVersion>{{.id = "velha", .version = 1}});  // not as it is
  store.markUploaded({store.pendingUploads(1).at(0)});
  EXPECT_EQ(store.pendingUploads(1).at(0).recado.id, "sem estado");
}

TEST_F(Sync, AppliesOnlyANewerStateToAMessageThatIsOpenToIt) {
  other.execute(
      "INSERT INTO recado(id, created_at, status) VALUES ('old', 0, 'pendente'), ('same', 0, "
      "'pendente'), ('p', 0, 'pendente'), ('g', 0, 'pego'), ('r', 0, 'resolvido'), ('n', 0, "
      "'pego'), ('t', 0, 'transcrevendo'), ('f', 0, 'falhou');"
      "UPDATE recado SET claimed_by = 'A', claimed_at = 3, result = 'x', resolved_at = 4, "
      "updated_at = IIF(id = 'n', NULL, 2000), dirty = 7");
  RemoteStatus remote{.id = "", .status = RecadoStatus::resolvido, .updatedAt = 1999.5};
  for (const char* id : {"old", "same", "p", "g", "r", "n", "t", "f", "?"}) {
    remote.id = id;
    EXPECT_EQ(store.applyRemoteStatus(remote), std::string("pgrn").find(id) != std::string::npos);
    remote.updatedAt = std::min(remote.updatedAt + 0.5, 2000.5);
  }
  const std::string left = "A3.0x4.02000.07;";
  const std::string taken = "resolvido2000.57;";
  const std::string state = "IFNULL(claimed_by || claimed_at || result || resolved_at, '')";
  EXPECT_EQ(each("status || " + state + " || updated_at || dirty"),
            "pendente" + left + "pendente" + left + taken + taken + taken + taken +
                "transcrevendo" + left + "falhou" + left);
}

TEST_F(Sync, ReportsDeletionsInTheirOrder) {
  other.execute("INSERT INTO recado_apagado VALUES ('c', 3), ('a', 1), ('b', 4), (x'00', 0)");
  EXPECT_EQ(store.pendingDeletions(-1), (Texts{"a", "c", "b"}));
  EXPECT_EQ(store.pendingDeletions(2), Texts{"a"});
}

TEST_F(Sync, OffersEverythingAgainToAFreshRemoteCopyAndKeepsWhatSucceededBeforeAFailure) {
  for (const char* id : {"a", "b", "c"}) store.insert(tests::someRecado(id));
  store.deleteRecado("c");
  other.execute(
      "CREATE TRIGGER quebra BEFORE UPDATE ON recado WHEN OLD.id = 'b'"
      " BEGIN SELECT RAISE(ABORT, 'quebrado'); END");
  const std::vector<UploadedVersion> both{{.id = "a", .version = 2}, {.id = "b", .version = 2}};
  EXPECT_EQ(databaseError([&] { store.markUploaded(both); }), "Erro no banco: quebrado");
  EXPECT_EQ(each("id || dirty"), "a0;b2;");
  EXPECT_EQ(databaseError([&] { store.markAllForUpload(); }), "Erro no banco: quebrado");
  EXPECT_EQ(store.pendingDeletions(-1), Texts{"c"}) << "forgotten though nothing was marked";
  other.execute("DROP TRIGGER quebra");
  store.markAllForUpload();
  EXPECT_EQ(each("id || dirty"), "a1;b3;");
  EXPECT_TRUE(store.pendingDeletions(-1).empty());
}

TEST_F(Sync, KeepsMetadataAndTellsAnEmptyTextFromNone) {
  EXPECT_EQ(store.meta("cursor"), std::nullopt);
  store.setMeta("cursor", "");
  EXPECT_EQ(store.meta("cursor"), "");
  store.setMeta("cursor", {});
  EXPECT_EQ(each("key", "meta"), "seeded;");
}

}  // namespace
}  // namespace trovi
