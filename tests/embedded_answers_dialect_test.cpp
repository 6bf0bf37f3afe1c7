#include "tests/embedded_answers_kit.h"

namespace rebate {
namespace {

class EmbeddedAnswersDialect : public EmbeddedAnswers {
 protected:
  EmbeddedAnswersDialect() {
    Run("create table t_s (FID int primary key, FName nvarchar(10), FSum int)");
    Run("insert into t_s values (1, 'a', 10), (2, 'b', 20), (3, 'c', 30)");
  }
};

TEST_F(EmbeddedAnswersDialect, CommonTables) {
  Check({{"with x as (select FID, FSum from t_s where FID > 1) select sum(FSum) from x", "50"},
         {"with x (k, v) as (select FID, FSum * 2 from t_s), y as (select k from x where v > 20) select a.k, b.v from y "
          "a join x b on a.k = b.k order by a.k",
          "2,40;3,60"},
         {"with x as (select 1 as n union all select 2) select a.n, b.n from x a, x b order by 1, 2", "1,1;1,2;2,1;2,2"},
         {"with x as (select FID from t_s) select FID from t_s where FID in (select FID from x where FID < 3)", "1;2"},
         {"with x as (select max(FID) as m from t_s) insert into t_s select m + 1, 'd', 40 from x select FID from t_s "
          "where FName = 'd'",
          "4"},
         {"with x as (select 4 as n) update t_s set FSum = 41 from x where FID = n select FSum from t_s where FID = 4",
          "41"},
         {"with x as (select 4 as n) delete t_s from x where FID = n select count(*) from t_s", "3"},
         {"with t_s as (select 9 as FID) select FID from t_s", "9"}});
  CheckRefused({{"with x as (select 1 as n union all select n + 1 from x where n < 3) select n from x",
                 "'recursive common table expression' is not supported by an embedded account."},
                {"with x as (select 1) select * from x", "No column name was specified for column 1 of 'x'."},
                {"with x (a, b) as (select 1) select * from x",
                 "'x' has more columns specified in the column list than columns in its query."},
                {"with x as (select 1 as a, 2 as a) select * from x",
                 "The column 'a' was specified multiple times for 'x'."},
                {"with x as (select 1 as n order by n) select n from x",
                 "The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common "
                 "table expressions, unless TOP or FOR XML is also specified."},
                {"with x as (select 1 as n), x as (select 2 as n) select n from x",
                 "Duplicate common table expression name 'x' was specified."}});
}

TEST_F(EmbeddedAnswersDialect, TablesGrow) {
  Check({{"alter table t_s add FMore decimal(9,2), FFlag bit not null default 1 select FID, FMore, FFlag from t_s where "
          "FID = 1",
          "1,NULL,True"},
         {"alter table t_s add constraint CK_sum check (FSum >= 0 and FSum < 1000) select count(*) from t_s", "3"},
         {"update t_s set FFlag = 0, FSum = 5 where FID = 1 update t_s set FFlag = default where FID = 1 select FFlag, "
          "FSum from t_s where FID = 1",
          "True,5"},
         {"update t_s set FMore = default select count(*) from t_s where FMore is null", "3"},
         {"create table t_c (a int constraint CK_a check (a > 0), b int default 5, c decimal(9,2) default 1.50 check (c "
          "<> 7)) insert into t_c (a) values (1) insert into t_c values (null, default, default) select a, b, c from t_c "
          "order by 1",
          "NULL,5,1.5;1,5,1.5"},
         {"insert into t_c default values select count(*) from t_c", "3"}});
  CheckRefused(
      {{"insert into t_s (FID, FSum) values (9, -1)",
        "The INSERT statement conflicted with the CHECK constraint \"CK_sum\". The conflict occurred in database "
        "\"account\", table \"dbo.t_s\"."},
       {"update t_s set FSum = 1000",
        "The UPDATE statement conflicted with the CHECK constraint \"CK_sum\". The conflict occurred in database "
        "\"account\", table \"dbo.t_s\"."},
       {"insert into t_c (a) values (0)",
        "The INSERT statement conflicted with the CHECK constraint \"CK_a\". The conflict occurred in database "
        "\"account\", table \"dbo.t_c\", column 'a'."},
       {"alter table t_s add constraint CK_low check (FSum > 25)",
        "The ALTER TABLE statement conflicted with the CHECK constraint \"CK_low\". The conflict occurred in database "
        "\"account\", table \"dbo.t_s\", column 'FSum'."}},
      database_error::kConstraint);
  CheckRefused({{"alter table t_s add FMore int",
                 "Column names in each table must be unique. Column name 'FMore' in table 't_s' is specified more than "
                 "once."},
                {"alter table nosuch add a int",
                 "Cannot find the object \"nosuch\" because it does not exist or you do not have permissions."},
                {"create table t_s (a int)", "There is already an object named 't_s' in the database."},
                {"alter table t_s add FNeed int not null",
                 "ALTER TABLE only allows columns to be added that can contain nulls, or have a DEFAULT definition "
                 "specified, or the column being added is an identity or timestamp column, or alternatively if none of "
                 "the previous conditions are satisfied the table must be empty to allow addition of this column. "
                 "Column 'FNeed' cannot be added to non-empty table 't_s' because it does not satisfy these "
                 "conditions."}});
}

TEST_F(EmbeddedAnswersDialect, TransactionsCountTheirLevels) {
  Check({{"select @@trancount begin tran begin tran select @@trancount commit commit", "0"},
         {"begin tran begin tran declare @n int set @n = @@trancount commit set @n = @n * 10 + @@trancount commit select "
          "@n * 10 + @@trancount",
          "210"},
         {"begin tran update t_s set FSum = 0 begin tran rollback select @@trancount, sum(FSum) from t_s", "0,60"},
         {"begin transaction delete from t_s rollback transaction select count(*) from t_s", "3"},
         {"begin tran delete from t_s where FID = 3 commit select count(*) from t_s", "2"},
         {"begin tran insert into t_s values (3, 'c', 30) commit tran select count(*) from t_s", "3"}});
  CheckRefused({{"commit", "The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION."},
                {"rollback", "The ROLLBACK TRANSACTION request has no corresponding BEGIN TRANSACTION."}});
}

TEST_F(EmbeddedAnswersDialect, BatchesSpeakAndFail) {
  Run("print 'one' print 1 + 1 print N'三' raiserror('low %d %s', 10, 1, 5, 'x') print null");
  EXPECT_EQ(account_->TakeMessages(), (std::vector<Text>{"one", "2", "三", "low 5 x", ""}));
  EXPECT_TRUE(account_->TakeMessages().empty());
  CheckRefused({{"raiserror('bad %s: %d', 16, 1, 'thing', 42)", "bad thing: 42"},
                {"throw 50001, 'thrown', 1", "thrown"},
                {"declare @m nvarchar(20) set @m = N'坏' raiserror(@m, 16, 1)", "坏"},
                {"select 1 from t_s where FID = 1 raiserror('late', 16, 1)", "late"}});
}

TEST_F(EmbeddedAnswersDialect, AnAccountTellsAboutItself) {
  Run("create table t_a (FID int identity(1,1) not null, FText nvarchar(20) null default N'x', FCode char(3) not null, "
      "FRate decimal(28,10), FMoney money, FDate datetime, FReal float, FLong nvarchar(max), FSmall smallint)");
  Run("create view v_a as select FID, FText from t_a");
  Check({{"select table_name, table_type from information_schema.tables where table_name in ('t_a', 'v_a') order by "
          "table_name",
          "t_a,BASE TABLE;v_a,VIEW"},
         {"select table_catalog, table_schema from information_schema.tables where TABLE_NAME = 't_a'", "account,dbo"},
         {"select column_name, ordinal_position, is_nullable, data_type, character_maximum_length, numeric_precision, "
          "numeric_scale from information_schema.columns where table_name = 't_a' order by ordinal_position",
          "FID,1,NO,int,NULL,10,0;FText,2,YES,nvarchar,20,NULL,NULL;FCode,3,NO,char,3,NULL,NULL;"
          "FRate,4,YES,decimal,NULL,28,10;FMoney,5,YES,money,NULL,19,4;FDate,6,YES,datetime,NULL,NULL,NULL;"
          "FReal,7,YES,float,NULL,53,NULL;FLong,8,YES,nvarchar,-1,NULL,NULL;FSmall,9,YES,smallint,NULL,5,0"},
         {"select name, xtype, type from sysobjects where name in ('t_a', 'v_a') order by name", "t_a,U ,U ;v_a,V ,V "},
         {"select c.name, c.length, c.colid, c.isnullable from syscolumns c where c.id = object_id('t_a') and c.colid < "
          "4 order by c.colid",
          "FID,4,1,0;FText,40,2,1;FCode,3,3,0"},
         {"select count(*) from sysobjects where id = object_id('v_a') and xtype = 'V'", "1"},
         {"select db_name(), @@error, case when len(@@version) > 0 then 1 end", "account,0,1"},
         {"select count(*) from information_schema.columns where table_name = 'v_a'", "2"},
         {"if not exists (select 1 from syscolumns where id = object_id('t_a') and name = 'FNew') alter table t_a add "
          "FNew int select count(*) from syscolumns where id = object_id('t_a')",
          "10"}});
}

TEST_F(EmbeddedAnswersDialect, WhatStaysOutsideIsNamed) {
  const struct {
    const char* text;
    const char* name;
  } cases[] = {{"merge t_s as a using t_s as b on a.FID = b.FID when matched then delete;", "MERGE"},
               {"select * from t_s pivot (sum(FSum) for FID in ([1], [2])) p", "PIVOT"},
               {"select row_number() over (order by FID) from t_s", "OVER"},
               {"select sum(FSum) over () from t_s", "OVER"},
               {"select * from t_s cross apply (select 1 as x) y", "APPLY"},
               {"exec sp_help", "EXEC"},
               {"execute('select 1')", "EXECUTE"},
               {"sp_help", "EXEC"},
               {"declare c cursor for select FID from t_s", "CURSOR"},
               {"create table t_x (a time)", "time"},
               {"select cast('1:00' as time)", "time"},
               {"create table t_x (a varbinary(5))", "varbinary"},
               {"create table t_x (a xml)", "xml"},
               {"create procedure p as select 1", "PROCEDURE"},
               {"create trigger g on t_s for insert as print 1", "TRIGGER"},
               {"create function f() returns int as begin return 1 end", "FUNCTION"},
               {"begin try select 1 end try begin catch end catch", "TRY"},
               {"declare @t table (a int)", "table"},
               {"goto done", "GOTO"},
               {"waitfor delay '00:00:01'", "WAITFOR"},
               {"select FID from t_s for xml path", "FOR"},
               {"select FID from t_s option (recompile)", "OPTION"},
               {"update t_s set FSum = 1 output inserted.FID", "OUTPUT"},
               {"select FID from t_s group by FID with rollup", "ROLLUP"},
               {"select FID from t_s order by FID offset 1 rows", "OFFSET"},
               {"backup database account to disk = 'x'", "BACKUP"},
               {"grant select on t_s to public", "GRANT"},
               {"select 0x1F", "0x1F"},
               {"alter table t_s drop column FSum", "DROP"},
               {"select top 1 with ties FID from t_s order by FID", "TIES"}};
  for (const auto& one : cases) {
    const Error error = Refusal(one.text);
    EXPECT_EQ(error.number, database_error::kStatement) << one.text;
    EXPECT_NE(error.description.find(one.name), Text::npos) << one.text << ": " << error.description;
    EXPECT_NE(error.description.find("is not supported by an embedded account."), Text::npos)
        << one.text << ": " << error.description;
  }
}

}  // namespace
}  // namespace rebate
