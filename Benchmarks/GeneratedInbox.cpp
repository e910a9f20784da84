#include "GeneratedInbox.h"

#include <array>
#include <cstdlib>
#include <random>
#include <string_view>

#include "TroviCore/Paths.h"
#include "TroviCore/Text.h"

namespace trovi::benchmarks {
namespace {

// Not with the distributions of <random>: their results differ between standard libraries.
using Random = std::mt19937_64;

template <std::size_t count>
std::string_view oneOf(const std::array<std::string_view, count>& texts, Random& random) {
  return texts[random() % count];
}

/// A sentence is one piece from each of the three lists.
constexpr std::array<std::string_view, 9> intentions{
    "Preciso",         "Quero",         "Amanhã de manhã vou",        "Não posso esquecer de",
    "Seria bom",       "A gente podia", "Antes da reunião tenho que", "Acho que já dá para",
    "Fiquei mesmo de",
};
constexpr std::array<std::string_view, 12> actions{
    "revisar o orçamento da cozinha",
    "ligar para a Conceição",
    "responder à mensagem do João",
    "organizar as fotos da viagem ao Maranhão",
    "corrigir o botão de salvar, que some no modo retrato",
    "escrever a introdução do capítulo três",
    "marcar a consulta com o médico",
    "comprar pão, café e maçãs",
    "testar o aplicativo no celular antigo da minha mãe",
    "fechar a lista de convidados do aniversário",
    "comparar as três propostas de manutenção",
    "pôr a versão nova no ar",
};
constexpr std::array<std::string_view, 9> circumstances{
    "porque o prazo termina na sexta-feira",
    "senão a produção atrasa outra vez",
    "e depois contar para todo mundo como ficou",
    "mas só se não atrapalhar o resto",
    "já que ninguém mais vai lembrar disso",
    "do jeito que combinamos na última terça-feira",
    "com calma, sem pressa nenhuma",
    "e anotar as dúvidas que aparecerem no caminho",
    "nem que seja só uma primeira versão",
};

std::string newID(Random& random) {
  std::string id = "xxxxxxxx-xxxx-4xxx-8xxx-xxxxxxxxxxxx";
  for (char& digit : id) {
    if (digit == 'x') digit = "0123456789ABCDEF"[random() % 16];
  }
  return id;
}

std::string newTranscript(Random& random) {
  std::string text;
  for (auto sentences = 10 + random() % 11; sentences > 0; --sentences) {
    for (const std::string_view piece :
         {oneOf(intentions, random), oneOf(actions, random), oneOf(circumstances, random)}) {
      text += piece;
      text += ' ';
    }
    text.back() = '.';
    if (sentences > 1) text += ' ';
  }
  return text;
}

std::filesystem::path inboxIn(const std::filesystem::path& home) {
  setenv("HOME", home.c_str(), 1);
  return TroviPaths::databaseURL();
}

}  // namespace

Recado generatedRecado(std::size_t number) {
  Random random(number);
  std::string id = newID(random);
  std::string transcript = newTranscript(random);
  if (number == 0) transcript.append(" Ah, e o pé de ").append(rareWord).append(" deu flor!");
  const auto size = static_cast<double>(transcript.size());
  return {.id = std::move(id),
          .createdAt = dateSince1970(1'700'000'000.5 + 600.0 * static_cast<double>(number)),
          .duration = size / 15,  // about as fast as people speak
          .transcript = transcript,
          .title = TroviText::titleFrom(transcript),
          .status = RecadoStatus::pendente,
          .language = "pt"};
}

GeneratedInbox::GeneratedInbox(std::size_t size) : store_(inboxIn(home_.path())) {
  const auto destinos = store_.destinos();
  store_.db().execute("BEGIN");
  for (std::size_t number = 0; number < size; ++number) {
    Recado recado = generatedRecado(number);
    const std::size_t destino = number % (destinos.size() + 1);
    if (destino < destinos.size()) recado.destinoID = destinos[destino].id;
    if (number + waiting < size) {
      recado.status = RecadoStatus::resolvido;
      recado.claimedBy = "Assistente";
      recado.claimedAt = recado.createdAt;
      recado.result = "Abri a issue " + std::to_string(number) + " e avisei a equipe.";
      recado.resolvedAt = recado.createdAt;
    }
    store_.insert(recado);
    ids_.push_back(std::move(recado.id));
  }
  store_.db().execute("COMMIT; PRAGMA wal_checkpoint(TRUNCATE)");
}

}  // namespace trovi::benchmarks
