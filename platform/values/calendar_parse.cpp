#include <algorithm>

#include "platform/values/ascii.h"
#include "platform/values/calendar.h"
#include "platform/values/calendar_names.h"

namespace rebate {
namespace {

// Two digits of a year mean 1950 to 2049.
constexpr int kLastShortYear = 49;

struct Number {
  int value = 0;
  int digits = 0;  // 0 where there is no number
};

class Reader {
 public:
  explicit Reader(std::string_view text) : text_(text) {}

  bool AtEnd() const { return text_.empty(); }
  bool SkipBlanks() {
    const std::size_t before = text_.size();
    while (text_.starts_with(' ')) text_.remove_prefix(1);
    return text_.size() != before;
  }
  bool Take(char mark) {
    if (!text_.starts_with(mark)) return false;
    text_.remove_prefix(1);
    return true;
  }
  bool TakeSeparator() { return Take('-') || Take('/') || Take('.'); }
  // No text has a use for more digits than a year, a month and a day.
  Number TakeNumber() {
    Number number;
    while (!text_.empty() && IsDigit(text_.front()) && number.digits < 9) {
      number.value = number.value * 10 + (text_.front() - '0');
      ++number.digits;
      text_.remove_prefix(1);
    }
    return number;
  }
  std::string_view TakeWord() {
    std::size_t length = 0;
    while (length < text_.size() && IsLetter(text_[length])) ++length;
    const std::string_view word = text_.substr(0, length);
    text_.remove_prefix(length);
    return word;
  }
  bool TakeWord(std::string_view word) {
    Reader ahead = *this;
    if (!EqualsIgnoreCase(ahead.TakeWord(), word)) return false;
    *this = ahead;
    return true;
  }

 private:
  std::string_view text_;
};

int MonthOf(std::string_view word) {
  for (std::size_t i = 0; i < kMonthNames.size(); ++i) {
    if (EqualsIgnoreCase(word, kMonthNames[i]) || EqualsIgnoreCase(word, kMonthNames[i].substr(0, 3))) {
      return static_cast<int>(i) + 1;
    }
  }
  return 0;
}

std::optional<int> YearOf(const Number& number) {
  if (number.digits == 4) return number.value;
  if (number.digits != 1 && number.digits != 2) return std::nullopt;
  return number.value + (number.value <= kLastShortYear ? 2000 : 1900);
}

bool IsShort(const Number& number) {
  return number.digits == 1 || number.digits == 2;
}

class DateParser {
 public:
  DateParser(std::string_view text, DateForm form, DateOrder order)
      : reader_(Trim(text)),
        order_(order),
        legacy_(form.kind == DateKind::DateTime || form.kind == DateKind::SmallDateTime),
        most_digits_(legacy_ ? 3 : 7) {}

  // Whether the text has the form of a date, even if of a day that there isn't.
  bool Read() {
    bool date = false;
    bool time = false;
    while (!reader_.AtEnd()) {
      if (TimeIsNext(reader_)) {
        if (time || !ReadTime()) return false;
        time = true;
      } else {
        if (date || !ReadDate()) return false;
        date = true;
        if (takes_t_ && !time && reader_.Take('T')) return ReadIsoTime();
      }
      if (!reader_.SkipBlanks() && !reader_.AtEnd()) return false;
    }
    return true;
  }
  const Civil& civil() const { return civil_; }

 private:
  // A number with a colon or AM or PM behind it.
  static bool TimeIsNext(Reader ahead) {
    if (ahead.TakeNumber().digits == 0) return false;
    if (ahead.Take(':')) return true;
    ahead.SkipBlanks();
    return ahead.TakeWord("AM") || ahead.TakeWord("PM");
  }

  bool ReadDate() {
    const Reader start = reader_;
    const Number first = reader_.TakeNumber();
    if (first.digits == 8) {
      takes_t_ = true;
      return SetDate(first.value / 10'000, first.value / 100 % 100, first.value % 100);
    }
    if (first.digits == 6) {
      const int year = first.value / 10'000;
      return SetDate(*YearOf({year, 2}), first.value / 100 % 100, first.value % 100);
    }
    if (first.digits > 0 && reader_.TakeSeparator()) {
      const Reader behind = reader_;
      const Number second = reader_.TakeNumber();
      if (second.digits > 0) return reader_.TakeSeparator() && ReadThird(first, second);
      reader_ = behind;
    } else if (first.digits == 4 && !MonthIsNear()) {
      return SetDate(first.value, 1, 1);
    }
    reader_ = start;
    return ReadNamedDate();
  }

  bool ReadThird(const Number& first, const Number& second) {
    const Number third = reader_.TakeNumber();
    if (!IsShort(second)) return false;
    if (first.digits == 4) {
      takes_t_ = second.digits == 2 && third.digits == 2;
      return order_ != DateOrder::DayFirst && IsShort(third) && SetDate(first.value, second.value, third.value);
    }
    if (!IsShort(first)) return false;
    if (order_ == DateOrder::YearFirst) {
      return IsShort(third) && SetDate(*YearOf(first), second.value, third.value);
    }
    const std::optional<int> year = YearOf(third);
    if (!year) return false;
    return order_ == DateOrder::DayFirst ? SetDate(*year, second.value, first.value)
                                         : SetDate(*year, first.value, second.value);
  }

  // Whether a month's name, or a day and then its name, is what follows: `2024 Jan 5`, `2024 5 Jan`.
  bool MonthIsNear() const {
    Reader ahead = reader_;
    SkipMarks(ahead);
    if (ahead.TakeNumber().digits > 0) SkipMarks(ahead);
    return MonthOf(ahead.TakeWord()) != 0;
  }

  static void SkipMarks(Reader& reader) {
    while (reader.SkipBlanks() || reader.TakeSeparator() || reader.Take(',')) {
    }
  }

  // A month's name with a year and a day around it in any order; the day may be left out.
  bool ReadNamedDate() {
    int month = 0;
    Number numbers[2];
    int count = 0;
    while (month == 0 || count < 2) {
      // What isn't taken leaves its blanks in front of a time.
      Reader ahead = reader_;
      if (month != 0 || count != 0) SkipMarks(ahead);
      if (TimeIsNext(ahead)) break;
      if (const Number number = ahead.TakeNumber(); number.digits > 0) {
        if (count == 2) return false;
        numbers[count++] = number;
      } else if (month == 0) {
        month = MonthOf(ahead.TakeWord());
        if (month == 0) return false;
      } else {
        break;
      }
      reader_ = ahead;
    }
    return month != 0 && SetNamedDate(month, numbers, count);
  }

  bool SetNamedDate(int month, const Number* numbers, int count) {
    if (count == 1) return numbers[0].digits == 4 && SetDate(numbers[0].value, month, 1);
    if (count != 2) return false;
    const bool year_first = numbers[0].digits == 4;
    const Number& day = numbers[year_first ? 1 : 0];
    const std::optional<int> year = YearOf(numbers[year_first ? 0 : 1]);
    return IsShort(day) && year && SetDate(*year, month, day.value);
  }

  bool SetDate(int year, int month, int day) {
    civil_.year = year;
    civil_.month = month;
    civil_.day = day;
    return true;
  }

  bool ReadTime() {
    const Number hour = reader_.TakeNumber();
    if (!IsShort(hour)) return false;
    civil_.hour = hour.value;
    if (reader_.Take(':') && !ReadMinutes()) return false;
    const Reader before = reader_;
    reader_.SkipBlanks();
    if (reader_.TakeWord("PM")) {
      if (civil_.hour == 0) return false;
      if (civil_.hour < 12) civil_.hour += 12;
    } else if (reader_.TakeWord("AM")) {
      if (civil_.hour > 12) return false;
      if (civil_.hour == 12) civil_.hour = 0;
    } else {
      reader_ = before;
    }
    return true;
  }

  bool ReadMinutes() {
    const Number minute = reader_.TakeNumber();
    civil_.minute = minute.value;
    has_seconds_ = reader_.Take(':');
    if (!IsShort(minute) || !has_seconds_) return IsShort(minute);
    const Number second = reader_.TakeNumber();
    civil_.second = second.value;
    if (!IsShort(second)) return false;
    if (reader_.Take('.')) return ReadFraction(most_digits_, true);
    return !reader_.Take(':') || ReadFraction(3, false);
  }

  // Behind a point stands a fraction, behind a colon a count of milliseconds.
  bool ReadFraction(int most, bool fraction) {
    const Number number = reader_.TakeNumber();
    if (number.digits == 0 || number.digits > most) return false;
    civil_.ticks = number.value;
    for (int i = fraction ? number.digits : 3; i < 7; ++i) civil_.ticks *= 10;
    return true;
  }

  bool ReadIsoTime() {
    const Number hour = reader_.TakeNumber();
    civil_.hour = hour.value;
    return hour.digits == 2 && reader_.Take(':') && ReadMinutes() && (has_seconds_ || !legacy_) && reader_.AtEnd();
  }

  Reader reader_;
  const DateOrder order_;
  const bool legacy_;
  const int most_digits_;
  Civil civil_;
  bool takes_t_ = false;
  bool has_seconds_ = false;
};

}  // namespace

std::optional<Moment> ParseMoment(std::string_view text, DateForm form, DateOrder order) {
  DateParser parser(text, form, order);
  if (!parser.Read()) return std::nullopt;
  const std::optional<Moment> moment = FromCivil(parser.civil());
  return moment ? Fit(*moment, form) : std::nullopt;
}

bool HasDateForm(std::string_view text, DateForm form, DateOrder order) {
  return DateParser(text, form, order).Read();
}

std::optional<double> ParseDate(std::string_view text) {
  Reader reader(text);
  Civil civil;
  const auto take = [&](int& part, int most) {
    const Number number = reader.TakeNumber();
    part = number.value;
    return number.digits >= 1 && number.digits <= most;
  };
  if (!take(civil.year, 4) || !reader.Take('-') || !take(civil.month, 2) || !reader.Take('-') || !take(civil.day, 2)) {
    return std::nullopt;
  }
  if (!reader.AtEnd()) {
    if (!reader.Take(' ') && !reader.Take('T')) return std::nullopt;
    if (!take(civil.hour, 2) || !reader.Take(':') || !take(civil.minute, 2)) return std::nullopt;
    if (reader.Take(':')) {
      if (!take(civil.second, 2)) return std::nullopt;
      if (reader.Take('.')) {
        const Number fraction = reader.TakeNumber();
        if (fraction.digits == 0 || fraction.digits > 7) return std::nullopt;
        civil.ticks = fraction.value;
        for (int i = fraction.digits; i < 7; ++i) civil.ticks *= 10;
      }
    }
    if (!reader.AtEnd()) return std::nullopt;
  }
  const std::optional<Moment> moment = FromCivil(civil);
  return moment ? std::optional(ToAutomationDate(*moment)) : std::nullopt;
}

}  // namespace rebate
