// What shells offer, by the scripts that are installed, and the pages of the manual.

#include "tests/loopback.h"
#include "tests/shell.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

constexpr const char* kScript = REBATE_SOURCE_DIR "/client/completions/rebate.bash";

class Completion : public ToolTest {
 protected:
  Completion() {
    Save("supplier_total");
    Save("supplier_goods");
  }

  // What bash offers for the last of `words`, which are as bash takes a line apart, in the account's folder.
  Text Bash(const std::vector<Text>& words) {
    Text script = "cd '" + account_.File("") + "'; source '" + kScript +
                  "'\nexport REBATE_DSN=sample.db\nCOMP_WORDS=('" REBATE_TOOL "'";
    for (const Text& word : words) script += " \"" + word + "\"";
    script += ")\nCOMP_CWORD=" + std::to_string(words.size()) + "\n_rebate\necho \"${COMPREPLY[*]}\"\n";
    Text printed = Shell("bash --norc '" + File("ask.sh", script) + "'");
    if (printed.ends_with('\n')) printed.pop_back();
    return printed;
  }
};

TEST_F(Completion, InBash) {
  if (!Runs("bash --version")) GTEST_SKIP() << "no bash";
  File("a file.json", "");
  const struct {
    std::vector<Text> words;
    const char* offered;
  } kCases[] = {
      {{"sh"}, "show"},
      {{"form", ""}, "save show"},
      {{"enable", "-"}, "--help --yes --dsn --json"},
      {{"list", "--status", ""}, "enabled disabled all"},
      {{"list", "--status", "=", "d"}, "disabled"},
      {{"forbidden", "s"}, "suppliers salesmen"},
      {{"import", "u"}, "units users"},
      {{"rates", "202"}, ""},
      {{"rates", "302"}, "3020 3021 3022 3023 3024 3025 3026"},
      {{"list", "--type", "=", "204"}, "2040 2041 2042 2043 2044 2045 2046"},
      {{"show", ""}, "2 1"},
      {{"show", "1", ""}, ""},
      {{"delete", "2", ""}, "2 1"},
      {{"delete", "--", ""}, "2 1"},
      {{"--dsn", "sample.db", "list", "--id", "1"}, "1"},
      {{"show", "--dsn", "=", "nowhere.db", ""}, ""},
      {{"show", "--dsn", "'Data Source=sample.db;AppUser=1'", ""}, "2 1"},
      {{"--dsn", "Driver=none;Server=none", "show", ""}, ""},
      {{"show", "--dsn", "Data\\\\ Source", "=", "sample.db", ""}, "2 1"},
      {{"select", "2040", ""}, ""},
      {{"save", "a "}, "a file.json"},
      {{"ranges", "2040", "--set", "=", "a f"}, "a file.json"},
  };
  for (const auto& [words, offered] : kCases) {
    EXPECT_EQ(Bash(words), offered) << testing::PrintToString(words);
  }
}

TEST_F(Completion, InOtherShells) {
  const Text folder = REBATE_SOURCE_DIR "/client/completions";
  for (const char* shell : {"zsh", "fish"}) {
    if (!Runs(Text(shell) + " --version")) continue;
    const Text script = Text(shell) == "zsh" ? "/_rebate" : "/rebate.fish";
    EXPECT_EQ(Shell(Text(shell) + " -n '" + folder + script + "'"), "") << shell;
  }
  if (!Runs("fish --version")) GTEST_SKIP() << "no fish";
  const Text ask = "PATH=\"$(dirname '" REBATE_TOOL "'):$PATH\" REBATE_DSN='" + dsn_ + "' HOME='" + account_.File("") +
                   "' fish -N -c 'source " + folder + "/rebate.fish; complete -C \"rebate ";
  EXPECT_EQ(Shell(ask + "show \"'"), "2\t洗护商品采购返利\n1\t2026年度供应商总额返利\n");
  EXPECT_EQ(Shell(ask + "list --status=d\"'"), "--status=disabled\n");
}

TEST_F(Completion, LeavesTheAccountAsItIs) {
  const Text before = Shell("cksum < '" + dsn_ + "'");
  EXPECT_EQ(RunRebate({"complete", "--", "show", "--dsn", dsn_, "1"}).out, "1\t2026年度供应商总额返利\n");
  // An account of a former version would be brought to this one when it is opened.
  Shell("printf '\\000\\000\\000\\001' | dd of='" + dsn_ + "' bs=1 seek=60 conv=notrunc status=none");
  const Text former = Shell("cksum < '" + dsn_ + "'");
  EXPECT_NE(former, before);
  const Outcome asked = RunRebate({"complete", "--", "show", "--dsn", dsn_, ""});
  EXPECT_EQ(asked.out + asked.err, "");
  EXPECT_EQ(Shell("cksum < '" + dsn_ + "'"), former);
}

TEST(CompletionOfServers, IsGivenUpWhereNobodyAnswers) {
  if (!Runs("odbcinst -q -d -n FreeTDS")) GTEST_SKIP() << "no driver FreeTDS";
  const Listener mute;
  const Text dsn = "Driver=FreeTDS;Server=127.0.0.1;Port=" + std::to_string(mute.port()) + ";Database=a;UID=a;PWD=a";
  EXPECT_EQ(Shell("timeout 20 " REBATE_TOOL " complete -- show --dsn '" + dsn + "' ''"), "");
}

TEST(Manual, PagesOfAllVerbsRender) {
  if (!Runs("groff --version")) GTEST_SKIP() << "no groff";
  EXPECT_EQ(Shell("groff -man -Tutf8 -ww -z " REBATE_MANUAL "/*.1"), "");
  const auto plain = [](const Text& page) {
    return Shell("groff -man -Tutf8 -P-cbou -rLL=100n " REBATE_MANUAL "/" + page + " | tr -s ' \\n' '  '");
  };
  const Text import = plain("rebate-import.1");
  for (const char* part : {"rebate-import - Store suppliers", "SYNOPSIS rebate import [OPTIONS] KIND FILE",
                           "--encoding TEXT utf-8 or gb18030, where the file's isn't", "units: ID, Number (编号), Name",
                           "EXAMPLES rebate import goods goods.csv --check --dsn shop.db rebate export"}) {
    EXPECT_TRUE(Holds(import, part)) << part << '\n' << import;
  }
  const Text tool = plain("rebate.1");
  const Outcome help = RunRebate({"--help"});
  std::istringstream lines(help.out.substr(help.out.find("Subcommands:")));
  Text line;
  for (std::getline(lines, line); std::getline(lines, line) && !line.empty();) {
    const Text verb = line.substr(2, line.find(' ', 2) - 2);
    EXPECT_TRUE(Holds(tool, "rebate-" + verb + "(1)")) << verb;
    EXPECT_TRUE(Holds(plain("rebate-" + verb + ".1"), "NAME rebate-" + verb + " - ")) << verb;
  }
  EXPECT_TRUE(Holds(plain("rebate-form-show.1"), "rebate-form(1)"));
}

}  // namespace
}  // namespace rebate
