#include "TroviCore/Models.h"

#include <uuid/uuid.h>

#include "Fields.h"

namespace trovi {
namespace {

struct StatusTexts {
  std::string_view rawValue, label;
};

constexpr std::array<StatusTexts, allCases().size()> statusTexts{{
    {"transcrevendo", "Transcrevendo"},
    {"pendente", "Pendente"},
    {"pego", "Pego pela IA"},
    {"resolvido", "Resolvido"},
    {"falhou", "Falhou"},
}};

const StatusTexts& texts(RecadoStatus status) {
  return statusTexts.at(static_cast<std::size_t>(status));
}

struct Hash {
  std::size_t value = 0;

  template <class Field>
  void operator()(std::string_view /*name*/, const Field& field) {
    combine(std::hash<Field>{}(field));
  }
  void operator()(std::string_view name, Date date) { (*this)(name, secondsSince1970(date)); }
  template <class Field>
  void operator()(std::string_view name, const std::optional<Field>& field) {
    (*this)(name, field.has_value());
    if (field) (*this)(name, *field);
  }

 private:
  void combine(std::size_t hash) {
    constexpr std::size_t goldenRatio = 0x9E3779B97F4A7C15;
    value ^= hash + goldenRatio + (value << 6) + (value >> 2);
  }
};

template <class Record>
std::size_t hashOf(const Record& record) {
  Hash hash;
  visitFields(record, hash);
  return hash.value;
}

}  // namespace

std::string newID() {
  uuid_t id{};
  uuid_generate_random(id);
  std::array<char, 37> text{};  // 36 characters and a NUL
  uuid_unparse_upper(id, text.data());
  return text.data();
}

std::string_view rawValue(RecadoStatus status) { return texts(status).rawValue; }

std::string_view label(RecadoStatus status) { return texts(status).label; }

std::optional<RecadoStatus> fromRawValue(std::string_view text) {
  for (const RecadoStatus status : allCases()) {
    if (rawValue(status) == text) return status;
  }
  return {};
}

}  // namespace trovi

std::size_t std::hash<trovi::Destino>::operator()(const trovi::Destino& destino) const {
  return trovi::hashOf(destino);
}

std::size_t std::hash<trovi::Recado>::operator()(const trovi::Recado& recado) const {
  return trovi::hashOf(recado);
}
