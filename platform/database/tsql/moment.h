#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/automation/types.h"

// Points in time as a datetime column keeps them: text `yyyy-mm-dd hh:mm:ss.mmm`, which sorts as the time does.
namespace rebate::tsql {

struct Moment {
  std::int64_t day = 0;           // since 1900-01-01
  std::int64_t milliseconds = 0;  // of the day

  bool operator==(const Moment&) const = default;
};

struct Civil {
  int year, month, day, hour, minute, second, millisecond;
};

inline constexpr std::size_t kMomentLength = 23;

// The local time.
Moment Now();

// Reads what a column keeps, and what else the server takes for a date: `yyyymmdd`, `yyyy-m-d`, `yyyy/m/d`, `m/d/yyyy`,
// each with or without a time of day, and a time of day alone. The empty text is 1900-01-01. Nothing for other texts
// and for a date outside 1753 to 9999.
std::optional<Moment> ParseMoment(std::string_view text);

// The text that a column keeps.
Text FormatMoment(const Moment& moment);
// The text by a style of the convert function; nothing for an unknown style.
std::optional<Text> FormatMoment(const Moment& moment, int style);

Civil ToCivil(const Moment& moment);
// Nothing for a date outside 1753 to 9999.
std::optional<Moment> FromCivil(const Civil& civil);
bool InRange(const Moment& moment);

// Days since 1900-01-01, the time as a fraction.
double ToDays(const Moment& moment);
Moment FromDays(double days);

// The parts of a date that dateadd, datediff, datepart and datename take.
enum class DatePart { Year, Quarter, Month, DayOfYear, Day, Week, Weekday, Hour, Minute, Second, Millisecond };
std::optional<DatePart> ParseDatePart(std::string_view name);

// Nothing where the result lies outside the range of dates.
std::optional<Moment> AddToMoment(DatePart part, std::int64_t count, const Moment& moment);
// How many boundaries of the part lie between the two.
std::int64_t MomentDifference(DatePart part, const Moment& from, const Moment& to);
std::int64_t PartOfMoment(DatePart part, const Moment& moment);
Text NameOfPart(DatePart part, const Moment& moment);

}  // namespace rebate::tsql
