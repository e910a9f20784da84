#include "Tools.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <exception>
#include <new>
#include <utility>
#include <vector>

namespace trovi::mcp {
namespace {

using platform::JSONArray;
using platform::JSONObject;
using Destinos = std::vector<Destino>;

/// A refusal by a tool; its message becomes the reply.
struct Refusal {
  std::string message;
};

std::optional<std::string> textArgument(const ToolCall& call, std::string_view name) {
  return std::optional<std::string>(call.arguments[name].text());
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
  constexpr std::int64_t defaultLimit = 20;
  constexpr std::int64_t smallest = 1;
  constexpr std::int64_t largest = 100;
  return std::clamp(call.arguments["limite"].integer().value_or(defaultLimit), smallest, largest);
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

ToolResult listResult(std::vector<Recado> recados, const Destinos& destinos) {
  JSONArray rendered;
  rendered.reserve(recados.size());
  for (Recado& recado : recados) rendered.emplace_back(json(std::move(recado), destinos));
  const auto total = static_cast<std::int64_t>(rendered.size());
  JSONObject list;  // no initializer list, from which everything would be copied
  list.emplace_back("recados", std::move(rendered));
  list.emplace_back("total", total);
  return textContent(std::move(list));
}

std::optional<RecadoStatus> statusFilter(const ToolCall& call) {
  const std::string given = textArgument(call, "status").value_or("pendente");
  if (given == "todos") return {};
  const auto status = fromRawValue(given);
  if (!status) {
    throw Refusal{"Status desconhecido: " + given + ". Use pendente, pego, resolvido ou todos."};
  }
  return status;
}

std::optional<std::string> destinoFilter(const ToolCall& call, const Destinos& destinos) {
  const auto given = textArgument(call, "destino");
  if (!given || given->empty()) return {};
  // The store compares names, so it reads the list once more.
  if (auto found = call.store.destinoNamed(*given)) return std::move(found->id);
  std::string message = "Não existe o destino \"" + *given + "\". Destinos: ";
  for (const Destino& destino : destinos) {
    if (&destino != &destinos.front()) message += ", ";
    message += destino.name;
  }
  throw Refusal{message + "."};
}

ToolResult inboxList(const ToolCall& call, const Destinos& destinos) {
  const auto status = statusFilter(call);
  auto destinoID = destinoFilter(call, destinos);
  auto recados = call.store.recados(
      {.status = status, .destinoID = std::move(destinoID), .limit = limitArgument(call)});
  if (!status) dropTranscribing(recados);
  return listResult(std::move(recados), destinos);
}

ToolResult recadoGet(const ToolCall& call, const Destinos& destinos) {
  const std::string id = requiredID(call);
  auto recado = call.store.recado(id);
  if (!recado) throw Refusal{"Recado " + id + " não encontrado."};
  return textContent(json(*std::move(recado), destinos));
}

ToolResult recadoClaim(const ToolCall& call, const Destinos& destinos) {
  const std::string id = requiredID(call);
  auto recado = call.store.claim({.id = id, .by = actor(call).value_or("IA")});
  if (!recado) {
    throw Refusal{"Não deu para pegar o recado " + id +
                  ": ele não existe ou ainda está sendo transcrito."};
  }
  return textContent(json(*std::move(recado), destinos));
}

ToolResult recadoResolve(const ToolCall& call, const Destinos& destinos) {
  const std::string id = requiredID(call);
  auto result = requiredText(call, "resultado", "Falta o resultado.");
  auto recado = call.store.resolve({.id = id, .result = std::move(result), .by = actor(call)});
  if (!recado) {
    throw Refusal{"Não deu para resolver o recado " + id +
                  ": ele não existe ou ainda está sendo transcrito."};
  }
  return textContent(json(*std::move(recado), destinos));
}

ToolResult search(const ToolCall& call, const Destinos& destinos) {
  auto query = requiredText(call, "consulta", "Falta a consulta.");
  auto recados = call.store.recados({.search = std::move(query), .limit = limitArgument(call)});
  dropTranscribing(recados);
  return listResult(std::move(recados), destinos);
}

ToolResult destinosList(const ToolCall& /*call*/, const Destinos& destinos) {
  JSONArray rendered;
  for (const Destino& destino : destinos) rendered.emplace_back(json(destino));
  JSONObject list;
  list.emplace_back("destinos", std::move(rendered));
  return textContent(std::move(list));
}

struct Tool {
  const char* name;
  const char* description;
  const char* inputSchema;
  ToolResult (*run)(const ToolCall& call, const Destinos& destinos);
};

constexpr std::array tools{
    Tool{.name = "inbox_list",
         .description = "Lista os recados de voz da caixa do Trovi. Por padrão, só os pendentes, "
                        "do mais novo para o mais antigo. Cada recado traz a transcrição e a "
                        "instrução do seu destino.",
         .inputSchema = R"({"type": "object", "properties": {
             "status": {"type": "string", "description": "Filtro de status. Padrão: pendente.",
                        "enum": ["pendente", "pego", "resolvido", "todos"]},
             "destino": {"type": "string",
                         "description": "Nome do destino, por exemplo \"Corvane\"."},
             "limite": {"type": "integer", "minimum": 1, "maximum": 100,
                        "description": "Máximo de recados. Padrão: 20."}}})",
         .run = inboxList},
    Tool{.name = "recado_get",
         .description = "Lê um recado completo: transcrição, destino, instrução, status e "
                        "resultado.",
         .inputSchema = R"({"type": "object", "properties": {
             "id": {"type": "string"}}, "required": ["id"]})",
         .run = recadoGet},
    Tool{.name = "recado_claim",
         .description = "Marca que você pegou o recado e está trabalhando nele. Chame antes de "
                        "começar.",
         .inputSchema = R"({"type": "object", "properties": {
             "id": {"type": "string"},
             "cliente": {"type": "string",
                         "description": "Quem pegou, por exemplo \"Claude Desktop\"."}},
             "required": ["id"]})",
         .run = recadoClaim},
    Tool{.name = "recado_resolve",
         .description = "Grava no recado o que você fez e o marca como resolvido. Escreva um "
                        "resumo curto e inclua links do que criou.",
         .inputSchema = R"({"type": "object", "properties": {
             "id": {"type": "string"},
             "resultado": {"type": "string", "description": "Resumo do que foi feito."},
             "cliente": {"type": "string"}}, "required": ["id", "resultado"]})",
         .run = recadoResolve},
    Tool{.name = "search",
         .description = "Busca palavras nas transcrições, títulos e resultados de todos os "
                        "recados.",
         .inputSchema = R"({"type": "object", "properties": {
             "consulta": {"type": "string"},
             "limite": {"type": "integer", "minimum": 1, "maximum": 100}},
             "required": ["consulta"]})",
         .run = search},
    Tool{.name = "destinos_list",
         .description = "Lista os destinos (projetos) do Trovi com a instrução de cada um.",
         .inputSchema = R"({"type": "object", "properties": {}})",
         .run = destinosList},
};

}  // namespace

std::string catalogue() {
  JSONArray descriptors;
  for (const Tool& tool : tools) {
    descriptors.push_back(
        JSONObject{{"name", tool.name},
                   {"description", tool.description},
                   {"inputSchema", platform::parseJSON(tool.inputSchema).value()}});
  }
  std::string result;
  platform::appendJSON(result, JSONObject{{"tools", descriptors}});
  return result;
}

ToolResult callTool(const ToolCall& call) {
  try {
    // Read first, so that an unreadable inbox is an error whatever was asked.
    const Destinos destinos = call.store.destinos();
    for (const Tool& tool : tools) {
      if (tool.name == call.name) return tool.run(call, destinos);
    }
    return toolError("Ferramenta desconhecida: " + std::string(call.name));
  } catch (const Refusal& refusal) {
    return toolError(refusal.message);
  } catch (const std::bad_alloc&) {
    return toolError("Erro no Trovi: out of memory");  // as SQLite says it
  } catch (const std::exception& error) {
    return toolError(std::string("Erro no Trovi: ") + error.what());
  }
}

}  // namespace trovi::mcp
