#include <gtest/gtest.h>

#include "Server.h"
#include "Session.h"
#include "TemporaryFolder.h"

namespace trovi::mcp {
namespace {

TEST(Sessions, GoAsTheyWereRecorded) {
  for (const tests::Session& session : tests::recordedSessions()) {
    const tests::TemporaryFolder folder;
    Server server(folder.path() / "trovi.sqlite");
    Database other(folder.path() / "trovi.sqlite");
    for (const tests::SessionStep& step : session.steps) {
      SCOPED_TRACE(session.file.string() + ":" + std::to_string(step.line));
      if (!step.sql.empty()) {
        other.execute(step.sql);
        continue;
      }
      const auto reply = server.answer(step.request);
      ASSERT_EQ(reply.has_value(), step.reply.has_value());
      if (!reply) continue;
      platform::TextBuffer text;
      platform::appendJSON(text, *reply);
      EXPECT_TRUE(tests::comparable(text.view()) == *platform::parseJSON(*step.reply))
          << text.view();
    }
  }
}

}  // namespace
}  // namespace trovi::mcp
