// The example synchroniser between two inboxes and one folder.
#include <cstdlib>

#include "Inbox.h"

namespace trovi::tests {
namespace {

class Synchroniser : public Inbox {
 protected:
  /// Whether a script succeeds beside the inboxes and the shared folder.
  bool sh(const std::string& script) const {
    return std::system(("cd " + folder.path().string() + "; " + script).c_str()) == 0;
  }
  /// Whether a run on each of the inboxes, $a and b, succeeds. All print to the file "out".
  bool run(const std::string& inboxes) const {
    return sh("mkdir -p shared; a=trovi.sqlite; for i in " + inboxes +
              "; do '" TROVI_SYNCHRONISER "' $i shared || exit; done >out 2>&1");
  }

  TroviStore second{folder.path() / "b"};
};

TEST_F(Synchroniser, LetsTheNewestStateWinAndADeletionBeFinal) {
  for (const char* id : {"../é", "failed", "gone", "tie"}) store.insert(someRecado(id));
  store.setStatus("failed", RecadoStatus::falhou);  // stays where it is, as a recording does
  store.setAudioPath("gone", "/not/here");
  EXPECT_TRUE(run("$a b") && sh("! grep -r not/here shared && cp -r shared old"));
  other.run("ATTACH ? AS b", {SQLValue::text(folder.path() / "b")});
  other.execute(
      "UPDATE recado SET result = 'A', updated_at = 4e9 WHERE id = '../é';"
      "UPDATE b.recado SET result = 'B', updated_at = 4e9 + 0.001 WHERE id = '../é';"
      "UPDATE recado SET result = 'A', updated_at = 4e9 WHERE id = 'tie';"
      "UPDATE b.recado SET result = 'C', updated_at = 4e9 WHERE id = 'tie';"
      "UPDATE b.recado SET result = 'D' WHERE id = 'gone';");
  for (const char* id : {"gone", "failed"}) store.deleteRecado(id);
  EXPECT_TRUE(run("b $a") && sh("rm -r shared/" + store.meta("synchroniser.machine").value()));
  // The draft of a killed run goes; what others put there is named, and stays.
  EXPECT_TRUE(sh("cd shared/*; echo { | tee x.json x.tmp >$(printf %036d 0).tmp") && run("b"));
  EXPECT_TRUE(sh("test -e shared/*/x.tmp && grep x.json out && rm shared/*/x.*"));
  EXPECT_TRUE(sh("cp -r old/* shared"));  // files of an earlier time arrive
  EXPECT_TRUE(run("$a b $a b $a b $a b") && run("$a b") && sh("! grep . out"));
  for (const std::string inbox : {"", "b."}) {
    EXPECT_EQ(each("id || ' ' || result || dirty", inbox + "recado"), "../é B0;tie C0;");
    EXPECT_EQ(each("id", inbox + "recado_apagado"), "");
  }
  EXPECT_TRUE(sh("! { grep -r gone shared || ls shared/*/*.tmp; } 2>/dev/null"));
  EXPECT_FALSE(run("none") || sh("ls none 2>/dev/null"));
}

}  // namespace
}  // namespace trovi::tests
