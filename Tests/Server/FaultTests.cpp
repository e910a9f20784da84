// A machine that fails under the server: it says so, keeps what it answered, and goes on.
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <tuple>

#include "FaultyDisk.h"
#include "Inbox.h"
#include "Server.h"

namespace trovi::mcp {
namespace {

using std::filesystem::path;
using std::filesystem::perms;
using tests::FaultyDisk;

enum class Answer { done, failed };

constexpr const char* list = R"("inbox_list","arguments":{"status":"todos"})";
constexpr const char* claim = R"("recado_claim","arguments":{"id":"A"})";
constexpr const char* resolve = R"("recado_resolve","arguments":{"id":"A","resultado":"feito"})";

/// Success, or the failure of the store with a message of SQLite's.
Answer ask(Server& server, const std::string& request,
           const std::vector<std::string_view>& messages) {
  const auto reply =
      server.answer(R"({"id":1,"method":"tools/call","params":{"name":)" + request + "}}");
  const platform::JSONObject& result = *reply->object("result");
  if (!*result.find("isError")->boolean()) return Answer::done;
  const std::string text(*result.find("content")->array()->front().object()->text("text"));
  const bool expected =
      std::any_of(messages.begin(), messages.end(), [&](std::string_view message) {
        return text == "Erro no Trovi: Erro no banco: " + std::string(message);
      });
  EXPECT_TRUE(expected) << text;
  return Answer::failed;
}

/// An inbox with the message A in a folder of its own.
struct OneMessage {
  OneMessage() { TroviStore(file).insert(tests::someRecado("A")); }

  tests::TemporaryFolder folder;
  path file = folder.path() / "trovi.sqlite";
};

void expectSound(TroviStore& store) {
  const auto check = store.db().query("PRAGMA integrity_check");
  EXPECT_EQ(check.at(0).stringValue("integrity_check"), "ok");
}

/// Runs `session` with every fault of the disk at every operation, until it does not come any more.
/// The session mends the disk before it looks at what is left.
void failEverywhere(const std::function<void(FaultyDisk&)>& session) {
  using Operation = FaultyDisk::Operation;
  constexpr int never = 1000;
  FaultyDisk disk;
  for (const auto& [name, operation, code] :
       {std::tuple{"reading", Operation::read, SQLITE_IOERR_READ},
        {"writing", Operation::write, SQLITE_IOERR_WRITE},
        {"a full disk", Operation::write, SQLITE_FULL},
        {"syncing", Operation::sync, SQLITE_IOERR_FSYNC}}) {
    for (const bool lasting : {false, true}) {
      int after = 0;
      do {
        SCOPED_TRACE(std::string(name) + (lasting ? " for good" : " once") + " after " +
                     std::to_string(after));
        disk.breakAfter(after, {operation, code, lasting});
        session(disk);
      } while (disk.hasBroken() && ++after < never);
      EXPECT_GT(after, 0) << name;
      EXPECT_LT(after, never) << name;
    }
  }
}

TEST(Disk, FailsAnywhereInASessionAndNothingAnsweredIsLost) {
  failEverywhere([](FaultyDisk& disk) {
    const std::vector<std::string_view> messages{"disk I/O error", "database or disk is full",
                                                 "unable to open database file"};
    disk.mend();
    const OneMessage inbox;
    std::optional<Server> server;
    Answer claimed = Answer::failed;
    Answer resolved = Answer::failed;
    disk.arm();
    try {
      server.emplace(inbox.file);
      ask(*server, list, messages);
      claimed = ask(*server, claim, messages);
      resolved = ask(*server, resolve, messages);
    } catch (const DatabaseError&) {  // the end of the program, in one line
    }
    disk.mend();

    TroviStore survivor(inbox.file);
    expectSound(survivor);
    const Recado found = survivor.recado("A").value();
    EXPECT_TRUE(claimed == Answer::failed || found.claimedBy == "IA");
    EXPECT_TRUE(resolved == Answer::failed || found.result == "feito");
    if (!server) server.emplace(inbox.file);
    EXPECT_EQ(ask(*server, resolve, {}), Answer::done);
  });
}

TEST(Disk, FailsAnywhereInTheFirstStartAndTheNextOneGoesOn) {
  failEverywhere([](FaultyDisk& disk) {
    const tests::TemporaryFolder folder;
    try {
      const Server server(folder.path() / "trovi.sqlite");
    } catch (const DatabaseError&) {
    }
    disk.mend();
    TroviStore store(folder.path() / "trovi.sqlite");
    expectSound(store);
    EXPECT_EQ(store.meta("seeded"), "1");
    const auto destinos = store.destinos().size();
    EXPECT_TRUE(destinos >= 3 && destinos <= 6) << destinos;  // some may have come twice
    store.insert(tests::someRecado("A"));
    EXPECT_EQ(store.pendingUploads(-1).at(0).version, 2);
  });
}

/// While it lives, modes of files count, which they do not for root.
class AsAnyone {
 public:
  AsAnyone() { EXPECT_EQ(root_ ? seteuid(65534) : 0, 0); }
  ~AsAnyone() { EXPECT_EQ(root_ ? seteuid(0) : 0, 0); }
  AsAnyone(const AsAnyone&) = delete;
  AsAnyone& operator=(const AsAnyone&) = delete;

 private:
  bool root_ = geteuid() == 0;
};

void allow(const path& at, perms mode) { std::filesystem::permissions(at, mode); }

constexpr perms readable = perms::owner_read | perms::group_read | perms::others_read;
constexpr perms enterable = perms::owner_exec | perms::group_exec | perms::others_exec;
constexpr perms writable = perms::owner_write | perms::group_write | perms::others_write;

TEST(ReadOnly, FolderWithoutAnOpenInboxEndsTheStart) {
  const OneMessage inbox;
  allow(inbox.folder.path(), readable | enterable);
  {
    const AsAnyone anyone;
    EXPECT_EQ(tests::databaseError([&] { const Server server(inbox.file); }),
              "Erro no banco: attempt to write a readonly database");
  }
  allow(inbox.folder.path(), readable | enterable | writable);
}

TEST(ReadOnly, FileIsReadAndRefusesChanges) {
  const OneMessage inbox;
  allow(inbox.folder.path(), readable | enterable | writable);
  allow(inbox.file, readable);
  const AsAnyone anyone;
  Server server(inbox.file);
  EXPECT_EQ(ask(server, list, {}), Answer::done);
  EXPECT_EQ(ask(server, claim, {"attempt to write a readonly database"}), Answer::failed);
}

}  // namespace
}  // namespace trovi::mcp
