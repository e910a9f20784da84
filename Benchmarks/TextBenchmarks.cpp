// Functions on a transcript.
#include <benchmark/benchmark.h>

#include "GeneratedInbox.h"
#include "TroviCore/Text.h"
#include "Unicode.h"

namespace trovi::benchmarks {
namespace {

template <class Work>
void onTranscript(benchmark::State& state, Work work) {
  const std::string transcript = generatedRecado(0).transcript;
  while (state.KeepRunning()) benchmark::DoNotOptimize(work(transcript));
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(transcript.size()));
}

auto destinoMentioned(const std::string& transcript) {
  static const std::vector<Destino> destinos{
      {.id = "1", .name = "Ideias soltas", .instruction = "", .colorHex = "", .sort = 0},
      {.id = "2", .name = "Corvane", .instruction = "", .colorHex = "", .sort = 1},
      {.id = "3", .name = "Roadmap", .instruction = "", .colorHex = "", .sort = 2}};
  return TroviText::destinoMentioned(transcript, destinos);
}

BENCHMARK_CAPTURE(onTranscript, folded, platform::folded);
BENCHMARK_CAPTURE(onTranscript, titleFrom, TroviText::titleFrom);
BENCHMARK_CAPTURE(onTranscript, destinoMentioned, destinoMentioned);

}  // namespace
}  // namespace trovi::benchmarks
