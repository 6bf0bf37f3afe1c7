#include "tests/embedded_kit.h"

namespace rebate {
namespace {

using EmbeddedCache = EmbeddedTest;

TEST_F(EmbeddedCache, OneTemplateAnswersForOtherLiterals) {
  Run("create table t_s (FID int, FName nvarchar(20), FRate decimal(9,3))");
  for (const char* values : {"1, 'a', 1.5", "2, 'it''s', -2.25", "-3, '', 4"}) {
    Run("insert into t_s (FID, FName, FRate) values (" + Text(values) + ")");
  }
  EXPECT_EQ(Rows("select * from t_s order by FID"), "-3,,4;1,a,1.5;2,it's,-2.25");
  EXPECT_EQ(Rows("select FName from t_s where FID = 1"), "a");
  EXPECT_EQ(Rows("select FName from t_s where FID = 2"), "it's");
  EXPECT_EQ(Refusal("select FName from t_s where FID = '1.5'").number, database_error::kStatement);
  EXPECT_EQ(Rows("select FName from t_s where FID = '1'"), "a");
}

TEST_F(EmbeddedCache, LiteralsOfTheStatementItselfAreNotMixedUp) {
  Run("create table t_s (a int, b int) insert into t_s values (1, 9), (2, 8)");
  EXPECT_EQ(Rows("select a, b from t_s order by 1"), "1,9;2,8");
  EXPECT_EQ(Rows("select a, b from t_s order by 2"), "2,8;1,9");
  EXPECT_EQ(Rows("select cast('abcdef' as varchar(2)), 1.0 / 3"), "ab,0.333333");
  EXPECT_EQ(Rows("select cast('abcdef' as varchar(4)), 1.000000000 / 3"), "abcd,0.33333333333");
  EXPECT_EQ(Rows("select top 1 a from t_s order by a"), "1");
  EXPECT_EQ(Rows("select top 2 a from t_s order by a"), "1;2");
}

TEST_F(EmbeddedCache, ForgetsTheOldestOfManyTemplates) {
  for (int i = 0; i < 1200; ++i) {
    EXPECT_EQ(Rows("select 7 as n" + std::to_string(i % 700)), "7");
  }
}

TEST_F(EmbeddedCache, LongBatchesRunAsTheyStand) {
  Run("create table t_s (FID int identity(1,1) primary key, a int, b nvarchar(10))");
  Text batch = "begin tran delete from t_s\r\n";
  for (int i = 0; i < 200; ++i) {
    const Text n = std::to_string(i % 150);
    batch += "if exists(select 1 from t_s where a = " + n + ")\r\n  update t_s set b = 'again' where a = " + n +
             "\r\nelse\r\n  insert into t_s (a, b) values (" + n + ", 'if else')\r\n";
  }
  Run(batch + "commit tran");
  EXPECT_EQ(Rows("select count(*), sum(case when b = 'again' then 1 else 0 end) from t_s"), "150,50");

  Text broken = "delete from t_s ";
  for (int i = 0; i < 200; ++i) broken += "insert into t_s (a) values (1) ";
  EXPECT_EQ(Refusal(broken + "insert into t_s (a) values (1").number, database_error::kStatement);
  EXPECT_EQ(Rows("select count(*) from t_s"), "150") << "a batch that doesn't parse runs nothing";
}

}  // namespace
}  // namespace rebate
