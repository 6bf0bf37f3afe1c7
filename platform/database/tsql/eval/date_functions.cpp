#include <limits>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/database/tsql/eval/function.h"
#include "platform/values/ascii.h"
#include "platform/values/calendar.h"

namespace rebate::tsql {
namespace {

[[noreturn]] void Refuse(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}

// ---- arguments and results ----

Moment MomentAt(const Invocation& call, std::size_t i) {
  const auto moment = ReadStored(call.TextAt(i));
  if (!moment) Refuse("Conversion failed when converting date and/or time from character string.");
  return *moment;
}

Value DateResult(const Invocation& call, const std::optional<Moment>& moment) {
  const DateForm form = FormOf(call.result);
  const auto fitting = moment ? Fit(*moment, form) : std::nullopt;
  if (!fitting) {
    Refuse("Adding a value to a '" + Text(MessageName(call.result.kind)) + "' column caused an overflow.");
  }
  return Value::Of(call.pool.Keep(StoredText(*fitting, form.kind)));
}

bool IsTimeOfDay(DatePart part) {
  return part >= DatePart::Hour;
}
bool IsFinerThanMilliseconds(DatePart part) {
  return part > DatePart::Millisecond;
}

// The part that the first argument names, if `function` knows it for dates of the type.
DatePart PartAt(const Invocation& call, std::string_view function, bool known, const DataType& type) {
  const auto part = static_cast<DatePart>(call.Integer(0));
  if (!known) {
    Refuse("The datepart " + Text(NameOf(part)) + " is not supported by date function " + Text(function) +
           " for data type " + Text(MessageName(type.kind)) + ".");
  }
  return part;
}

// A part to be read from a date of the type: of a day alone there is no time to read.
DatePart PartToRead(const Invocation& call, std::string_view function) {
  const bool known = call.types[1].kind != TypeKind::Date || !IsTimeOfDay(static_cast<DatePart>(call.Integer(0)));
  return PartAt(call, function, known, call.types[1]);
}

// ---- the functions ----

bool CanAdd(DatePart part, TypeKind kind) {
  if (part == DatePart::IsoWeek) return false;
  if (kind == TypeKind::Date) return !IsTimeOfDay(part);
  return kind == TypeKind::DateTime2 || !IsFinerThanMilliseconds(part);
}

Value DateAdd(const Invocation& call) {
  const DataType& type = call.result;
  const bool known = CanAdd(static_cast<DatePart>(call.Integer(0)), type.kind);
  const DatePart part = PartAt(call, "dateadd", known, type);
  return DateResult(call, AddToMoment(part, call.Integer(1), MomentAt(call, 2)));
}

std::int64_t Difference(const Invocation& call, std::string_view function, std::int64_t most) {
  const bool known = static_cast<DatePart>(call.Integer(0)) != DatePart::IsoWeek;
  const DatePart part = PartAt(call, function, known, call.types[1]);
  const std::int64_t count = MomentDifference(part, MomentAt(call, 1), MomentAt(call, 2));
  if (count > most || count < -most - 1) {
    Refuse("The " + Text(function) +
           " function resulted in an overflow. The number of dateparts separating two date/time instances is too "
           "large. Try to use " +
           Text(function) + " with a less precise datepart.");
  }
  return count;
}

Value DateDiff(const Invocation& call) {
  return Value::Of(Difference(call, "datediff", std::numeric_limits<std::int32_t>::max()));
}

// The calendar stops counting at the ends of 64 bits, so a count that stands there may be a larger one.
Value DateDiffBig(const Invocation& call) {
  return Value::Of(Difference(call, "datediff_big", std::numeric_limits<std::int64_t>::max() - 1));
}

Value DatePartFunction(const Invocation& call) {
  const DatePart part = PartToRead(call, "datepart");
  return Value::Of(PartOfMoment(part, MomentAt(call, 1)));
}

Value DateName(const Invocation& call) {
  const DatePart part = PartToRead(call, "datename");
  return Value::Of(call.pool.Keep(NameOfPart(part, MomentAt(call, 1))));
}

template <DatePart kPart>
Value Part(const Invocation& call) {
  return Value::Of(PartOfMoment(kPart, MomentAt(call, 0)));
}

Value EndOfMonth(const Invocation& call) {
  const std::int64_t months = call.size() > 1 ? call.Integer(1) : 0;
  const auto moved = AddToMoment(DatePart::Month, months, MomentAt(call, 0));
  if (!moved) return DateResult(call, std::nullopt);
  // The last day of a month as long as any: the calendar shortens it where the month is shorter.
  Civil civil = ToCivil(*moved);
  civil.month = 1;
  civil.day = 31;
  return DateResult(call, AddToMoment(DatePart::Month, ToCivil(*moved).month - 1, *FromCivil(civil)));
}

Value DateFromParts(const Invocation& call) {
  constexpr std::int64_t kMost = 9999;  // of each: the calendar judges what lies below
  Civil civil;
  int* const parts[] = {&civil.year, &civil.month, &civil.day};
  bool valid = true;
  for (std::size_t i = 0; i < std::size(parts); ++i) {
    valid = valid && call.Integer(i) >= 1 && call.Integer(i) <= kMost;
    if (valid) *parts[i] = static_cast<int>(call.Integer(i));
  }
  const auto moment = valid ? FromCivil(civil) : std::nullopt;
  if (!moment) {
    Refuse("Cannot construct data type date, some of the arguments have values which are not valid.");
  }
  return DateResult(call, moment);
}

// Whether a text reads as a datetime. Null doesn't, nor does the empty text.
Value IsDateText(const Invocation& call) {
  const std::string_view text = call[0].IsNull() ? std::string_view() : Trim(call.TextAt(0));
  return Value::OfBool(!text.empty() && ParseMoment(text).has_value());
}

// The two moments are days from 1900-01-01 on, so that a number of days is a moment, too.
template <int kSign>
Value CombineDays(const Invocation& call) {
  const Moment left = MomentAt(call, 0);
  const Moment right = MomentAt(call, 1);
  Moment sum{left.day + kSign * right.day, left.ticks + kSign * right.ticks};
  if (sum.ticks < 0 || sum.ticks >= kTicksADay) {
    sum.day += kSign;
    sum.ticks -= kSign * kTicksADay;
  }
  return DateResult(call, sum);
}

constexpr Function kFunctions[] = {
    {"dateadd", DateAdd},
    {"datediff", DateDiff},
    {"datediff_big", DateDiffBig},
    {"datepart", DatePartFunction},
    {"datename", DateName},
    {"year", Part<DatePart::Year>},
    {"month", Part<DatePart::Month>},
    {"day", Part<DatePart::Day>},
    {"eomonth", EndOfMonth},
    {"datefromparts", DateFromParts},
    {"isdate", IsDateText, true},
    {"add_days", CombineDays<1>},
    {"subtract_days", CombineDays<-1>},
};

}  // namespace

std::span<const Function> DateFunctions() {
  return kFunctions;
}

}  // namespace rebate::tsql
