// The example synchroniser between two inboxes and one folder: the store's change records as a
// program uses them that may be killed.
#include <unistd.h>

#include <cstdlib>
#include <fstream>

#include "Inbox.h"

namespace trovi {
namespace {

using std::filesystem::path;
using tests::someRecado;

class Synchroniser : public tests::Inbox {
 protected:
  Synchroniser() {
    create_directory(shared);
    other.run("ATTACH ? AS second", {SQLValue::text(secondFile)});
  }

  /// The output of a run on an inbox, killed after `life` seconds unless that is 0; absent if the
  /// run did not succeed.
  std::optional<std::string> run(const path& inbox, double life = 0) const {
    std::string command = "'" TROVI_SYNCHRONISER "' " + inbox.string() + " " + shared.string();
    if (life > 0) command += "& sleep " + std::to_string(life) + "; kill -9 $!; wait $!";
    const std::string out = folder.path() / "said";
    const bool done = std::system(("{ " + command + "; } >" + out + " 2>&1").c_str()) == 0;
    if (!done) return {};
    std::ifstream said(out);
    return std::string(std::istreambuf_iterator<char>(said), {});
  }

  /// After two runs on each inbox there must be nothing left to do, and both must be equal, down to
  /// the time of each state.
  void expectInStep() {
    for (const path& inbox : {file, secondFile, file, secondFile}) EXPECT_TRUE(run(inbox));
    for (const path& inbox : {file, secondFile}) EXPECT_EQ(run(inbox), "");
    for (const char* left :
         {"recado EXCEPT SELECT * FROM second.recado", "second.recado EXCEPT SELECT * FROM recado",
          "recado WHERE dirty", "recado_apagado", "second.recado_apagado"}) {
      EXPECT_EQ(each("id", left), "") << left;
    }
  }

  path shared = folder.path() / "pasta";
  path secondFile = folder.path() / "second.sqlite";
  TroviStore second{secondFile};
};

TEST_F(Synchroniser, CarriesMessagesStatesAndDeletionsAndLetsTheNewerStateWin) {
  for (const char* id : {"../é", "gone", "x"}) store.insert(someRecado(id));
  store.setStatus("x", RecadoStatus::falhou);  // not synchronised
  store.insert(someRecado(std::string(200, 'y')));
  EXPECT_EQ(run(file), "enviado: ../é Ligar para o João\nenviado: gone Ligar para o João\n");
  store.deleteRecado("x");
  store.deleteRecado(std::string(200, 'y'));
  expectInStep();
  EXPECT_EQ(second.recado("../é"), someRecado("../é"));

  store.claim({.id = "../é", .by = "A"});
  usleep(2000);  // SQLite's clock counts milliseconds
  second.resolve({.id = "../é", .result = "B"});
  store.deleteRecado("gone");
  second.claim({.id = "gone", .by = "B"});
  std::ofstream(shared / "x.json") << R"({"updatedAt":1})";
  EXPECT_NE(run(secondFile).value().find("não entendi x.json\n"), std::string::npos);
  remove(shared / "x.json");
  expectInStep();
  EXPECT_EQ(each("id || result || IFNULL(claimed_by, '')"), "../éB;");

  shared = folder.path() / "another";  // still empty
  create_directory(shared);
  EXPECT_EQ(run(file), "enviado: ../é Ligar para o João\n");
}

TEST_F(Synchroniser, OffersAgainWhatChangedDuringAnUpload) {
  for (const char* id : {"1", "2"}) store.insert(someRecado(id, std::stod(id)));
  other.execute(
      "CREATE TRIGGER meanwhile AFTER UPDATE OF dirty ON recado WHEN NEW.id = '1' AND NEW.dirty = "
      "0 "
      "BEGIN UPDATE recado SET status = 'resolvido', result = 'novo' WHERE id = '2'; END");
  EXPECT_TRUE(run(file));
  EXPECT_EQ(each("id", "recado WHERE dirty > 0"), "2;");
  other.execute("DROP TRIGGER meanwhile");
  expectInStep();
  EXPECT_EQ(second.recado("2")->result, "novo");
}

TEST_F(Synchroniser, LosesAndDoublesNothingWhenItIsKilled) {
  store.insert(someRecado("a"));
  int runs = 0;
  int finished = 0;
  for (double life = 0.001; finished < 4; life *= 1.1) {
    const std::string id = std::to_string(++runs);
    store.insert(someRecado(id));
    second.insert(someRecado("-" + id));
    store.resolve({.id = "a", .result = id});
    for (const path& inbox : {file, secondFile}) finished += run(inbox, life) ? 1 : 0;
  }
  expectInStep();
  EXPECT_EQ(second.recado("a")->result, std::to_string(runs));
  EXPECT_EQ(second.recados({.limit = -1}).size(), static_cast<std::size_t>(1 + 2 * runs));
}

}  // namespace
}  // namespace trovi
