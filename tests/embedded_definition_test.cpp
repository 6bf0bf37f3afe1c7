#include "tests/embedded_kit.h"

namespace rebate {
namespace {

using EmbeddedDefinition = EmbeddedTest;

TEST_F(EmbeddedDefinition, TakesTheWholeAccountSchema) {
  MakeSchema();
  for (const ScriptBatch& batch : Batches(AccountSample())) Run(batch.text);
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
    // The refused row has drawn a number.
    EXPECT_EQ(Rows("select FID, FName, FRate from #t"), "2,b,2.35") << "round " << round;
    EXPECT_EQ(Rows("select 1 where object_id('tempdb..#T') is not null"), "1");
    EXPECT_EQ(Refusal("select * from #t into #t").number, database_error::kStatement);
  }
  EXPECT_EQ(RefusalOn(*OpenEmbedded(path_), "select * from #t").description, "Invalid object name '#t'.");
  Run("drop table #t");
  EXPECT_EQ(Refusal("drop table #t").description,
            "Cannot drop the table '#t', because it does not exist or you do not have permission.");
  // Another table under the same name, met by the same statements.
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

TEST_F(EmbeddedDefinition, IdentitiesCountAsDeclared) {
  struct {
    const char* type;
    const char* expected;  // three rows, the last one gone, one more, one given, one more
    const char* given;
  } cases[] = {{"int identity(1,1)", "1,2,4,40,41", "40"},
               {"int identity(1,1) primary key", "1,2,4,40,41", "40"},
               {"int identity(10,5)", "10,15,25,40,45", "40"},
               {"bigint identity(-4,-2)", "-4,-6,-10,-40,-42", "-40"},
               {"smallint identity(-1,1) primary key", "-1,0,2,2000,2001", "2000"},
               {"decimal(6,0) identity(100000,3)", "100000,100003,100009,100100,100103", "100100"},
               {"tinyint identity", "1,2,4,3,5", "3"}};
  for (const char* table : {"t_i", "#i"}) {
    for (const auto& one : cases) {
      const Text name = table;
      Run("create table " + name + " (FID " + one.type + ", a int)");
      Run("insert into " + name + " (a) select n from (select 2 as n union select 3 union select 1) v order by n");
      Run("delete from " + name + " where a = 3 insert into " + name + " (a) values (4)");
      Run("set identity_insert " + name + " on insert into " + name + " (FID, a) values (" + one.given +
          ", 5) set identity_insert " + name + " off insert into " + name + " (a) values (6)");
      const Text last = Rows("select @@identity");
      EXPECT_EQ(Replace(Rows("select FID from " + name + " order by a"), ";", ","), one.expected) << one.type;
      EXPECT_EQ(Rows("select FID from " + name + " where a = 6"), last) << one.type;
      const Text first = Text(one.expected).substr(0, Text(one.expected).find(','));
      Run("truncate table " + name + " insert into " + name + " (a) values (1)");
      EXPECT_EQ(Rows("select FID from " + name), first) << one.type;
      Run("drop table " + name);
    }
  }
  Run("create table t_i (FID int identity(10,5), a int) insert into t_i (a) values (1), (2) delete from t_i where a = "
      "2");
  Run("set identity_insert t_i on insert into t_i (FID) values (3) set identity_insert t_i off");
  Run("insert into t_i (a) values (4)");
  EXPECT_EQ(Rows("select max(FID) from t_i"), "20") << "a lower number that is given brings none back that is gone";
}

TEST_F(EmbeddedDefinition, IdentitiesStopAtTheirType) {
  struct {
    const char* type;
    const char* shown;
  } cases[] = {{"tinyint identity(255,1)", "tinyint"},
               {"smallint identity(-32768,-1)", "smallint"},
               {"int identity(2147483647,1)", "int"},
               {"bigint identity(9223372036854775807,1)", "bigint"},
               {"decimal(2,0) identity(99,1)", "numeric"}};
  for (const auto& one : cases) {
    Run(Text("create table t_i (FID ") + one.type + " primary key, a int) insert into t_i (a) values (1)");
    EXPECT_EQ(Refusal("insert into t_i (a) values (2)").description,
              Text("Arithmetic overflow error converting IDENTITY to data type ") + one.shown + ".");
    EXPECT_EQ(Rows("select count(*) from t_i"), "1");
    Run("drop table t_i");
  }
  Run("create table t_i (FID int identity(1,1) primary key, a int) set identity_insert t_i on "
      "insert into t_i (FID) values (2147483647) set identity_insert t_i off");
  EXPECT_EQ(Refusal("insert into t_i (a) values (2)").description,
            "Arithmetic overflow error converting IDENTITY to data type int.");
}

TEST_F(EmbeddedDefinition, KeysTakeNullsAsEqualAndKeepTheirNames) {
  Run("create table t_k (a nvarchar(9), b decimal(9,2), c int not null, d int constraint DK default 0, "
      "constraint PK_Item primary key (c), unique (a, b), constraint U_d unique (d))");
  Run("create unique index IX on t_k (b, d) insert into t_k values (null, 1.5, 1, 1), (null, null, 2, 2), "
      "('x', null, 3, 3), ('x', 1, 4, null)");
  const Text violation = "Violation of UNIQUE KEY constraint ";
  const Text object = ". Cannot insert duplicate key in object 'dbo.t_k'.";
  struct {
    const char* values;
    Text says;
  } cases[] = {{"null, 1.50, 5, 5", violation + "'UQ_t_k_a_b'" + object},
               {"null, null, 5, 5", violation + "'UQ_t_k_a_b'" + object},
               {"'X ', null, 5, 5", violation + "'UQ_t_k_a_b'" + object},
               {"'y', 2, 1, 5", "Violation of PRIMARY KEY constraint 'PK_Item'" + object},
               {"'y', 2, 5, null", violation + "'U_d'" + object},
               {"'x', 2, 5, 5", ""},
               {"null, 2, 6, 6", ""}};
  for (const auto& one : cases) {
    EXPECT_EQ(Refusal(Text("insert into t_k values (") + one.values + ")").description, one.says) << one.values;
  }
  EXPECT_EQ(Refusal("create table t_l (a int constraint pk_item primary key)").description,
            "There is already an object named 'pk_item' in the database.");
  EXPECT_EQ(Refusal("drop index t_k.PK_Item").description,
            "An explicit DROP INDEX is not allowed on index 't_k.PK_Item'. It is being used for PRIMARY KEY constraint "
            "enforcement.");
  Run("create table t_n (a int) insert into t_n values (null), (null)");
  EXPECT_EQ(Refusal("create unique index IX_n on t_n (a)").description,
            "The CREATE UNIQUE INDEX statement terminated because a duplicate key was found for the object name "
            "'dbo.t_n' and the index name 'IX_n'. The duplicate key value is (<NULL>).");
}

TEST_F(EmbeddedDefinition, ChecksHold) {
  Run("create table t_c (a int constraint CK_a check (a > 0), b int, constraint CK_ab check (a < b)) "
      "insert into t_c values (1, 2), (null, 0)");
  struct {
    const char* text;
    const char* says;
  } cases[] = {
      {"insert into t_c values (0, 1)",
       "The INSERT statement conflicted with the CHECK constraint \"CK_a\". The conflict occurred in database "
       "\"account\", table \"dbo.t_c\", column 'a'."},
      {"update t_c set b = 1 where a = 1",
       "The UPDATE statement conflicted with the CHECK constraint \"CK_ab\". The conflict occurred in database "
       "\"account\", table \"dbo.t_c\"."},
      {"alter table t_c add constraint CK_b check (b > 0)",
       "The ALTER TABLE statement conflicted with the CHECK constraint \"CK_b\". The conflict occurred in database "
       "\"account\", table \"dbo.t_c\"."}};
  for (const auto& one : cases) {
    const Error error = Refusal(one.text);
    EXPECT_EQ(error.number, database_error::kConstraint);
    EXPECT_EQ(error.description, one.says);
  }
}

TEST_F(EmbeddedDefinition, AddsToTablesThatHoldRows) {
  for (const char* table : {"t_a", "#a"}) {
    const Text name = table;
    Run("create table " + name + " (FID int identity(1,1) primary key, a nvarchar(9)) create unique index IX on " +
        name + " (a) insert into " + name + " (a) values ('x'), ('y'), ('z') delete from " + name + " where a = 'z'");
    const Text add = "alter table " + name + " add ";
    EXPECT_EQ(Refusal(add + "n int not null").description.substr(0, 66),
              "ALTER TABLE only allows columns to be added that can contain nulls");
    Run(add + "b int, c int default 3, d decimal(9,2) not null default 1.5, e as a, constraint CK_d check (d > 1)");
    Run("insert into " + name + " (a) values ('w')");
    EXPECT_EQ(Rows("select * from " + name), "1,x,NULL,NULL,1.5,x;2,y,NULL,NULL,1.5,y;4,w,NULL,3,1.5,w");
    for (const char* text : {"n int identity(1,1)", "a int", "primary key (a)", "unique (d)", "check (FID > 1)"}) {
      EXPECT_NE(Refusal(add + text).number, 0) << text;
    }
    EXPECT_NE(Refusal("insert into " + name + " (a, d) values ('v', 1)").number, 0) << "the check that was added";
    EXPECT_NE(Refusal("insert into " + name + " (a) values ('w ')").number, 0) << "the index that was there";
    Run("drop table " + name);
  }
  Run("create table t_h (a int) insert into t_h values (7), (8) alter table t_h add FID bigint identity(10,10)");
  EXPECT_EQ(Rows("select a, FID from t_h"), "7,10;8,20");
}

TEST_F(EmbeddedDefinition, TellsOfItselfAsAServerDoes) {
  Run("create table t_s (FID int identity(1,1) constraint PK_Own primary key, a nvarchar(9) not null default 'x', "
      "b decimal(9,2), c varchar(max), d datetime) create table #hidden (a int)");
  Run("create view v_s as select a, b from t_s");
  struct {
    const char* text;
    const char* rows;
  } cases[] = {
      {"select TABLE_CATALOG, TABLE_SCHEMA, TABLE_NAME, TABLE_TYPE from information_schema.tables order by TABLE_NAME",
       "account,dbo,t_s,BASE TABLE;account,dbo,v_s,VIEW"},
      {"select COLUMN_NAME, DATA_TYPE, CHARACTER_MAXIMUM_LENGTH, NUMERIC_PRECISION, NUMERIC_SCALE, IS_NULLABLE, "
       "COLUMN_DEFAULT from INFORMATION_SCHEMA.COLUMNS where TABLE_NAME = 'T_S' order by ORDINAL_POSITION",
       "FID,int,NULL,10,0,NO,NULL;a,nvarchar,9,NULL,NULL,NO,('x');b,decimal,NULL,9,2,YES,NULL;"
       "c,varchar,-1,NULL,NULL,YES,NULL;d,datetime,NULL,NULL,NULL,YES,NULL"},
      {"select count(*) from information_schema.columns where table_name = 'v_s'", "2"},
      {"select name from sysobjects where id = object_id('t_s') and xtype = 'U'", "t_s"},
      {"select o.name from sys.objects o where o.object_id = object_id('PK_Own') and o.type = 'PK'", "PK_Own"},
      {"select c.name from syscolumns c join sysobjects o on o.id = c.id where o.name = 't_s' and c.isnullable = 0",
       "FID;a"},
      {"select name from sys.columns where object_id = object_id('dbo.t_s') and is_identity = 1", "FID"},
      {"select ident_current('t_s'), ident_current('v_s'), ident_current('t_none')", "1,NULL,NULL"},
      {"insert into t_s (a) values ('x') insert into t_s (a) values ('y') delete from t_s "
       "select ident_current('dbo.T_S')",
       "2"},
      {"if not exists (select * from sysobjects where name = 'nothing') select 1", "1"}};
  for (const auto& one : cases) EXPECT_EQ(Rows(one.text), one.rows) << one.text;
  EXPECT_EQ(Refusal("select * from sysindexes").description, "Invalid object name 'sysindexes'.");
}

TEST_F(EmbeddedDefinition, ForgetsNamesOfTemporaryTablesInTime) {
  for (int i = 0; i < 200; ++i) {
    const Text name = "#n" + std::to_string(i % 100);
    Run("create table " + name + " (a int identity(1,1), b int) insert into " + name + " (b) values (1)");
    EXPECT_EQ(Rows("select a from " + name), "1");
    Run("drop table " + name);
  }
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
