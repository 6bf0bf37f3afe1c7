#include "platform/database/tsql/moment.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <ctime>

#include "platform/automation/conversion.h"

namespace rebate::tsql {
namespace {

constexpr std::int64_t kDayMilliseconds = 86'400'000;
constexpr std::chrono::sys_days kEpoch = std::chrono::year(1900) / 1 / 1;
constexpr std::array<std::string_view, 12> kMonths{"January",   "February", "March",    "April",
                                                   "May",       "June",     "July",     "August",
                                                   "September", "October",  "November", "December"};
constexpr std::array<std::string_view, 7> kWeekdays{"Sunday",   "Monday", "Tuesday", "Wednesday",
                                                    "Thursday", "Friday", "Saturday"};

// Reads unsigned numbers and the marks between them.
class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  bool AtEnd() const { return text_.empty(); }
  bool Take(char mark) {
    if (text_.empty() || text_.front() != mark) return false;
    text_.remove_prefix(1);
    return true;
  }
  bool TakeAny(std::string_view marks) {
    if (text_.empty() || marks.find(text_.front()) == std::string_view::npos) return false;
    text_.remove_prefix(1);
    return true;
  }
  // A number of at most nine digits; its digits are counted in `digits`. -1 where there is none.
  int Number(int& digits) {
    int number = 0;
    digits = 0;
    while (!text_.empty() && text_.front() >= '0' && text_.front() <= '9' && digits < 9) {
      number = number * 10 + (text_.front() - '0');
      text_.remove_prefix(1);
      ++digits;
    }
    return digits == 0 ? -1 : number;
  }
  std::string_view rest() const { return text_; }

 private:
  std::string_view text_;
};

bool ReadDate(Reader& reader, Civil& civil) {
  int digits = 0;
  const int first = reader.Number(digits);
  if (digits == 8) {
    civil.year = first / 10000;
    civil.month = first / 100 % 100;
    civil.day = first % 100;
    return true;
  }
  if (first < 0 || !reader.TakeAny("-/.")) return false;
  const bool year_first = digits == 4;
  const int second = reader.Number(digits);
  if (second < 0 || !reader.TakeAny("-/.")) return false;
  const int third = reader.Number(digits);
  if (third < 0 || (!year_first && digits != 4)) return false;
  civil.year = year_first ? first : third;
  civil.month = year_first ? second : first;
  civil.day = year_first ? third : second;
  return true;
}

bool ReadTime(Reader& reader, Civil& civil) {
  int digits = 0;
  civil.hour = reader.Number(digits);
  if (civil.hour < 0 || !reader.Take(':')) return false;
  civil.minute = reader.Number(digits);
  if (civil.minute < 0) return false;
  if (reader.Take(':')) {
    civil.second = reader.Number(digits);
    if (civil.second < 0) return false;
    if (reader.TakeAny(".:")) {
      int fraction = reader.Number(digits);
      if (fraction < 0 || digits > 3) return false;
      for (; digits < 3; ++digits) fraction *= 10;
      civil.millisecond = fraction;
    }
  }
  const std::string_view rest = Trim(reader.rest());
  if (EqualsIgnoreCase(rest, "PM") && civil.hour < 12) civil.hour += 12;
  if (EqualsIgnoreCase(rest, "AM") && civil.hour == 12) civil.hour = 0;
  return rest.empty() || EqualsIgnoreCase(rest, "AM") || EqualsIgnoreCase(rest, "PM");
}

std::chrono::year_month_day DateOf(const Moment& moment) {
  return std::chrono::year_month_day(kEpoch + std::chrono::days(moment.day));
}

std::int64_t FloorDiv(std::int64_t number, std::int64_t divisor) {
  return number / divisor - (number % divisor < 0 ? 1 : 0);
}

// A datetime keeps three-hundredths of a second: its milliseconds end in 0, 3 or 7.
std::int64_t RoundMilliseconds(std::int64_t milliseconds) {
  return (milliseconds * 3 + 5) / 10 * 10 / 3 + ((milliseconds * 3 + 5) / 10 % 3 == 2 ? 1 : 0);
}

Moment Normalised(std::int64_t day, std::int64_t milliseconds) {
  const std::int64_t carried = FloorDiv(milliseconds, kDayMilliseconds);
  return {day + carried, milliseconds - carried * kDayMilliseconds};
}

Moment AddMonths(const Moment& moment, std::int64_t months) {
  const auto date = DateOf(moment);
  const std::int64_t total =
      int(date.year()) * 12LL + unsigned(date.month()) - 1 + std::clamp<std::int64_t>(months, -200'000, 200'000);
  const std::chrono::year_month month{std::chrono::year(int(FloorDiv(total, 12))),
                                      std::chrono::month(unsigned(total - FloorDiv(total, 12) * 12 + 1))};
  const auto last = std::chrono::year_month_day_last(month / std::chrono::last).day();
  const std::chrono::sys_days day = month / std::min(date.day(), last);
  return {(day - kEpoch).count(), moment.milliseconds};
}

// Milliseconds of the parts that have a fixed length; 0 for the others.
std::int64_t LengthOf(DatePart part) {
  switch (part) {
    case DatePart::Week:
      return 7 * kDayMilliseconds;
    case DatePart::Day:
    case DatePart::DayOfYear:
    case DatePart::Weekday:
      return kDayMilliseconds;
    case DatePart::Hour:
      return 3'600'000;
    case DatePart::Minute:
      return 60'000;
    case DatePart::Second:
      return 1000;
    case DatePart::Millisecond:
      return 1;
    default:
      return 0;
  }
}

}  // namespace

Moment Now() {
  const auto now = std::chrono::system_clock::now();
  const std::time_t seconds = std::chrono::system_clock::to_time_t(now);
  std::tm local{};
  localtime_r(&seconds, &local);
  const auto fraction = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()).count() % 1000;
  return *FromCivil({local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
                     std::min(local.tm_sec, 59), static_cast<int>(fraction)});
}

bool InRange(const Moment& moment) {
  static constexpr std::int64_t kFirst = (std::chrono::sys_days(std::chrono::year(1753) / 1 / 1) - kEpoch).count();
  static constexpr std::int64_t kLast = (std::chrono::sys_days(std::chrono::year(9999) / 12 / 31) - kEpoch).count();
  return moment.day >= kFirst && moment.day <= kLast;
}

std::optional<Moment> FromCivil(const Civil& civil) {
  const std::chrono::year_month_day date{std::chrono::year(civil.year), std::chrono::month(unsigned(civil.month)),
                                         std::chrono::day(unsigned(civil.day))};
  if (!date.ok() || civil.hour > 23 || civil.minute > 59 || civil.second > 59) return std::nullopt;
  const std::int64_t milliseconds = ((civil.hour * 60LL + civil.minute) * 60 + civil.second) * 1000 + civil.millisecond;
  const Moment moment = Normalised((std::chrono::sys_days(date) - kEpoch).count(), RoundMilliseconds(milliseconds));
  if (!InRange(moment)) return std::nullopt;
  return moment;
}

Civil ToCivil(const Moment& moment) {
  const auto date = DateOf(moment);
  const int seconds = static_cast<int>(moment.milliseconds / 1000);
  return {int(date.year()),
          int(unsigned(date.month())),
          int(unsigned(date.day())),
          seconds / 3600,
          seconds / 60 % 60,
          seconds % 60,
          static_cast<int>(moment.milliseconds % 1000)};
}

std::optional<Moment> ParseMoment(std::string_view text) {
  text = Trim(text);
  Civil civil{1900, 1, 1, 0, 0, 0, 0};
  if (text.empty()) return FromCivil(civil);
  Reader reader(text);
  const std::size_t colon = text.find(':');
  const bool time_alone = colon != std::string_view::npos && colon <= 2;
  if (!time_alone) {
    if (!ReadDate(reader, civil)) return std::nullopt;
    if (reader.AtEnd()) return FromCivil(civil);
    if (!reader.TakeAny(" T")) return std::nullopt;
    while (reader.Take(' ')) {
    }
  }
  if (!ReadTime(reader, civil)) return std::nullopt;
  return FromCivil(civil);
}

Text FormatMoment(const Moment& moment) {
  const Civil c = ToCivil(moment);
  char text[80];
  const int length = std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d.%03d", c.year, c.month, c.day,
                                   c.hour, c.minute, c.second, c.millisecond);
  return Text(text, static_cast<std::size_t>(length));
}

std::optional<Text> FormatMoment(const Moment& moment, int style) {
  const Civil c = ToCivil(moment);
  const int hour12 = c.hour % 12 == 0 ? 12 : c.hour % 12;
  char text[80];
  switch (style) {
    case 0:
    case 100:
      std::snprintf(text, sizeof text, "%.3s %2d %04d %2d:%02d%s", kMonths[std::size_t(c.month - 1)].data(), c.day,
                    c.year, hour12, c.minute, c.hour < 12 ? "AM" : "PM");
      break;
    case 101:
      std::snprintf(text, sizeof text, "%02d/%02d/%04d", c.month, c.day, c.year);
      break;
    case 102:
      std::snprintf(text, sizeof text, "%04d.%02d.%02d", c.year, c.month, c.day);
      break;
    case 103:
      std::snprintf(text, sizeof text, "%02d/%02d/%04d", c.day, c.month, c.year);
      break;
    case 104:
      std::snprintf(text, sizeof text, "%02d.%02d.%04d", c.day, c.month, c.year);
      break;
    case 105:
      std::snprintf(text, sizeof text, "%02d-%02d-%04d", c.day, c.month, c.year);
      break;
    case 8:
    case 108:
      std::snprintf(text, sizeof text, "%02d:%02d:%02d", c.hour, c.minute, c.second);
      break;
    case 111:
      std::snprintf(text, sizeof text, "%04d/%02d/%02d", c.year, c.month, c.day);
      break;
    case 112:
      std::snprintf(text, sizeof text, "%04d%02d%02d", c.year, c.month, c.day);
      break;
    case 114:
      std::snprintf(text, sizeof text, "%02d:%02d:%02d:%03d", c.hour, c.minute, c.second, c.millisecond);
      break;
    case 20:
    case 120:
      std::snprintf(text, sizeof text, "%04d-%02d-%02d %02d:%02d:%02d", c.year, c.month, c.day, c.hour, c.minute,
                    c.second);
      break;
    case 21:
    case 25:
    case 121:
      return FormatMoment(moment);
    case 23:
      std::snprintf(text, sizeof text, "%04d-%02d-%02d", c.year, c.month, c.day);
      break;
    case 126:
      std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03d", c.year, c.month, c.day, c.hour, c.minute,
                    c.second, c.millisecond);
      break;
    default:
      return std::nullopt;
  }
  return Text(text);
}

double ToDays(const Moment& moment) {
  return static_cast<double>(moment.day) + static_cast<double>(moment.milliseconds) / kDayMilliseconds;
}

Moment FromDays(double days) {
  const double whole = std::floor(days);
  return Normalised(static_cast<std::int64_t>(whole),
                    RoundMilliseconds(std::llround((days - whole) * static_cast<double>(kDayMilliseconds))));
}

std::optional<DatePart> ParseDatePart(std::string_view name) {
  struct Spelling {
    std::string_view name;
    DatePart part;
  };
  static constexpr Spelling kSpellings[] = {{"year", DatePart::Year},
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
                                            {"weekday", DatePart::Weekday},
                                            {"dw", DatePart::Weekday},
                                            {"hour", DatePart::Hour},
                                            {"hh", DatePart::Hour},
                                            {"minute", DatePart::Minute},
                                            {"mi", DatePart::Minute},
                                            {"n", DatePart::Minute},
                                            {"second", DatePart::Second},
                                            {"ss", DatePart::Second},
                                            {"s", DatePart::Second},
                                            {"millisecond", DatePart::Millisecond},
                                            {"ms", DatePart::Millisecond}};
  for (const Spelling& spelling : kSpellings) {
    if (EqualsIgnoreCase(spelling.name, name)) return spelling.part;
  }
  return std::nullopt;
}

std::optional<Moment> AddToMoment(DatePart part, std::int64_t count, const Moment& moment) {
  Moment result;
  if (const std::int64_t length = LengthOf(part); length != 0) {
    result = Normalised(moment.day, moment.milliseconds + count * length);
    result.milliseconds = RoundMilliseconds(result.milliseconds);
    result = Normalised(result.day, result.milliseconds);
  } else {
    const int months = part == DatePart::Year ? 12 : part == DatePart::Quarter ? 3 : 1;
    result = AddMonths(moment, count * months);
  }
  if (!InRange(result)) return std::nullopt;
  return result;
}

std::int64_t MomentDifference(DatePart part, const Moment& from, const Moment& to) {
  const auto first = DateOf(from);
  const auto last = DateOf(to);
  const std::int64_t years = int(last.year()) - int(first.year());
  switch (part) {
    case DatePart::Year:
      return years;
    case DatePart::Quarter:
      return years * 4 + (int(unsigned(last.month())) - 1) / 3 - (int(unsigned(first.month())) - 1) / 3;
    case DatePart::Month:
      return years * 12 + int(unsigned(last.month())) - int(unsigned(first.month()));
    case DatePart::Week:  // weeks begin on Sunday; 1899-12-31 was one
      return FloorDiv(to.day + 1, 7) - FloorDiv(from.day + 1, 7);
    default: {
      const std::int64_t length = LengthOf(part);
      return FloorDiv(to.day * kDayMilliseconds + to.milliseconds, length) -
             FloorDiv(from.day * kDayMilliseconds + from.milliseconds, length);
    }
  }
}

std::int64_t PartOfMoment(DatePart part, const Moment& moment) {
  const Civil c = ToCivil(moment);
  const std::int64_t new_year = FromCivil({c.year, 1, 1, 0, 0, 0, 0})->day;
  switch (part) {
    case DatePart::Year:
      return c.year;
    case DatePart::Quarter:
      return (c.month + 2) / 3;
    case DatePart::Month:
      return c.month;
    case DatePart::DayOfYear:
      return moment.day - new_year + 1;
    case DatePart::Day:
      return c.day;
    case DatePart::Week:
      return FloorDiv(moment.day + 1, 7) - FloorDiv(new_year + 1, 7) + 1;
    case DatePart::Weekday:
      return moment.day + 1 - FloorDiv(moment.day + 1, 7) * 7 + 1;
    case DatePart::Hour:
      return c.hour;
    case DatePart::Minute:
      return c.minute;
    case DatePart::Second:
      return c.second;
    case DatePart::Millisecond:
      return c.millisecond;
  }
  return 0;
}

Text NameOfPart(DatePart part, const Moment& moment) {
  const std::int64_t number = PartOfMoment(part, moment);
  if (part == DatePart::Month) return Text(kMonths[static_cast<std::size_t>(number - 1)]);
  if (part == DatePart::Weekday) return Text(kWeekdays[static_cast<std::size_t>(number - 1)]);
  return std::to_string(number);
}

}  // namespace rebate::tsql
