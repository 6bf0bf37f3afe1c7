#include "tests/embedded_answers_kit.h"

namespace rebate {
namespace {

class EmbeddedStatements : public EmbeddedAnswers {
 protected:
  EmbeddedStatements() {
    Run("create table t_s (FID int primary key, FName nvarchar(10), FSum int)");
    Run("insert into t_s values (1, 'a', 10), (2, 'b', 20), (3, 'c', 30)");
    Run("create table t_o (FID int not null, FSID int, FNote nvarchar(10) not null)");
    Run("insert into t_o values (1, 1, 'x'), (2, 1, 'y'), (3, 2, 'z')");
  }
};

TEST_F(EmbeddedStatements, SelectsAssignRowByRow) {
  Check({{"declare @s nvarchar(20) set @s = '' select @s = @s + FName from t_s order by FID desc select @s", "cba"},
         {"declare @s nvarchar(20) select @s = isnull(@s + ',', '') + FName from t_s order by FID select @s", "a,b,c"},
         {"declare @n decimal(9,2) set @n = 0 select @n = @n + FSum / 4.0 from t_s select @n", "15"},
         {"declare @a int, @b int select @a = 1, @b = @a + 1 select @a, @b", "1,2"},
         {"declare @a int, @b int set @a = 5 select @b = @a, @a = 7 select @a, @b", "7,5"},
         {"declare @a int set @a = 5 select @a = FID from t_s where FID > 9 select @a, @@rowcount", "5,0"},
         {"declare @a int set @a = 5 set @a = (select FID from t_s where FID > 9) select @a", "NULL"},
         {"declare @a int, @n int select @a = FSum from t_s order by FID set @n = @@rowcount select @a, @n", "30,3"},
         {"declare @a int select @a = count(*) from t_s select @a", "3"},
         {"declare @a int = 3, @b int = 4 set @a += @b select @a, @b", "7,4"},
         {"declare @t tinyint set @t = 200 select @t = FID from t_s where FID = 2 select @t", "2"}});
  CheckRefused({{"declare @a int select @a = 1, FID from t_s",
                 "A SELECT statement that assigns a value to a variable must not be combined with data-retrieval "
                 "operations."},
                {"select @nosuch = 1", "Must declare the scalar variable \"@nosuch\"."},
                {"declare @a int declare @a int",
                 "The variable name '@a' has already been declared. Variable names must be unique within a query batch "
                 "or stored procedure."}});
}

TEST_F(EmbeddedStatements, OneValueIsOneRow) {
  const char* several =
      "Subquery returned more than 1 value. This is not permitted when the subquery follows =, !=, <, <= , >, >= or "
      "when the subquery is used as an expression.";
  CheckRefused({{"select (select FID from t_o where FSID = 1)", several},
                {"select FID from t_s where FID = (select FID from t_o)", several},
                {"select FID, (select FNote from t_o where FSID = t_s.FID) from t_s", several},
                {"declare @a int set @a = (select FID from t_s)", several},
                {"update t_s set FSum = (select FID from t_o where FSID = t_s.FID)", several},
                {"delete from t_s where FID = (select FSID from t_o)", several},
                {"insert into t_o values (9, (select FID from t_s), 'x')", several},
                {"if (select FID from t_s) = 1 select 1", several},
                {"select case when 1 = 1 then (select FID from t_s) end", several}});
  Check({{"select sum(FSum), (select max(FID) from t_o) from t_s", "60,3"},
         {"select (select top 1 FNote from t_o where FSID = s.FID order by FID desc) from t_s s order by FID",
          "y;z;NULL"},
         {"select (select FNote from t_o where FID = 9)", "NULL"}});
}

TEST_F(EmbeddedStatements, ColumnsAreGroupedOrRefused) {
  CheckRefused(
      {{"select FName, sum(FSum) from t_s group by FID",
        "Column 't_s.FName' is invalid in the select list because it is not contained in either an aggregate function "
        "or the GROUP BY clause."},
       {"select FID from t_s group by FID having FSum > 1",
        "Column 't_s.FSum' is invalid in the HAVING clause because it is not contained in either an aggregate function "
        "or the GROUP BY clause."},
       {"select FID from t_s group by FID order by FSum",
        "Column \"t_s.FSum\" is invalid in the ORDER BY clause because it is not contained in either an aggregate "
        "function or the GROUP BY clause."},
       {"select FID from t_s having count(*) > 1",
        "Column 't_s.FID' is invalid in the select list because it is not contained in either an aggregate function or "
        "the GROUP BY clause."},
       {"select count(*), (select max(o.FID) from t_o o where o.FSID = s.FID) from t_s s",
        "Column 't_s.FID' is invalid in the select list because it is not contained in either an aggregate function or "
        "the GROUP BY clause."},
       {"select FSum + 1 from t_s group by FSum + 2",
        "Column 't_s.FSum' is invalid in the select list because it is not contained in either an aggregate function "
        "or the GROUP BY clause."},
       {"select FID from t_s where count(*) > 1",
        "An aggregate may not appear in the WHERE clause unless it is in a subquery contained in a HAVING clause or a "
        "select list, and the column being aggregated is an outer reference."},
       {"select sum(count(*)) from t_s group by FID",
        "Cannot perform an aggregate function on an expression containing an aggregate or a subquery."},
       {"select sum((select 1)) from t_s",
        "Cannot perform an aggregate function on an expression containing an aggregate or a subquery."},
       {"update t_s set FSum = sum(FID)", "An aggregate may not appear in the set list of an UPDATE statement."},
       {"select count(*) from t_s group by 1",
        "Each GROUP BY expression must contain at least one column that is not an outer reference."}});
  Check({{"select FSum + 1, count(*) from t_s group by FSum + 1 having max(FID) > 1 order by FSum + 1", "21,1;31,1"},
         {"select s.FID, (select count(*) from t_o o where o.FSID = s.FID) from t_s s group by s.FID order by s.FID",
          "1,2;2,1;3,0"},
         {"select count(*), 'x' from t_s where FID > 9", "0,x"},
         {"select count(*) from t_s where FID > 9 group by FID", ""},
         {"select max(FID) from t_s where FID > 9", "NULL"}});
}

TEST_F(EmbeddedStatements, TopTakesWhatItSays) {
  Check({{"select top 2 FID from t_s order by FID desc", "3;2"},
         {"select top (1 + 1) FID from t_s order by FID", "1;2"},
         {"select top 50 percent FID from t_s order by FID", "1;2"},
         {"select top (34) percent FID from t_s order by FID", "1;2"},
         {"select top 0 FID from t_s", ""},
         {"declare @n int set @n = 1 select top (@n) FID from t_s order by FID", "1"},
         {"update top (2) t_s set FSum = 0 select count(*) from t_s where FSum = 0", "2"},
         {"delete top (1) from t_s where FSum = 0 select count(*) from t_s", "2"},
         {"delete top (50) percent from t_s select count(*) from t_s", "1"},
         {"insert top (2) into t_s select FID + 10, FNote, 1 from t_o select count(*) from t_s", "3"}});
  CheckRefused(
      {{"select top (-1) FID from t_s", "A TOP N or FETCH rowcount value may not be negative."},
       {"declare @n int set @n = -2 delete top (@n) from t_s", "A TOP N or FETCH rowcount value may not be negative."},
       {"select top (101) percent FID from t_s", "Percent values must be between 0 and 100."},
       {"select top ('x') FID from t_s",
        "The number of rows provided for a TOP or FETCH clauses row count parameter must be an integer."}});
}

TEST_F(EmbeddedStatements, KeysAreCheckedAtTheEnd) {
  Check(
      {{"update t_s set FID = FID + 1 select FID, FName from t_s order by FID", "2,a;3,b;4,c"},
       {"update t_s set FID = FID - 1 select FID, FName from t_s order by FID", "1,a;2,b;3,c"},
       {"update t_s set FID = case FID when 1 then 2 when 2 then 1 else FID end select FID, FName from t_s order by "
        "FID",
        "1,b;2,a;3,c"},
       {"update t_s set FID = 4 - FID, FSum = FSum + FID select FID, FName, FSum from t_s order by FID",
        "1,c,33;2,a,12;3,b,21"},
       {"declare @n int set @n = 0 update t_s set @n = FSum = FSum + FID where FID = 1 select @n, (select FSum from "
        "t_s where FID = 1)",
        "34,34"},
       {"declare @n int update t_s set @n = FID where FName = 'a' select @n, @@rowcount", "2,1"},
       {"declare @n int set @n = 0 update t_s set @n = @n + 1, FSum = @n select sum(FSum), max(FSum) from t_s", "6,3"},
       {"update s set FName = o.FNote from t_s s join t_o o on o.FSID = s.FID where o.FID = 3 select FName from t_s "
        "order by FID",
        "c;z;b"},
       {"delete s from t_s s join t_o o on o.FSID = s.FID where o.FNote = 'z' select count(*) from t_s", "2"}});
  CheckRefused({{"update s set o.FNote = 'q' from t_s s join t_o o on o.FSID = s.FID",
                 "The multi-part identifier \"o.FNote\" could not be bound."}});
  CheckRefused({{"update t_s set FID = 1",
                 "Violation of PRIMARY KEY constraint 'PK_t_s'. Cannot insert duplicate key in "
                 "object 'dbo.t_s'."},
                {"update t_s set FID = null",
                 "Cannot insert the value NULL into column 'FID', table 'account.dbo.t_s'; column does not allow "
                 "nulls. UPDATE fails."}},
               database_error::kConstraint);
  Check({{"select FID, FName from t_s order by FID", "1,c;3,b"}});
}

TEST_F(EmbeddedStatements, UniqueKeysHoldOneNull) {
  Run("create table t_u (a int, b nvarchar(5), c int constraint UQ_c unique, constraint UQ_ab unique (a, b))");
  Run("create table t_w (a int, b int)");
  Run("create unique index IX_w on t_w (a, b)");
  Run("insert into t_u values (1, null, 1), (null, null, null), (null, 'x', 2)");
  Run("insert into t_w values (null, 1), (null, null)");
  CheckRefused(
      {{"insert into t_u values (5, 'y', null)",
        "Violation of UNIQUE KEY constraint 'UQ_c'. Cannot insert duplicate key in object 'dbo.t_u'."},
       {"insert into t_u values (1, null, 7)",
        "Violation of UNIQUE KEY constraint 'UQ_ab'. Cannot insert duplicate key in object 'dbo.t_u'."},
       {"insert into t_u values (null, 'X ', 7)",
        "Violation of UNIQUE KEY constraint 'UQ_ab'. Cannot insert duplicate key in object 'dbo.t_u'."},
       {"update t_u set c = null",
        "Violation of UNIQUE KEY constraint 'UQ_c'. Cannot insert duplicate key in object 'dbo.t_u'."},
       {"insert into t_w values (null, 1)",
        "Cannot insert duplicate key row in object 'dbo.t_w' with unique index 'IX_w'."},
       {"update t_w set b = null", "Cannot insert duplicate key row in object 'dbo.t_w' with unique index 'IX_w'."}},
      database_error::kConstraint);
  Check({{"select count(*) from t_u", "3"}, {"select count(*) from t_w", "2"}});
}

TEST_F(EmbeddedStatements, NullsTakeTheTypeBesideThem) {
  Check({{"select null union select 'abc'", "NULL;abc"},
         {"select null union all select 2.5 union all select null order by 1", "NULL;NULL;2.5"},
         {"select 'abc' union all select null", "abc;NULL"},
         {"select isnull(null, 'abc'), coalesce(null, 5), isnull(cast(null as varchar(2)), 'abc')", "abc,5,ab"},
         {"select 1 where 'a' = null or null = null or null <> 1 or not null = 1", ""},
         {"select 1 where 5 not in (1, null)", ""},
         {"declare @a int = 5 declare @b int = case when @a not between null and 3 then 1 else 0 end select @b", "1"},
         {"select 1 where 1 in (1, null) and not 2 in (1, 3)", "1"},
         {"select FID from t_s where FID not in (select FSID from t_o union all select null)", ""},
         {"select FID from t_s where FName not in ('a', null)", ""},
         {"select case when 1 = 2 then 'x' end, case null when null then 1 else 2 end", "NULL,2"},
         {"select null + 1, null + 'a', 'a' + null, -cast(null as int), null", "NULL,NULL,NULL,NULL,NULL"},
         {"select case when null is null then cast(null as int) end", "NULL"},
         {"select count(null_), sum(null_) from (select cast(null as int) as null_) x", "0,NULL"}});
  CheckRefused({{"select case when 1 = 1 then null end",
                 "At least one of the result expressions in a CASE specification must be an expression other than the "
                 "NULL constant."},
                {"select coalesce(null, null)",
                 "At least one of the arguments to COALESCE must be an expression that is not the NULL constant."},
                {"select nullif(null, 1)",
                 "The type of the first argument to NULLIF cannot be the NULL constant because the type of the first "
                 "argument has to be known."}});
}

TEST_F(EmbeddedStatements, TypesMeetByPrecedence) {
  Check({{"select nullif(1, 1.0), nullif('1', 1), nullif(2, '3'), nullif('a', 'A ')", "NULL,NULL,2,NULL"},
         {"select case 1 when '1' then 'same' end, case '1.0' when 1.0 then 'same' end, case 1.5 when 1 then 'a' when "
          "1.50 then 'b' end",
          "same,same,b"},
         {"select case when 1 = 1 then 1 else '2' end + 1, case when 1 = 2 then 1 else '2' end + 1", "2,3"},
         {"select 1 where 1 in ('1', 2) and '2' in (1, 2) and 1.5 in (1, '1.50') and 3 not in (1, 2.5)", "1"},
         {"select 1 where '10' > 9 and '10' < '9' and 1.0 = '1' and '2026-01-02' = cast('20260102' as datetime)", "1"},
         {"select 1 + '2', '1' + '2', 1 + 1.5, '1.5' + 1.25, 5 / 2, 5 / 2., 5 / 2e0", "3,12,2.5,2.75,2,2.5,2.5"},
         {"select v from (select 1 as v union all select '2') x order by v desc", "2;1"},
         {"select isnull(1, 2.7), isnull('ab', 12345), coalesce(1, 2.5)", "1,ab,1"},
         {"select coalesce(null, 'x', 'y'), coalesce(cast(null as int), '7') + 1", "x,8"}});
  CheckRefused(
      {{"select case when 1 = 1 then 'x' else 2 end",
        "Conversion failed when converting the varchar value 'x' to data type int."},
       {"select 1 union all select 'x'", "Conversion failed when converting the varchar value 'x' to data type int."},
       {"select coalesce('x', 1)", "Conversion failed when converting the varchar value 'x' to data type int."},
       {"select 'x' * 2", "Conversion failed when converting the varchar value 'x' to data type int."},
       {"select 'x' * 'y'", "Operand data type varchar is invalid for multiply operator."},
       {"select 'a' - 'b'", "Operand data type varchar is invalid for subtract operator."}});
}

TEST_F(EmbeddedStatements, LeftJoinsGiveNulls) {
  Run("select s.FID, o.FID as FOther, isnull(o.FID, 0) as FFilled, isnull(o.FNote, '-') as FNote, o.FNote as FOwn into "
      "t_j from t_s s left join t_o o on o.FSID = s.FID");
  Check({{"select column_name, is_nullable from information_schema.columns where table_name = 't_j' order by "
          "ordinal_position",
          "FID,NO;FOther,YES;FFilled,NO;FNote,NO;FOwn,YES"},
         {"select FID, FOther, FFilled, FNote from t_j where FOther is null", "3,NULL,0,-"},
         {"select count(*) from t_s s left join t_o o on o.FSID = s.FID where o.FNote is null", "1"},
         {"select count(*) from t_o o right join t_s s on o.FSID = s.FID where isnull(o.FNote, '') = ''", "1"},
         {"select count(*), count(s.FID), count(o.FID) from t_s s full join t_o o on o.FSID = s.FID and o.FID < 3",
          "5,4,3"}});
  // A temporary table leads a join only where nothing is lost by it.
  Run("create table #k (FKey int) insert into #k values (3), (2)");
  Check({{"select s.FID, k.FKey from t_s s left join #k k on k.FKey = s.FID order by s.FID", "1,NULL;2,2;3,3"},
         {"select s.FID, v.FNote from t_s s left join (select FSID, FNote from t_o where FID = 3) v on v.FSID = s.FID "
          "inner join #k k on k.FKey = v.FSID or k.FKey = s.FID order by s.FID",
          "2,z;3,NULL"}});
}

TEST_F(EmbeddedStatements, UnionsAreNullableWhereOneOfTheirPartsIs) {
  Run("select FSum as a, FID as b, FID as c into t_v from t_s union all select FID, FSum, FID from t_s");
  Check(
      {{"select column_name, is_nullable from information_schema.columns where table_name = 't_v' order by "
        "ordinal_position",
        "a,YES;b,YES;c,NO"}});
}

TEST_F(EmbeddedStatements, IdentityInsertEndsWithItsTable) {
  Run("create table t_i (FID int identity(1,1) primary key, a int)");
  Run("create table t_k (FID int identity(1,1) primary key, a int)");
  const char* off =
      "Cannot insert explicit value for identity column in table 't_i' when IDENTITY_INSERT is set to OFF.";
  CheckRefused({{"insert into t_i (FID, a) values (1, 1)", off}});
  Run("set identity_insert t_i on insert into t_i (FID, a) values (7, 1)");
  Run("set identity_insert t_i on");
  CheckRefused({{"set identity_insert t_k on",
                 "IDENTITY_INSERT is already ON for table 'account.dbo.t_i'. Cannot perform SET operation for table "
                 "'t_k'."},
                {"insert into t_i (a) values (2)",
                 "Explicit value must be specified for identity column in table 't_i' either when IDENTITY_INSERT is "
                 "set to ON or when a replication user is inserting into a NOT FOR REPLICATION identity column."}});
  Run("drop table t_i create table t_i (FID int identity(1,1) primary key, a int)");
  CheckRefused({{"insert into t_i (FID, a) values (1, 1)", off}});
  Check(
      {{"set identity_insert t_k on insert into t_k (FID, a) values (3, 1) set identity_insert t_k off insert into "
        "t_k (a) values (2) select FID from t_k order by FID",
        "3;4"}});
}

}  // namespace
}  // namespace rebate
