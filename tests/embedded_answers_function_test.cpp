#include "tests/embedded_answers_kit.h"

namespace rebate {
namespace {

using EmbeddedFunctions = EmbeddedAnswers;

TEST_F(EmbeddedFunctions, TextsBecomeNumbers) {
  Check({{"select cast(' 7 ' as int), cast('' as float), cast('' as money), cast('' "
          "as bit), cast('-5' as bigint)",
          "7,0,0,False,-5"},
         {"select isnumeric('-'), isnumeric('.'), isnumeric(','), isnumeric('1,5'), isnumeric(' 1 '), isnumeric('1e'), "
          "isnumeric('--1'), isnumeric(1.5)",
          "1,1,1,1,1,0,0,1"},
         {"select cast(2.675e0 as decimal(9,2)), cast(2.5e0 as int), cast(-2.5e0 as int), cast(2.5 as money)",
          "2.68,2,-2,2.5"},
         {"select cast(1e0 as decimal(9,2)), cast('1e2' as float), cast('-1.5E-3' as float), cast('1.' as float)",
          "1,100,-0.0015,1"}});
  CheckRefused(
      {{"select cast('yes' as bit)", "Conversion failed when converting the varchar value 'yes' to data type bit."},
       {"select cast('1.5.2' as decimal(9,2))", "Error converting data type varchar to numeric."},
       {"select cast('1 2' as int)", "Conversion failed when converting the varchar value '1 2' to data type int."},
       {"select cast(N'０' as int)", "Conversion failed when converting the nvarchar value '０' to data type int."},
       {"select cast('' as decimal(9,2))", "Error converting data type varchar to numeric."},
       {"select cast('2080-01-01' as smalldatetime)",
        "The conversion of a varchar data type to a smalldatetime data type resulted in an out-of-range "
        "value."},
       {"select cast(cast('1752-01-01' as datetime2) as datetime)",
        "The conversion of a datetime2 data type to a datetime data type resulted in an out-of-range value."}});
}

TEST_F(EmbeddedFunctions, NumbersOfTheirKinds) {
  Check(
      {{"select power(2, 10), power(2, -1), power(10, 2.5), power(2.0, 3), sign(-7), sign(1.5)", "1024,0,316,8,-1,1"},
       {"select round(150.75, 0, 1), round(150.75, -1), round(-1.5, 0), round(15, -1), round(5, -1, 1)",
        "150,150,-2,20,0"},
       {"select floor(cast(-1.5 as money)), ceiling(-1.5), abs(cast(-5 as money)), floor(7), ceiling(1.1e0)",
        "-2,-1,5,7,2"},
       {"select log(8, 2), log10(1000), square(3), exp(0), atn2(0, 1), radians(180)", "3,3,9,1,0,3"},
       {"select cast(0.00 * -1 as varchar(9)), cast(-(1.5 - 1.5) as varchar(9)), cast(round(-0.001, 2) as varchar(9))",
        "0.00,0.0,0.000"},
       {"select sum(v), avg(v), sum(cast(v as bigint)) from (select cast(200 as tinyint) as v union all select 100) x",
        "300,150,300"},
       {"select cast(sum(case when v > 1 then d else 0 end) as varchar(20)) from (select 1 as v, cast(1.5 as "
        "decimal(9,2)) as d union all select 2, 2.25) x",
        "2.25"},
       {"select stdev(v), stdevp(v), var(v), varp(v), count_big(*) from (select 2 as v union all select 4) x",
        "1.4142135623731,1,2,1,2"},
       {"select 7 & 12, 7 | 8, 5 ^ 1, ~5, ~cast(5 as tinyint), 7 % -3", "4,15,4,-6,250,1"}});
  CheckRefused(
      {{"select sum(v) from (select cast(1 as bit) as v) x", "Operand data type bit is invalid for sum operator."},
       {"select avg(v) from (select getdate() as v) x", "Operand data type datetime is invalid for avg operator."},
       {"select len()", "The len function requires 1 argument(s)."},
       {"select nosuch(1)", "'nosuch' is not a recognized built-in function name."}});
}

TEST_F(EmbeddedFunctions, TextsOfTheirKinds) {
  Check(
      {{"select len(1.50), left(12.5, 2), len(12345), 'n' + cast(-1.50 as varchar(9)), replace(1.5, '.', ',')",
        "4,12,5,n-1.50,1,5"},
       {"select charindex('b', 'abcb', 3), charindex('x', 'abc'), charindex(null, 'a'), replace('abc', '', 'x'), "
        "replace('aXa', 'x', ''), replace('abc', 'b', null)",
        "4,0,NULL,abc,aa,NULL"},
       {"select str(123456, 3), str(1.5, 5, 1), str(-2.345, 8, 2), patindex('%[0-9]%', 'ab3'), patindex('b%', 'ab')",
        "***,  1.5,   -2.35,3,0"},
       {"select stuff('abc', 4, 0, 'x'), stuff('abc', 1, 0, 'x'), reverse(N'中a'), substring(N'中文', 1, 1), "
        "right('abc', "
        "9)",
        "NULL,xabc,a中,中,abc"},
       {"select v from (select 'B' as v, 1 as n union all select 'a', 2 union all select 'A', 1 union all select 'b', "
        "0) x order by v, n",
        "A;a;b;B"},
       {"select max(v), min(v) from (select 'a' as v union all select 'C' union all select 'b') x", "C,a"},
       {"select 1 where 'a' < 'A' or 'a ' < 'a' or 'a' > N'Ａ' or not 'abc' between 'ABC' and 'Abc '", ""},
       {"select 1 where 'a' <= 'A' and 'a ' >= 'a' and 'ab' > 'a' and 'ab' > 'a ' and '' = ' '", "1"},
       {"select 1 where 'abc' like 'A[b-d]C' and 'abc' not like '[^a]%' and '100%' like '100!%' escape '!' and '' like "
        "'%' and 5 like '5'",
        "1"}});
}

TEST_F(EmbeddedFunctions, DatesOfTheirKinds) {
  Check(
      {{"select year('2026'), month('20260315'), day(cast('2026-03-04' as date)), dateadd(day, 1.9, '2026-01-01')",
        "2026,3,4,2026-01-02"},
       {"select cast(dateadd(month, 1, cast('2026-01-31' as date)) as varchar(20)), cast(dateadd(day, 1, cast("
        "'2026-01-31' as datetime2(0))) as varchar(30))",
        "2026-02-28,2026-02-01 00:00:00"},
       {"select convert(varchar(30), v, 121) from (select cast('2026-01-02' as date) as v union all select "
        "cast('2026-01-01 12:00' as datetime)) x order by v",
        "2026-01-01 12:00:00.000;2026-01-02 00:00:00.000"},
       {"select case when 1 = 2 then cast('2026-01-02' as date) else '2026-05-06' end, isnull(cast(null as datetime), "
        "'2026-05-06'), coalesce(null, cast('2026-05-06' as smalldatetime))",
        "2026-05-06,2026-05-06,2026-05-06"},
       {"select datediff(day, '2026-01-01 23:59', '2026-01-02'), datediff(minute, '2026-01-01', '2026-01-02'), "
        "datediff(month, '2026-01-31', '2026-02-01'), datediff(second, '2026-01-01', '2026-01-01 00:01')",
        "1,1440,1,60"},
       {"select 1 where getdate() - 1 < getdate() and getutcdate() is not null and cast(getdate() as date) <= "
        "getdate()",
        "1"}});
}

}  // namespace
}  // namespace rebate
