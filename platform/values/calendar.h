#pragma once

#include <compare>
#include <cstdint>
#include <optional>
#include <string_view>

#include "platform/values/types.h"

// Days and times of the proleptic Gregorian calendar, the years 1 to 9999.
namespace rebate {

struct Moment {
  std::int64_t day = 0;    // since 1900-01-01
  std::int64_t ticks = 0;  // of the day, each 100 nanoseconds

  auto operator<=>(const Moment&) const = default;
};

inline constexpr std::int64_t kTicksASecond = 10'000'000;
inline constexpr std::int64_t kTicksADay = 86'400 * kTicksASecond;

struct Civil {
  int year = 1900;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
  int ticks = 0;  // of the second

  int millisecond() const { return ticks / 10'000; }
};

Civil ToCivil(const Moment& moment);
// Nothing for what is no date of the years 1 to 9999 or no time of a day.
std::optional<Moment> FromCivil(const Civil& civil);

// The local time, and the universal one.
Moment Now();
Moment UtcNow();
// Today's date on this machine, as `yyyy-mm-dd`.
Text LocalDate();

// ---- the kinds of date that a column may have ----

// DateTime: three-hundredths of a second, from 1753 on. SmallDateTime: minutes, 1900-01-01 to 2079-06-06. Date: days.
// DateTime2: up to seven digits of a second.
enum class DateKind : std::uint8_t { DateTime, SmallDateTime, Date, DateTime2 };

struct DateForm {
  DateKind kind = DateKind::DateTime;
  int digits = 7;  // of the fraction of a second; of DateTime2 alone
};

// The moment as the kind keeps it: rounded (a date is cut); nothing outside its range.
std::optional<Moment> Fit(const Moment& moment, DateForm form);

// Reads a date as a server whose language is us_english does, as the kind keeps it: `yyyymmdd`, `yymmdd`, `yyyy`,
// `yyyy-m-d`, `m/d/yyyy`, `m/d/yy` (each with - / or .), month names in either place, a time behind or in front of it
// (`14:05`, `2PM`, `02:05:06:123PM`, `14:05:06.1234567`), `yyyy-mm-ddThh:mm:ss`, and a time alone, which is one of
// 1900-01-01, as is the empty text. Nothing for other texts, for what is no date, and outside the kind's range.
// `order` says what three short numbers mean, and with DayFirst a year isn't taken in front.
enum class DateOrder : std::uint8_t { MonthFirst, DayFirst, YearFirst };
std::optional<Moment> ParseMoment(std::string_view text, DateForm form = {}, DateOrder order = DateOrder::MonthFirst);
// Whether the text has such a form, be it of a day that there isn't or that the kind doesn't hold.
bool HasDateForm(std::string_view text, DateForm form, DateOrder order = DateOrder::MonthFirst);

// The text in which a column keeps it, which sorts as the time does: `yyyy-mm-dd hh:mm:ss.mmm`, of a date `yyyy-mm-dd`,
// of a datetime2 with seven digits always.
Text StoredText(const Moment& moment, DateKind kind);
// Reads StoredText's texts of every kind, and nothing else.
std::optional<Moment> ReadStored(std::string_view text);

// The text by a style of the convert function; style 0 is what a cast gives where the kind has no text of its own (date
// and datetime2 go by 121 there). Nothing for a style that isn't known or doesn't fit the kind.
std::optional<Text> FormatMoment(const Moment& moment, DateForm form, int style);

// ---- numbers ----

// Days since 1900-01-01, the time as a fraction.
double ToDays(const Moment& moment);
// Nothing outside the years 1 to 9999 and for no number.
std::optional<Moment> FromDays(double days);

// Automation dates: days since 1899-12-30, the time as a fraction that counts forward from midnight on both sides of
// day zero (-1.25 is 06:00 of the day before).
double ToAutomationDate(const Moment& moment);
// The date as `yyyy-mm-dd`, with ` hh:mm:ss` where it isn't midnight.
Text DateText(double automation_date);
// `yyyy-mm-dd`, optionally followed by a blank or T and `hh:mm`, `:ss`, `.fff`; nothing for any other text.
std::optional<double> ParseDate(std::string_view text);

// ---- the parts of a date that dateadd, datediff, datepart and datename take ----

enum class DatePart : std::uint8_t {
  Year,
  Quarter,
  Month,
  DayOfYear,
  Day,
  Week,
  IsoWeek,
  Weekday,
  Hour,
  Minute,
  Second,
  Millisecond,
  Microsecond,
  Nanosecond
};
// By its name or an abbreviation; nothing for other names.
std::optional<DatePart> ParseDatePart(std::string_view name);
// The part's own name, as the server's messages write it.
std::string_view NameOf(DatePart part);

// Nothing outside the years 1 to 9999; an IsoWeek can't be added.
std::optional<Moment> AddToMoment(DatePart part, std::int64_t count, const Moment& moment);
// How many boundaries of the part lie between the two; beyond 64 bits the nearest that they hold.
std::int64_t MomentDifference(DatePart part, const Moment& from, const Moment& to);
// Weeks and weekdays begin on Sunday, which is 1; an ISO week on Monday.
std::int64_t PartOfMoment(DatePart part, const Moment& moment);
// The name of a month or weekday, and other parts as digits.
Text NameOfPart(DatePart part, const Moment& moment);

}  // namespace rebate
