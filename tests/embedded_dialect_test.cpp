#include "tests/embedded_kit.h"

namespace rebate {
namespace {

struct Case {
  const char* text;
  const char* rows;
};

class EmbeddedDialect : public EmbeddedTest {
 protected:
  EmbeddedDialect() {
    Run("create table t_n (FID int identity(1,1) primary key, FText nvarchar(50), FInt int, FRate decimal(28,10), "
        "FDate datetime, FFlag bit, FReal float)");
    Run("insert into t_n (FText, FInt, FRate, FDate, FFlag, FReal) values "
        "('Alpha', 1, 12.5, '2024-02-29 13:05:06', 1, 0.5), ('beta  ', 2, 0.1, '2023-12-31', 0, 2), "
        "(N'苹果', 0, 0.2, null, null, null), (null, null, null, null, null, null)");
    Run("create table t_m (FID int, FName varchar(20), FList nvarchar(20))");
    Run("insert into t_m values (1, 'one', '5,7'), (1, 'uno', '0'), (3, 'three', ''), (9, 'nine', null)");
  }

  void Check(std::initializer_list<Case> cases) {
    for (const Case& one : cases) {
      try {
        EXPECT_EQ(Rows(one.text), one.rows) << one.text;
      } catch (const Error& error) {
        ADD_FAILURE() << one.text << ": " << error.description;
      }
    }
  }
  void CheckRefused(std::initializer_list<Case> cases) {
    for (const Case& one : cases) {
      const Error error = Refusal(one.text);
      EXPECT_EQ(error.description, one.rows) << one.text;
      EXPECT_EQ(error.number, database_error::kStatement) << one.text;
    }
  }
};

TEST_F(EmbeddedDialect, ComparesTextWithoutCaseAndTrailingBlanks) {
  Check({{"select FID from t_n where FText = 'ALPHA '", "1"},
         {"select FID from t_n where FText = ' alpha'", ""},
         {"select FID from t_n where FText in ('BETA', 'x')", "2"},
         {"select FID from t_n where 'ABC' = 'abc  ' and FID = 1", "1"},
         {"select count(distinct v) from (select 'a' as v union all select 'A ' union all select 'b') x", "2"},
         {"select count(*) from (select 'a' as v union select 'A ') x", "1"},
         {"select count(*) from (select 'x' as v union all select 'X') y group by v", "2"},
         {"select FID from t_n where FText like 'ALP%'", "1"},
         {"select FID from t_n where FText like '[a-c]eta'", "2"},
         {"select FID from t_n where FText like '[^a]%' and FID < 3", "2"},
         {"select FID from t_n where 'a_c' like 'a!_c' escape '!' and FID = 1", "1"},
         {"select FID from t_n where 'abc' like 'a!_c' escape '!'", ""},
         {"select FID from t_n where FText like N'%果'", "3"},
         {"select charindex('B', 'abc'), charindex('c', 'abcabc', 4), charindex('', 'a')", "2,6,0"},
         {"select replace('aXbx', 'x', '-'), upper('aé'), lower('ÀΩ')", "a-b-,AÉ,àω"}});
}

TEST_F(EmbeddedDialect, ComparesTextWithNumbers) {
  Check({{"select FName from t_m where FList = 0 order by FName", "three;uno"},
         {"select FName from t_m where FList <> 0", ""},
         {"select 1 where ' 0 ' = 0 and '00' = 0 and '12.0' = 12.0", "1"},
         {"select FID from t_n where FInt = '1'", "1"},
         {"select FID from t_n where FInt = '5,7'", ""},
         {"select FName from t_m where isnull(FList, 0) = 0 order by FName", "nine;three;uno"},
         {"select FID from t_n where FInt in (1.5, 2)", "2"},
         {"select FID from t_n where FRate = '0.1'", "2"}});
  CheckRefused({{"select 1 from t_n where FInt = '12.0'",
                 "Conversion failed when converting the varchar value '12.0' to data type int."},
                {"select 1 from t_m where '1e2' = FID",
                 "Conversion failed when converting the varchar value '1e2' to data type int."},
                {"select 'a' + 1", "Conversion failed when converting the varchar value 'a' to data type int."}});
}

TEST_F(EmbeddedDialect, TreatsNullAsUnknown) {
  Check({{"select FID from t_n where FInt <> 1", "2;3"},
         {"select FID from t_n where FID not in (1, null)", ""},
         {"select FID from t_m where FID not in (select FInt from t_n)", ""},
         {"select FText from t_n order by FText", "NULL;Alpha;beta  ;苹果"},
         {"select FID from t_n where FText + 'x' is null", "4"},
         {"select isnull(null, 5), coalesce(null, null, 'x'), nullif('a', 'A')", "5,x,NULL"}});
}

TEST_F(EmbeddedDialect, CalculatesInTheTypesOfItsOperands) {
  Check({{"select 7 / 2, -7 / 2, 7 % 4, 7 / 2.0, 1.0 / 3", "3,-3,3,3.5,0.333333"},
         {"select sum(FRate) from t_n where FRate < 1", "0.3"},
         {"select 1 from t_n having sum(case when FRate < 1 then FRate end) = 0.3", "1"},
         {"select 1 where 0.1 + 0.2 = 0.3", "1"},
         {"select avg(FInt), avg(FReal), count(FInt), max(FText), min(FDate) from t_n", "1,1.25,3,苹果,2023-12-31"},
         {"select round(2.345, 2), round(-2.5, 0), round(1234, -2), abs(-3), ceiling(1.2), floor(-1.2)",
          "2.35,-3,1200,3,2,-2"},
         {"select '全' + '部', 'a' + isnull(null, '')", "全部,a"},
         {"select cast(12.50 as varchar), cast(FRate as varchar(20)), cast(FInt as varchar) from t_n where FID = 1",
          "12.50,12.5000000000,1"},
         {"select cast('abcdef' as varchar(3)), cast(3.9 as int), convert(int, ' 42 '), cast('' as int)", "abc,3,42,0"},
         {"select len(' ab '), datalength(N'ab'), left('abc', 2), right('abc', 2), substring('abc', 0, 2), "
          "stuff('abc', 2, 1, 'XY')",
          "3,4,ab,bc,a,aXYc"},
         {"select 6 & 3, 6 | 3, 6 ^ 3, ~0", "2,7,5,-1"}});
  CheckRefused({{"select 1 / 0", "Divide by zero error encountered."},
                {"select cast('x' as decimal(10,2))", "Error converting data type varchar to numeric."},
                {"select cast(300 as tinyint)", "Arithmetic overflow error for data type tinyint, value = 300."},
                {"select 2147483647 + 1", "Arithmetic overflow error converting expression to data type int."},
                {"select sum(FText) from t_n", "Operand data type nvarchar is invalid for sum operator."}});
}

TEST_F(EmbeddedDialect, KnowsDates) {
  Check(
      {{"select FDate from t_n where FID <= 2", "2024-02-29 13:05:06;2023-12-31"},
       {"select FID from t_n where FDate >= '20240101'", "1"},
       {"select convert(varchar(10), FDate, 120), convert(varchar, FDate, 112), year(FDate), month(FDate), day(FDate) "
        "from t_n where FID = 1",
        "2024-02-29,20240229,2024,2,29"},
       {"select cast(cast('2024-01-05 15:04' as datetime) as varchar)", "Jan  5 2024  3:04PM"},
       {"select dateadd(year, 1, FDate), datediff(dd, '2024-02-28', FDate), datepart(dw, FDate) from t_n where FID = 1",
        "2025-02-28 13:05:06,1,5"},
       {"select cast('2024-01-31' as datetime) + 1, datediff(month, '2023-12-31', '2024-01-01')", "2024-02-01,1"},
       {"select isdate('2024-13-01'), isdate('2024-1-1')", "0,1"},
       {"select datediff_big(second, '1900-01-01', '2026-01-01'), @@max_precision", "3976214400,38"},
       {"select count(*) from t_n where getdate() = getdate() and datediff(mi, getdate(), current_timestamp) = 0",
        "4"}});
  CheckRefused({{"select 1 from t_n where FDate > 'soon'",
                 "Conversion failed when converting date and/or time from character string."}});
}

TEST_F(EmbeddedDialect, GivesValuesOfTheirColumnsTypes) {
  const RecordsetRef row = account_->Execute(
      "select FID, FText, FRate, FDate, FFlag, FReal, count(*) as n, cast(1 as smallint) s, cast(5000000000 as bigint) "
      "b "
      "from t_n where FID = 1 group by FID, FText, FRate, FDate, FFlag, FReal");
  const VariantType expected[] = {VariantType::Long, VariantType::Text,    VariantType::Decimal,
                                  VariantType::Date, VariantType::Boolean, VariantType::Double,
                                  VariantType::Long, VariantType::Short,   VariantType::Decimal};
  for (std::size_t i = 0; i < std::size(expected); ++i) EXPECT_EQ(row->FieldValue(i).type(), expected[i]) << i;
  const RecordsetRef names = account_->Execute("select *, FInt + 1, fint as Other from t_n a");
  EXPECT_EQ(names->FieldName(1), "FText");
  EXPECT_EQ(names->FieldName(7), "");
  EXPECT_EQ(names->FieldName(8), "Other");
}

TEST_F(EmbeddedDialect, JoinsGroupsAndOrders) {
  Check(
      {{"select n.FID, m.FName from t_n n left join t_m m on m.FID = n.FID order by n.FID, m.FName",
        "1,one;1,uno;2,NULL;3,three;4,NULL"},
       {"select m.FName from t_n n right join t_m m on m.FID = n.FID where n.FID is null", "nine"},
       {"select count(*) from t_n, t_m where t_n.FID = t_m.FID", "3"},
       {"select n.FInt, count(*) as c from t_n n inner join t_m m on m.FID = n.FID group by n.FInt having count(*) > 1",
        "1,2"},
       {"select top 1 m.FID as FName from t_m m order by m.FName desc", "1"},
       {"select FID as k, FName from t_m where FID < 9 order by k desc, FName", "3,three;1,one;1,uno"},
       {"select distinct FID from t_m order by FID desc", "9;3;1"},
       {"select x.n from (select count(*) as n from t_m) x", "4"},
       {"select FID, (select count(*) from t_m m where m.FID = n.FID) from t_n n where exists (select 1 from t_m m "
        "where m.FID = n.FID)",
        "1,2;3,1"},
       {"select 1 as v union all select 2.5 union all select null order by v desc", "2.5;1;NULL"},
       {"select 'a' where 1 between 0 and 2 and not 1 between 2 and 3", "a"},
       {"select case FInt when 1 then 'one' when 2 then N'二' end from t_n where FID < 4", "one;二;NULL"},
       {"select FName from t_m order by 1", "nine;one;three;uno"}});
}

TEST_F(EmbeddedDialect, RefusesInTheServersWords) {
  CheckRefused(
      {{"select nosuch from t_n", "Invalid column name 'nosuch'."},
       {"select * from nosuch", "Invalid object name 'nosuch'."},
       {"select * from sqlite_schema", "Invalid object name 'sqlite_schema'."},
       {"select FID from t_n a inner join t_m b on a.FID = b.FID", "Ambiguous column name 'FID'."},
       {"select x.FID from t_n", "The multi-part identifier \"x.FID\" could not be bound."},
       {"select \"Alpha\" from t_n", "Invalid column name 'Alpha'."},
       {"select FText, count(*) from t_n",
        "Column 't_n.FText' is invalid in the select list because it is not contained in either an aggregate function "
        "or "
        "the GROUP BY clause."},
       {"select median(FID) from t_n", "'median' is not a recognized built-in function name."},
       {"select distinct FName from t_m order by FID",
        "ORDER BY items must appear in the select list if SELECT DISTINCT is specified."},
       {"select * from t_n where FID in (select FID, FName from t_m)",
        "Only one expression can be specified in the select list when the subquery is not introduced with EXISTS."}});
}

TEST_F(EmbeddedDialect, RunsProgramsOfStatements) {
  Check({{"declare @n int, @s nvarchar(50) set @n = 3 set @s = '' while @n > 0 begin set @s = @s + cast(@n as varchar) "
          "set "
          "@n = @n - 1 if @n = 1 break end select @s, @n",
          "32,1"},
         {"declare @a int select @a = FInt from t_n where FID <= 2 order by FID select @a, @@rowcount", "2,2"},
         {"if exists (select 1 from t_m where FID = 77) select 'yes' else select 'no'", "no"},
         {"print 'nothing to see' select 1 select 2", "1"},
         {"insert into t_m (FID) values (5)", "none"}});
}

}  // namespace
}  // namespace rebate
