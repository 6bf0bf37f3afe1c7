// The clients of docs/call.md.

#include "tests/shell.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

class CallClient : public ToolTest {
 protected:
  Text Example(const Text& command, const Text& dsn) const { return Shell(command + " " REBATE_TOOL " '" + dsn + "'"); }

  // Each prints this in these lines, whatever comes between.
  static constexpr const char* kFirst =
      "28 operations; GetRebateRange takes sDsn, lType\ntype 2040 按供应商采购总金额返采购额的X%\n";
  static constexpr const char* kLast = "BaseInfoMgr.LoadSchemeListData: RebateClassType无效，无法查询返利方案\n";
};

TEST_F(CallClient, InPython) {
  if (!Runs("python3 --version")) GTEST_SKIP() << "no python3";
  const Text python = "python3 " REBATE_SOURCE_DIR "/examples/python/call_client.py";
  EXPECT_EQ(Example(python, dsn_), Text(kFirst) + "stored as scheme 1\n" + kLast);
  const Text missing = Example(python, "nowhere.db");
  EXPECT_TRUE(Holds(missing, "The account nowhere.db does not exist") && Holds(missing, "status")) << missing;
}

TEST_F(CallClient, InNode) {
  if (!Runs("node --version")) GTEST_SKIP() << "no node";
  const Text node = "node " REBATE_SOURCE_DIR "/examples/node/call_client.mjs";
  EXPECT_EQ(Example(node, dsn_), Text(kFirst) + "mode 2\n" + kLast);
  const Text missing = Example(node, "nowhere.db");
  EXPECT_TRUE(Holds(missing, "The account nowhere.db does not exist") && Holds(missing, "status")) << missing;
}

TEST_F(CallClient, WhatCannotBeWrittenIsNoSuccess) {
  if (!Runs("test -w /dev/full")) GTEST_SKIP() << "no /dev/full";
  const Text request = "echo '{\"op\":\"BaseInfoMgr.TransMode\"}' | ";
  for (const Text& command : {request + REBATE_TOOL " call", Text(REBATE_TOOL " types"), Text(REBATE_TOOL " list"),
                              Text(REBATE_TOOL " sql \"select 1 as one\""), Text(REBATE_TOOL " --help")}) {
    EXPECT_EQ(Shell("{ REBATE_DSN='" + dsn_ + "'; export REBATE_DSN; " + command + " >/dev/full; }"),
              "rebate: Can't write to standard output\nstatus 256")
        << command;
  }
}

}  // namespace
}  // namespace rebate
