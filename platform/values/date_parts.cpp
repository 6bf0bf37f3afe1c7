#include <algorithm>
#include <array>
#include <chrono>
#include <limits>

#include "platform/values/ascii.h"
#include "platform/values/calendar.h"
#include "platform/values/calendar_names.h"

namespace rebate {
namespace {

struct Spelling {
  std::string_view name;
  DatePart part;
};

// A part's own name comes before its abbreviations.
constexpr Spelling kSpellings[] = {{"year", DatePart::Year},
                                   {"yy", DatePart::Year},
                                   {"yyyy", DatePart::Year},
                                   {"quarter", DatePart::Quarter},
                                   {"qq", DatePart::Quarter},
                                   {"q", DatePart::Quarter},
                                   {"month", DatePart::Month},
                                   {"mm", DatePart::Month},
                                   {"m", DatePart::Month},
                                   {"dayofyear", DatePart::DayOfYear},
                                   {"dy", DatePart::DayOfYear},
                                   {"y", DatePart::DayOfYear},
                                   {"day", DatePart::Day},
                                   {"dd", DatePart::Day},
                                   {"d", DatePart::Day},
                                   {"week", DatePart::Week},
                                   {"wk", DatePart::Week},
                                   {"ww", DatePart::Week},
                                   {"iso_week", DatePart::IsoWeek},
                                   {"isowk", DatePart::IsoWeek},
                                   {"isoww", DatePart::IsoWeek},
                                   {"weekday", DatePart::Weekday},
                                   {"dw", DatePart::Weekday},
                                   {"w", DatePart::Weekday},
                                   {"hour", DatePart::Hour},
                                   {"hh", DatePart::Hour},
                                   {"minute", DatePart::Minute},
                                   {"mi", DatePart::Minute},
                                   {"n", DatePart::Minute},
                                   {"second", DatePart::Second},
                                   {"ss", DatePart::Second},
                                   {"s", DatePart::Second},
                                   {"millisecond", DatePart::Millisecond},
                                   {"ms", DatePart::Millisecond},
                                   {"microsecond", DatePart::Microsecond},
                                   {"mcs", DatePart::Microsecond},
                                   {"nanosecond", DatePart::Nanosecond},
                                   {"ns", DatePart::Nanosecond}};

// Ticks of the parts that have a fixed length of at least one; 0 for the others.
std::int64_t LengthOf(DatePart part) {
  switch (part) {
    case DatePart::Week:
      return 7 * kTicksADay;
    case DatePart::Day:
    case DatePart::DayOfYear:
    case DatePart::Weekday:
      return kTicksADay;
    case DatePart::Hour:
      return 3600 * kTicksASecond;
    case DatePart::Minute:
      return 60 * kTicksASecond;
    case DatePart::Second:
      return kTicksASecond;
    case DatePart::Millisecond:
      return kTicksASecond / 1000;
    case DatePart::Microsecond:
      return kTicksASecond / 1'000'000;
    default:
      return 0;
  }
}

std::int64_t FloorDiv(std::int64_t number, std::int64_t divisor) {
  return number / divisor - (number % divisor < 0 ? 1 : 0);
}

std::int64_t TicksOf(const Moment& moment) {
  return moment.day * kTicksADay + moment.ticks;
}

std::optional<Moment> FromTicks(std::int64_t ticks) {
  const std::int64_t day = FloorDiv(ticks, kTicksADay);
  return Fit({day, ticks - day * kTicksADay}, {DateKind::DateTime2, 7});
}

std::optional<Moment> AddTicks(const Moment& moment, std::int64_t count, std::int64_t length) {
  std::int64_t ticks = 0;
  if (__builtin_mul_overflow(count, length, &ticks) || __builtin_add_overflow(ticks, TicksOf(moment), &ticks)) {
    return std::nullopt;
  }
  return FromTicks(ticks);
}

std::optional<Moment> AddMonths(const Moment& moment, std::int64_t count, int months) {
  constexpr std::int64_t kMost = 120'000;  // months of all years
  if (count < -kMost || count > kMost) return std::nullopt;
  Civil civil = ToCivil(moment);
  const std::int64_t total = civil.year * 12LL + civil.month - 1 + count * months;
  if (total < 12) return std::nullopt;
  civil.year = static_cast<int>(total / 12);
  civil.month = static_cast<int>(total % 12) + 1;
  if (civil.year > 9999) return std::nullopt;
  const auto last = std::chrono::year_month_day_last(
      std::chrono::year(civil.year),
      std::chrono::month_day_last(std::chrono::month(static_cast<unsigned>(civil.month))));
  civil.day = std::min(civil.day, static_cast<int>(unsigned(last.day())));
  return FromCivil(civil);
}

std::int64_t NewYear(int year) {
  return FromCivil({year})->day;
}

// Weeks begin on Sunday; 1899-12-31 was one.
std::int64_t WeekOf(std::int64_t day) {
  return FloorDiv(day + 1, 7);
}

// A week belongs to the year in which its Thursday lies; 1900-01-01 was a Monday.
std::int64_t IsoWeekOf(std::int64_t day) {
  const std::int64_t thursday = FloorDiv(day, 7) * 7 + 3;
  return (thursday - NewYear(ToCivil({thursday, 0}).year)) / 7 + 1;
}

}  // namespace

std::optional<DatePart> ParseDatePart(std::string_view name) {
  for (const Spelling& spelling : kSpellings) {
    if (EqualsIgnoreCase(spelling.name, name)) return spelling.part;
  }
  return std::nullopt;
}

std::string_view NameOf(DatePart part) {
  return std::find_if(std::begin(kSpellings), std::end(kSpellings), [&](const Spelling& s) { return s.part == part; })
      ->name;
}

std::optional<Moment> AddToMoment(DatePart part, std::int64_t count, const Moment& moment) {
  switch (part) {
    case DatePart::Year:
      return AddMonths(moment, count, 12);
    case DatePart::Quarter:
      return AddMonths(moment, count, 3);
    case DatePart::Month:
      return AddMonths(moment, count, 1);
    case DatePart::IsoWeek:
      return std::nullopt;
    case DatePart::Nanosecond:  // to the nearest tick
      return AddTicks(moment, FloorDiv(count, 100) + ((count - FloorDiv(count, 100) * 100) >= 50 ? 1 : 0), 1);
    default:
      return AddTicks(moment, count, LengthOf(part));
  }
}

std::int64_t MomentDifference(DatePart part, const Moment& from, const Moment& to) {
  const Civil first = ToCivil(from);
  const Civil last = ToCivil(to);
  const std::int64_t years = last.year - first.year;
  switch (part) {
    case DatePart::Year:
      return years;
    case DatePart::Quarter:
      return years * 4 + (last.month - 1) / 3 - (first.month - 1) / 3;
    case DatePart::Month:
      return years * 12 + last.month - first.month;
    case DatePart::Week:
      return WeekOf(to.day) - WeekOf(from.day);
    case DatePart::IsoWeek:
      return FloorDiv(to.day, 7) - FloorDiv(from.day, 7);
    case DatePart::Nanosecond: {
      using Limits = std::numeric_limits<std::int64_t>;
      const std::int64_t ticks = TicksOf(to) - TicksOf(from);
      std::int64_t nanoseconds = 0;
      if (!__builtin_mul_overflow(ticks, std::int64_t{100}, &nanoseconds)) return nanoseconds;
      return ticks < 0 ? Limits::min() : Limits::max();
    }
    default:
      return FloorDiv(TicksOf(to), LengthOf(part)) - FloorDiv(TicksOf(from), LengthOf(part));
  }
}

std::int64_t PartOfMoment(DatePart part, const Moment& moment) {
  const Civil civil = ToCivil(moment);
  switch (part) {
    case DatePart::Year:
      return civil.year;
    case DatePart::Quarter:
      return (civil.month + 2) / 3;
    case DatePart::Month:
      return civil.month;
    case DatePart::DayOfYear:
      return moment.day - NewYear(civil.year) + 1;
    case DatePart::Day:
      return civil.day;
    case DatePart::Week:
      return WeekOf(moment.day) - WeekOf(NewYear(civil.year)) + 1;
    case DatePart::IsoWeek:
      return IsoWeekOf(moment.day);
    case DatePart::Weekday:
      return moment.day + 1 - WeekOf(moment.day) * 7 + 1;
    case DatePart::Hour:
      return civil.hour;
    case DatePart::Minute:
      return civil.minute;
    case DatePart::Second:
      return civil.second;
    case DatePart::Millisecond:
      return civil.millisecond();
    case DatePart::Microsecond:
      return civil.ticks / 10;
    case DatePart::Nanosecond:
      return civil.ticks * 100LL;
  }
  return 0;
}

Text NameOfPart(DatePart part, const Moment& moment) {
  const std::int64_t number = PartOfMoment(part, moment);
  if (part == DatePart::Month) return Text(kMonthNames[static_cast<std::size_t>(number - 1)]);
  if (part == DatePart::Weekday) return Text(kWeekdayNames[static_cast<std::size_t>(number - 1)]);
  return std::to_string(number);
}

}  // namespace rebate
