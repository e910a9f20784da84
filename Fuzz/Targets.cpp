#include "Targets.h"

#include <algorithm>
#include <stdexcept>
#include <string>

#include "Server.h"
#include "TemporaryFolder.h"
#include "Text/JSON.h"
#include "Text/UTF8.h"
#include "Text/Unicode.h"
#include "Tools.h"
#include "TroviCore/Database.h"

namespace trovi::fuzz {
namespace {

using platform::JSONValue;

void require(bool holds, const char* promise) {
  if (!holds) throw std::logic_error(promise);
}

std::string written(const JSONValue& value) {
  std::string text;
  platform::appendJSON(text, value);
  return text;
}

constexpr const char* foreignRows = R"(
DELETE FROM recado;
INSERT INTO recado(id, created_at, duration, transcript, title, status, result, language) VALUES
  ('1', 9e999, 9e999, x'ff', CAST(x'61ff62' AS TEXT), 'pendente', x'41', CAST(x'610062' AS TEXT)),
  ('3', 'ontem', -0.5, 'Ligar para o "João".' || char(10) || char(1) || '\b', '/', 'pego', 7, ''))";

}  // namespace

void session(std::string_view input) {
  static const tests::TemporaryFolder folder;
  TroviStore store(folder.path() / "trovi.sqlite");
  mcp::Server server(mcp::catalogue(), store);
  Database other(folder.path() / "trovi.sqlite");
  other.execute(foreignRows);

  while (!input.empty()) {
    const std::string_view line = input.substr(0, input.find('\n'));
    input.remove_prefix(std::min(input.size(), line.size() + 1));
    const auto message = platform::parseJSON(platform::trimmedBlanks(platform::repairedUTF8(line)));
    const JSONValue id = message.value_or(nullptr)["id"];

    const auto text = server.answer(line);
    require(text.has_value() == !id.isNull(),
            "whatever is a request gets a reply, and nothing else does");
    if (!text) continue;
    require(text->find_first_of("\r\n") == std::string::npos, "a reply is one line");
    require(platform::repairedUTF8(*text) == *text, "a reply is UTF-8");
    const JSONValue reply = platform::parseJSON(*text).value_or(nullptr);
    require(reply["jsonrpc"].text() == "2.0" && written(reply["id"]) == written(id) &&
                (reply["result"].object() == nullptr) != (reply["error"].object() == nullptr),
            "a reply is a JSON object with its three members");
  }
}

void jsonText(std::string_view input) {
  const std::string text = platform::repairedUTF8(input);
  const auto value = platform::parseJSON(text);
  if (!value) return;
  const std::string compact = written(*value);
  const auto again = platform::parseJSON(compact);
  require(again && written(*again) == compact, "a compact text spells the value");
  const auto pretty = [](const JSONValue& any) {
    std::string quoted;
    platform::appendPrettyJSONText(quoted, any);
    return std::string(platform::parseJSON(quoted).value().text().value());
  };
  const std::string sorted = pretty(*value);
  const auto prettyAgain = platform::parseJSON(sorted);
  require(prettyAgain && pretty(*prettyAgain) == sorted, "a text in a reply spells the value");
}

}  // namespace trovi::fuzz
