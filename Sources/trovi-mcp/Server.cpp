#include "Server.h"

#include <new>
#include <utility>

#include "Catalogue.h"
#include "Output.h"
#include "Tools.h"
#include "Unicode.h"

namespace trovi::mcp {
namespace {

using platform::JSONArray;
using platform::JSONObject;
using platform::JSONValue;

constexpr int methodNotFound = -32601;
constexpr int invalidParams = -32602;

template <class Content>
JSONObject message(const JSONValue& id, platform::JSONKey key, Content&& content) {
  JSONObject message;
  message.reserve(3);
  message.add("jsonrpc", "2.0");
  message.add("id", id);
  message.add(std::move(key), std::forward<Content>(content));
  return message;
}

template <class Result>
JSONObject reply(const JSONValue& id, Result&& result) {
  return message(id, "result", std::forward<Result>(result));
}

JSONObject replyError(const JSONValue& id, int code, std::string text) {
  return message(id, "error", JSONObject{{"code", code}, {"message", std::move(text)}});
}

/// The line as JSON; absent if it is malformed or there is not enough memory.
std::optional<JSONValue> parsed(std::string_view line) {
  try {
    std::string repaired;
    return platform::parseJSON(platform::trimmedBlanks(platform::repairedUTF8(line, repaired)));
  } catch (const std::bad_alloc&) {
    return {};
  }
}

/// The member as an object; an empty one if it is missing or of another kind.
const JSONObject& objectOrEmpty(const JSONObject& object, std::string_view key) {
  static const JSONObject empty;
  const JSONObject* member = object.object(key);
  return member != nullptr ? *member : empty;
}

}  // namespace

Server::Server(const std::filesystem::path& database)
    : pong_(JSONObject()),
      toolsResult_(JSONValue::written({{"tools", catalogue()}})),
      store_(database) {}

std::optional<JSONObject> Server::answer(std::string_view line) {
  const auto message = parsed(line);
  const JSONObject* request = message ? message->object() : nullptr;
  const JSONValue* id = request != nullptr ? request->find("id") : nullptr;
  if (id == nullptr || id->isNull()) return {};
  return answerRequest(*request, *id);
}

JSONObject Server::answerRequest(const JSONObject& request, const JSONValue& id) {
  const std::string_view method = request.text("method").value_or("");
  const JSONObject& params = objectOrEmpty(request, "params");
  if (method == "initialize") return reply(id, initialize(params));
  if (method == "ping") return reply(id, pong_);
  if (method == "tools/list") return reply(id, toolsResult_);
  if (method == "tools/call") {
    const auto name = params.text("name");
    if (!name) return replyError(id, invalidParams, "Falta o nome da ferramenta");
    return reply(id, callTool({.name = *name,
                               .arguments = objectOrEmpty(params, "arguments"),
                               .store = store_,
                               .clientName = clientName_}));
  }
  if (method == "resources/list") return reply(id, JSONObject{{"resources", JSONArray{}}});
  if (method == "prompts/list") return reply(id, JSONObject{{"prompts", JSONArray{}}});
  return replyError(id, methodNotFound, "Método não suportado: " + std::string(method));
}

JSONObject Server::initialize(const JSONObject& params) {
  if (const JSONObject* clientInfo = params.object("clientInfo")) {
    clientName_ = clientInfo->text("name");
  }
  return initializeResult(params.text("protocolVersion"));
}

void log(std::string_view message) {
  std::string line = "[trovi-mcp] ";
  line += message;
  line += '\n';
  platform::write(platform::standardError, line);
}

}  // namespace trovi::mcp
