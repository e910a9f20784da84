// Parsing and writing of requests and replies.
#include <benchmark/benchmark.h>

#include "GeneratedInbox.h"
#include "Rendering.h"

namespace trovi::benchmarks {
namespace {

using platform::JSONArray;
using platform::JSONObject;
using platform::JSONValue;

constexpr std::string_view request =
    R"({"jsonrpc":"2.0","id":7,"method":"tools/call","params":{"name":"inbox_list","arguments":{"destino":"corvane","limite":20}}})";

const Destino destino{
    .id = "corvane",
    .name = "Corvane",
    .instruction = "Transforme em uma issue: título curto, contexto, o que fazer.",
    .colorHex = "#FF6A1C",
    .sort = 0};

std::vector<Recado> recados(std::size_t count) {
  std::vector<Recado> recados;
  while (count-- > 0) {
    recados.push_back(generatedRecado(count));
    recados.back().destinoID = destino.id;
  }
  return recados;
}

/// What a tool that lists the messages answers.
JSONValue rendered(std::vector<Recado> recados) {
  JSONArray list;
  list.reserve(recados.size());
  for (Recado& recado : recados) list.emplace_back(mcp::json(std::move(recado), {destino}));
  return list;
}

void readJSON(benchmark::State& state, std::string_view text) {
  while (state.KeepRunning()) benchmark::DoNotOptimize(platform::parseJSON(text));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
}

void readRequest(benchmark::State& state) { readJSON(state, request); }
BENCHMARK(readRequest);

void readReply(benchmark::State& state) {
  std::string reply;
  platform::appendPrettyJSONText(reply, rendered(recados(100)));
  readJSON(state, reply);
}
BENCHMARK(readReply);

void writeReply(benchmark::State& state) {
  const JSONValue list = rendered(recados(100));
  std::string reply;
  while (state.KeepRunning()) {
    reply.clear();
    platform::appendPrettyJSONText(reply, list);
    benchmark::ClobberMemory();
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(reply.size()));
}
BENCHMARK(writeReply);

void renderList(benchmark::State& state) {
  const auto list = recados(static_cast<std::size_t>(state.range()));
  while (state.KeepRunning()) benchmark::DoNotOptimize(rendered(list));
}
BENCHMARK(renderList)->ArgName("messages")->Arg(20)->Arg(100);

}  // namespace
}  // namespace trovi::benchmarks
