#include "tests/embedded_kit.h"

namespace rebate {
namespace {

using EmbeddedDefinition = EmbeddedTest;

TEST_F(EmbeddedDefinition, TakesTheWholeAccountSchema) {
  MakeSchema();
  for (const std::string_view batch : Batches(AccountSample())) Run(batch);
  EXPECT_NE(Rows("select count(*) from vw_Unit where FSrcItemId in (select FItemID from t_ICItem)"), "0");
  Run("insert into t_FL_SchemeList (FSchemeName) values ('s') insert into t_FL_AllOrgs (FSchemeID, FItemClassID, "
      "FItemID) "
      "select 1, 8, 0");
  EXPECT_EQ(Rows("select FEnable, FID from t_FL_SchemeList where FID = 1"), "0,1");
  EXPECT_EQ(Rows("select count(*) from VW_FL_SchemeOrg where FSchemeID = 1 and FItemID = 0"),
            Rows("select count(*) from t_Item where FItemClassID = 8"));
}

TEST_F(EmbeddedDefinition, KeepsTemporaryTablesToTheConnection) {
  Run("create table t_p (FID int identity(1,1) primary key, FName nvarchar(9) not null, FRate decimal(9,2))");
  Run("insert into t_p (FName, FRate) values ('a', 1.5)");
  for (int round = 0; round < 3; ++round) {
    Run("if object_id('tempdb..#t') is not null begin drop table #t end");
    Run("select * into #t from t_p where FID = -1");
    EXPECT_EQ(Refusal("insert into #t (FRate) values (2)").number, database_error::kConstraint);
    Run("insert into #t (FName, FRate) values ('b', 2.345)");
    EXPECT_EQ(Rows("select FID, FName, FRate from #t"), "1,b,2.35") << "round " << round;
    EXPECT_EQ(Rows("select 1 where object_id('tempdb..#T') is not null"), "1");
    EXPECT_EQ(Refusal("select * from #t into #t").number, database_error::kStatement);
  }
  EXPECT_EQ(RefusalOn(*OpenEmbedded(path_), "select * from #t").description, "Invalid object name '#t'.");
  Run("drop table #t");
  EXPECT_EQ(Refusal("drop table #t").description,
            "Cannot drop the table '#t', because it does not exist or you do not have permission.");
  // Another shape under the same name, met by the same statements.
  Run("create table #t (FName nvarchar(2), FMore int)");
  Run("insert into #t (FName) values ('c')");
  EXPECT_EQ(Rows("select * from #t"), "c,NULL");
  EXPECT_EQ(Refusal("insert into #t (FName, FRate) values ('b', 2.345)").description, "Invalid column name 'FRate'.");
}

TEST_F(EmbeddedDefinition, KeepsTextsWithoutABound) {
  Run("create table t_long (FText nvarchar(max), FNote text)");
  Run("insert into t_long values ('" + Text(9000, 'x') + "', 'n')");
  Run("select FText + FNote as FBoth into #long from t_long");
  EXPECT_EQ(Rows("select len(FText) from t_long"), "9000");
  EXPECT_EQ(Rows("select len(FBoth) from #long"), "9001");
}

TEST_F(EmbeddedDefinition, RefusesAnIdentityThatCountsByOtherThanOne) {
  EXPECT_EQ(Refusal("create table t_step (FID int identity(10,5))").description,
            "An identity column that counts by other than 1 is not supported by an embedded account.");
}

TEST_F(EmbeddedDefinition, RollsDefinitionsBack) {
  Run("create table t_p (FID int)");
  Run("select * into #kept from t_p");
  Run("insert into #kept values (1)");
  account_->BeginWork();
  Run("drop table #kept");
  Run("create table #gone (a int) insert into #gone values (1)");
  Run("create table t_q (a int)");
  Run("create view v_q as select 1 as a");
  Run("drop table t_p");
  account_->RollbackWork();
  EXPECT_EQ(Rows("select * from #kept"), "1");
  EXPECT_EQ(Rows("select count(*) from t_p"), "0");
  for (const char* text : {"select * from #gone", "select * from t_q", "select * from v_q"}) {
    EXPECT_NE(Refusal(text).number, 0) << text;
  }
  Run("create table #gone (a int)");
  EXPECT_EQ(Rows("select count(*) from #gone"), "0");
}

TEST_F(EmbeddedDefinition, FailedSelectIntoMakesNoTable) {
  Run("create table t_p (FName nvarchar(9)) insert into t_p values ('1'), ('x')");
  EXPECT_NE(Refusal("select cast(FName as int) as n into #n from t_p").number, 0);
  EXPECT_EQ(Refusal("select * from #n").description, "Invalid object name '#n'.");
  Run("delete from t_p where FName = 'x' select cast(FName as int) as n into #n from t_p");
  EXPECT_EQ(Rows("select n + 1 from #n"), "2");
}

TEST_F(EmbeddedDefinition, ExpandsViewsAsTheirTablesAre) {
  Run("create table t_v (FID int, FName nvarchar(9)) insert into t_v values (1, 'it''s'), (2, 'b')");
  Run("create view v_v as select FID * 10 as FTen, FName from t_v where FName <> 'b'");
  Run("create view v_w (a, b) as select v.FTen, count(*) from v_v v group by v.FTen");
  EXPECT_EQ(Rows("select a, b from v_w where a = 10"), "10,1");
  EXPECT_EQ(Rows("select v.* from v_v v"), "10,it's");
  EXPECT_EQ(RowsOn(*OpenEmbedded(path_), "select FTen from v_v"), "10");
  EXPECT_EQ(Refusal("create view v_v as select 1 as a").description,
            "There is already an object named 'v_v' in the database.");
  EXPECT_EQ(Refusal("create view v_x as select nope from t_v").description, "Invalid column name 'nope'.");
  Run("drop view v_w");
  EXPECT_EQ(Refusal("select * from v_w").description, "Invalid object name 'v_w'.");
}

TEST_F(EmbeddedDefinition, NoticesWhatAnotherConnectionMakes) {
  const ConnectionRef other = OpenEmbedded(path_);
  EXPECT_NE(RefusalOn(*other, "select * from t_new").number, 0);
  Run("create table t_new (a int) insert into t_new values (1)");
  EXPECT_EQ(RowsOn(*other, "select * from t_new"), "1");
  Run("drop table t_new create table t_new (a nvarchar(5), b int) insert into t_new values ('x', 2)");
  other->BeginWork();
  EXPECT_EQ(RowsOn(*other, "select * from t_new"), "x,2");
  other->CommitWork();
}

}  // namespace
}  // namespace rebate
