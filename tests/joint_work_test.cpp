#include "platform/login/joint_work.h"

#include <gtest/gtest.h>

#include "platform/automation/conversion.h"
#include "tests/error_of.h"
#include "tests/scheme_kit.h"

namespace rebate {
namespace {

class JointWorkTest : public testing::Test {
 protected:
  JointWorkTest() { AddMasterData(account_); }

  // A scheme for a goods item, refused where another one covers it.
  bool Save(Long goods) { return SchemeRequest().Organisation(0, 8, 3).GridRow({goods}).Saves(account_); }
  Text Count() const { return account_.Rows("select count(*) from t_FL_SchemeList"); }

  TestAccount account_;
};

TEST_F(JointWorkTest, StandsAtItsCommitAlone) {
  {
    JointWork work(account_.dsn());
    EXPECT_TRUE(Save(71));
    EXPECT_TRUE(Save(72));
    EXPECT_EQ(ToText(work.connection()->Execute("select count(*) from t_FL_SchemeList")->FieldValue(0)), "2");
    EXPECT_EQ(Count(), "0") << "others see nothing before";
    work.Commit();
    EXPECT_EQ(Count(), "2");
    EXPECT_TRUE(BaseInfoMgr().DelSchemeData(account_.dsn(), "1"));
    EXPECT_EQ(Count(), "1") << "a call behind the commit stands for itself";
  }
  {
    const JointWork work(account_.dsn());
    EXPECT_TRUE(Save(71));
  }
  EXPECT_EQ(Count(), "1") << "without a commit nothing stands";
  EXPECT_TRUE(Save(71));
  EXPECT_EQ(Count(), "2");
}

TEST_F(JointWorkTest, ACallThatUndoesItsWorkUndoesAll) {
  const Text before = account_.Everything();
  JointWork work(account_.dsn());
  EXPECT_TRUE(Save(71));
  EXPECT_FALSE(Save(71)) << "it overlaps";
  EXPECT_TRUE(work.IsUndone());
  EXPECT_FALSE(Save(72));
  EXPECT_NE(ErrorOf([&] { work.Commit(); }).number, 0);
  EXPECT_EQ(account_.Everything(), before);
}

TEST_F(JointWorkTest, ACallThatOnlyReadUndoesNothing) {
  JointWork work(account_.dsn());
  EXPECT_TRUE(Save(71));
  Ref<Dictionary> scheme = New<Dictionary>();
  EXPECT_FALSE(BaseInfoMgr().LoadSchemeRowData(account_.dsn(), 99, scheme));
  EXPECT_FALSE(work.IsUndone());
  work.Commit();
  EXPECT_EQ(Count(), "1");
}

// Whichever statement is refused, what other calls stored goes with it.
TEST_F(JointWorkTest, ARefusedStatementLeavesNothingOfAnyCall) {
  const Text before = account_.Everything();
  Trace trace;
  for (int refused = 1;; ++refused) {
    JointWork work(account_.dsn());
    ASSERT_TRUE(Save(71));
    trace.RefuseStatement(refused);
    if (Save(72)) break;
    if (!work.IsUndone()) continue;  // nothing was written yet
    EXPECT_NE(ErrorOf([&] { work.Commit(); }).number, 0) << refused;
    EXPECT_EQ(account_.Everything(), before) << refused;
  }
  EXPECT_EQ(account_.Everything(), before) << "what wasn't committed";
  EXPECT_GT(trace.statements(), 10);
}

}  // namespace
}  // namespace rebate
