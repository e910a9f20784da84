#include "Tools.h"

#include <algorithm>
#include <array>
#include <exception>

#include "Rendering.h"

namespace trovi::mcp {
namespace {

using platform::JSONArray;
using platform::JSONObject;
using Destinos = std::vector<Destino>;

/// A refusal by a tool; its message becomes the reply.
struct Refusal {
  std::string message;
};

std::string joined(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) text += piece;
  return text;
}

std::optional<std::string> textArgument(const ToolCall& call, std::string_view name) {
  return std::optional<std::string>(call.arguments.text(name));
}

std::string requiredID(const ToolCall& call) {
  auto id = textArgument(call, "id");
  if (!id) throw Refusal{"Falta o id."};
  return *std::move(id);
}

std::string requiredText(const ToolCall& call, std::string_view name, const char* complaint) {
  auto text = textArgument(call, name);
  if (!text || text->empty()) throw Refusal{complaint};
  return *std::move(text);
}

std::int64_t limitArgument(const ToolCall& call) {
  constexpr std::int64_t standard = 20;
  constexpr std::int64_t smallest = 1;
  constexpr std::int64_t largest = 100;
  return std::clamp(call.arguments.integer("limite").value_or(standard), smallest, largest);
}

/// Who acts: the argument `cliente`, else the name that the client gave itself.
std::optional<std::string> actor(const ToolCall& call) {
  auto named = textArgument(call, "cliente");
  return named ? named : call.clientName;
}

void dropTranscribing(std::vector<Recado>& recados) {
  std::erase_if(recados,
                [](const Recado& recado) { return recado.status == RecadoStatus::transcrevendo; });
}

JSONObject listResult(std::vector<Recado> recados, const Destinos& destinos) {
  JSONArray rendered;
  rendered.reserve(recados.size());
  for (Recado& recado : recados) rendered.emplace_back(json(std::move(recado), destinos));
  const auto total = static_cast<std::int64_t>(rendered.size());
  return textContent(JSONObject{{"recados", std::move(rendered)}, {"total", total}});
}

JSONObject messageResult(std::optional<Recado> recado, const Destinos& destinos,
                         std::initializer_list<std::string_view> refusal) {
  if (!recado) throw Refusal{joined(refusal)};
  return textContent(json(*std::move(recado), destinos));
}

std::optional<RecadoStatus> statusFilter(const ToolCall& call) {
  const std::string_view given = call.arguments.text("status").value_or("pendente");
  if (given == "todos") return {};
  const auto status = fromRawValue<RecadoStatus>(given);
  if (!status) {
    throw Refusal{
        joined({"Status desconhecido: ", given, ". Use pendente, pego, resolvido ou todos."})};
  }
  return status;
}

std::optional<std::string> destinoFilter(const ToolCall& call, const Destinos& destinos) {
  const auto given = textArgument(call, "destino");
  if (!given || given->empty()) return {};
  if (auto found = call.store.destinoNamed(*given)) return std::move(found->id);
  std::string message = joined({"Não existe o destino \"", *given, "\". Destinos: "});
  for (const Destino& destino : destinos) {
    if (&destino != &destinos.front()) message += ", ";
    message += destino.name;
  }
  throw Refusal{message + "."};
}

JSONObject inboxList(const ToolCall& call, const Destinos& destinos) {
  const auto status = statusFilter(call);
  auto destinoID = destinoFilter(call, destinos);
  auto recados = call.store.recados(
      {.status = status, .destinoID = std::move(destinoID), .limit = limitArgument(call)});
  if (!status) dropTranscribing(recados);
  return listResult(std::move(recados), destinos);
}

JSONObject recadoGet(const ToolCall& call, const Destinos& destinos) {
  const std::string id = requiredID(call);
  return messageResult(call.store.recado(id), destinos, {"Recado ", id, " não encontrado."});
}

JSONObject recadoClaim(const ToolCall& call, const Destinos& destinos) {
  const std::string id = requiredID(call);
  return messageResult(
      call.store.claim({.id = id, .by = actor(call).value_or("IA")}), destinos,
      {"Não deu para pegar o recado ", id, ": ele não existe ou ainda está sendo transcrito."});
}

JSONObject recadoResolve(const ToolCall& call, const Destinos& destinos) {
  const std::string id = requiredID(call);
  auto result = requiredText(call, "resultado", "Falta o resultado.");
  return messageResult(
      call.store.resolve({.id = id, .result = std::move(result), .by = actor(call)}), destinos,
      {"Não deu para resolver o recado ", id, ": ele não existe ou ainda está sendo transcrito."});
}

JSONObject search(const ToolCall& call, const Destinos& destinos) {
  auto query = requiredText(call, "consulta", "Falta a consulta.");
  auto recados = call.store.recados({.search = std::move(query), .limit = limitArgument(call)});
  dropTranscribing(recados);
  return listResult(std::move(recados), destinos);
}

JSONObject destinosList(const ToolCall& /*call*/, const Destinos& destinos) {
  JSONArray rendered;
  for (const Destino& destino : destinos) rendered.emplace_back(json(destino));
  return textContent(JSONObject{{"destinos", std::move(rendered)}});
}

struct Tool {
  std::string_view name;
  JSONObject (*run)(const ToolCall& call, const Destinos& destinos);
};

constexpr std::array tools{
    Tool{"inbox_list", inboxList},
    Tool{"recado_get", recadoGet},
    Tool{"recado_claim", recadoClaim},
    Tool{"recado_resolve", recadoResolve},
    Tool{"search", search},
    Tool{"destinos_list", destinosList},
};

}  // namespace

JSONObject callTool(const ToolCall& call) {
  try {
    // Read first, so that an unreadable inbox is an error whatever was asked.
    const Destinos destinos = call.store.destinos();
    for (const Tool& tool : tools) {
      if (tool.name == call.name) return tool.run(call, destinos);
    }
    return toolError(joined({"Ferramenta desconhecida: ", call.name}));
  } catch (const Refusal& refusal) {
    return toolError(refusal.message);
  } catch (const std::exception& error) {
    return toolError(joined({"Erro no Trovi: ", error.what()}));
  }
}

}  // namespace trovi::mcp
