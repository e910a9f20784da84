// The example synchroniser between two inboxes and one folder: the store's change records as a
// program uses them that may be killed.
#include <unistd.h>

#include <cstdlib>

#include "Inbox.h"

namespace trovi::tests {
namespace {

class Synchroniser : public Inbox {
 protected:
  Synchroniser() { other.run("ATTACH ? AS b", {SQLValue::text(folder.path() / "b")}); }

  /// Whether a script succeeds beside the inboxes and the shared folder.
  bool sh(const std::string& script) const {
    return std::system(("cd " + folder.path().string() + "; " + script).c_str()) == 0;
  }
  /// Whether a run on each of the inboxes, $a and b, succeeds. All print to the file "out".
  bool run(const std::string& inboxes, const std::string& end = "|| exit") const {
    const std::string runs = "; do '" TROVI_SYNCHRONISER "' $i shared " + end + "; done >out 2>&1";
    return sh("mkdir -p shared; a=trovi.sqlite; for i in " + inboxes + runs);
  }
  /// After four runs on each inbox there must be nothing left to do, and both must be equal, down
  /// to the time of each state.
  void expectInStep() {
    EXPECT_TRUE(run("$a b $a b $a b $a b") && run("$a b") && sh("! grep . out"));
    const char* all = "id || status || quote(claimed_by) || quote(result) || updated_at || dirty";
    EXPECT_EQ(each(all, "recado ORDER BY id"), each(all, "b.recado ORDER BY id"));
    EXPECT_EQ(each("id", "recado_apagado") + each("id", "b.recado_apagado"), "");
  }

  TroviStore second{folder.path() / "b"};
};

TEST_F(Synchroniser, LetsTheNewestStateWinAndADeletionBeFinal) {
  for (const char* id : {"../é", "failed", "gone", "tie"}) store.insert(someRecado(id));
  store.setStatus("failed", RecadoStatus::falhou);  // stays where it is, as a recording does
  store.setAudioPath("gone", "/not/here");
  EXPECT_TRUE(run("$a b") && sh("! grep -r not/here shared && cp -r shared old"));
  EXPECT_TRUE(second.recado("../é") == someRecado("../é") && !second.recado("failed"));

  EXPECT_TRUE(store.claim({.id = "../é", .by = "A"}));
  usleep(2000);  // SQLite's clock counts milliseconds
  EXPECT_TRUE(second.resolve({.id = "../é", .result = "B"}));
  other.execute("UPDATE recado SET result = 'A', updated_at = 4e9 WHERE id = 'tie'");
  other.execute("UPDATE b.recado SET result = 'C', updated_at = 4e9 WHERE id = 'tie'");
  for (const char* id : {"gone", "failed"}) store.deleteRecado(id);
  EXPECT_TRUE(second.claim({.id = "gone", .by = "B"}));
  EXPECT_TRUE(run("b $a") && sh("rm -r shared/" + store.meta("synchroniser.machine").value()));
  // The draft of a killed run goes; what others put there is named, and stays.
  EXPECT_TRUE(sh("cd shared/*; echo { | tee x.json x.tmp >$(printf %036d 0).tmp") && run("$a"));
  EXPECT_TRUE(sh("test -e shared/*/x.tmp && grep x.json out && rm shared/*/x.*"));
  for (int i = 0; i < 2; ++i) {  // then files of an earlier time arrive
    EXPECT_EQ(run("$a") ? each("id || quote(result)") : "", "../é'B';tie'C';");
    expectInStep();
    EXPECT_TRUE(sh("! { grep -r gone shared || ls shared/*/*.tmp; } && cp -r old/* shared"));
  }
  EXPECT_FALSE(run("none") || sh("ls none || ! >empty") || run("empty") || sh("grep recado empty"));
}

}  // namespace
}  // namespace trovi::tests
