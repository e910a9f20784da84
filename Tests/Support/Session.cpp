#include "Session.h"

#include <algorithm>
#include <fstream>
#include <stdexcept>

namespace trovi::tests {
namespace {

using platform::JSONArray;
using platform::JSONObject;
using platform::JSONValue;

Session read(const std::filesystem::path& file) {
  Session session{.file = file, .steps = {}};
  std::ifstream in(file);
  int number = 0;
  for (std::string line; std::getline(in, line);) {
    ++number;
    if (line.empty() || line[0] == '#') continue;
    const std::string content = line.size() > 2 ? line.substr(2) : "";
    if (line[0] == '!') {
      session.steps.push_back({.line = number, .sql = content, .request = {}, .reply = {}});
    } else if (line[0] == '>') {
      session.steps.push_back({.line = number, .sql = {}, .request = content, .reply = {}});
    } else if (line[0] == '<' && !session.steps.empty()) {
      session.steps.back().reply = content;
    } else {
      throw std::runtime_error(file.string() + ":" + std::to_string(number) + ": " + line);
    }
  }
  return session;
}

}  // namespace

std::vector<Session> recordedSessions() {
  std::vector<Session> sessions;
  for (const auto& entry : std::filesystem::directory_iterator(TROVI_SESSIONS)) {
    if (entry.path().extension() == ".session") sessions.push_back(read(entry.path()));
  }
  if (sessions.empty()) throw std::runtime_error("no sessions in " TROVI_SESSIONS);
  std::sort(sessions.begin(), sessions.end(),
            [](const Session& a, const Session& b) { return a.file < b.file; });
  return sessions;
}

JSONValue comparable(std::string_view reply) {
  const auto value = platform::parseJSON(reply);
  if (!value) throw std::runtime_error("not JSON: " + std::string(reply));
  const JSONObject* message = value->object();
  const JSONObject* result = message != nullptr ? message->object("result") : nullptr;
  const JSONValue* content = result != nullptr ? result->find("content") : nullptr;
  if (content == nullptr || content->array() == nullptr || content->array()->size() != 1) {
    return *value;
  }
  const JSONObject* item = content->array()->front().object();
  const auto text = item != nullptr ? item->text("text") : std::nullopt;
  const auto payload = text ? platform::parseJSON(*text) : std::nullopt;
  if (!payload) return *value;

  // The same message with the payload in the text's place.
  const auto with = [](const JSONObject& object, std::string_view key, JSONValue replaced) {
    std::vector<JSONObject::Member> members(object.begin(), object.end());
    members.emplace_back(key, std::move(replaced));
    return JSONObject(std::move(members));
  };
  const JSONArray items{with(*item, "text", *payload)};
  return with(*message, "result", with(*result, "content", items));
}

}  // namespace trovi::tests
