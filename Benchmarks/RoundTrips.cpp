// Measures what a call costs a client: runs the executable over pipes, on inboxes of several sizes.
// Prints one line `operation,messages,microseconds` per median; report.py presents them.
//
// The inboxes take turns, so that other load on the machine affects all of them alike. A turn
// starts a new server, since the system may keep one on a bad processor, and makes one call that is
// not counted.
#include <algorithm>
#include <array>
#include <chrono>
#include <cstdlib>
#include <exception>
#include <iomanip>
#include <iostream>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "GeneratedInbox.h"
#include "ServerProcess.h"

namespace trovi::benchmarks {
namespace {

using namespace std::chrono_literals;
using tests::ServerProcess;
using Clock = std::chrono::steady_clock;

/// How much to measure for one row of the table.
struct Effort {
  std::vector<std::size_t> sizes;  ///< of the inboxes, in messages
  int turns;                       ///< minimum, for each inbox
  Clock::duration row, turn;       ///< minimum durations
};
const Effort standard{.sizes{100, 1'000, 10'000, 100'000}, .turns = 9, .row = 6s, .turn = 10ms};
const Effort smoke{.sizes{100, 1'000}, .turns = 1, .row = 0s, .turn = 0s};  // shows that it works

/// An inbox and the server on it.
struct Subject {
  explicit Subject(std::size_t messages) : size(messages), inbox(size) {}

  std::size_t size;
  GeneratedInbox inbox;
  std::optional<ServerProcess> server{};
  std::size_t calls = 0;        ///< number of calls so far
  std::vector<double> times{};  ///< of the calls that are counted, microseconds
};

void start(Subject& subject) {
  setenv("HOME", subject.inbox.home().c_str(), 1);
  subject.server.emplace();
}

/// Sends a request and waits for the reply, which must contain `proof`, near its end: a refusal
/// would be fast.
void ask(Subject& subject, const std::string& request, std::string_view proof) {
  subject.server->send(request);
  const auto reply = subject.server->receive();
  if (!reply || reply->rfind(proof) == std::string::npos) {
    throw std::runtime_error(request + " was answered by " + reply.value_or("nothing"));
  }
}

void ask(Subject& subject, const std::string& method) {
  ask(subject, R"({"jsonrpc":"2.0","id":1,"method":")" + method + R"("})", "}}");
}

void call(Subject& subject, const std::string& tool, const std::string& arguments = "{}",
          std::string_view proof = R"("isError":false)") {
  ask(subject, tests::toolCall(tool, arguments), proof);
}

/// The end of the reply to a list of `count` messages.
std::string total(const std::string& count) { return R"(\"total\": )" + count + R"(\n})"; }

void list(Subject& subject, const std::string& limit) {
  call(subject, "inbox_list", R"({"limite":)" + limit + "}", total(limit));
}

void search(Subject& subject, const std::string& word, const std::string& found) {
  call(subject, "search", R"({"consulta":")" + word + R"("})", total(found));
}

/// A row of the table.
struct Operation {
  const char* name;
  void (*run)(Subject& subject);
  void (*prepare)(Subject& subject) = [](Subject&) {};  ///< not timed
};

void get(Subject& subject) {
  call(subject, "recado_get", R"({"id":")" + subject.inbox.anyID(subject.calls) + R"("})");
}

void reopen(Subject& subject) {
  subject.inbox.store().reopen(subject.inbox.waitingID(subject.calls));
}

void claimAndResolve(Subject& subject) {
  const std::string arguments =
      R"({"id":")" + subject.inbox.waitingID(subject.calls) + R"(","resultado":"Feito."})";
  call(subject, "recado_claim", arguments);
  call(subject, "recado_resolve", arguments);
}

void startAndPing(Subject& subject) {
  start(subject);
  ask(subject, "ping");
}

constexpr std::array operations{
    Operation{"ping", [](Subject& subject) { ask(subject, "ping"); }},
    Operation{"tools/list", [](Subject& subject) { ask(subject, "tools/list"); }},
    Operation{"destinos_list", [](Subject& subject) { call(subject, "destinos_list"); }},
    Operation{"recado_get", get},
    Operation{"inbox_list (20)", [](Subject& subject) { list(subject, "20"); }},
    Operation{"inbox_list (100)", [](Subject& subject) { list(subject, "100"); }},
    Operation{"search (common word)", [](Subject& subject) { search(subject, commonWord, "20"); }},
    Operation{"search (rare word)", [](Subject& subject) { search(subject, rareWord, "1"); }},
    Operation{"claim + resolve", claimAndResolve, reopen},
    Operation{"start to first reply", startAndPing,
              [](Subject& subject) { subject.server.reset(); }},
};

double microseconds(const Operation& operation, Subject& subject) {
  ++subject.calls;
  operation.prepare(subject);
  const auto start = Clock::now();
  operation.run(subject);
  return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

void takeTurn(const Operation& operation, Subject& subject, Clock::duration length) {
  start(subject);
  microseconds(operation, subject);
  const auto end = Clock::now() + length;
  do {
    subject.times.push_back(microseconds(operation, subject));
  } while (Clock::now() < end);
}

double median(std::vector<double>& values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void measure(const Effort& effort) {
  std::vector<std::unique_ptr<Subject>> subjects;
  for (const std::size_t size : effort.sizes) {
    std::cerr << "an inbox of " << size << " messages\n";
    subjects.push_back(std::make_unique<Subject>(size));
  }
  std::cout << "operation,messages,microseconds\n" << std::fixed << std::setprecision(1);
  for (const Operation& operation : operations) {
    std::cerr << operation.name << '\n';
    const auto end = Clock::now() + effort.row;
    for (int turns = 0; turns < effort.turns || Clock::now() < end; ++turns) {
      for (const auto& subject : subjects) takeTurn(operation, *subject, effort.turn);
    }
    for (const auto& subject : subjects) {
      std::cout << operation.name << ',' << subject->size << ',' << median(subject->times) << '\n';
      subject->times.clear();
    }
  }
}

}  // namespace
}  // namespace trovi::benchmarks

int main(int count, char** arguments) {
  using namespace trovi::benchmarks;
  try {
    measure(count > 1 && arguments[1] == std::string_view("--smoke") ? smoke : standard);
    return EXIT_SUCCESS;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return EXIT_FAILURE;
  }
}
