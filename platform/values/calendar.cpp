#include "platform/values/calendar.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <ctime>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace rebate {
namespace {

constexpr std::chrono::sys_days kEpoch = std::chrono::year(1900) / 1 / 1;
constexpr std::int64_t kAutomationEpoch = (std::chrono::sys_days(std::chrono::year(1899) / 12 / 30) - kEpoch).count();
constexpr std::int64_t kTicksAMinute = 60 * kTicksASecond;

constexpr std::int64_t DayOf(int year, unsigned month, unsigned day) {
  return (std::chrono::sys_days(std::chrono::year(year) / std::chrono::month(month) / std::chrono::day(day)) - kEpoch)
      .count();
}
constexpr std::int64_t kFirstDay = DayOf(1, 1, 1);
constexpr std::int64_t kLastDay = DayOf(9999, 12, 31);

Moment Carried(std::int64_t day, std::int64_t ticks) {
  return ticks >= kTicksADay ? Moment{day + 1, ticks - kTicksADay} : Moment{day, ticks};
}

// Three-hundredths of a second, whose milliseconds end in 0, 3 and 7.
Moment RoundedToDateTime(const Moment& moment) {
  const std::int64_t units = (moment.ticks * 3 + 50'000) / 100'000;
  const std::int64_t milliseconds = units / 3 * 10 + (units % 3 * 10 + 1) / 3;
  return Carried(moment.day, milliseconds * 10'000);
}

// A server takes its way over a datetime here: 29.999 s are 30 by then.
Moment RoundedToMinute(const Moment& moment) {
  const Moment rounded = RoundedToDateTime(moment);
  return Carried(rounded.day, (rounded.ticks + kTicksAMinute / 2) / kTicksAMinute * kTicksAMinute);
}

Moment RoundedToDigits(const Moment& moment, int digits) {
  std::int64_t unit = 1;
  for (int i = digits; i < 7; ++i) unit *= 10;
  return Carried(moment.day, (moment.ticks + unit / 2) / unit * unit);
}

std::optional<Moment> Within(const Moment& moment, std::int64_t first, std::int64_t last) {
  if (moment.day < first || moment.day > last) return std::nullopt;
  return moment;
}

}  // namespace

Civil ToCivil(const Moment& moment) {
  const std::chrono::year_month_day date(kEpoch + std::chrono::days(moment.day));
  const auto seconds = static_cast<int>(moment.ticks / kTicksASecond);
  return {int(date.year()),
          static_cast<int>(unsigned(date.month())),
          static_cast<int>(unsigned(date.day())),
          seconds / 3600,
          seconds / 60 % 60,
          seconds % 60,
          static_cast<int>(moment.ticks % kTicksASecond)};
}

std::optional<Moment> FromCivil(const Civil& civil) {
  if (civil.year < 1 || civil.year > 9999 || civil.month < 1 || civil.day < 1) return std::nullopt;
  const std::chrono::year_month_day date{std::chrono::year(civil.year),
                                         std::chrono::month(static_cast<unsigned>(civil.month)),
                                         std::chrono::day(static_cast<unsigned>(civil.day))};
  if (!date.ok()) return std::nullopt;
  if (civil.hour < 0 || civil.hour > 23 || civil.minute < 0 || civil.minute > 59) return std::nullopt;
  if (civil.second < 0 || civil.second > 59 || civil.ticks < 0 || civil.ticks >= kTicksASecond) return std::nullopt;
  const std::int64_t seconds = (civil.hour * 60LL + civil.minute) * 60 + civil.second;
  return Moment{(std::chrono::sys_days(date) - kEpoch).count(), seconds * kTicksASecond + civil.ticks};
}

#if defined(_WIN32)
static Moment MomentOf(const SYSTEMTIME& time) {
  return FromCivil(
             {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond, time.wMilliseconds * 10'000})
      .value_or(Moment{kLastDay, 0});
}

Moment Now() {
  SYSTEMTIME now;
  GetLocalTime(&now);
  return MomentOf(now);
}

Moment UtcNow() {
  SYSTEMTIME now;
  GetSystemTime(&now);
  return MomentOf(now);
}
#else
// `parts` takes the seconds of a clock apart.
static Moment ClockMoment(std::tm* (*parts)(const std::time_t*, std::tm*)) {
  // The standard library's clock counts nanoseconds, which 64 bits don't hold for long.
  std::timespec now{};
  std::timespec_get(&now, TIME_UTC);
  std::tm time{};
  parts(&now.tv_sec, &time);
  // A leap second counts as the one before.
  return FromCivil({time.tm_year + 1900, time.tm_mon + 1, time.tm_mday, time.tm_hour, time.tm_min,
                    std::min(time.tm_sec, 59), static_cast<int>(now.tv_nsec / 100)})
      .value_or(Moment{kLastDay, 0});
}

Moment Now() {
  return ClockMoment(localtime_r);
}

Moment UtcNow() {
  return ClockMoment(gmtime_r);
}
#endif

Text LocalDate() {
  return StoredText(Now(), DateKind::Date);
}

std::optional<Moment> Fit(const Moment& moment, DateForm form) {
  switch (form.kind) {
    case DateKind::DateTime:
      return Within(RoundedToDateTime(moment), DayOf(1753, 1, 1), kLastDay);
    case DateKind::SmallDateTime:
      return Within(RoundedToMinute(moment), 0, DayOf(2079, 6, 6));
    case DateKind::Date:
      return Within({moment.day, 0}, kFirstDay, kLastDay);
    case DateKind::DateTime2:
      break;
  }
  return Within(RoundedToDigits(moment, form.digits), kFirstDay, kLastDay);
}

double ToDays(const Moment& moment) {
  return static_cast<double>(moment.day) + static_cast<double>(moment.ticks) / static_cast<double>(kTicksADay);
}

std::optional<Moment> FromDays(double days) {
  if (!(std::abs(days) < 4e6)) return std::nullopt;
  const double whole = std::floor(days);
  const auto ticks = static_cast<std::int64_t>(std::llround((days - whole) * static_cast<double>(kTicksADay)));
  return Within(Carried(static_cast<std::int64_t>(whole), ticks), kFirstDay, kLastDay);
}

double ToAutomationDate(const Moment& moment) {
  const auto days = static_cast<double>(moment.day - kAutomationEpoch);
  const double time = static_cast<double>(moment.ticks) / static_cast<double>(kTicksADay);
  return days >= 0 ? days + time : days - time;
}

Text DateText(double automation_date) {
  constexpr double kFarthest = 10'000'000;  // days that the calendar's years hold
  const double days = std::clamp(automation_date, -kFarthest, kFarthest);
  const double whole = std::trunc(days);
  const auto seconds = static_cast<std::int64_t>(std::lround(std::abs(days - whole) * 86'400));
  const Moment moment = Carried(static_cast<std::int64_t>(whole) + kAutomationEpoch, seconds * kTicksASecond);
  Text text = StoredText(moment, DateKind::DateTime);
  text.resize(text.size() - (moment.ticks == 0 ? std::string_view(" hh:mm:ss.mmm") : std::string_view(".mmm")).size());
  return text;
}

}  // namespace rebate
