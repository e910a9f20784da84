// A machine that fails under the server: it says so, keeps what it answered, and goes on.
#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>
#include <optional>
#include <string>

#include "FaultyDisk.h"
#include "Inbox.h"
#include "Server.h"
#include "ToolCall.h"

namespace trovi::mcp {
namespace {

using std::filesystem::path;
using std::filesystem::perms;
using tests::FaultyDisk;

constexpr const char* claim = R"({"id":"A"})";
constexpr const char* resolve = R"({"id":"A","resultado":"feito"})";

/// The text of a success; absent for a failure of the store, whose message must be `message`.
std::optional<std::string> ask(Server& server, const std::string& tool,
                               const std::string& arguments, const std::string& message) {
  platform::TextBuffer reply;
  platform::appendJSON(reply, server.answer(tests::toolCall(tool, arguments)).value());
  const auto read = platform::parseJSON(reply.view());
  const platform::JSONObject& result = *read->object()->object("result");
  std::string text(*result.find("content")->array()->front().object()->text("text"));
  if (!*result.find("isError")->boolean()) return text;
  EXPECT_EQ(text, "Erro no Trovi: Erro no banco: " + message);
  return {};
}

/// An inbox with the message A in a folder of its own.
struct OneMessage {
  OneMessage() { TroviStore(file).insert(tests::someRecado("A")); }

  tests::TemporaryFolder folder;
  path file = folder.path() / "trovi.sqlite";
};

/// Runs `session(disk, message)` with every fault of the disk at every operation, until it does not
/// come any more; SQLite's `message` says which. The session mends the disk before it looks at what
/// is left.
void failEverywhere(const std::function<void(FaultyDisk&, const std::string&)>& session) {
  using Operation = FaultyDisk::Operation;
  struct Case {
    Operation operation;
    int code;
    const char* message;
  };
  constexpr Case cases[] = {{Operation::read, SQLITE_IOERR_READ, "disk I/O error"},
                            {Operation::write, SQLITE_IOERR_WRITE, "disk I/O error"},
                            {Operation::write, SQLITE_FULL, "database or disk is full"},
                            {Operation::sync, SQLITE_IOERR_FSYNC, "disk I/O error"}};
  constexpr int never = 1000;
  FaultyDisk disk;
  for (const auto& [operation, code, message] : cases) {
    for (const bool lasting : {false, true}) {
      int after = 0;
      do {
        SCOPED_TRACE(std::to_string(code) + (lasting ? " for good" : " once") + " after " +
                     std::to_string(after));
        disk.breakAfter(after, {operation, code, lasting});
        session(disk, message);
      } while (disk.hasBroken() && ++after < never);
      EXPECT_GT(after, 0) << code;
      EXPECT_LT(after, never) << code;
    }
  }
}

TEST(Disk, FailsAnywhereInASessionAndNothingAnsweredIsLost) {
  failEverywhere([](FaultyDisk& disk, const std::string& message) {
    disk.mend();
    const OneMessage inbox;
    std::optional<Server> server;
    std::optional<std::string> claimed;
    std::optional<std::string> resolved;
    disk.arm();
    try {
      server.emplace(inbox.file);
      const auto list = ask(*server, "inbox_list", R"({"status":"todos"})", message);
      EXPECT_TRUE(!list || list->find(R"("id": "A")") != std::string::npos) << *list;
      claimed = ask(*server, "recado_claim", claim, message);
      resolved = ask(*server, "recado_resolve", resolve, message);
    } catch (const DatabaseError& error) {  // the end of the program, in one line
      EXPECT_TRUE(error.description().ends_with(" banco: " + message)) << error.description();
    }
    disk.mend();

    TroviStore survivor(inbox.file);
    tests::expectSound(survivor.db());
    const Recado found = survivor.recado("A").value();
    EXPECT_TRUE(!claimed || found.claimedBy == "IA");
    EXPECT_TRUE(!resolved || found.result == "feito");
    if (!server) server.emplace(inbox.file);
    EXPECT_TRUE(ask(*server, "recado_resolve", resolve, "none"));
  });
}

TEST(Disk, FailsAnywhereInTheFirstStartAndTheNextOneGoesOn) {
  failEverywhere([](FaultyDisk& disk, const std::string& message) {
    const tests::TemporaryFolder folder;
    const path file = folder.path() / "trovi.sqlite";
    bool opened = false;
    try {
      const Server server(file);
      opened = true;
    } catch (const DatabaseError& error) {
      // A column that could not be added is missed by the next statement.
      EXPECT_TRUE(error.description().ends_with(" banco: " + message) ||
                  error.description() == "Erro no banco: no such column: updated_at")
          << error.description();
    }
    disk.mend();
    if (opened) {
      Database found(file);
      EXPECT_EQ(found.query("SELECT 1 FROM sqlite_schema WHERE name NOT LIKE 'sqlite%'").size(),
                9U);
      EXPECT_EQ(found.query("SELECT 1 FROM meta").size(), 1U);
    }
    TroviStore store(file);
    tests::expectSound(store.db());
    EXPECT_EQ(store.meta("seeded"), "1");
    const auto destinos = store.destinos().size();
    EXPECT_TRUE(destinos >= 3 && destinos <= 6) << destinos;  // some may have come twice
    store.insert(tests::someRecado("A"));
    EXPECT_EQ(store.pendingUploads(-1).at(0).version, 2);
  });
}

TEST(Memory, OfSQLiteThatIsGoneRefusesATextInsteadOfForgettingIt) {
  const OneMessage inbox;
  Server server(inbox.file);
  const std::string large = R"({"id":"A","resultado":")" + std::string(8 << 20, 'x') + "\"}";
  sqlite3_hard_heap_limit64(sqlite3_memory_used() + (1 << 20));
  EXPECT_FALSE(ask(server, "recado_resolve", large, "out of memory"));
  sqlite3_hard_heap_limit64(0);
  EXPECT_EQ(TroviStore(inbox.file).recado("A"), tests::someRecado("A"));
  EXPECT_TRUE(ask(server, "recado_resolve", large, "none"));
}

/// While it lives, modes of files count, which they do not for root.
class AsAnyone {
 public:
  AsAnyone() : isRoot_(geteuid() == 0) {
    if (isRoot_) became_ = seteuid(65534) == 0;
  }
  ~AsAnyone() {
    if (isRoot_ && became_) {
      EXPECT_EQ(seteuid(0), 0);
    }
  }
  AsAnyone(const AsAnyone&) = delete;
  AsAnyone& operator=(const AsAnyone&) = delete;

  /// Not in a container with one user only, nor below a folder that is root's alone.
  bool reaches(const path& file) const {
    std::error_code unreachable;
    return became_ && std::filesystem::exists(file, unreachable);
  }

 private:
  bool isRoot_;
  bool became_ = true;
};

void allow(const path& at, perms mode) { std::filesystem::permissions(at, mode); }

constexpr perms readable = perms::owner_read | perms::group_read | perms::others_read;
constexpr perms enterable = perms::owner_exec | perms::group_exec | perms::others_exec;
constexpr perms writable = perms::owner_write | perms::group_write | perms::others_write;

TEST(ReadOnly, FolderWithoutAnOpenInboxEndsTheStart) {
  const OneMessage inbox;
  allow(inbox.folder.path(), readable | enterable);
  std::string error = "unreachable";
  {
    const AsAnyone anyone;
    if (anyone.reaches(inbox.file)) {
      error = tests::databaseError([&] { const Server server(inbox.file); });
    }
  }
  allow(inbox.folder.path(), readable | enterable | writable);
  if (error == "unreachable") GTEST_SKIP() << "there is nobody else here to try it";
  EXPECT_EQ(error, "Erro no banco: attempt to write a readonly database");
}

TEST(ReadOnly, FileIsReadAndRefusesChanges) {
  const OneMessage inbox;
  allow(inbox.folder.path(), readable | enterable | writable);
  allow(inbox.file, readable);
  const AsAnyone anyone;
  if (!anyone.reaches(inbox.file)) GTEST_SKIP() << "there is nobody else here to try it";
  Server server(inbox.file);
  EXPECT_TRUE(ask(server, "inbox_list", "{}", "none"));
  EXPECT_FALSE(ask(server, "recado_claim", claim, "attempt to write a readonly database"));
}

}  // namespace
}  // namespace trovi::mcp
