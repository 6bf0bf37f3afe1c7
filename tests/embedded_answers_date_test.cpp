#include <chrono>
#include <thread>

#include "tests/embedded_answers_kit.h"

namespace rebate {
namespace {

using EmbeddedDates = EmbeddedAnswers;

TEST_F(EmbeddedDates, ReadsWhatAServerReads) {
  Check(
      {{"select convert(varchar(23), cast('2026-01-02 03:04:05.678' as datetime), 121)", "2026-01-02 03:04:05.677"},
       {"select convert(varchar(23), cast('2026-01-02 23:59:59.999' as datetime), 121)", "2026-01-03 00:00:00.000"},
       {"select convert(varchar(23), cast('2026-01-02 23:59:59.998' as datetime), 121)", "2026-01-02 23:59:59.997"},
       {"select convert(varchar(23), cast('20260102 12:30 AM' as datetime), 121)", "2026-01-02 00:30:00.000"},
       {"select convert(varchar(23), cast('2026-01-02 12:30PM' as datetime), 121)", "2026-01-02 12:30:00.000"},
       {"select convert(varchar(23), cast('2026-01-02T03:04:05' as datetime), 126)", "2026-01-02T03:04:05"},
       {"select cast('Jan 5 2026' as datetime), cast('5 January 2026' as datetime), cast('January 5, 2026' as "
        "datetime), cast('2026 Jan 5 3pm' as datetime)",
        "2026-01-05,2026-01-05,2026-01-05,2026-01-05 15:00:00"},
       {"select cast('2026.1.2' as datetime), cast('1/2/2026' as datetime), cast('2026/01/02' as datetime), "
        "cast('260102' as datetime), cast('' as datetime), cast('14:30' as datetime)",
        "2026-01-02,2026-01-02,2026-01-02,2026-01-02,1900-01-01,1900-01-01 14:30:00"},
       {"select isdate('2026-02-29'), isdate('2024-02-29'), isdate('2026-01-257'), isdate('x'), isdate('Jan 5 2026')",
        "0,1,0,0,1"},
       {"select convert(datetime, '02.01.2026', 104), convert(datetime, '02/01/2026', 103), convert(datetime, "
        "'20260102', 112)",
        "2026-01-02,2026-01-02,2026-01-02"},
       {"select try_cast('2026-01-257' as datetime), try_convert(datetime, '2026-13-01'), try_cast('5x' as int), "
        "try_cast('7' as int), try_convert(decimal(4,1), '1000')",
        "NULL,NULL,NULL,7,NULL"},
       {"select cast(0 as datetime), cast(1.5 as datetime), cast(cast('1900-01-02 12:00' as datetime) as int), "
        "cast(cast('1900-01-02 06:00' as datetime) as float)",
        "1900-01-01,1900-01-02 12:00:00,2,1.25"},
       {"select cast('2026-01-02 03:04:30' as smalldatetime), cast('2026-01-02 03:04:29.998' as smalldatetime)",
        "2026-01-02 03:05:00,2026-01-02 03:04:00"},
       {"select cast(cast('2026-01-02 03:04:05.1234567' as datetime2) as varchar(40)), cast(cast('2026-01-02 "
        "03:04:05.1234567' as datetime2(3)) as varchar(40)), cast(cast('2026-01-02 03:04:05' as date) as varchar(40))",
        "2026-01-02 03:04:05.1234567,2026-01-02 03:04:05.123,2026-01-02"},
       {"select cast(cast('2026-01-02 03:04:05' as datetime) as varchar(40)), convert(varchar(40), cast('2026-01-02 "
        "15:04:05' as datetime), 100), cast(cast('2026-12-31' as smalldatetime) as varchar(40))",
        "Jan  2 2026  3:04AM,Jan  2 2026  3:04PM,Dec 31 2026 12:00AM"}});
  const char* out_of_range =
      "The conversion of a varchar data type to a datetime data type resulted in an out-of-range value.";
  const char* no_date = "Conversion failed when converting date and/or time from character string.";
  CheckRefused(
      {{"select cast('2026-13-01' as datetime)", out_of_range},
       {"select cast('2026-02-29' as datetime)", out_of_range},
       {"select cast('2026-01-01 25:00' as datetime)", out_of_range},
       {"select cast('1752-12-31' as datetime)", out_of_range},
       {"select cast('Feb 30 2026' as datetime)", out_of_range},
       {"select cast('2026-01-257' as datetime)", no_date},
       {"select cast('soon' as datetime)", no_date},
       {"select cast('Foo 5 2026' as datetime)", no_date},
       {"select cast('2026-02-30' as date)", no_date},
       {"select dateadd(year, 9000, cast('2026-01-01' as datetime))",
        "Adding a value to a 'datetime' column caused an overflow."},
       {"select cast(1 as date)", "Explicit conversion from data type int to date is not allowed."},
       {"declare @d date set @d = 5", "Operand type clash: int is incompatible with date"},
       {"declare @i int set @i = getdate()",
        "Implicit conversion from data type datetime to int is not allowed. Use the CONVERT function to run this "
        "query."}});
}

TEST_F(EmbeddedDates, CountsAsAServerCounts) {
  Check({{"select dateadd(month, 1, '2026-01-31'), dateadd(mm, -1, '2024-03-31'), dateadd(quarter, 1, '2026-11-30'), "
          "dateadd(week, 1, '2026-01-01')",
          "2026-02-28,2024-02-29,2027-02-28,2026-01-08"},
         {"select convert(varchar(23), dateadd(ms, 2, '2026-01-01'), 121), convert(varchar(23), dateadd(ms, 1, "
          "'2026-01-01'), 121)",
          "2026-01-01 00:00:00.003,2026-01-01 00:00:00.000"},
         {"select datediff(year, '2025-12-31', '2026-01-01'), datediff(week, '2026-01-03', '2026-01-04'), "
          "datediff(hour, '2026-01-01 00:59', '2026-01-01 01:00'), datediff(day, '2026-01-02', '2026-01-01'), "
          "datediff(quarter, '2026-03-31', '2026-04-01')",
          "1,1,1,-1,1"},
         {"select datepart(iso_week, '2026-01-01'), datepart(isowk, '2027-01-01'), datepart(week, '2026-01-04'), "
          "datepart(weekday, '2026-01-04'), datepart(dayofyear, '2026-12-31'), datepart(qq, '2026-05-05')",
          "1,53,2,1,365,2"},
         {"select datename(month, '2026-05-05'), datename(dw, '2026-01-04'), datename(year, '2026-01-04')",
          "May,Sunday,2026"},
         {"select datepart(ms, '2026-01-01 00:00:00.005'), datepart(hh, '2026-01-01 13:00')", "7,13"},
         {"select eomonth('2024-02-01'), datefromparts(2026, 5, 6), eomonth('2026-01-31', 1)",
          "2024-02-29,2026-05-06,2026-02-28"},
         {"select cast('2026-01-01' as datetime) + 1.5, cast('2026-01-01' as datetime) - 1",
          "2026-01-02 12:00:00,2025-12-31"},
         {"select convert(varchar(30), v, 101), convert(varchar(30), v, 103), convert(varchar(30), v, 108), "
          "convert(varchar(30), v, 111), convert(varchar(30), v, 20), convert(varchar(30), v, 23), convert(varchar(6), "
          "v, 112) from (select cast('2026-03-04 05:06:07' as datetime) as v) x",
          "03/04/2026,04/03/2026,05:06:07,2026/03/04,2026-03-04 05:06:07,2026-03-04,202603"}});
  CheckRefused(
      {{"select datediff(ms, '2026-01-01', '2026-02-01')",
        "The datediff function resulted in an overflow. The number of dateparts separating two date/time instances is "
        "too large. Try to use datediff with a less precise datepart."},
       {"select datepart(eon, '2026-01-01')", "'eon' is not a recognized datepart option."},
       {"select datefromparts(2026, 2, 30)",
        "Cannot construct data type date, some of the arguments have values which are not valid."},
       {"select cast('2026-01-01' as datetime) * 2", "Operand data type datetime is invalid for multiply operator."}});
}

TEST_F(EmbeddedDates, KindsOfDatesCompareAsInstants) {
  Run("create table t_d (d datetime primary key, s smalldatetime, a date, t datetime2(7), u datetime2(0))");
  Run("insert into t_d values ('2026-01-02 03:04:05.678', '2026-01-02 03:04:05', '2026-01-02 03:04', "
      "'2026-01-02 03:04:05.6770000', '2026-01-02 03:04:05.5'), "
      "('2026-01-02', '2026-01-02', '2026-01-02', '2026-01-02', '2026-01-02')");
  Check(
      {{"select convert(varchar(30), d, 121), s, a, cast(t as varchar(30)), cast(u as varchar(30)) from t_d order by d",
        "2026-01-02 00:00:00.000,2026-01-02,2026-01-02,2026-01-02 00:00:00.0000000,2026-01-02 00:00:00;"
        "2026-01-02 03:04:05.677,2026-01-02 03:04:00,2026-01-02,2026-01-02 03:04:05.6770000,2026-01-02 03:04:06"},
       {"select count(*) from t_d where d = '2026-01-02 03:04:05.677'", "1"},
       {"select count(*) from t_d where d = '2026-01-02 03:04:05.678'", "1"},
       {"select count(*) from t_d where d = a", "1"},
       {"select count(*) from t_d where a = '2026-01-02'", "2"},
       {"select count(*) from t_d where s = a and t = a and u = a", "1"},
       {"select count(*) from t_d where d > s and u > s", "1"},
       {"select count(*) from t_d where cast(d as date) = a and d >= a and d < dateadd(day, 1, a)", "2"},
       {"select convert(varchar(23), max(d), 121), min(a), count(distinct a) from t_d",
        "2026-01-02 03:04:05.677,2026-01-02,1"},
       {"select count(*) from t_d where d in ('20260102', '2026-01-03')", "1"},
       {"select count(*) from t_d where d between '2026-01-02' and '2026-01-02 03:04:05.680'", "2"}});
  CheckRefused({{"insert into t_d (d) values ('2026-01-02 03:04:05.676')",
                 "Violation of PRIMARY KEY constraint 'PK_t_d'. Cannot insert duplicate key in object 'dbo.t_d'."}},
               database_error::kConstraint);
}

TEST_F(EmbeddedDates, AStatementKnowsOneInstant) {
  Run("create table t_now (FID int identity, d datetime default getdate(), e datetime2 default getdate())");
  Text rows = "insert into t_now (d) values (default)";
  for (int i = 0; i < 500; ++i) rows += ", (default)";
  Run(rows);
  Run("insert into t_now (d) select getdate() from t_now");
  Run("update t_now set d = getdate() where FID <= 501");
  Check({{"select count(distinct d) from t_now where FID <= 501", "1"},
         {"select count(distinct d) from t_now where FID > 501", "1"},
         {"select count(distinct e) from t_now where FID <= 501", "1"},
         {"select count(*) from t_now where getdate() = current_timestamp and getdate() >= d", "1002"}});
  const char* now = "select convert(varchar(23), getdate(), 121)";
  const Text before = Rows(now);
  std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_LT(before, Rows(now)) << "the next one another";
}

}  // namespace
}  // namespace rebate
