#include "platform/database/embedded/functions.h"
#include "platform/database/tsql/moment.h"

namespace rebate {
namespace {

using tsql::DatePart;
using tsql::Moment;

[[noreturn]] void RefuseOverflow() {
  throw Error(database_error::kStatement, "", "Adding a value to a 'datetime' column caused an overflow.");
}

Moment MomentOf(sqlite3_value* value) {
  const auto moment = tsql::ParseMoment(TextOf(value));
  if (!moment) {
    throw Error(database_error::kStatement, "",
                "Conversion failed when converting date and/or time from character string.");
  }
  return *moment;
}

DatePart PartOf(sqlite3_value* value) {
  return static_cast<DatePart>(sqlite3_value_int(value));
}

void GiveMoment(sqlite3_context* context, const Moment& moment) {
  GiveText(context, tsql::FormatMoment(moment));
}

void NowFunction(sqlite3_context* context, int, sqlite3_value**) {
  GiveMoment(context, tsql::Now());
}

void DateAdd(sqlite3_context* context, int, sqlite3_value** arguments) {
  const auto moment =
      tsql::AddToMoment(PartOf(arguments[0]), sqlite3_value_int64(arguments[1]), MomentOf(arguments[2]));
  if (!moment) RefuseOverflow();
  GiveMoment(context, *moment);
}

void DateDiff(sqlite3_context* context, int, sqlite3_value** arguments) {
  const std::int64_t count =
      tsql::MomentDifference(PartOf(arguments[0]), MomentOf(arguments[1]), MomentOf(arguments[2]));
  if (count != static_cast<std::int32_t>(count)) {
    throw Error(database_error::kStatement, "",
                "The datediff function resulted in an overflow. The number of dateparts separating two date/time "
                "instances is too large. Try to use datediff with a less precise datepart.");
  }
  sqlite3_result_int64(context, count);
}

void DatePartFunction(sqlite3_context* context, int, sqlite3_value** arguments) {
  sqlite3_result_int64(context, tsql::PartOfMoment(PartOf(arguments[0]), MomentOf(arguments[1])));
}

void DateName(sqlite3_context* context, int, sqlite3_value** arguments) {
  GiveText(context, tsql::NameOfPart(PartOf(arguments[0]), MomentOf(arguments[1])));
}

template <DatePart kPart>
void Part(sqlite3_context* context, int, sqlite3_value** arguments) {
  sqlite3_result_int64(context, tsql::PartOfMoment(kPart, MomentOf(arguments[0])));
}

void IsDate(sqlite3_context* context, int, sqlite3_value** arguments) {
  const std::string_view text = TextOf(arguments[0]);
  sqlite3_result_int(context, !text.empty() && tsql::ParseMoment(text).has_value());
}

// The two moments are days from 1900-01-01 on, so that a number of days is a moment, too.
template <int kSign>
void CombineDays(sqlite3_context* context, int, sqlite3_value** arguments) {
  const Moment left = MomentOf(arguments[0]);
  const Moment right = MomentOf(arguments[1]);
  const auto days = tsql::AddToMoment(DatePart::Day, kSign * right.day, left);
  const auto sum = days ? tsql::AddToMoment(DatePart::Millisecond, kSign * right.milliseconds, *days) : std::nullopt;
  if (!sum) RefuseOverflow();
  GiveMoment(context, *sum);
}

constexpr FunctionDefinition kFunctions[] = {
    {"t_now", 0, Guarded<NowFunction>, false},
    {"t_dateadd", 3, Guarded<DateAdd>},
    {"t_datediff", 3, Guarded<DateDiff>},
    {"t_datepart", 2, Guarded<DatePartFunction>},
    {"t_datename", 2, Guarded<DateName>},
    {"t_year", 1, Guarded<Part<DatePart::Year>>},
    {"t_month", 1, Guarded<Part<DatePart::Month>>},
    {"t_day", 1, Guarded<Part<DatePart::Day>>},
    {"t_isdate", 1, Guarded<IsDate>},
    {"t_add_days", 2, Guarded<CombineDays<1>>},
    {"t_subtract_days", 2, Guarded<CombineDays<-1>>},
};

}  // namespace

std::span<const FunctionDefinition> DateFunctions() {
  return kFunctions;
}

}  // namespace rebate
