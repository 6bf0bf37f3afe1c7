#include <algorithm>
#include <array>

#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/bind/constant.h"
#include "platform/database/tsql/bind/meeting.h"
#include "platform/values/ascii.h"
#include "platform/values/calendar.h"

namespace rebate::tsql {

namespace {

using Types = std::vector<DataType>;

// What the result's type is, told by those of the arguments.
using ResultRule = DataType (*)(const Types& arguments);

const DataType kText = TextType(TypeKind::VarChar, 8000);
const DataType kNational = TextType(TypeKind::NVarChar, 4000);

DataType Varying(DataType type) {
  if (type.kind == TypeKind::Char) type.kind = TypeKind::VarChar;
  if (type.kind == TypeKind::NChar) type.kind = TypeKind::NVarChar;
  return type;
}

DataType LongestOf(const DataType& type) {
  if (type.length == DataType::kMaxLength) return Varying(type);
  return IsNational(type.kind) ? kNational : kText;
}

DataType GivesInt(const Types&) {
  return IntType();
}
DataType GivesFloat(const Types&) {
  return FloatType();
}
DataType GivesChar(const Types&) {
  return TextType(TypeKind::VarChar, 1);
}
DataType GivesNChar(const Types&) {
  return TextType(TypeKind::NVarChar, 1);
}
DataType GivesText(const Types&) {
  return kText;
}
DataType GivesName(const Types&) {
  return TextType(TypeKind::NVarChar, 258);
}
DataType GivesId(const Types&) {
  return TextType(TypeKind::VarChar, 36);
}
DataType GivesDate(const Types&) {
  return TypeOf(TypeKind::Date);
}
DataType GivesFirst(const Types& arguments) {
  return Varying(arguments.front());
}
DataType GivesLongFirst(const Types& arguments) {
  return LongestOf(arguments.front());
}
DataType GivesWhole(const Types& arguments) {
  const DataType& type = arguments.front();
  return type.kind == TypeKind::Decimal ? DecimalType(type.precision, 0) : type;
}
// Functions over numbers know no types shorter than int.
DataType GivesNumber(const Types& arguments) {
  const DataType& type = arguments.front();
  if (IsInteger(type.kind)) return type.kind == TypeKind::BigInt ? type : IntType();
  if (type.kind == TypeKind::SmallMoney) return TypeOf(TypeKind::Money);
  return type.kind == TypeKind::Real ? FloatType() : type;
}
DataType GivesAngle(const Types& arguments) {
  const DataType type = GivesNumber(arguments);
  return type.kind == TypeKind::Decimal ? DecimalType(38, std::max(type.scale, 18)) : type;
}
DataType GivesPower(const Types& arguments) {
  const DataType type = GivesNumber(arguments);
  return type.kind == TypeKind::Decimal ? DecimalType(38, type.scale) : type;
}
// The text that `replace` and `stuff` make: national where one of its texts is.
DataType GivesMixed(const Types& arguments) {
  const bool national =
      std::any_of(arguments.begin(), arguments.end(), [](const DataType& t) { return IsNational(t.kind); });
  const bool unlimited = std::any_of(arguments.begin(), arguments.end(), [](const DataType& t) {
    return IsText(t.kind) && t.length == DataType::kMaxLength;
  });
  DataType type = national ? kNational : kText;
  if (unlimited) type.length = DataType::kMaxLength;
  return type;
}

// Arguments by letter: t text, i int, l bigint, f float, d a date of any kind, n number, x any; those behind '|' may be
// left out, and a '*' repeats the last one.
struct Signature {
  std::string_view name;
  std::string_view arguments;
  ResultRule result;
  std::string_view function = {};  // that carries it out, where it isn't of the same name
};

constexpr Signature kSignatures[] = {
    {"abs", "n", GivesNumber},       {"acos", "f", GivesFloat},
    {"ascii", "t", GivesInt},        {"asin", "f", GivesFloat},
    {"atan", "f", GivesFloat},       {"atn2", "ff", GivesFloat},
    {"ceiling", "n", GivesWhole},    {"char", "i", GivesChar},
    {"charindex", "tt|i", GivesInt}, {"concat", "tt*", GivesMixed, "concat_or_empty"},
    {"cos", "f", GivesFloat},        {"cot", "f", GivesFloat},
    {"datalength", "x", GivesInt},   {"datefromparts", "iii", GivesDate},
    {"day", "d", GivesInt},          {"degrees", "n", GivesAngle},
    {"eomonth", "d|i", GivesDate},   {"exp", "f", GivesFloat},
    {"floor", "n", GivesWhole},      {"isdate", "t", GivesInt},
    {"isnumeric", "t", GivesInt},    {"left", "ti", GivesFirst},
    {"len", "t", GivesInt},          {"log", "f|f", GivesFloat},
    {"log10", "f", GivesFloat},      {"lower", "t", GivesFirst},
    {"ltrim", "t", GivesFirst},      {"month", "d", GivesInt},
    {"nchar", "i", GivesNChar},      {"newid", "", GivesId},
    {"patindex", "tt", GivesInt},    {"pi", "", GivesFloat},
    {"power", "nf", GivesPower},     {"quotename", "t|t", GivesName},
    {"radians", "n", GivesAngle},    {"rand", "|i", GivesFloat},
    {"replace", "ttt", GivesMixed},  {"replicate", "tl", GivesLongFirst},
    {"reverse", "t", GivesFirst},    {"right", "ti", GivesFirst},
    {"round", "ni|i", GivesNumber},  {"rtrim", "t", GivesFirst},
    {"sign", "n", GivesNumber},      {"sin", "f", GivesFloat},
    {"space", "l", GivesText},       {"sqrt", "f", GivesFloat},
    {"square", "f", GivesFloat},     {"str", "f|ii", GivesText},
    {"stuff", "tiit", GivesMixed},   {"substring", "tll", GivesFirst},
    {"tan", "f", GivesFloat},        {"trim", "t", GivesFirst},
    {"unicode", "t", GivesInt},      {"upper", "t", GivesFirst},
    {"year", "d", GivesInt},
};

const Signature* FindSignature(std::string_view name) {
  const auto found = std::find_if(std::begin(kSignatures), std::end(kSignatures),
                                  [&](const Signature& signature) { return EqualsIgnoreCase(signature.name, name); });
  return found == std::end(kSignatures) ? nullptr : found;
}

bool IsDateKind(TypeKind kind) {
  return kind >= TypeKind::DateTime;
}

[[noreturn]] void RefuseArgument(const DataType& type, std::size_t position, std::string_view name) {
  RefuseStatement("Argument data type " + Text(MessageName(type.kind)) + " is invalid for argument " +
                  std::to_string(position) + " of " + Text(name) + " function.");
}

bound::ExpressionPtr FitArgument(BindContext& context, bound::ExpressionPtr argument, char letter, std::size_t position,
                                 std::string_view name) {
  const DataType type = argument->type;
  switch (letter) {
    case 't':
      return IsText(type.kind) ? std::move(argument) : ConvertTo(context, std::move(argument), kText, Purpose::Cast);
    case 'i':
      return ConvertTo(context, std::move(argument), IntType(), Purpose::Cast);
    case 'l':
      return ConvertTo(context, std::move(argument), TypeOf(TypeKind::BigInt), Purpose::Cast);
    case 'f':
      if (IsDateKind(type.kind)) RefuseArgument(type, position, name);
      return ConvertTo(context, std::move(argument), FloatType(), Purpose::Cast);
    case 'd':
      if (IsDateKind(type.kind)) return argument;
      return ConvertTo(context, std::move(argument), DateTimeType(), Purpose::Cast);
    case 'n':
      if (IsText(type.kind)) return ConvertTo(context, std::move(argument), FloatType(), Purpose::Cast);
      if (!IsNumber(type.kind) || type.kind == TypeKind::Bit) RefuseArgument(type, position, name);
      argument->type = OwnType(context, *argument);
      return argument;
    default:
      argument->type = OwnType(context, *argument);
      return argument;
  }
}

bound::ExpressionPtr CallFunction(std::string_view function, std::vector<bound::ExpressionPtr> arguments,
                                  const DataType& type) {
  bound::Call call{FindFunction(function), std::move(arguments)};
  return bound::Make(std::move(call), type, true);
}

bound::ExpressionPtr BindSignature(BindContext& context, Scope& scope, const FunctionCall& call,
                                   const Signature& signature) {
  const std::size_t bar = std::min(signature.arguments.find('|'), signature.arguments.size());
  Text letters(signature.arguments);
  std::erase(letters, '|');
  const bool repeats = letters.ends_with('*');
  if (repeats) letters.pop_back();
  CheckArguments(call, std::min(bar, letters.size()), repeats ? 254 : letters.size());
  std::vector<bound::ExpressionPtr> arguments;
  Types types;
  for (std::size_t i = 0; i < call.arguments.size(); ++i) {
    bound::ExpressionPtr argument = BindValue(context, scope, *call.arguments[i]);
    if (IsNullLiteral(*argument) && i == 0) argument->type = kText;
    const char letter = letters[std::min(i, letters.size() - 1)];
    arguments.push_back(FitArgument(context, std::move(argument), letter, i + 1, signature.name));
    types.push_back(arguments.back()->type);
  }
  const DataType type = signature.result(types);
  bound::ExpressionPtr result =
      CallFunction(signature.function.empty() ? signature.name : signature.function, std::move(arguments), type);
  if (signature.name == "isnumeric" || signature.name == "concat") result->nullable = false;
  return result;
}

// ---- functions of a part of a date ----

bound::ExpressionPtr BindDateValue(BindContext& context, Scope& scope, const FunctionCall& call, std::size_t i) {
  return FitArgument(context, BindValue(context, scope, *call.arguments[i]), 'd', i + 2, call.name);
}

bound::ExpressionPtr BindDateFunction(BindContext& context, Scope& scope, const FunctionCall& call) {
  const Text name = AsciiLower(call.name);
  const auto part = ParseDatePart(*call.keyword);
  if (!part) RefuseStatement("'" + *call.keyword + "' is not a recognized " + name + " option.");
  const bool one = name == "datepart" || name == "datename";
  CheckArguments(call, one ? 1 : 2, one ? 1 : 2);
  std::vector<bound::ExpressionPtr> arguments;
  arguments.push_back(IntConstant(static_cast<std::int64_t>(*part)));
  if (name == "dateadd") {
    arguments.push_back(ConvertTo(context, BindValue(context, scope, *call.arguments[0]), IntType(), Purpose::Cast));
    arguments.push_back(BindDateValue(context, scope, call, 1));
    const DataType type = arguments.back()->type;
    return CallFunction(name, std::move(arguments), type);
  }
  for (std::size_t i = 0; i < call.arguments.size(); ++i) arguments.push_back(BindDateValue(context, scope, call, i));
  const DataType type = name == "datename"       ? TextType(TypeKind::NVarChar, 30)
                        : name == "datediff_big" ? TypeOf(TypeKind::BigInt)
                                                 : IntType();
  return CallFunction(name, std::move(arguments), type);
}

}  // namespace

void CheckArguments(const FunctionCall& call, std::size_t low, std::size_t high) {
  const std::size_t count = call.arguments.size();
  if (count >= low && count <= high && !call.star) return;
  const Text name = AsciiLower(call.name);
  if (low == high || high >= 254) {
    RefuseStatement("The " + name + " function requires " + std::to_string(low) + " argument(s).");
  }
  RefuseStatement("The " + name + " function requires " + std::to_string(low) + " to " + std::to_string(high) +
                  " arguments.");
}

bound::ExpressionPtr BindFunction(BindContext& context, Scope& scope, const FunctionCall& call) {
  if (IsAggregate(call.name)) return BindAggregate(context, scope, call);
  if (call.distinct || call.star) RefuseStatement("Incorrect syntax near '" + call.name + "'.");
  if (EqualsIgnoreCase(call.name, "isnull")) return BindIsNullFunction(context, scope, call);
  if (EqualsIgnoreCase(call.name, "coalesce")) return BindCoalesce(context, scope, call);
  if (EqualsIgnoreCase(call.name, "nullif")) return BindNullIf(context, scope, call);
  if (EqualsIgnoreCase(call.name, "choose")) return BindChoose(context, scope, call);
  if (call.keyword) return BindDateFunction(context, scope, call);
  if (bound::ExpressionPtr system = BindSystemFunction(context, call)) return system;
  if (const Signature* signature = FindSignature(call.name)) return BindSignature(context, scope, call, *signature);
  RefuseStatement("'" + call.name + "' is not a recognized built-in function name.");
}

}  // namespace rebate::tsql
