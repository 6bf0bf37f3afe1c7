#include <algorithm>
#include <array>

#include "platform/values/ascii.h"
#include "platform/values/calendar.h"
#include "platform/values/calendar_names.h"

namespace rebate {
namespace {

void Append(Text& text, int number, int digits, char pad = '0') {
  std::array<char, 12> reversed;
  std::size_t count = 0;
  unsigned rest = static_cast<unsigned>(std::abs(number));
  do {
    reversed[count++] = static_cast<char>('0' + rest % 10);
    rest /= 10;
  } while (rest != 0);
  if (number < 0) text += '-';
  if (count < static_cast<std::size_t>(digits)) text.append(static_cast<std::size_t>(digits) - count, pad);
  while (count > 0) text += reversed[--count];
}

// The first `digits` of the fraction of a second.
void AppendFraction(Text& text, const Civil& civil, int digits, char mark) {
  if (digits == 0) return;
  int fraction = civil.ticks;
  for (int i = digits; i < 7; ++i) fraction /= 10;
  text += mark;
  Append(text, fraction, digits);
}

// A style of the convert function: what it writes of the day and of the time. Letters stand for parts:
//   Y y  the year in four or two digits      N  the month's short name   m d  the month and the day in two digits
//   D h  the day, the hour of twelve, with a blank in front              H i s  hour, minute and second in two digits
//   f    the fraction behind a colon (of a datetime2 behind a point)     x  behind a point   X  the same unless it is 0
//   P    AM or PM
struct Style {
  int number;
  std::string_view day;
  std::string_view time;
};

constexpr Style kStyles[] = {
    {0, "N D Y", " h:iP"},    {1, "m/d/y", ""},          {2, "y.m.d", ""},           {3, "d/m/y", ""},
    {4, "d.m.y", ""},         {5, "d-m-y", ""},          {6, "d N y", ""},           {7, "N d, y", ""},
    {8, "", "H:i:s"},         {9, "N D Y", " h:i:sfP"},  {10, "m-d-y", ""},          {11, "y/m/d", ""},
    {12, "ymd", ""},          {13, "d N Y", " H:i:sf"},  {14, "", "H:i:sf"},         {20, "Y-m-d", " H:i:s"},
    {21, "Y-m-d", " H:i:sx"}, {22, "m/d/y", " h:i:s P"}, {23, "Y-m-d", ""},          {24, "", "H:i:s"},
    {25, "Y-m-d", " H:i:sx"}, {100, "N D Y", " h:iP"},   {101, "m/d/Y", ""},         {102, "Y.m.d", ""},
    {103, "d/m/Y", ""},       {104, "d.m.Y", ""},        {105, "d-m-Y", ""},         {106, "d N Y", ""},
    {107, "N d, Y", ""},      {108, "", "H:i:s"},        {109, "N D Y", " h:i:sfP"}, {110, "m-d-Y", ""},
    {111, "Y/m/d", ""},       {112, "Ymd", ""},          {113, "d N Y", " H:i:sf"},  {114, "", "H:i:sf"},
    {120, "Y-m-d", " H:i:s"}, {121, "Y-m-d", " H:i:sx"}, {126, "Y-m-d", "TH:i:sX"},  {127, "Y-m-d", "TH:i:sX"}};

class Writer {
 public:
  Writer(const Civil& civil, DateForm form)
      : civil_(civil), precise_(form.kind == DateKind::DateTime2), digits_(precise_ ? form.digits : 3) {}

  void Write(std::string_view pattern) {
    for (const char letter : pattern) Write(letter);
  }
  Text Take() { return std::move(text_); }

 private:
  void Write(char letter) {
    switch (letter) {
      case 'Y':
        return Append(text_, civil_.year, 4);
      case 'y':
        return Append(text_, civil_.year % 100, 2);
      case 'N':
        text_ += kMonthNames[static_cast<std::size_t>(civil_.month - 1)].substr(0, 3);
        return;
      case 'm':
        return Append(text_, civil_.month, 2);
      case 'd':
        return Append(text_, civil_.day, 2);
      case 'D':
        return Append(text_, civil_.day, 2, ' ');
      case 'H':
        return Append(text_, civil_.hour, 2);
      case 'h':
        return Append(text_, civil_.hour % 12 == 0 ? 12 : civil_.hour % 12, 2, ' ');
      case 'i':
        return Append(text_, civil_.minute, 2);
      case 's':
        return Append(text_, civil_.second, 2);
      case 'f':
        return AppendFraction(text_, civil_, digits_, precise_ ? '.' : ':');
      case 'X':
        if (civil_.ticks == 0) return;
        [[fallthrough]];
      case 'x':
        return AppendFraction(text_, civil_, digits_, '.');
      case 'P':
        text_ += civil_.hour < 12 ? "AM" : "PM";
        return;
      default:
        text_ += letter;
    }
  }

  const Civil civil_;
  const bool precise_;
  const int digits_;
  Text text_;
};

// Two, four or more digits at fixed places of a stored text; -1 where something else stands there.
int DigitsAt(std::string_view text, std::size_t at, std::size_t count) {
  int number = 0;
  for (std::size_t i = at; i < at + count; ++i) {
    if (!IsDigit(text[i])) return -1;
    number = number * 10 + (text[i] - '0');
  }
  return number;
}

}  // namespace

Text StoredText(const Moment& moment, DateKind kind) {
  const Civil civil = ToCivil(moment);
  Text text;
  text.reserve(27);
  Append(text, civil.year, 4);
  Append(text += '-', civil.month, 2);
  Append(text += '-', civil.day, 2);
  if (kind == DateKind::Date) return text;
  Append(text += ' ', civil.hour, 2);
  Append(text += ':', civil.minute, 2);
  Append(text += ':', civil.second, 2);
  AppendFraction(text, civil, kind == DateKind::DateTime2 ? 7 : 3, '.');
  return text;
}

std::optional<Moment> ReadStored(std::string_view text) {
  constexpr std::string_view kForm = "0000-00-00 00:00:00.0000000";
  constexpr std::size_t kDate = 10;
  constexpr std::size_t kPoint = 19;
  if (text.size() != kDate && text.size() != kPoint + 4 && text.size() != kForm.size()) return std::nullopt;
  for (const std::size_t mark : {4, 7, 10, 13, 16, 19}) {
    if (mark < text.size() && text[mark] != kForm[mark]) return std::nullopt;
  }
  Civil civil{DigitsAt(text, 0, 4), DigitsAt(text, 5, 2), DigitsAt(text, 8, 2)};
  if (text.size() > kDate) {
    civil.hour = DigitsAt(text, 11, 2);
    civil.minute = DigitsAt(text, 14, 2);
    civil.second = DigitsAt(text, 17, 2);
    const std::size_t digits = text.size() - kPoint - 1;
    civil.ticks = DigitsAt(text, kPoint + 1, digits) * (digits == 3 ? 10'000 : 1);
  }
  return FromCivil(civil);
}

std::optional<Text> FormatMoment(const Moment& moment, DateForm form, int style) {
  const bool modern = form.kind == DateKind::Date || form.kind == DateKind::DateTime2;
  if (style == 0 && modern) style = 121;
  const auto found =
      std::find_if(std::begin(kStyles), std::end(kStyles), [&](const Style& known) { return known.number == style; });
  if (found == std::end(kStyles)) return std::nullopt;
  if (form.kind == DateKind::Date && found->day.empty()) return std::nullopt;
  Writer writer(ToCivil(moment), form);
  writer.Write(found->day);
  if (form.kind != DateKind::Date) writer.Write(found->time);
  return writer.Take();
}

}  // namespace rebate
