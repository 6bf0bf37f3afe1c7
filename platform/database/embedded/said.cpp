#include "platform/database/embedded/said.h"

#include <algorithm>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/values/ascii.h"
#include "platform/values/number_text.h"
#include "platform/values/text.h"

namespace rebate {
namespace {

constexpr std::int64_t kFirstError = 11;    // of the severities
constexpr std::int64_t kLastSeverity = 18;  // beyond it only an administrator of a server may go
constexpr std::size_t kLongestMessage = 2047;

[[noreturn]] void Refuse(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}

// One mark of printf: `%-08.3ld` without its percent sign.
struct Mark {
  bool left = false;
  bool zeros = false;
  bool plus = false;
  std::size_t width = 0;
  std::optional<std::size_t> precision;
  char letter = 's';
};

std::size_t TakeNumber(std::string_view& text) {
  std::size_t number = 0;
  while (!text.empty() && IsDigit(text.front())) {
    number = std::min<std::size_t>(number * 10 + static_cast<std::size_t>(text.front() - '0'), kLongestMessage);
    text.remove_prefix(1);
  }
  return number;
}

Mark TakeMark(std::string_view& text) {
  Mark mark;
  for (; !text.empty() && std::string_view("-+0# ").find(text.front()) != std::string_view::npos;
       text.remove_prefix(1)) {
    mark.left = mark.left || text.front() == '-';
    mark.plus = mark.plus || text.front() == '+';
    mark.zeros = mark.zeros || text.front() == '0';
  }
  mark.width = TakeNumber(text);
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    mark.precision = TakeNumber(text);
  }
  if (text.starts_with("I64")) text.remove_prefix(3);
  while (!text.empty() && (text.front() == 'l' || text.front() == 'h')) text.remove_prefix(1);
  if (text.empty() || std::string_view("diouxXs").find(text.front()) == std::string_view::npos) {
    Refuse("A RAISERROR message holds a percent sign that begins no known mark.");
  }
  mark.letter = text.front();
  text.remove_prefix(1);
  return mark;
}

Text InBase(std::uint64_t number, unsigned base, bool capitals) {
  const std::string_view signs = capitals ? "0123456789ABCDEF" : "0123456789abcdef";
  Text digits;
  for (; number != 0 || digits.empty(); number /= base) digits += signs[static_cast<unsigned>(number % base)];
  std::reverse(digits.begin(), digits.end());
  return digits;
}

Text NumberBy(const Mark& mark, const Text& argument) {
  const IntegerReading reading = ReadInteger(Trim(argument));
  if (reading.outcome != FloatReading::Outcome::Ok) {
    Refuse("The data type of a substitution parameter does not match its mark in the RAISERROR message.");
  }
  const auto bits = static_cast<std::uint64_t>(static_cast<std::uint32_t>(reading.number));
  switch (mark.letter) {
    case 'o':
      return InBase(bits, 8, false);
    case 'x':
      return InBase(bits, 16, false);
    case 'X':
      return InBase(bits, 16, true);
    case 'u':
      return InBase(bits, 10, false);
    default:
      return (mark.plus && reading.number >= 0 ? "+" : "") + std::to_string(reading.number);
  }
}

Text Padded(const Mark& mark, Text text) {
  const std::size_t length = CountCharacters(text);
  if (length >= mark.width) return text;
  const std::size_t missing = mark.width - length;
  if (mark.left) return text.append(missing, ' ');
  const bool zeros = mark.zeros && mark.letter != 's';
  return text.insert(zeros && text.starts_with('-') ? 1 : 0, missing, zeros ? '0' : ' ');
}

Text Substituted(const Mark& mark, const std::optional<Text>& argument) {
  if (!argument) return "(null)";
  if (mark.letter != 's') return Padded(mark, NumberBy(mark, *argument));
  return Padded(mark, Text(mark.precision ? FirstCharacters(*argument, *mark.precision) : std::string_view(*argument)));
}

Text Formatted(const RaisedMessage& raised) {
  Text text;
  std::string_view format = raised.format;
  std::size_t next = 0;
  while (!format.empty()) {
    const std::size_t percent = std::min(format.find('%'), format.size());
    text += format.substr(0, percent);
    format.remove_prefix(percent);
    if (format.empty()) break;
    format.remove_prefix(1);
    if (format.starts_with('%')) {
      text += '%';
      format.remove_prefix(1);
      continue;
    }
    const Mark mark = TakeMark(format);
    text += Substituted(mark, next < raised.arguments.size() ? raised.arguments[next] : std::nullopt);
    ++next;
  }
  return Text(FirstCharacters(text, kLongestMessage));
}

}  // namespace

Text RaisedText(const RaisedMessage& raised) {
  Text text = Formatted(raised);
  if (raised.severity > kLastSeverity) {
    Refuse("Only System Administrator can specify WITH LOG option for RAISERROR command.");
  }
  if (raised.severity >= kFirstError) throw Error(database_error::kStatement, "", std::move(text));
  return text;
}

void ThrowRaised(std::optional<std::int64_t> number, const std::optional<Text>& message,
                 std::optional<std::int64_t> state) {
  constexpr std::int64_t kLowest = 50'000;
  if (!number || *number < kLowest) {
    Refuse("Error number " + std::to_string(number.value_or(0)) +
           " in the THROW statement is outside the valid range. Specify an error number in the valid range of 50000 to "
           "2147483647.");
  }
  if (!state || *state < 0 || *state > 255) {
    Refuse("The value of the state parameter in the THROW statement must be from 0 to 255.");
  }
  Refuse(message.value_or(""));
}

}  // namespace rebate
