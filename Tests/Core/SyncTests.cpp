#include "Inbox.h"

namespace trovi {
namespace {

using Texts = std::vector<std::string>;

/// Three messages, of which "b" is the oldest.
class Sync : public tests::Inbox {
 protected:
  Sync() {
    for (const auto& [id, createdAt] : {std::pair{"a", 3000}, {"b", 1000}, {"A", 2000}}) {
      store.insert(tests::someRecado(id, createdAt));
    }
  }

  /// The ids and versions offered for upload.
  std::string offered(std::int64_t limit = -1) {
    std::string found;
    for (const auto& upload : store.pendingUploads(limit)) {
      found += upload.recado.id + std::to_string(upload.version) + ";";
    }
    return found;
  }
};

TEST_F(Sync, OffersMarkedMessagesOldestRecordingFirst) {
  EXPECT_EQ(offered(), "b2;A2;a2;");
  EXPECT_EQ(offered(2), "b2;A2;");
  EXPECT_EQ(offered(0), "");
  other.execute("UPDATE recado SET dirty = IIF(id = 'b', 0, -1) WHERE id <> 'A'");
  EXPECT_EQ(offered(), "A2;");
  // With the time of the state, or else of the recording.
  other.execute(
      "UPDATE recado SET updated_at = IIF(id = 'b', 500.5, NULL), dirty = 2;"
      "UPDATE recado SET created_at = 'x', dirty = 'x' WHERE id = 'a'");
  const auto uploads = store.pendingUploads(-1);
  EXPECT_EQ(uploads.at(0).recado, tests::someRecado("b", 1000));
  EXPECT_EQ(uploads.at(0).updatedAt, 500.5);
  EXPECT_EQ(uploads.at(1).updatedAt, 2000);
  EXPECT_EQ(uploads.at(2).updatedAt, 0);
  EXPECT_EQ(uploads.at(2).version, 0);
}

TEST_F(Sync, MarksAMessageAsUploadedOnlyInTheVersionThatWasRead) {
  store.setStatus("a", RecadoStatus::transcrevendo);
  store.markUploaded({{.id = "a", .version = 2}, {.id = "A", .version = 3}});
  EXPECT_EQ(offered(), "b2;A2;a3;");
  refuse("UPDATE ON recado WHEN OLD.id = 'A'");
  const std::vector<UploadedVersion> all{{"x", 2}, {"a", 3}, {"A", 2}, {"b", 2}};
  EXPECT_THROW(store.markUploaded(all), DatabaseError);
  EXPECT_EQ(offered(), "b2;A2;");
}

TEST_F(Sync, ReportsDeletionsInTheirOrderUntilTheyAreCleared) {
  other.execute("INSERT INTO recado_apagado VALUES ('c', 3), ('x', 1), ('X', 4), (x'00', 0)");
  EXPECT_EQ(store.pendingDeletions(-1), (Texts{"x", "c", "X"}));
  EXPECT_EQ(store.pendingDeletions(2), Texts{"x"});
  refuse("DELETE ON recado_apagado WHEN OLD.id = 'X'");
  EXPECT_THROW(store.clearDeletions({"%", "x", "X", "c"}), DatabaseError);
  EXPECT_EQ(store.pendingDeletions(-1), (Texts{"c", "X"}));
}

TEST_F(Sync, OffersEverythingAgainToAFreshRemoteCopy) {
  other.execute("UPDATE recado SET dirty = 0 WHERE id = 'b'");
  store.deleteRecado("A");
  refuse("UPDATE ON recado WHEN OLD.id = 'a'");
  EXPECT_THROW(store.markAllForUpload(), DatabaseError);
  EXPECT_EQ(store.pendingDeletions(-1), Texts{"A"}) << "forgotten though nothing was marked";
  other.execute("DROP TRIGGER refusal");
  store.markAllForUpload();
  EXPECT_EQ(offered(), "b1;a3;");
  EXPECT_EQ(store.pendingDeletions(-1), Texts());
}

TEST_F(Sync, AppliesARemoteStateIfItIsNewerAndDoesNotOfferItAgain) {
  RemoteStatus remote{"a", RecadoStatus::resolvido, "C", dateSince1970(3),
                      "r", dateSince1970(4),        0};
  const auto apply = [&](const std::string& id, double updatedAt) {
    remote.id = id;
    remote.updatedAt = updatedAt;
    return store.applyRemoteStatus(remote);
  };
  other.execute("UPDATE recado SET updated_at = 2000, dirty = 7");
  EXPECT_FALSE(apply("a", 1999.5));
  EXPECT_FALSE(apply("a", 2000));
  EXPECT_FALSE(apply("x", 9999));
  EXPECT_TRUE(apply("A", 2000.5));
  EXPECT_EQ(each("id || ' ' || status || ' ' || updated_at || ' ' || dirty"),
            "a pendente 2000.0 7;b pendente 2000.0 7;A resolvido 2000.5 7;");
  EXPECT_EQ(each("claimed_by || ' ' || claimed_at || ' ' || result || ' ' || resolved_at"),
            "C 3.0 r 4.0;");  // of one message only
  EXPECT_TRUE(
      store.applyRemoteStatus({.id = "A", .status = RecadoStatus::pendente, .updatedAt = 2001}));
  EXPECT_EQ(store.recado("A"), tests::someRecado("A", 2000));  // what is absent there is cleared
  other.execute("UPDATE recado SET updated_at = NULL");
  EXPECT_TRUE(apply("b", -1));
  for (const RecadoStatus status : allCases()) {
    const bool isOpenToIt = status != RecadoStatus::transcrevendo && status != RecadoStatus::falhou;
    store.setStatus("a", status);
    EXPECT_EQ(apply("a", 4e9), isOpenToIt) << rawValue(status);
  }
}

TEST_F(Sync, KeepsMetadataAndTellsAnEmptyTextFromNone) {
  for (const auto& [key, value] : {std::pair{"k", "1"}, {"K", "2"}, {"k", ""}}) {
    store.setMeta(key, value);
  }
  EXPECT_EQ(store.meta("k"), "");
  EXPECT_EQ(store.meta("K"), "2");
  store.setMeta("k", {});
  EXPECT_EQ(store.meta("k"), std::nullopt);
  EXPECT_EQ(each("key || IFNULL(value, '-')", "meta"), "seeded1;K2;");
  other.execute("UPDATE meta SET value = NULL");
  EXPECT_EQ(store.meta("K"), std::nullopt);
}

}  // namespace
}  // namespace trovi
