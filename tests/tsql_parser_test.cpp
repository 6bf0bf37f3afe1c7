#include <gtest/gtest.h>

#include <string>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/database/tsql/parse/parser.h"

namespace rebate::tsql {
namespace {

// What the batch is refused with; empty where it parses.
Text RefusalOf(std::string_view batch) {
  try {
    Parse(batch);
    return {};
  } catch (const Error& error) {
    EXPECT_EQ(error.number, database_error::kStatement);
    EXPECT_EQ(error.source, "Transact-SQL");
    return error.description;
  }
}

struct Case {
  std::string_view batch;
  std::string_view refusal;
};

template <std::size_t Count>
void ExpectErrors(const Case (&cases)[Count]) {
  for (const Case& c : cases) EXPECT_EQ(RefusalOf(c.batch), c.refusal) << c.batch;
}

Text Repeat(std::string_view text, int times) {
  Text all;
  for (int i = 0; i < times; ++i) all += text;
  return all;
}

TEST(Parser, FixesTheLiteralsThatItReads) {
  EXPECT_EQ(Parse("select a as 'x',cast(1 as varchar(20)),2").fixed_literals, (std::vector<std::size_t>{0, 2}));
  EXPECT_EQ(Parse("create table t(a int identity(1,2),b decimal(9,3) default 5)").fixed_literals,
            (std::vector<std::size_t>{0, 1, 2, 3}));
  EXPECT_EQ(Parse("create view v as select 1 a,'x' b").fixed_literals, (std::vector<std::size_t>{0, 1}));
  EXPECT_EQ(Parse("select cast(1 as datetime2(3)) raiserror('x',1,1)").fixed_literals, (std::vector<std::size_t>{1}));
  EXPECT_TRUE(
      Parse("insert into t(a,b) values(1,'x') select top 5 a from t where b like '%x%'").fixed_literals.empty());
}

TEST(Parser, SaysWhereTheSyntaxIsWrong) {
  ExpectErrors({
      {"select * from t where a in ()", "Incorrect syntax near ')'."},
      {"select * from t where a = ", "Incorrect syntax near '='."},
      {"select a from from t", "Incorrect syntax near the keyword 'from'."},
      {"select a, From t", "Incorrect syntax near the keyword 'From'."},
      {"select * from t a And b=1", "Incorrect syntax near the keyword 'And'."},
      {"select a=b=c", "Incorrect syntax near '='."},
      {"select 1=1", "Incorrect syntax near '='."},
      {"select (a=1)", "Incorrect syntax near ')'."},
      {"select 1 where (a=1)+1=2", "Incorrect syntax near '+'."},
      {"select 1 where a=b=c", "Incorrect syntax near '='."},
      {"insert into t(a) values('it's')", "Unclosed quotation mark after the character string ')'."},
      {"insert into t(a) values('O'Neil')", "Unclosed quotation mark after the character string ')'."},
      {"insert into t(a) values(1", "Incorrect syntax near '1'."},
      {"insert into t(a) values(5,,7)", "Incorrect syntax near ','."},
      {"insert into t(a,b) values(abc,12%)", "Incorrect syntax near ')'."},
      {"update t set where a=1", "Incorrect syntax near the keyword 'where'."},
      {"select * from (select 1 a)", "Incorrect syntax near ')'."},
      {"select * from (select 1 a into #t) x", "Incorrect syntax near the keyword 'into'."},
      {"begin end", "Incorrect syntax near the keyword 'end'."},
      {"begin select 1", "Incorrect syntax near '1'."},
      {"else select 1", "Incorrect syntax near the keyword 'else'."},
      {"select 1 select 2)", "Incorrect syntax near ')'."},
      {"select case end", "Incorrect syntax near the keyword 'end'."},
      {"insert top 5 into t select 1", "Incorrect syntax near '5'."},
      {"delete top (5) with ties from t", "Incorrect syntax near the keyword 'with'."},
      {"declare @v int update t set @v=a=default", "Incorrect syntax near the keyword 'default'."},
      {"create table t(a int,constraint x b int)", "Incorrect syntax near 'b'."},
      {"create table t(a int check a>0)", "Incorrect syntax near 'a'."},
      {"alter table t add column a int", "Incorrect syntax near the keyword 'column'."},
      {"alter table t add a int,", "Incorrect syntax near ','."},
      {"create table t()", "Incorrect syntax near ')'."},
      {"drop table", "Incorrect syntax near 'table'."},
      {"bad", "Could not find stored procedure 'bad'."},
      {"selec 1", "Could not find stored procedure 'selec'."},
      {"this is no statement", "Incorrect syntax near the keyword 'is'."},
      {"select 1; nonsense", "Incorrect syntax near 'nonsense'."},
  });
}

TEST(Parser, ChecksWhatABatchMustNotSay) {
  ExpectErrors({
      {"select 1 where 1",
       "An expression of non-boolean type specified in a context where a condition is expected, near '1'."},
      {"select 1 where a=1 and b order by 1",
       "An expression of non-boolean type specified in a context where a condition is expected, near 'order'."},
      {"set @a=1", "Must declare the scalar variable \"@a\"."},
      {"select @@nothing", "Must declare the scalar variable \"@@nothing\"."},
      {"create table t(a int null,b int,primary key(b,A))",
       "Cannot define PRIMARY KEY constraint on nullable column in table 't'."},
      {"alter table t add a int primary key null",
       "Cannot define PRIMARY KEY constraint on nullable column in table 't'."},
      {"create table t(a int identity(1,0))", "Identity column 'a' contains invalid INCREMENT."},
      {"create table t(a int check(a))",
       "An expression of non-boolean type specified in a context where a condition is expected, near ')'."},
      {"declare @a int declare @A int",
       "The variable name '@A' has already been declared. Variable names must be unique within a query batch or stored "
       "procedure."},
      {"declare @a int select @a=1,b from t",
       "A SELECT statement that assigns a value to a variable must not be combined with data-retrieval operations."},
      {"insert into t(a,b) values(1)",
       "There are more columns in the INSERT statement than values specified in the VALUES clause. The number of "
       "values "
       "in the VALUES clause must match the number of columns specified in the INSERT statement."},
      {"insert into t values(1,2),(3)",
       "The number of columns for each row in a table value constructor must be the same."},
      {"break", "Cannot use a BREAK statement outside the scope of a WHILE statement."},
      {"select 1 create view v as select 1", "'CREATE VIEW' must be the first statement in a query batch."},
  });
}

TEST(Parser, RefusesByNameWhatLiesOutside) {
  const std::string_view cases[][2] = {
      {"merge t using u on 1=1 when matched then delete;", "MERGE"},
      {"alter view v as select 1", "ALTER VIEW"},
      {"alter table t drop column a", "ALTER TABLE DROP"},
      {"alter table t alter column a int", "ALTER TABLE ALTER COLUMN"},
      {"alter table t nocheck constraint all", "ALTER TABLE NOCHECK"},
      {"alter table t with nocheck add check(a>0)", "WITH NOCHECK"},
      {"alter table t add constraint d default 0 for a", "DEFAULT FOR"},
      {"create table t(a int identity(1,1) not for replication)", "NOT FOR REPLICATION"},
      {"create table t(a int,foreign key(a) references u(a))", "FOREIGN KEY"},
      {"create table t(a time)", "TIME"},
      {"select cast(a as datetimeoffset(7)) from t", "DATETIMEOFFSET"},
      {"with c as (select 1 a) merge c using u on 1=1 when matched then delete;", "MERGE"},
      {"with xmlnamespaces('x' as y) select 1", "WITH XMLNAMESPACES"},
      {"again: select 1", "LABEL"},
      {"select a from t group by rollup(a)", "ROLLUP"},
      {"select a from t group by grouping sets((a),())", "GROUPING SETS"},
      {"create or alter view v as select 1 a", "CREATE OR ALTER"},
      {"begin tran x with mark 'y'", "WITH MARK"},
      {"select @@nestlevel", "@@NESTLEVEL"},
      {"select current_user", "CURRENT_USER"},
      {"exec sp_help", "EXEC"},
      {"grant select on t to public", "GRANT"},
      {"declare c cursor for select 1", "CURSOR"},
      {"declare @t table(a int)", "TABLE VARIABLE"},
      {"begin try select 1 end try begin catch end catch", "TRY...CATCH"},
      {"goto x", "GOTO"},
      {"use master", "USE"},
      {"waitfor delay '0:0:5'", "WAITFOR"},
      {"create procedure p as select 1", "CREATE PROCEDURE"},
      {"create trigger p on t for insert as select 1", "CREATE TRIGGER"},
      {"drop database d", "DROP DATABASE"},
      {"save tran a", "SAVE TRANSACTION"},
      {"select * from openquery(x,'y')", "OPENQUERY"},
      {"select * from t pivot (max(a) for b in ([1])) p", "PIVOT"},
      {"select * from t cross apply f(t.a)", "APPLY"},
      {"select row_number() over (order by a) from t", "OVER"},
      {"select a from t order by a offset 5 rows", "OFFSET"},
      {"select a from t for xml auto", "FOR"},
      {"select 1 where a='x' collate Chinese_PRC_BIN", "COLLATE"},
      {"select a collate Latin1_General_BIN from t", "COLLATE"},
      {"select top 5 with ties a from t order by a", "WITH TIES"},
      {"insert into t output inserted.a values(1)", "OUTPUT"},
      {"insert into t exec p", "EXEC"},
      {"select * into ##t from u", "GLOBAL TEMPORARY TABLE"},
      {"create table t(a int references u(a))", "REFERENCES"},
      {"create table t(a uniqueidentifier)", "UNIQUEIDENTIFIER"},
      {"create index i on t(a) include (b)", "INCLUDE"},
      {"set rowcount 5", "SET ROWCOUNT"},
      {"set ansi_nulls off", "SET ANSI_NULLS OFF"},
      {"select 1 where a > all (select 1)", "ALL"},
  };
  for (const auto& [batch, name] : cases) {
    EXPECT_EQ(RefusalOf(batch), "'" + Text(name) + "' is not supported by an embedded account.") << batch;
  }
}

// What would need more stack than there is gets an error; what is long but flat is served.
TEST(Parser, RefusesEndlessNestingAndTakesLongLists) {
  constexpr std::string_view kTooDeep =
      "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller "
      "queries.";
  const int deep = 20000;
  for (const Text& batch : {
           "select " + Repeat("(", deep) + "1" + Repeat(")", deep),
           "select " + Repeat("- ", deep) + "1",
           "select 1 where " + Repeat("not ", deep) + "1=1",
           "select " + Repeat("abs(", deep) + "1" + Repeat(")", deep),
           "select 1" + Repeat("+1", deep),
           "select " + Repeat("(", 60) + "1" + Repeat(Repeat("+1", 900) + ")", 60),
           "select * from " + Repeat("(", 60) + "a" + Repeat(Repeat(" cross join a", 900) + ")", 60),
           "select " + Repeat("(select ", 60) + "1" + Repeat(Repeat("*1", 900) + ")", 60),
           "select * from t where a in " + Repeat("(select a from t where a in ", deep),
           "select * from " + Repeat("(", deep) + "t",
           "select * from " + Repeat("(select * from ", deep) + "t",
           "select * from a" + Repeat(" cross join a", deep),
           Repeat("(", deep) + "select 1",
           Repeat("if 1=1 ", deep) + "select 1",
           "if 1=1 select 1" + Repeat(" else if 1=1 select 1", deep),
           Repeat("begin ", deep),
           Repeat("while 1=1 ", deep),
       }) {
    EXPECT_EQ(RefusalOf(batch), kTooDeep) << batch.substr(0, 60);
  }
  EXPECT_EQ(Parse(Repeat("insert into t(a) values(1) ", deep)).statements.size(), static_cast<std::size_t>(deep));
  Parse("select 1 where a=1" + Repeat(" or a=1", deep));
  Parse("select 1 where a in (1" + Repeat(",1", deep * 5) + ")");
  const int chain = 1000;
  Parse("insert into t values(1)" + Repeat(",(1)", chain - 1));
  EXPECT_EQ(RefusalOf("insert into t values(1)" + Repeat(",(1)", chain)),
            "The number of row value expressions in the INSERT statement exceeds the maximum allowed number of 1000 "
            "row values.");
  Parse("select 1" + Repeat("+(1)*2", chain));
  Parse("select 'a'" + Repeat("+'a'", chain));
  Parse("select 1" + Repeat(" union select 1", chain));
  Parse("select 1" + Repeat(" intersect select 1", chain));
  Parse("select * from a" + Repeat(" join a on 1=1", chain));
  Parse("select " + Repeat("(", 60) + "1" + Repeat("+1)", 60) + Repeat("+1", chain));
}

}  // namespace
}  // namespace rebate::tsql
