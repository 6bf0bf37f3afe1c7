#include "tests/embedded_answers_kit.h"

namespace rebate {
namespace {

class EmbeddedNumbers : public EmbeddedAnswers {
 protected:
  EmbeddedNumbers() {
    Run("create table t_d (FID int primary key, FWide decimal(38,10), FWhole decimal(38,0), FRate decimal(10,2), "
        "FText varchar(50), FReal float, FInt int)");
    Run("insert into t_d values "
        "(1, 200000, 12345678901234567890123456789012345678, 1.5, '1.50', 1.5, 2), "
        "(2, 9999999999999999999999999999.9999999999, -1, 10, '10', 10, 10), "
        "(3, -0.0000000001, 0, 9.99, '9.990', 9.99, 9), "
        "(4, 0.1, null, null, null, null, null)");
  }
};

TEST_F(EmbeddedNumbers, OperatorsBindAsTheServerDoes) {
  Check({{"select 1+2*3-4%3, 6|1+2&3^4, -2*~3+1, 20/2/5, 7-2-1", "6,5,9,2,4"},
         {"select 1 where not 1=2 and 2=2 or 3=4", "1"},
         {"select 1 where 1=1 or 2=2 and 3=4", "1"},
         {"select 1 where not (1=1 or 2=3)", ""},
         {"select 1 where 1+1 between 2 and 1+2 and 1=1", "1"},
         {"select 1 where 1 !< 1 and 2 !> 2 and 3 != 4", "1"}});
}

TEST_F(EmbeddedNumbers, DecimalsKeepAllTheirDigits) {
  Check(
      {{"select cast(FWide as varchar(60)), cast(FWhole as varchar(60)) from t_d order by FID",
        "200000.0000000000,12345678901234567890123456789012345678;9999999999999999999999999999.9999999999,-1;-0."
        "0000000001,0;0.1000000000,NULL"},
       {"select FID from t_d where FWide = 200000", "1"},
       {"select FID from t_d where FWide = 200000.0", "1"},
       {"select FID from t_d where FWide = '200000.00'", "1"},
       {"select FID from t_d where FWide = 2e5", "1"},
       {"select FID from t_d where FWide = 9999999999999999999999999999.9999999999", "2"},
       {"select FID from t_d where FWide = 9999999999999999999999999999.9999999998", ""},
       {"select FID from t_d where FWhole = 12345678901234567890123456789012345678", "1"},
       {"select FID from t_d where FWhole = 12345678901234567890123456789012345679", ""},
       {"select FID from t_d where FRate = FText order by FID", "1;2;3"},
       {"select FID from t_d where FRate = FReal order by FID", "1;2;3"},
       {"select FID from t_d where FRate = FInt order by FID", "2"},
       {"select FID from t_d where FRate > FInt order by FID", "3"},
       {"select FID from t_d where FRate in (1.500, 9.99, 11) order by FID", "1;3"},
       {"select FID from t_d where FRate between 9.985 and 10.0000 order by FID", "2;3"},
       {"select FID from t_d where FRate not between 2 and 9.995 order by FID", "1;2"},
       {"select FID from t_d order by FRate", "4;1;3;2"},
       {"select FID from t_d order by FWide desc", "2;1;4;3"},
       {"select FID from t_d order by FWide + 0", "3;4;1;2"},
       {"select a.FID, b.FID from t_d a join t_d b on a.FRate = b.FWide * 100", "2,4"},
       {"select min(FWide), max(FRate) from t_d", "-0.0000000001,10"},
       {"select cast(sum(FWide) as varchar(60)) from t_d where FID in (1, 3, 4)", "200000.0999999999"},
       {"select cast(avg(FRate) as varchar(60)), cast(sum(FRate) as varchar(60)) from t_d", "7.163333,21.49"},
       {"select cast(sum(distinct v) as varchar(9)), count(distinct v) from (select 1.50 as v union all select 1.5 "
        "union all select 2) x",
        "3.50,2"},
       {"select count(*) from (select 1.50 as v union select 1.5 union select 1.500) x", "1"},
       {"select v, count(*) from (select cast(1.5 as decimal(9,4)) as v union all select 1.50 union all select 2.0) x "
        "group by v order by v",
        "1.5,2;2,1"},
       {"select 1 where cast(10 as decimal(5,2)) > cast(9 as decimal(5,2)) and 10.0 > 9 and -10 < -9.5", "1"},
       {"select 1 where 1.10 = 1.1 and 1.1 <> 1.11 and '1.10' = 1.1 and 1 = 1.000", "1"},
       {"select cast(12345678901234567890.5 as varchar(60)), cast(.5 as varchar(9)), cast(5. as varchar(9)), "
        "cast(007.50 as varchar(9)), cast(-0.0 as varchar(9))",
        "12345678901234567890.5,0.5,5,7.50,0.0"}});
}

TEST_F(EmbeddedNumbers, KeysHoldOneOfEqualDecimals) {
  Run("create table t_k (FKey decimal(12,4) not null, FOther int, constraint PK_k primary key (FKey))");
  Run("create table t_r (FRate decimal(12,6))");
  Run("insert into t_k values (1.5, 1), (100000, 2), (9.99, 3), (-1, 4)");
  Run("insert into t_r values (1.500000), (9.990001), (100000)");
  CheckRefused({{"insert into t_k values (1.50, 5)",
                 "Violation of PRIMARY KEY constraint 'PK_k'. Cannot insert duplicate key in object 'dbo.t_k'."},
                {"update t_k set FKey = '100000.00' where FKey = 9.99",
                 "Violation of PRIMARY KEY constraint 'PK_k'. Cannot insert duplicate key in object 'dbo.t_k'."}},
               database_error::kConstraint);
  Check({{"select FOther from t_k order by FKey", "4;1;3;2"},
         {"select FOther from t_k where FKey > 9", "3;2"},
         {"select FOther from t_k where FKey >= 1.5 and FKey < 100000 order by FKey desc", "3;1"},
         {"select FOther from t_k k join t_r r on r.FRate = k.FKey order by FOther", "1;2"},
         {"select FOther from t_k where FKey in (select FRate from t_r) order by FOther", "1;2"},
         {"select FOther from t_k where FKey = 1.50001", ""},
         {"update t_k set FKey = FKey + 1 select FKey from t_k order by 1", "0;2.5;10.99;100001"}});
}

TEST_F(EmbeddedNumbers, ResultsHaveTheDocumentedDigits) {
  CheckShapes({{"10/4.0", "9,6 2.500000"},
               {"1.0/3", "7,6 0.333333"},
               {"cast(1 as decimal(10,2))/cast(3 as decimal(10,2))", "23,13 0.3333333333333"},
               {"cast(1 as decimal(38,10))/cast(3 as decimal(38,10))", "38,6 0.333333"},
               {"cast(2 as decimal(38,10))*cast(1.5 as decimal(38,10))", "38,6 3.000000"},
               {"cast(1.23456789 as decimal(38,10))*2", "38,8 2.46913578"},
               {"1.0/(1.5*2)", "8,6 0.333333"},
               {"cast(1 as decimal(10,2))/cast(3 as int)", "21,13 0.3333333333333"},
               {"cast(1 as int)/cast(3 as decimal(5,1))", "17,6 0.333333"},
               {"cast(1 as bigint)*cast(2.5 as decimal(5,1))", "25,1 2.5"},
               {"cast(1 as tinyint)+cast(2.5 as decimal(5,1))", "6,1 3.5"},
               {"1.5*2.25", "6,3 3.375"},
               {"1.5+2.25", "4,2 3.75"},
               {"1.5-2.25", "4,2 -0.75"},
               {"1.5+2", "3,1 3.5"},
               {"7.5%2", "2,1 1.5"},
               {"-7.5%2.00", "3,2 -1.50"},
               {"cast(1 as decimal(38,5))+cast(1 as decimal(38,10))", "38,5 2.00000"},
               {"-1.50", "3,2 -1.50"},
               {"0.05", "2,2 0.05"},
               {"12345.678", "8,3 12345.678"},
               {"12345678901", "11,0 12345678901"},
               {"round(2.345, 2)", "4,3 2.350"},
               {"round(-2.345, 2, 1)", "4,3 -2.340"},
               {"round(1234.5, -2)", "5,1 1200.0"},
               {"round(5.5, -2)", "2,1 0.0"},
               {"abs(-1.50)", "3,2 1.50"},
               {"floor(-1.25)", "3,0 -2"},
               {"ceiling(1.25)", "3,0 2"},
               {"sign(-1.50)", "3,2 -1.00"},
               {"power(1.5, 2)", "38,1 2.3"},
               {"sum(1.50)", "38,2 1.50"},
               {"avg(1.50)", "38,6 1.500000"},
               {"avg(cast(2 as decimal(9,8)))", "38,8 2.00000000"},
               {"case when 1 = 1 then 1.5 else 10.25 end", "4,2 1.50"},
               {"case when 1 = 1 then 1 else 2.5 end", "11,1 1.0"},
               {"coalesce(null, 1.5, 2.25)", "3,2 1.50"},
               {"isnull(cast(null as decimal(3,1)), 2.25)", "3,1 2.3"},
               {"nullif(1.50, 2)", "3,2 1.50"},
               {"cast('1.005' as decimal(9,2))", "9,2 1.01"},
               {"cast(1.005 as decimal)", "18,0 1"},
               {"cast(-2.5 as decimal(5,0))", "5,0 -3"},
               {"cast(1E-05 as decimal(28,10))", "28,10 0.0000100000"},
               {"cast(0.1e0 as decimal(38,20))", "38,20 0.10000000000000000000"},
               {"cast(1.005e0 as decimal(9,2))", "9,2 1.01"},
               {"cast(1 as bit) + 0.5", "3,1 1.5"}});
  Check(
      {{"select cast(v as varchar(20)) from (select 1.5 as v union all select 2.25 union all select 3) x order by v",
        "1.50;2.25;3.00"},
       {"declare @d decimal(5,1) set @d = 1.25 select cast(@d as varchar(9)), cast(@d * @d as varchar(9))", "1.3,1.69"},
       {"select cast(0.99999999999 as int), cast(-0.99 as int), cast(2.5 as bigint), cast(1.9e0 as int)", "0,0,2,1"},
       {"select convert(decimal(9,1), '  2.55 '), convert(decimal(9,1), '+2.5'), convert(decimal(9,1), '-.5')",
        "2.6,2.5,-0.5"}});
}

TEST_F(EmbeddedNumbers, RefusesWhatDecimalsCannotHold) {
  CheckRefused(
      {{"select cast(1000 as decimal(5,2))", "Arithmetic overflow error converting int to data type numeric."},
       {"select cast(999.995 as decimal(5,2))", "Arithmetic overflow error converting numeric to data type numeric."},
       {"select cast('1000' as decimal(5,2))", "Arithmetic overflow error converting varchar to data type numeric."},
       {"select cast(1e10 as decimal(5,2))", "Arithmetic overflow error converting float to data type numeric."},
       {"select cast('1e2' as decimal(5,2))", "Error converting data type varchar to numeric."},
       {"select cast(N'x' as decimal(5,2))", "Error converting data type nvarchar to numeric."},
       {"select cast('1,000' as decimal(9,2))", "Error converting data type varchar to numeric."},
       {"update t_d set FRate = 100000000 where FID = 1",
        "Arithmetic overflow error converting int to data type numeric."},
       {"update t_d set FRate = FWide where FID = 2",
        "Arithmetic overflow error converting numeric to data type numeric."},
       {"select cast(99999999999999999999999999999999999999 as decimal(38,0)) + 1",
        "Arithmetic overflow error converting expression to data type numeric."},
       {"select cast(99999999999999999999 as decimal(38,0)) * cast(99999999999999999999 as decimal(38,0))",
        "Arithmetic overflow error converting expression to data type numeric."},
       {"select sum(v) from (select cast(99999999999999999999999999999999999999 as decimal(38,0)) as v union all "
        "select 1) x",
        "Arithmetic overflow error converting expression to data type numeric."},
       {"select 999999999999999999999999999999999999999",
        "The number '999999999999999999999999999999999999999' is out of the range for numeric representation (maximum "
        "precision 38)."},
       {"select 1.5 / 0", "Divide by zero error encountered."},
       {"select 1.5 % 0.0", "Divide by zero error encountered."},
       {"select cast(12345678901.5 as int)", "Arithmetic overflow error converting expression to data type int."},
       {"select cast(FWide as int) from t_d where FID = 2",
        "Arithmetic overflow error converting expression to data type int."},
       {"select sum(FText) from t_d", "Operand data type varchar is invalid for sum operator."}});
}

TEST_F(EmbeddedNumbers, MoneyHasFourPlaces) {
  Check({{"select cast(1.23456 as money), cast('$1,234.5' as money), cast(-0.00005 as money)", "1.2346,1234.5,-0.0001"},
         {"select cast(cast(1.23456 as money) as varchar(20)), cast(cast(1234567.891 as money) as varchar(20))",
          "1.23,1234567.89"},
         {"select convert(varchar(20), cast(1234567.891 as money), 1), convert(varchar(20), cast(1.5 as money), 2)",
          "1,234,567.89,1.5000"},
         {"select cast(2 as money) / 3, cast(100 as money) / 339 * 10000, cast(10 as money) * cast(0.33335 as money)",
          "0.6666,2949,3.334"},
         {"select cast(cast(2 as money) as decimal(19,4)) / 3, cast(2 as money) + 0.5", "0.666666,2.5"},
         {"select cast(922337203685477.5807 as money), cast(-922337203685477.5808 as money)",
          "922337203685477.5807,-922337203685477.5808"},
         {"select 1 where cast(1.5 as money) = 1.50 and cast(1.5 as money) > 1 and cast(2 as money) = '2'", "1"},
         {"select sum(v), avg(v), max(v) from (select cast(1.0001 as money) as v union all select 2 union all select "
          "2) x",
          "5.0001,1.6667,2"},
         {"create table t_m (a money, b smallmoney) insert into t_m values (12.34567, 214748.3647), ('$5', null) "
          "select a, b from t_m order by a",
          "5,NULL;12.3457,214748.3647"},
         {"select a * 2 from t_m where b = 214748.3647", "24.6914"}});
  CheckRefused(
      {{"select cast(922337203685477.5808 as money)",
        "Arithmetic overflow error converting numeric to data type money."},
       {"select cast(214749 as smallmoney)", "Arithmetic overflow error converting int to data type smallmoney."},
       {"select cast('x' as money)", "Cannot convert a char value to money. The char value has incorrect syntax."},
       {"select cast(922337203685477 as money) * 2",
        "Arithmetic overflow error converting expression to data type money."},
       {"update t_m set b = 300000", "Arithmetic overflow error converting int to data type smallmoney."}});
}

TEST_F(EmbeddedNumbers, FloatsAreBinary) {
  Check({{"select 1 where 0.1e0 + 0.2e0 = 0.3e0", ""},
         {"select 1 where cast(0.1 as real) = 0.1e0", ""},
         {"select 1 where cast(0.1 as real) = cast(0.1e0 as real)", "1"},
         {"select cast(0.1 as real) + cast(0.2 as real), cast(cast(16777217 as real) as varchar(20))",
          "0.3,1.67772e+007"},
         {"select cast(1e0/3 as varchar(30)), cast(123456789e0 as varchar(30)), cast(1e-5 as varchar(30))",
          "0.333333,1.23457e+008,1e-005"},
         {"select convert(varchar(30), 1e0/3, 1), convert(varchar(30), 1e0/3, 2)",
          "3.3333333e-001,3.333333333333333e-001"},
         {"select 1.5 + 1e0, 3 * 0.5e0, sqrt(2.25), power(2e0, 10)", "2.5,1.5,1.5,1024"},
         {"select avg(FReal), sum(FReal) from t_d where FID < 3", "5.75,11.5"},
         {"select round(2.5e0, 0), round(-1234.567e0, 1, 1), round(1234e0, -2)", "3,-1234.5,1200"},
         {"select isnumeric(null), isnumeric('+'), isnumeric('1e5'), isnumeric('$1'), isnumeric('a'), isnumeric('')",
          "0,1,1,1,0,0"},
         {"select degrees(pi()), degrees(1), round(degrees(1.0), 12)", "180,57,57.295779513082"}});
  CheckRefused({{"select 1e308 * 10", "Arithmetic overflow error converting expression to data type float."},
                {"select -1e308 - 1e308", "Arithmetic overflow error converting expression to data type float."},
                {"select exp(1000)", "Arithmetic overflow error converting expression to data type float."},
                {"select 1e0 / 0", "Divide by zero error encountered."},
                {"select sqrt(-1)", "An invalid floating point operation occurred."},
                {"select log(0)", "An invalid floating point operation occurred."},
                {"select cast(1e10 as int)", "Arithmetic overflow error for type int, value = 10000000000.000000."},
                {"select cast('x' as float)", "Error converting data type varchar to float."},
                {"select 5e0 % 2", "The data types float and int are incompatible in the modulo operator."}});
}

TEST_F(EmbeddedNumbers, IntegersStayInTheirRange) {
  Run("create table t_i (b bit, t tinyint, s smallint, i int, l bigint)");
  Run("insert into t_i values (2, 255, -32768, 2147483647, 9223372036854775807)");
  const char* int_overflow = "Arithmetic overflow error converting expression to data type int.";
  const char* bigint_overflow = "Arithmetic overflow error converting expression to data type bigint.";
  CheckRefused(
      {{"select i + 1 from t_i", int_overflow},
       {"select i * i from t_i", int_overflow},
       {"select -i - 2 from t_i", int_overflow},
       {"select case when b = 1 then i + 1 else 0 end from t_i", int_overflow},
       {"select abs(cast(-2147483648 as int))", int_overflow},
       {"select -cast(-2147483648 as int)", int_overflow},
       {"select cast(-2147483648 as int) / -1", int_overflow},
       {"select sum(i) from (select i from t_i union all select 1) x", int_overflow},
       {"select avg(i) from (select i from t_i union all select i from t_i) x", int_overflow},
       {"select 2147483647 + 1 from t_i where 1 = 0 union select 2147483647 + 1", int_overflow},
       {"declare @i int set @i = 2147483647 set @i = @i + 1", int_overflow},
       {"update t_i set i = i + 1", int_overflow},
       {"select l + 1 from t_i", bigint_overflow},
       {"select -l - 2 from t_i", bigint_overflow},
       {"select l * 2 from t_i", bigint_overflow},
       {"select sum(l) from (select l from t_i union all select 1) x", bigint_overflow},
       {"select abs(cast(-9223372036854775808 as bigint))", bigint_overflow},
       {"select cast(-9223372036854775808 as bigint) / -1", bigint_overflow},
       {"update t_i set l = 9223372036854775808", "Arithmetic overflow error converting numeric to data type bigint."},
       {"select t + cast(1 as tinyint) from t_i",
        "Arithmetic overflow error converting expression to data type "
        "tinyint."},
       {"select cast(0 as tinyint) - t from t_i",
        "Arithmetic overflow error converting expression to data type "
        "tinyint."},
       {"select s - cast(1 as smallint) from t_i",
        "Arithmetic overflow error converting expression to data type "
        "smallint."},
       {"update t_i set t = 256", "Arithmetic overflow error for data type tinyint, value = 256."},
       {"update t_i set t = -1", "Arithmetic overflow error for data type tinyint, value = -1."},
       {"update t_i set s = i", "Arithmetic overflow error for data type smallint, value = 2147483647."},
       {"update t_i set i = 3000000000", int_overflow},
       {"update t_i set i = l", int_overflow},
       {"update t_i set t = '256'",
        "The conversion of the varchar value '256' overflowed an INT1 column. Use a larger "
        "integer column."},
       {"update t_i set s = '40000'",
        "The conversion of the varchar value '40000' overflowed an INT2 column. Use a "
        "larger integer column."},
       {"update t_i set i = '3000000000'",
        "The conversion of the varchar value '3000000000' overflowed an int "
        "column."},
       {"select cast('99999999999999999999' as bigint)", "Error converting data type varchar to bigint."},
       {"select cast('1.5' as int)", "Conversion failed when converting the varchar value '1.5' to data type int."},
       {"select 1 % 0", "Divide by zero error encountered."},
       {"select cast(12345 as nvarchar(3))", "Arithmetic overflow error converting expression to data type nvarchar."},
       {"select cast(1.5 as varchar(2))", "Arithmetic overflow error converting numeric to data type varchar."}});
  Check({{"select b, t, s, i, l from t_i", "True,255,-32768,2147483647,9223372036854775807"},
         {"select cast(-2147483648 as int) % -1, -7 % 3, -7 / 2", "0,-1,-3"},
         {"select cast(i as bigint) + 1, l - 1, i + cast(1 as bigint) from t_i",
          "2147483648,9223372036854775806,2147483648"},
         {"select avg(v), sum(v) from (select 1 as v union all select 2) x", "1,3"},
         {"select avg(v) from (select -1 as v union all select -2) x", "-1"},
         {"select cast(12345 as varchar(3)), cast(-1 as char(1))", "*,*"},
         {"select cast(sum(cast(i as bigint)) as varchar(20)) from (select i from t_i union all select i from t_i) x",
          "4294967294"},
         {"select -t from t_i", "-255"},
         {"select cast('true' as bit), cast('0' as bit), cast(0.1 as bit), cast('FALSE' as bit)",
          "True,False,True,False"}});
}

}  // namespace
}  // namespace rebate
