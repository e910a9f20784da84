#include "Targets.h"

#include <cstdio>
#include <memory>
#include <string>

#include "JSON.h"
#include "LineReader.h"
#include "Server.h"
#include "TemporaryFolder.h"
#include "TroviCore/Database.h"
#include "Unicode.h"

namespace trovi::fuzz {
namespace {

using platform::JSONObject;
using platform::JSONValue;

void require(bool holds, const char* promise) {
  if (!holds) throw Broken(promise);
}

std::string written(const JSONObject& object) {
  platform::TextBuffer text;
  platform::appendJSON(text, object);
  return std::string(text.view());
}

/// Has the server answer, and checks the reply against the line.
void checkAnswer(mcp::Server& server, std::string_view line) {
  std::string repaired;
  const auto message =
      platform::parseJSON(platform::trimmedBlanks(platform::repairedUTF8(line, repaired)));
  const JSONObject* request = message ? message->object() : nullptr;
  const JSONValue* id = request != nullptr ? request->find("id") : nullptr;

  const auto answer = server.answer(line);
  require(answer.has_value() == (id != nullptr && !id->isNull()),
          "whatever is a request gets a reply, and nothing else does");
  if (!answer) return;
  const std::string text = written(*answer);
  require(text.find_first_of("\r\n") == std::string::npos, "a reply is one line");
  require(platform::repairedUTF8(text) == text, "a reply is UTF-8");
  const auto reply = platform::parseJSON(text);
  require(reply && reply->object() != nullptr, "a reply is a JSON object");
  const JSONObject& members = *reply->object();
  const JSONObject* result = members.object("result");
  require(std::distance(members.begin(), members.end()) == 3 && members.text("jsonrpc") == "2.0" &&
              *members.find("id") == *id &&
              (result == nullptr) == (members.object("error") != nullptr),
          "a reply has its three members");
}

constexpr const char* foreignRows = R"(
DELETE FROM recado;
INSERT INTO recado(id, created_at, duration, transcript, title, status, result, language) VALUES
  ('1', 9e999, 9e999, x'ff', CAST(x'61ff62' AS TEXT), 'pendente', x'41', CAST(x'610062' AS TEXT)),
  ('3', 'ontem', -0.5, 'Ligar para o "João".' || char(10) || char(1) || '\b', '/', 'pego', 7, ''))";

}  // namespace

void session(std::string_view input) {
  static const tests::TemporaryFolder folder;
  mcp::Server server(folder.path() / "trovi.sqlite");
  Database other(folder.path() / "trovi.sqlite");
  other.execute(foreignRows);

  const std::unique_ptr<std::FILE, decltype(&std::fclose)> stream(std::tmpfile(), &std::fclose);
  require(stream != nullptr, "there is a temporary file");
  std::fwrite(input.data(), 1, input.size(), stream.get());
  std::rewind(stream.get());
  platform::LineReader lines(fileno(stream.get()));
  while (!input.empty()) {
    const std::size_t end = input.find('\n');
    std::string_view expected = input.substr(0, end);
    input.remove_prefix(end == std::string_view::npos ? input.size() : end + 1);
    if (end != std::string_view::npos && expected.ends_with('\r')) expected.remove_suffix(1);
    const auto line = lines.next();
    require(line == expected, "lines come as they stand in the input");
    checkAnswer(server, *line);
  }
  require(!lines.next(), "nothing comes behind the last line");
}

void jsonText(std::string_view input) {
  const std::string text = platform::repairedUTF8(input);
  const auto value = platform::parseJSON(text);
  if (!value) return;
  const std::string reply = written({{"text", JSONValue::prettyText(*value)}, {"value", *value}});
  const auto read = platform::parseJSON(reply);
  require(read && *read->object()->find("value") == *value, "a compact text spells the value");
  require(platform::parseJSON(*read->object()->text("text")) == value,
          "a text in a reply spells the value");
}

}  // namespace trovi::fuzz
