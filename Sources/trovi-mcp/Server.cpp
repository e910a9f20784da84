#include "Server.h"

#include <new>
#include <utility>

#include "System/Streams.h"
#include "Text/UTF8.h"
#include "Text/Unicode.h"
#include "Tools.h"
#include "TroviCore/Version.h"

namespace trovi::mcp {
namespace {

using platform::JSONObject;
using platform::JSONValue;

constexpr const char* serverVersion = TROVI_VERSION;
constexpr const char* fallbackProtocolVersion = "2025-06-18";

// An assistant decides by this text how to work: it is fixed to the byte.
constexpr const char* serverInstructions =
    "O Trovi é a caixa de recados de voz do usuário. Cada recado é uma fala já transcrita, gravada "
    "no Mac, com um destino (um projeto) e a instrução daquele destino.\n"
    "Fluxo esperado: 1) inbox_list para ver os pendentes; 2) recado_claim antes de trabalhar num "
    "recado; 3) faça o que a instrução do destino pede, usando a transcrição; 4) recado_resolve "
    "com um resumo curto do que você fez (e links, se criou algo). Não invente partes da fala: se "
    "algo ficou ambíguo, diga no resultado.";

constexpr int methodNotFound = -32601;
constexpr int invalidParams = -32602;

/// The line as JSON; null if it is malformed or there is not enough memory.
JSONValue parsed(std::string_view line) {
  try {
    std::string repaired;
    return platform::parseJSON(platform::trimmedBlanks(platform::repairedUTF8(line, repaired)))
        .value_or(nullptr);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

std::string written(const JSONValue& value) {
  std::string text;
  platform::appendJSON(text, value);
  return text;
}

}  // namespace

Server::Server(std::string catalogue, TroviStore& store)
    : catalogue_(std::move(catalogue)), store_(store) {}

std::optional<std::string_view> Server::answer(std::string_view line) {
  const JSONValue message = parsed(line);
  const JSONValue& id = message["id"];
  if (id.isNull()) return {};
  reply_.clear();
  if (reply_.capacity() > platform::largestKeptBuffer) reply_.shrink_to_fit();
  answerRequest(message, id);
  return reply_;
}

void Server::answerRequest(const JSONValue& request, const JSONValue& id) {
  const std::string_view method = request["method"].text().value_or("");
  const JSONValue& params = request["params"];
  if (method == "initialize") return reply(id, written(initialize(params)));
  if (method == "ping") return reply(id, "{}");
  if (method == "tools/list") return reply(id, catalogue_);
  if (method == "tools/call") {
    const auto name = params["name"].text();
    if (!name) return replyError(id, invalidParams, "Falta o nome da ferramenta");
    return reply(id, callTool({.name = *name,
                               .arguments = params["arguments"],
                               .store = store_,
                               .clientName = clientName_}));
  }
  if (method == "resources/list") return reply(id, R"({"resources":[]})");
  if (method == "prompts/list") return reply(id, R"({"prompts":[]})");
  replyError(id, methodNotFound, "Método não suportado: " + std::string(method));
}

/// The protocol version is not negotiated: the client's is echoed.
JSONObject Server::initialize(const JSONValue& params) {
  const JSONValue& clientInfo = params["clientInfo"];
  if (clientInfo.object() != nullptr) clientName_ = clientInfo["name"].text();
  return {
      {"protocolVersion", params["protocolVersion"].text().value_or(fallbackProtocolVersion)},
      {"capabilities", JSONObject{{"tools", JSONObject{{"listChanged", false}}}}},
      {"serverInfo", JSONObject{{"name", "trovi"}, {"title", "Trovi"}, {"version", serverVersion}}},
      {"instructions", serverInstructions}};
}

void Server::begin(const JSONValue& id, std::string_view start) {
  reply_ = R"({"jsonrpc":"2.0","id":)";
  platform::appendJSON(reply_, id);
  reply_ += start;
}

void Server::reply(const JSONValue& id, std::string_view result) {
  begin(id, R"(,"result":)");
  reply_ += result;
  reply_ += '}';
}

void Server::reply(const JSONValue& id, const ToolResult& result) {
  begin(id, R"(,"result":{"content":[{"type":"text","text":)");
  if (result.isError) {
    platform::appendJSON(reply_, result.content);
    reply_ += R"(}],"isError":true}})";
    return;
  }
  const std::size_t start = reply_.size();
  reply_.reserve(start + 32);  // so that what follows an empty text finds memory
  try {
    platform::appendPrettyJSONText(reply_, result.content);
  } catch (const std::bad_alloc&) {
    reply_.resize(start);
    reply_ += R"("")";
  }
  reply_ += R"(}],"isError":false}})";
}

void Server::replyError(const JSONValue& id, int code, const std::string& message) {
  begin(id, R"(,"error":)");
  platform::appendJSON(reply_, JSONObject{{"code", code}, {"message", message}});
  reply_ += '}';
}

}  // namespace trovi::mcp
