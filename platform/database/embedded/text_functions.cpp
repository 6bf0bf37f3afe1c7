#include <algorithm>
#include <array>

#include "platform/automation/conversion.h"
#include "platform/database/embedded/functions.h"
#include "platform/database/embedded/like.h"
#include "platform/database/tsql/utf8.h"

namespace rebate {
namespace {

using tsql::CountUnits;
using tsql::FirstUnits;

constexpr std::string_view kBadLength = "Invalid length parameter passed to the LEFT or SUBSTRING function.";

[[noreturn]] void Refuse(std::string_view description) {
  throw Error(database_error::kStatement, "", Text(description));
}

std::string_view Skip(std::string_view text, std::int64_t units) {
  return text.substr(FirstUnits(text, static_cast<std::size_t>(std::max<std::int64_t>(units, 0)), true).size());
}

std::string_view Take(std::string_view text, std::int64_t units) {
  return FirstUnits(text, static_cast<std::size_t>(std::max<std::int64_t>(units, 0)), true);
}

// Where `needle` stands in `text`, in bytes, without regard to case. A folded text is as long as what it was made of.
std::size_t Find(std::string_view text, std::string_view needle, std::size_t from) {
  const bool letters = std::any_of(needle.begin(), needle.end(), [](char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || static_cast<unsigned char>(c) >= 0x80;
  });
  if (!letters) return text.find(needle, from);
  return tsql::Folded(text).find(tsql::Folded(needle), from);
}

void CharIndex(sqlite3_context* context, int count, sqlite3_value** arguments) {
  const std::string_view needle = TextOf(arguments[0]);
  const std::string_view text = TextOf(arguments[1]);
  const std::int64_t start = count > 2 ? std::max<std::int64_t>(sqlite3_value_int64(arguments[2]) - 1, 0) : 0;
  const std::size_t found = needle.empty() ? Text::npos : Find(text, needle, Take(text, start).size());
  const bool hit = found != Text::npos;
  sqlite3_result_int64(context, hit ? static_cast<std::int64_t>(CountUnits(text.substr(0, found), true)) + 1 : 0);
}

void Len(sqlite3_context* context, int, sqlite3_value** arguments) {
  const std::string_view text = tsql::WithoutTrailingBlanks(TextOf(arguments[0]));
  sqlite3_result_int64(context, static_cast<std::int64_t>(CountUnits(text, true)));
}

void DataLength(sqlite3_context* context, int, sqlite3_value** arguments) {
  sqlite3_result_int64(context, static_cast<std::int64_t>(CountUnits(TextOf(arguments[0]), true)));
}

void Left(sqlite3_context* context, int, sqlite3_value** arguments) {
  const std::int64_t length = sqlite3_value_int64(arguments[1]);
  if (length < 0) Refuse(kBadLength);
  GiveText(context, Take(TextOf(arguments[0]), length));
}

void Right(sqlite3_context* context, int, sqlite3_value** arguments) {
  const std::int64_t length = sqlite3_value_int64(arguments[1]);
  if (length < 0) Refuse("Invalid length parameter passed to the RIGHT function.");
  const std::string_view text = TextOf(arguments[0]);
  GiveText(context, Skip(text, static_cast<std::int64_t>(CountUnits(text, true)) - length));
}

void Substring(sqlite3_context* context, int, sqlite3_value** arguments) {
  std::int64_t start = sqlite3_value_int64(arguments[1]) - 1;
  std::int64_t length = sqlite3_value_int64(arguments[2]);
  if (length < 0) Refuse(kBadLength);
  if (start < 0) {
    length += start;
    start = 0;
  }
  GiveText(context, Take(Skip(TextOf(arguments[0]), start), length));
}

void LTrim(sqlite3_context* context, int, sqlite3_value** arguments) {
  std::string_view text = TextOf(arguments[0]);
  while (text.starts_with(' ')) text.remove_prefix(1);
  GiveText(context, text);
}

void RTrim(sqlite3_context* context, int, sqlite3_value** arguments) {
  GiveText(context, tsql::WithoutTrailingBlanks(TextOf(arguments[0])));
}

template <char32_t (*Change)(char32_t)>
void ChangeCase(sqlite3_context* context, int, sqlite3_value** arguments) {
  const std::string_view text = TextOf(arguments[0]);
  Text changed;
  changed.reserve(text.size());
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at < end) tsql::AppendCodePoint(changed, Change(tsql::NextCodePoint(at, end)));
  GiveText(context, changed);
}

void ReplaceText(sqlite3_context* context, int, sqlite3_value** arguments) {
  const std::string_view text = TextOf(arguments[0]);
  const Text haystack = tsql::Folded(text);
  const Text needle = tsql::Folded(TextOf(arguments[1]));
  const std::string_view replacement = TextOf(arguments[2]);
  if (needle.empty()) return GiveText(context, text);
  Text result;
  std::size_t at = 0;
  for (std::size_t found; (found = haystack.find(needle, at)) != Text::npos; at = found + needle.size()) {
    result += text.substr(at, found - at);
    result += replacement;
  }
  GiveText(context, result += text.substr(at));
}

void Stuff(sqlite3_context* context, int, sqlite3_value** arguments) {
  const std::string_view text = TextOf(arguments[0]);
  const std::int64_t start = sqlite3_value_int64(arguments[1]);
  const std::int64_t length = sqlite3_value_int64(arguments[2]);
  if (start < 1 || length < 0 || start > static_cast<std::int64_t>(CountUnits(text, true))) return;
  Text result(Take(text, start - 1));
  result += TextOf(arguments[3]);
  result += Skip(text, start - 1 + length);
  GiveText(context, result);
}

void GiveRepeated(sqlite3_context* context, std::string_view text, std::int64_t times) {
  constexpr std::size_t kLimit = 8000;
  if (times < 0) return;
  Text result;
  for (; times > 0 && result.size() + text.size() <= kLimit && !text.empty(); --times) result += text;
  GiveText(context, result);
}

void Replicate(sqlite3_context* context, int, sqlite3_value** arguments) {
  GiveRepeated(context, TextOf(arguments[0]), sqlite3_value_int64(arguments[1]));
}

void Space(sqlite3_context* context, int, sqlite3_value** arguments) {
  GiveRepeated(context, " ", sqlite3_value_int64(arguments[0]));
}

void Reverse(sqlite3_context* context, int, sqlite3_value** arguments) {
  std::string_view text = TextOf(arguments[0]);
  Text result;
  while (!text.empty()) {
    std::size_t last = text.size() - 1;
    while (last > 0 && (static_cast<unsigned char>(text[last]) & 0xC0) == 0x80) --last;
    result += text.substr(last);
    text.remove_suffix(text.size() - last);
  }
  GiveText(context, result);
}

template <char32_t kLast>
void FirstCode(sqlite3_context* context, int, sqlite3_value** arguments) {
  const std::string_view text = TextOf(arguments[0]);
  if (text.empty()) return;
  const char* at = text.data();
  const char32_t code = tsql::NextCodePoint(at, at + text.size());
  sqlite3_result_int64(context, code <= kLast ? static_cast<std::int64_t>(code) : '?');
}

template <std::int64_t kLast>
void CharOf(sqlite3_context* context, int, sqlite3_value** arguments) {
  const std::int64_t code = sqlite3_value_int64(arguments[0]);
  if (code < 0 || code > kLast) return;
  Text text;
  tsql::AppendCodePoint(text, static_cast<char32_t>(code));
  GiveText(context, text);
}

void Str(sqlite3_context* context, int count, sqlite3_value** arguments) {
  const std::int64_t length = count > 1 ? sqlite3_value_int64(arguments[1]) : 10;
  const std::int64_t decimals = count > 2 ? std::clamp<std::int64_t>(sqlite3_value_int64(arguments[2]), 0, 16) : 0;
  if (length < 1 || length > 8000) return;
  const int scale = static_cast<int>(decimals);
  const double number = tsql::RoundHalfAway(sqlite3_value_double(arguments[0]), scale);
  std::array<char, 400> buffer{};
  Text text(buffer.data(),
            static_cast<std::size_t>(std::snprintf(buffer.data(), buffer.size(), "%.*f", scale, number)));
  const std::size_t width = static_cast<std::size_t>(length);
  const std::size_t whole = std::min(text.find('.'), text.size());
  if (whole > width) {
    text.assign(width, '*');
  } else if (text.size() > width) {
    text.resize(whole + 1 >= width ? whole : width);
  }
  if (text.size() < width) text.insert(0, width - text.size(), ' ');
  GiveText(context, text);
}

void IsDigits(sqlite3_context* context, int, sqlite3_value** arguments) {
  sqlite3_result_int(context, tsql::IsNumberText(TextOf(arguments[0])));
}

void LikeFunction(sqlite3_context* context, int count, sqlite3_value** arguments) {
  const std::string_view escape = count > 2 ? TextOf(arguments[2]) : std::string_view();
  if (count > 2 && CountUnits(escape, true) != 1) {
    Refuse("The invalid escape character \"" + Text(escape) + "\" was specified in a LIKE predicate.");
  }
  sqlite3_result_int(context, MatchesLike(TextOf(arguments[0]), TextOf(arguments[1]), escape));
}

void PatIndex(sqlite3_context* context, int, sqlite3_value** arguments) {
  std::string_view pattern = TextOf(arguments[0]);
  const std::string_view text = TextOf(arguments[1]);
  const bool open = pattern.starts_with('%');
  if (open) pattern.remove_prefix(1);
  std::int64_t position = 1;
  for (std::string_view rest = text;; rest = Skip(rest, 1), ++position) {
    if (MatchesLike(rest, pattern, {})) {
      sqlite3_result_int64(context, position);
      return;
    }
    if (rest.empty() || !open) break;
  }
  sqlite3_result_int64(context, 0);
}

constexpr FunctionDefinition kFunctions[] = {
    {"t_charindex", -1, Guarded<CharIndex>},
    {"t_len", 1, Guarded<Len>},
    {"t_datalength", 1, Guarded<DataLength>},
    {"t_left", 2, Guarded<Left>},
    {"t_right", 2, Guarded<Right>},
    {"t_substring", 3, Guarded<Substring>},
    {"t_ltrim", 1, Guarded<LTrim>},
    {"t_rtrim", 1, Guarded<RTrim>},
    {"t_upper", 1, Guarded<ChangeCase<tsql::UpperCase>>},
    {"t_lower", 1, Guarded<ChangeCase<tsql::FoldCase>>},
    {"t_replace", 3, Guarded<ReplaceText>},
    {"t_stuff", 4, Guarded<Stuff>},
    {"t_replicate", 2, Guarded<Replicate>},
    {"t_space", 1, Guarded<Space>},
    {"t_reverse", 1, Guarded<Reverse>},
    {"t_ascii", 1, Guarded<FirstCode<0x7F>>},
    {"t_unicode", 1, Guarded<FirstCode<0x10FFFF>>},
    {"t_char", 1, Guarded<CharOf<0xFF>>},
    {"t_nchar", 1, Guarded<CharOf<0xFFFF>>},
    {"t_str", -1, Guarded<Str>},
    {"t_isnumeric", 1, Guarded<IsDigits>},
    {"t_like", -1, Guarded<LikeFunction>},
    {"t_patindex", 2, Guarded<PatIndex>},
};

}  // namespace

std::span<const FunctionDefinition> TextFunctions() {
  return kFunctions;
}

}  // namespace rebate
