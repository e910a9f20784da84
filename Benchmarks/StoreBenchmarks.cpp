// The store's main operations on inboxes of several sizes. Operations that change an inbox keep its
// size and mostly wait for the disk: there the CPU time says more.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <map>
#include <memory>

#include "GeneratedInbox.h"

namespace trovi::benchmarks {
namespace {

/// The inbox of this size, created on first use.
GeneratedInbox& inboxOf(std::size_t size) {
  static std::map<std::size_t, std::unique_ptr<GeneratedInbox>> inboxes;
  auto& inbox = inboxes[size];
  if (!inbox) inbox = std::make_unique<GeneratedInbox>(size);
  return *inbox;
}

/// Times `work(inbox, turn)` on the inbox whose size is the benchmark's argument.
template <class Work>
void onInbox(benchmark::State& state, Work work) {
  GeneratedInbox& inbox = inboxOf(static_cast<std::size_t>(state.range()));
  std::size_t turn = 0;
  while (state.KeepRunning()) benchmark::DoNotOptimize(work(inbox, turn++));
}

auto list(std::int64_t limit) {
  return [=](GeneratedInbox& inbox, std::size_t /*turn*/) {
    return inbox.store().recados({.status = RecadoStatus::pendente, .limit = limit});
  };
}

auto search(const char* word) {
  return [=](GeneratedInbox& inbox, std::size_t /*turn*/) {
    return inbox.store().recados({.search = word, .limit = 20});
  };
}

auto recado(GeneratedInbox& inbox, std::size_t turn) {
  return inbox.store().recado(inbox.anyID(turn));
}

auto destinos(GeneratedInbox& inbox, std::size_t /*turn*/) { return inbox.store().destinos(); }

auto counts(GeneratedInbox& inbox, std::size_t /*turn*/) { return inbox.store().counts(); }

auto countThisMonth(GeneratedInbox& inbox, std::size_t /*turn*/) {
  return inbox.store().countThisMonth();
}

auto pendingUploads(GeneratedInbox& inbox, std::size_t /*turn*/) {
  return inbox.store().pendingUploads(20);
}

auto markAllForUpload(GeneratedInbox& inbox, std::size_t /*turn*/) {
  inbox.store().markAllForUpload();
  return 0;
}

auto claim(GeneratedInbox& inbox, std::size_t turn) {
  return inbox.store().claim({.id = inbox.waitingID(turn), .by = "Assistente"});
}

auto resolve(GeneratedInbox& inbox, std::size_t turn) {
  return inbox.store().resolve({.id = inbox.waitingID(turn), .result = "Abri a issue 42."});
}

auto insertAndDelete(GeneratedInbox& inbox, std::size_t /*turn*/) {
  static const Recado another = generatedRecado(SIZE_MAX);
  inbox.store().insert(another);
  inbox.store().deleteRecado(another.id);
  return 0;
}

void sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->ArgName("messages")->Arg(100)->Arg(10'000)->Arg(100'000);
  benchmark->Unit(benchmark::kMicrosecond);
}

BENCHMARK_CAPTURE(onInbox, list20, list(20))->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, list100, list(100))->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, recado, recado)->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, searchCommon, search(commonWord))->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, searchRare, search(rareWord))->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, searchMissing, search(missingWord))->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, destinos, destinos)->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, counts, counts)->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, countThisMonth, countThisMonth)->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, pendingUploads, pendingUploads)->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, markAllForUpload, markAllForUpload)->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, insertAndDelete, insertAndDelete)->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, claim, claim)->Apply(sizes);
BENCHMARK_CAPTURE(onInbox, resolve, resolve)->Apply(sizes);

}  // namespace
}  // namespace trovi::benchmarks
