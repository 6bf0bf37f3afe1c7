#include <algorithm>
#include <limits>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/database/tsql/eval/folded_cursor.h"
#include "platform/database/tsql/eval/function.h"
#include "platform/database/tsql/eval/like.h"
#include "platform/values/number_text.h"

namespace rebate::tsql {
namespace {

constexpr std::string_view kBadLength = "Invalid length parameter passed to the LEFT or SUBSTRING function.";

[[noreturn]] void Refuse(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}
[[noreturn]] void RefuseUnsupported(const Text& what) {
  Refuse("'" + what + "' is not supported by an embedded account.");
}

// ---- positions ----

// Positions in a text count UTF-16 units where it is national, else characters.
std::int64_t Count(std::string_view text, bool national) {
  return static_cast<std::int64_t>(national ? CountUnits(text, true) : CountCharacters(text));
}
std::string_view First(std::string_view text, std::int64_t count, bool national) {
  const auto most = static_cast<std::size_t>(std::max<std::int64_t>(count, 0));
  return national ? FirstUnits(text, most, true) : FirstCharacters(text, most);
}
std::string_view Behind(std::string_view text, std::int64_t count, bool national) {
  return text.substr(First(text, count, national).size());
}

// A position or a length as the program gave it, brought into a range in which sums of such numbers stay.
std::int64_t NumberAt(const Invocation& call, std::size_t i) {
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
  return std::clamp(call.Integer(i), -kMost, kMost);
}

bool NationalAt(const Invocation& call, std::size_t i) {
  return IsNational(call.types[i].kind);
}

// ---- what is made ----

// Without (max), a text that is made ends where a column of its type would.
struct Limit {
  explicit Limit(const DataType& type)
      : national(IsNational(type.kind)), units(national ? 4000 : 8000), open(type.length == DataType::kMaxLength) {}

  bool national;
  std::int64_t units;
  bool open;
};

Value Made(const Invocation& call, Text text) {
  const Limit limit(call.result);
  const std::string_view whole = call.pool.Keep(std::move(text));
  return Value::Of(limit.open ? whole : FirstUnits(whole, static_cast<std::size_t>(limit.units), limit.national));
}

// Texts one behind the other; one that is Null counts as empty, where it comes this far.
Value Concatenate(const Invocation& call) {
  Text all;
  for (const Value& part : call.arguments) {
    if (!part.IsNull()) all += part.text;
  }
  return Made(call, std::move(all));
}

Value Repeated(const Invocation& call, std::string_view text, std::int64_t times) {
  if (times < 0) return {};
  const Limit limit(call.result);
  const auto units = static_cast<std::int64_t>(CountUnits(text, limit.national));
  if (units == 0) return Value::Of(text);
  if (!limit.open) times = std::min(times, limit.units / units + 1);
  constexpr std::int64_t kMostBytes = std::numeric_limits<std::int32_t>::max();
  if (times > kMostBytes / static_cast<std::int64_t>(text.size())) {
    Refuse("Attempting to grow LOB beyond maximum allowed size of 2147483647 bytes.");
  }
  Text all;
  all.reserve(text.size() * static_cast<std::size_t>(times));
  for (; times > 0; --times) all += text;
  return Made(call, std::move(all));
}

Value Replicate(const Invocation& call) {
  return Repeated(call, call.TextAt(0), NumberAt(call, 1));
}
Value Space(const Invocation& call) {
  return Repeated(call, " ", NumberAt(call, 0));
}

Value Reverse(const Invocation& call) {
  const std::string_view text = call.TextAt(0);
  Text reversed(text.size(), '\0');
  auto place = reversed.end();
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at < end;) {
    const char* const start = at;
    NextCodePoint(at, end);
    place -= at - start;
    std::copy(start, at, place);
  }
  return Value::Of(call.pool.Keep(std::move(reversed)));
}

template <Text (*Change)(std::string_view)>
Value ChangeCase(const Invocation& call) {
  return Value::Of(call.pool.Keep(Change(call.TextAt(0))));
}

Value QuoteName(const Invocation& call) {
  constexpr std::size_t kLongestName = 128;
  constexpr std::string_view kOpening = "[({<'\"`";
  constexpr std::string_view kClosing = "])}>'\"`";
  const std::string_view name = call.TextAt(0);
  const std::string_view marks = call.size() > 1 ? call.TextAt(1) : "[";
  if (marks.empty() || CountUnits(name, true) > kLongestName) return {};
  const std::size_t pair = std::min(kOpening.find(marks.front()), kClosing.find(marks.front()));
  if (pair == Text::npos) return {};
  Text quoted(1, kOpening[pair]);
  for (const char c : name) {
    quoted += c;
    if (c == kClosing[pair]) quoted += c;
  }
  return Value::Of(call.pool.Keep(quoted + kClosing[pair]));
}

// ---- lengths and parts ----

Value Len(const Invocation& call) {
  return Value::Of(Count(WithoutTrailingBlanks(call.TextAt(0)), NationalAt(call, 0)));
}

std::int64_t DecimalBytes(int precision) {
  return precision <= 9 ? 5 : precision <= 19 ? 9 : precision <= 28 ? 13 : 17;
}

// How many bytes a server keeps a value in.
Value DataLength(const Invocation& call) {
  const DataType& type = call.types[0];
  switch (type.kind) {
    case TypeKind::Bit:
    case TypeKind::TinyInt:
      return Value::Of(std::int64_t{1});
    case TypeKind::SmallInt:
      return Value::Of(std::int64_t{2});
    case TypeKind::Date:
      return Value::Of(std::int64_t{3});
    case TypeKind::Int:
    case TypeKind::Real:
    case TypeKind::SmallMoney:
    case TypeKind::SmallDateTime:
      return Value::Of(std::int64_t{4});
    case TypeKind::BigInt:
    case TypeKind::Float:
    case TypeKind::Money:
    case TypeKind::DateTime:
      return Value::Of(std::int64_t{8});
    case TypeKind::DateTime2:
      return Value::Of(std::int64_t{type.scale <= 2 ? 6 : type.scale <= 4 ? 7 : 8});
    case TypeKind::Decimal:
      return Value::Of(DecimalBytes(type.precision));
    default: {
      const bool national = IsNational(type.kind);
      return Value::Of(static_cast<std::int64_t>(CountUnits(call.TextAt(0), national)) * (national ? 2 : 1));
    }
  }
}

Value Left(const Invocation& call) {
  const std::int64_t length = NumberAt(call, 1);
  if (length < 0) Refuse(Text(kBadLength));
  return Value::Of(First(call.TextAt(0), length, NationalAt(call, 0)));
}

Value Right(const Invocation& call) {
  const std::int64_t length = NumberAt(call, 1);
  if (length < 0) Refuse("Invalid length parameter passed to the RIGHT function.");
  const bool national = NationalAt(call, 0);
  const std::string_view text = call.TextAt(0);
  return Value::Of(Behind(text, Count(text, national) - length, national));
}

// A start in front of the text takes from the length.
Value Substring(const Invocation& call) {
  const std::int64_t start = NumberAt(call, 1) - 1;
  const std::int64_t length = NumberAt(call, 2);
  if (length < 0) Refuse(Text(kBadLength));
  const bool national = NationalAt(call, 0);
  const std::string_view rest = Behind(call.TextAt(0), start, national);
  return Value::Of(First(rest, length + std::min<std::int64_t>(start, 0), national));
}

std::string_view WithoutLeadingBlanks(std::string_view text) {
  return text.substr(std::min(text.find_first_not_of(' '), text.size()));
}

Value LTrim(const Invocation& call) {
  return Value::Of(WithoutLeadingBlanks(call.TextAt(0)));
}
Value RTrim(const Invocation& call) {
  return Value::Of(WithoutTrailingBlanks(call.TextAt(0)));
}
Value TrimBoth(const Invocation& call) {
  return Value::Of(WithoutLeadingBlanks(WithoutTrailingBlanks(call.TextAt(0))));
}

Value Stuff(const Invocation& call) {
  const std::string_view text = call.TextAt(0);
  const bool national = NationalAt(call, 0);
  const std::int64_t start = NumberAt(call, 1);
  const std::int64_t length = NumberAt(call, 2);
  if (start < 1 || length < 0 || start > Count(text, national)) return {};
  const std::string_view head = First(text, start - 1, national);
  Text stuffed(head);
  stuffed += call.TextAt(3);
  stuffed += Behind(text.substr(head.size()), length, national);
  return Made(call, std::move(stuffed));
}

// ---- search ----

// A text to look for, without regard to case and width.
class Needle {
 public:
  explicit Needle(std::string_view text) {
    for (FoldedCursor cursor(text); !cursor.AtEnd();) folded_ += cursor.Next();
  }

  struct Place {
    std::size_t begin, end;  // in bytes
  };
  // The first place in `text`, from the byte `from` on.
  std::optional<Place> Find(std::string_view text, std::size_t from) const {
    if (folded_.empty()) return std::nullopt;
    for (FoldedCursor start(text.substr(from)); !start.AtEnd(); start.NextPlain()) {
      FoldedCursor cursor = start;
      const auto differs = [&](char32_t wanted) { return cursor.AtEnd() || cursor.Next() != wanted; };
      if (std::none_of(folded_.begin(), folded_.end(), differs)) {
        return Place{static_cast<std::size_t>(start.at - text.data()),
                     static_cast<std::size_t>(cursor.at - text.data())};
      }
    }
    return std::nullopt;
  }

 private:
  std::u32string folded_;
};

Value CharIndex(const Invocation& call) {
  const std::string_view text = call.TextAt(1);
  const bool national = NationalAt(call, 1);
  const std::int64_t start = call.size() > 2 ? NumberAt(call, 2) - 1 : 0;
  const auto place = Needle(call.TextAt(0)).Find(text, First(text, start, national).size());
  return Value::Of(place ? Count(text.substr(0, place->begin), national) + 1 : 0);
}

Value ReplaceText(const Invocation& call) {
  const std::string_view text = call.TextAt(0);
  const Needle needle(call.TextAt(1));
  Text replaced;
  std::size_t at = 0;
  while (const auto place = needle.Find(text, at)) {
    replaced += text.substr(at, place->begin - at);
    replaced += call.TextAt(2);
    at = place->end;
  }
  if (at == 0) return Value::Of(text);
  return Made(call, replaced += text.substr(at));
}

Value Like(const Invocation& call) {
  std::optional<char32_t> escape;
  if (call.size() > 2) {
    const std::string_view text = call.TextAt(2);
    if (CountCharacters(text) != 1) {
      Refuse("The invalid escape character \"" + Text(text) + "\" was specified in a LIKE predicate.");
    }
    escape = FoldedCursor(text).NextPlain();
  }
  return Value::OfBool(MatchesLike(call.TextAt(0), call.TextAt(1), escape));
}

Value PatIndex(const Invocation& call) {
  const std::string_view text = call.TextAt(1);
  const auto found = FindLike(text, call.TextAt(0));
  return Value::Of(found && !text.empty() ? Count(text.substr(0, *found), NationalAt(call, 1)) + 1 : 0);
}

// ---- codes of characters ----

// The account's code page gives characters outside ASCII two bytes that an embedded account doesn't know.
Value Ascii(const Invocation& call) {
  const std::string_view text = call.TextAt(0);
  if (text.empty()) return {};
  if (!IsAscii(text.front())) {
    RefuseUnsupported("ascii(" + Text(FirstCharacters(text, 1)) + ")");
  }
  return Value::Of(std::int64_t{text.front()});
}

Value Char(const Invocation& call) {
  const std::int64_t code = call.Integer(0);
  if (code < 0 || code > 0xFF) return {};
  if (code >= 0x80) RefuseUnsupported("char(" + std::to_string(code) + ")");
  return Value::Of(call.pool.Keep(Text(1, static_cast<char>(code))));
}

constexpr std::int64_t kFirstHalf = 0xD800;  // of the UTF-16 units that are halves of a character
constexpr std::int64_t kLastHalf = 0xDFFF;

Value Unicode(const Invocation& call) {
  const std::string_view text = call.TextAt(0);
  if (text.empty()) return {};
  const std::u16string wide = ToWide(FirstCharacters(text, 1));
  return Value::Of(std::int64_t{wide.front()});
}

Value NChar(const Invocation& call) {
  const std::int64_t code = call.Integer(0);
  if (code < 0 || code > 0xFFFF) return {};
  if (code >= kFirstHalf && code <= kLastHalf) RefuseUnsupported("nchar(" + std::to_string(code) + ")");
  Text text;
  AppendCodePoint(text, static_cast<char32_t>(code));
  return Value::Of(call.pool.Keep(std::move(text)));
}

// ---- numbers as text ----

// As many digits of the fraction as there is room for, the last one rounded; stars where even the integer has none.
Value Str(const Invocation& call) {
  constexpr std::int64_t kDefaultLength = 10;
  constexpr std::int64_t kMostLength = 8000;
  constexpr std::int64_t kMostPlaces = 16;
  const std::int64_t length = call.size() > 1 ? call.Integer(1) : kDefaultLength;
  std::int64_t places = call.size() > 2 ? std::clamp<std::int64_t>(call.Integer(2), 0, kMostPlaces) : 0;
  if (length < 1 || length > kMostLength) return {};
  const auto width = static_cast<std::size_t>(length);
  Text text;
  do {
    text = FixedText(call.Real(0), static_cast<int>(places));
  } while (text.size() > width && places-- > 0);
  if (text.size() > width) text.assign(width, '*');
  text.insert(0, width - text.size(), ' ');
  return Value::Of(call.pool.Keep(std::move(text)));
}

constexpr Function kFunctions[] = {
    {"concat_text", Concatenate},
    {"concat_or_empty", Concatenate, true},
    {"replicate", Replicate},
    {"space", Space},
    {"reverse", Reverse},
    {"lower", ChangeCase<LowerCase>},
    {"upper", ChangeCase<UpperCase>},
    {"quotename", QuoteName},
    {"len", Len},
    {"datalength", DataLength},
    {"left", Left},
    {"right", Right},
    {"substring", Substring},
    {"ltrim", LTrim},
    {"rtrim", RTrim},
    {"trim", TrimBoth},
    {"stuff", Stuff},
    {"charindex", CharIndex},
    {"replace", ReplaceText},
    {"like", Like},
    {"patindex", PatIndex},
    {"ascii", Ascii},
    {"char", Char},
    {"unicode", Unicode},
    {"nchar", NChar},
    {"str", Str},
};

}  // namespace

std::span<const Function> TextFunctions() {
  return kFunctions;
}

}  // namespace rebate::tsql
