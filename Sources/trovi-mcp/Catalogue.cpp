#include "Catalogue.h"

namespace trovi::mcp {

using platform::JSONArray;
using platform::JSONObject;

const char* const serverInstructions =
    "O Trovi é a caixa de recados de voz do usuário. Cada recado é uma fala já transcrita, gravada "
    "no Mac, com um destino (um projeto) e a instrução daquele destino.\n"
    "Fluxo esperado: 1) inbox_list para ver os pendentes; 2) recado_claim antes de trabalhar num "
    "recado; 3) faça o que a instrução do destino pede, usando a transcrição; 4) recado_resolve "
    "com um resumo curto do que você fez (e links, se criou algo). Não invente partes da fala: se "
    "algo ficou ambíguo, diga no resultado.";

namespace {

JSONObject plainText() { return {{"type", "string"}}; }

JSONObject text(const char* description) {
  return {{"type", "string"}, {"description", description}};
}

JSONObject limit() { return {{"type", "integer"}, {"minimum", 1}, {"maximum", 100}}; }

struct Tool {
  const char* name;
  const char* description;
  JSONObject properties{};
  JSONArray required{};  ///< empty: the schema has no "required"
};

JSONObject descriptor(Tool tool) {
  JSONObject schema{{"type", "object"}, {"properties", std::move(tool.properties)}};
  if (!tool.required.empty()) schema.add("required", std::move(tool.required));
  return {
      {"name", tool.name}, {"description", tool.description}, {"inputSchema", std::move(schema)}};
}

}  // namespace

JSONArray catalogue() {
  JSONObject status = text("Filtro de status. Padrão: pendente.");
  status.add("enum", JSONArray{"pendente", "pego", "resolvido", "todos"});
  JSONObject listLimit = limit();
  listLimit.add("description", "Máximo de recados. Padrão: 20.");
  return {
      descriptor({.name = "inbox_list",
                  .description =
                      "Lista os recados de voz da caixa do Trovi. Por padrão, só os pendentes, do "
                      "mais novo para o mais antigo. Cada recado traz a transcrição e a instrução "
                      "do seu destino.",
                  .properties = {{"status", std::move(status)},
                                 {"destino", text("Nome do destino, por exemplo \"Corvane\".")},
                                 {"limite", std::move(listLimit)}}}),
      descriptor({.name = "recado_get",
                  .description = "Lê um recado completo: transcrição, destino, instrução, status e "
                                 "resultado.",
                  .properties = {{"id", plainText()}},
                  .required = {"id"}}),
      descriptor({.name = "recado_claim",
                  .description =
                      "Marca que você pegou o recado e está trabalhando nele. Chame antes "
                      "de começar.",
                  .properties = {{"id", plainText()},
                                 {"cliente", text("Quem pegou, por exemplo \"Claude Desktop\".")}},
                  .required = {"id"}}),
      descriptor({.name = "recado_resolve",
                  .description =
                      "Grava no recado o que você fez e o marca como resolvido. Escreva um resumo "
                      "curto e inclua links do que criou.",
                  .properties = {{"id", plainText()},
                                 {"resultado", text("Resumo do que foi feito.")},
                                 {"cliente", plainText()}},
                  .required = {"id", "resultado"}}),
      descriptor({.name = "search",
                  .description =
                      "Busca palavras nas transcrições, títulos e resultados de todos os "
                      "recados.",
                  .properties = {{"consulta", plainText()}, {"limite", limit()}},
                  .required = {"consulta"}}),
      descriptor(
          {.name = "destinos_list",
           .description = "Lista os destinos (projetos) do Trovi com a instrução de cada um."}),
  };
}

JSONObject initializeResult(std::optional<std::string_view> protocolVersion) {
  return {
      {"protocolVersion", protocolVersion.value_or(fallbackProtocolVersion)},
      {"capabilities", JSONObject{{"tools", JSONObject{{"listChanged", false}}}}},
      {"serverInfo", JSONObject{{"name", "trovi"}, {"title", "Trovi"}, {"version", serverVersion}}},
      {"instructions", serverInstructions}};
}

}  // namespace trovi::mcp
