#include "Targets.h"

#include <utf8proc.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "JSON.h"
#include "LineReader.h"
#include "Server.h"
#include "TemporaryFolder.h"
#include "ToolCall.h"
#include "TroviCore/Database.h"
#include "TroviCore/Text.h"
#include "Unicode.h"

namespace trovi::fuzz {
namespace {

using platform::JSONArray;
using platform::JSONObject;
using platform::JSONValue;
using std::filesystem::path;

void require(bool holds, const char* promise) {
  if (!holds) throw Broken(promise);
}

// ---- What holds of every reply

std::string written(const JSONObject& object) {
  platform::TextBuffer text;
  platform::appendJSON(text, object);
  return std::string(text.view());
}

void checkToolResult(const JSONObject& result) {
  const JSONValue* content = result.find("content");
  require(content != nullptr && content->array() != nullptr && content->array()->size() == 1,
          "a tool answers with one item");
  const JSONValue* isError = result.find("isError");
  require(isError != nullptr && isError->boolean() != nullptr, "a tool says whether it failed");
  const auto text = content->array()->front().object()->text("text");
  require(text.has_value(), "the item is a text");
  if (*isError->boolean()) {
    constexpr std::string_view starts[] = {"Erro no Trovi: ",
                                           "Falta ",
                                           "Recado ",
                                           "Não deu para ",
                                           "Não existe o destino ",
                                           "Status desconhecido: ",
                                           "Ferramenta desconhecida: "};
    require(std::any_of(std::begin(starts), std::end(starts),
                        [&](std::string_view start) { return text->starts_with(start); }),
            "a tool fails in words of its own");
    return;
  }
  const auto payload = platform::parseJSON(*text);
  require(payload && payload->object() != nullptr, "the text is a JSON object");
  const JSONValue* recados = payload->object()->find("recados");
  if (recados == nullptr) return;
  const std::size_t count = recados->array()->size();
  require(count <= 100, "no list is longer than a hundred");
  require(payload->object()->integer("total") == static_cast<std::int64_t>(count),
          "the total is what the list holds");
}

/// Lets the server answer, and holds the reply against the line.
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
  if (result != nullptr && request->text("method") == "tools/call") checkToolResult(*result);
}

// ---- An inbox that others wrote into

constexpr const char* foreignRows = R"(
INSERT INTO destino VALUES ('d', x'00', 7, '', 'x'), ('e', CAST(x'ff' AS TEXT), '', '', -9e999);
INSERT INTO recado(id, created_at, duration, transcript, title, destino_id, status, claimed_by, result, language)
VALUES ('1', 9e999, 9e999, x'ff', CAST(x'61ff62' AS TEXT), x'64', 'pendente', 7.5, x'41', CAST(x'610062' AS TEXT)),
       ('2', -9e999, -9e999, 1e300, -0.0, 'd', 'estranho', '', '', 3),
       ('3', 'ontem', 'muito', '', '', NULL, 'pego', NULL, NULL, NULL),
       ('4', 0, 1.5, 'Ligar para o João.' || char(10), '"Ligar"', 'e', 'pendente', NULL, NULL, 'pt'),
       ('5', 1e9, -0.5, 'a' || char(1) || '\b', '/', 'd', 'resolvido', 'IA', 'feito', 'pt'),
       ('6', 1e10, 2, '', '', NULL, 'transcrevendo', NULL, NULL, NULL),
       ('7', 1e11, 2, '', '', NULL, 'falhou', NULL, NULL, NULL),
       (NULL, 5, 5, '', '', NULL, x'00', NULL, NULL, NULL);
)";

/// An inbox with such rows, its last page still in the write-ahead log.
class ForeignInbox {
 public:
  ForeignInbox() {
    other.execute(foreignRows);
    // The same bytes every time, as far as that can be had.
    other.execute(
        "UPDATE destino SET id = 'seed' || sort WHERE length(id) = 36; UPDATE recado SET "
        "updated_at = 1; VACUUM; PRAGMA wal_checkpoint(TRUNCATE); CREATE TABLE kept AS SELECT * "
        "FROM recado;");
    version_ = version();
  }

  /// Puts the messages back where a server has changed them.
  void restore() {
    if (version() == version_) return;
    other.execute(
        "BEGIN; DELETE FROM recado; DELETE FROM recado_apagado; INSERT INTO recado SELECT * FROM "
        "kept; COMMIT;");
    version_ = version();
  }

  tests::TemporaryFolder folder;
  path file = folder.path() / "trovi.sqlite";
  TroviStore store{file};
  Database other{file};

 private:
  /// Moves when another connection changes the file.
  std::int64_t version() {
    return *other.query("PRAGMA data_version").at(0).intValue("data_version");
  }

  std::int64_t version_ = 0;
};

std::string contentOf(const path& file) {
  std::ifstream stream(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

void write(const path& file, std::string_view content) {
  std::ofstream(file, std::ios::binary) << content;
}

}  // namespace

void requestLine(std::string_view input) {
  static ForeignInbox inbox;
  static mcp::Server server(inbox.file);
  checkAnswer(server, R"({"id":1,"method":"initialize","params":{"clientInfo":{}}})");  // nameless
  checkAnswer(server, input);
  inbox.restore();
}

void session(std::string_view input) {
  static ForeignInbox inbox;
  mcp::Server server(inbox.file);

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
  inbox.restore();
}

void jsonText(std::string_view input) {
  const std::string text = platform::repairedUTF8(input);
  const auto value = platform::parseJSON(text);
  if (!value) return;
  const std::string reply = written({{"text", JSONValue::prettyText(*value)}});
  const auto pretty = platform::parseJSON(reply);
  require(pretty && platform::parseJSON(*pretty->object()->text("text")) == value,
          "a text in a reply spells the value");
  if (value->object() == nullptr) return;
  require(platform::parseJSON(written(*value->object())) == value,
          "a compact text spells the value");
}

void spokenText(std::string_view input) {
  using namespace platform;
  const std::string text = repairedUTF8(input);
  require(repairedUTF8(text) == text, "what is repaired is UTF-8");
  require(utf8proc_decompose(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                             static_cast<utf8proc_ssize_t>(text.size()), nullptr, 0,
                             utf8proc_option_t{}) >= 0,
          "others take what is repaired for UTF-8");

  const std::string title = TroviText::titleFrom(input);
  require(!title.empty() && clusterCount(title) <= 61, "a title has 1 to 61 characters");

  const std::string_view inner = trimmedBlanks(text);
  for (const std::string_view blank :
       {" ", "\t", "\u00A0", "\u1680", "\u2003", "\u202F", "\u3000"}) {
    require(!inner.starts_with(blank) && !inner.ends_with(blank), "no blank is left");
  }
  const std::string_view core = trimmedWhiteSpace(text);
  for (const std::string_view space : {" ", "\t", "\n", "\v", "\r", "\u0085", "\u2003", "\u2028"}) {
    require(!core.starts_with(space) && !core.ends_with(space), "no white space is left");
  }

  const std::string fold = folded(text);
  for (const auto form : {UTF8PROC_COMPOSE, UTF8PROC_DECOMPOSE}) {
    utf8proc_uint8_t* bytes = nullptr;
    const auto size = utf8proc_map(reinterpret_cast<const utf8proc_uint8_t*>(text.data()),
                                   static_cast<utf8proc_ssize_t>(text.size()), &bytes,
                                   utf8proc_option_t(form | UTF8PROC_STABLE));
    const std::unique_ptr<utf8proc_uint8_t, decltype(&std::free)> owner(bytes, &std::free);
    require(size >= 0 && folded({reinterpret_cast<const char*>(bytes),
                                 static_cast<std::size_t>(size)}) == fold,
            "canonically equivalent texts fold to the same bytes");
  }

  // Lines of the text for names of destinations.
  std::vector<Destino> destinos;
  for (std::string_view rest = text; !rest.empty() && destinos.size() < 5;) {
    const std::string_view line = rest.substr(0, rest.find('\n'));
    destinos.push_back({.id = std::to_string(destinos.size()),
                        .name = std::string(line),
                        .instruction = "",
                        .colorHex = "",
                        .sort = 0});
    rest.remove_prefix(std::min(line.size() + 1, rest.size()));
  }
  const auto found = TroviText::destinoMentioned(input, destinos);
  require(
      !found || (std::find(destinos.begin(), destinos.end(), *found) != destinos.end() &&
                 folded(firstClusters(text, 160)).find(folded(found->name)) != std::string::npos),
      "a destination that is mentioned is one of those given, and near the start");
}

void damagedFile(std::string_view input) {
  static const auto sound = [] {
    const ForeignInbox inbox;
    return std::pair(contentOf(inbox.file), contentOf(inbox.file.string() + "-wal"));
  }();
  std::string bytes = sound.first + sound.second;
  const std::size_t whole = bytes.size();
  if (!input.empty()) {
    bytes.resize(whole * static_cast<unsigned char>(input[0]) / 255);
    for (std::size_t i = 1; i + 2 < input.size() && !bytes.empty(); i += 3) {
      const auto high = static_cast<unsigned char>(input[i]);
      const auto low = static_cast<unsigned char>(input[i + 1]);
      bytes[(std::size_t{high} * 256 + low) % bytes.size()] = input[i + 2];
    }
  }
  const std::string_view both = bytes;
  const std::size_t border = std::min(sound.first.size(), both.size());

  const tests::TemporaryFolder folder;
  const path file = folder.path() / "trovi.sqlite";
  write(file, both.substr(0, border));
  write(file.string() + "-wal", both.substr(border));
  try {
    mcp::Server server(file);
    constexpr const char* calls[][2] = {{"inbox_list", R"({"status":"todos"})"},
                                        {"inbox_list", R"({"destino":"roadmap"})"},
                                        {"search", R"({"consulta":"a"})"},
                                        {"recado_get", R"({"id":"4"})"},
                                        {"recado_claim", R"({"id":"4"})"},
                                        {"recado_resolve", R"({"id":"4","resultado":"ok"})"},
                                        {"destinos_list", "{}"}};
    for (const auto& [tool, arguments] : calls) {
      checkAnswer(server, tests::toolCall(tool, arguments));
    }
  } catch (const DatabaseError&) {  // which ends the program with one line
  }
}

}  // namespace trovi::fuzz
