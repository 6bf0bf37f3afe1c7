#include "platform/database/tsql/data_types.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/database/tsql/parse/tree.h"
#include "platform/values/ascii.h"
#include "platform/values/decimal.h"

namespace rebate::tsql {
namespace {

struct TypeNames {
  std::string_view declared;
  std::string_view in_messages;
  int rank;  // the higher one wins where two types meet
};

// In the order of TypeKind. SQLite keeps exact numbers as texts where the declared name holds the word.
constexpr std::array<TypeNames, 18> kNames{{{"bit", "bit", 5},
                                            {"tinyint", "tinyint", 6},
                                            {"smallint", "smallint", 7},
                                            {"int", "int", 8},
                                            {"bigint", "bigint", 9},
                                            {"decimal text", "numeric", 12},
                                            {"money text", "money", 11},
                                            {"smallmoney text", "smallmoney", 10},
                                            {"float", "float", 14},
                                            {"real", "real", 13},
                                            {"char", "char", 1},
                                            {"varchar", "varchar", 2},
                                            {"nchar", "nchar", 3},
                                            {"nvarchar", "nvarchar", 4},
                                            {"datetime", "datetime", 17},
                                            {"smalldatetime", "smalldatetime", 16},
                                            {"date", "date", 15},
                                            {"datetime2", "datetime2", 18}}};

constexpr int kMaxPrecision = Decimal::kMaxDigits;
constexpr int kLeastScale = 6;  // that a product or quotient keeps, however large its whole part may be
constexpr int kLongestNational = 4000;

const TypeNames& NamesOf(TypeKind kind) {
  return kNames[static_cast<std::size_t>(kind)];
}

int IntegerDigits(const DataType& decimal) {
  return decimal.precision - decimal.scale;
}

// Where the digits don't fit, those of the fraction go first.
DataType KeepingInteger(int integer_digits, int precision, int scale) {
  if (precision > kMaxPrecision) scale = std::clamp(kMaxPrecision - integer_digits, 0, scale);
  return DecimalType(std::min(precision, kMaxPrecision), scale);
}

// Where they don't fit in a product or quotient, six of the fraction stay.
DataType KeepingSix(int precision, int scale) {
  if (precision > kMaxPrecision) {
    const int room = kMaxPrecision - (precision - scale);
    scale = std::min(scale, std::max(room, kLeastScale));
  }
  return DecimalType(std::min(precision, kMaxPrecision), scale);
}

DataType CommonDecimal(const DataType& left, const DataType& right) {
  const int integer_digits = std::max(IntegerDigits(left), IntegerDigits(right));
  const int scale = std::max(left.scale, right.scale);
  return KeepingInteger(integer_digits, integer_digits + scale, scale);
}

DataType CommonText(const DataType& left, const DataType& right) {
  const bool national = IsNational(left.kind) || IsNational(right.kind);
  const bool fixed = left.kind == right.kind && IsFixedText(left.kind);
  const TypeKind varying = national ? TypeKind::NVarChar : TypeKind::VarChar;
  if (left.length == DataType::kMaxLength || right.length == DataType::kMaxLength) {
    return TextType(varying, DataType::kMaxLength);
  }
  const int length = std::max(left.length, right.length);
  return TextType(fixed ? left.kind : varying, national ? std::min(length, kLongestNational) : length);
}

int ReadNumber(std::string_view& text) {
  int number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return number;
}

}  // namespace

bool IsText(TypeKind kind) {
  return kind >= TypeKind::Char && kind <= TypeKind::NVarChar;
}
bool IsNational(TypeKind kind) {
  return kind == TypeKind::NChar || kind == TypeKind::NVarChar;
}
bool IsFixedText(TypeKind kind) {
  return kind == TypeKind::Char || kind == TypeKind::NChar;
}
bool IsInteger(TypeKind kind) {
  return kind <= TypeKind::BigInt;
}
bool IsMoney(TypeKind kind) {
  return kind == TypeKind::Money || kind == TypeKind::SmallMoney;
}
bool IsExactNumber(TypeKind kind) {
  return kind == TypeKind::Decimal || IsMoney(kind);
}
bool IsFloat(TypeKind kind) {
  return kind == TypeKind::Float || kind == TypeKind::Real;
}
bool IsNumber(TypeKind kind) {
  return kind <= TypeKind::Real;
}
bool IsDate(TypeKind kind) {
  return kind >= TypeKind::DateTime;
}

DateForm FormOf(const DataType& type) {
  switch (type.kind) {
    case TypeKind::SmallDateTime:
      return {DateKind::SmallDateTime};
    case TypeKind::Date:
      return {DateKind::Date};
    case TypeKind::DateTime2:
      return {DateKind::DateTime2, type.scale};
    default:
      return {DateKind::DateTime};
  }
}

Text Declaration(const DataType& type) {
  Text text(NamesOf(type.kind).declared);
  if (type.kind == TypeKind::Decimal) {
    text += '(' + std::to_string(type.precision) + ',' + std::to_string(type.scale) + ')';
  } else if (type.kind == TypeKind::DateTime2) {
    text += '(' + std::to_string(type.scale) + ')';
  } else if (IsText(type.kind)) {
    // SQLite takes no word between the parentheses: (max) stands as its number.
    text += '(' + std::to_string(type.length) + ')';
  }
  return text;
}

std::optional<DataType> ParseDeclaration(std::string_view text) {
  if (EqualsIgnoreCase(text, "INTEGER")) return IntType();
  const std::string_view name = text.substr(0, text.find('('));
  const auto found = std::find_if(kNames.begin(), kNames.end(),
                                  [&](const TypeNames& names) { return EqualsIgnoreCase(names.declared, name); });
  if (found == kNames.end()) return std::nullopt;
  DataType type;
  type.kind = static_cast<TypeKind>(found - kNames.begin());
  text.remove_prefix(std::min(name.size() + 1, text.size()));
  if (type.kind == TypeKind::Decimal) {
    type.precision = ReadNumber(text);
    text.remove_prefix(std::min<std::size_t>(1, text.size()));
    type.scale = ReadNumber(text);
  } else if (type.kind == TypeKind::DateTime2) {
    type.scale = ReadNumber(text);
  } else if (IsText(type.kind)) {
    type.length = text.starts_with('-') ? DataType::kMaxLength : ReadNumber(text);
  }
  return type;
}

std::string_view NameOfType(TypeKind kind) {
  const std::string_view declared = NamesOf(kind).declared;
  return declared.substr(0, declared.find(' '));
}

std::optional<TypeKind> FindTypeKind(std::string_view name) {
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if (NameOfType(static_cast<TypeKind>(i)) == name) return static_cast<TypeKind>(i);
  }
  return std::nullopt;
}

std::string_view MessageName(TypeKind kind) {
  return NamesOf(kind).in_messages;
}

DataType CommonType(const DataType& left, const DataType& right) {
  if (IsText(left.kind) && IsText(right.kind)) return CommonText(left, right);
  const bool left_wins = NamesOf(left.kind).rank >= NamesOf(right.kind).rank;
  const DataType& winner = left_wins ? left : right;
  const DataType& other = left_wins ? right : left;
  if (winner.kind == TypeKind::Decimal && IsNumber(other.kind)) return CommonDecimal(winner, DecimalTypeOf(other));
  DataType type = winner;
  if (type.kind == TypeKind::DateTime2) {
    // A datetime's milliseconds have three digits.
    type.scale = std::max(type.scale, other.kind == TypeKind::DateTime ? 3 : other.scale);
  }
  return type;
}

DataType ArithmeticType(BinaryOperator operation, const DataType& left_type, const DataType& right_type) {
  const DataType common = CommonType(left_type, right_type);
  if (common.kind == TypeKind::Bit) return IntType();
  if (common.kind != TypeKind::Decimal) return common;
  // What is no number itself is read as the other one's type.
  const DataType left = IsNumber(left_type.kind) ? DecimalTypeOf(left_type) : common;
  const DataType right = IsNumber(right_type.kind) ? DecimalTypeOf(right_type) : common;
  const int most = std::max(IntegerDigits(left), IntegerDigits(right));
  const int scale = std::max(left.scale, right.scale);
  switch (operation) {
    case BinaryOperator::Multiply:
      return KeepingSix(left.precision + right.precision + 1, left.scale + right.scale);
    case BinaryOperator::Divide: {
      const int quotient_scale = std::max(kLeastScale, left.scale + right.precision + 1);
      return KeepingSix(IntegerDigits(left) + right.scale + quotient_scale, quotient_scale);
    }
    case BinaryOperator::Modulo: {
      const int least = std::min(IntegerDigits(left), IntegerDigits(right));
      return KeepingInteger(least, least + scale, scale);
    }
    default:
      return KeepingInteger(most, most + scale + 1, scale);
  }
}

DataType DecimalTypeOf(const DataType& type) {
  switch (type.kind) {
    case TypeKind::Bit:
      return DecimalType(1, 0);
    case TypeKind::TinyInt:
      return DecimalType(3, 0);
    case TypeKind::SmallInt:
      return DecimalType(5, 0);
    case TypeKind::BigInt:
      return DecimalType(19, 0);
    case TypeKind::Money:
      return DecimalType(19, 4);
    case TypeKind::SmallMoney:
      return DecimalType(10, 4);
    case TypeKind::Decimal:
      return type;
    default:
      return DecimalType(10, 0);
  }
}

DataType SumType(const DataType& operand) {
  if (operand.kind == TypeKind::BigInt) return operand;
  if (IsInteger(operand.kind)) return IntType();
  if (IsMoney(operand.kind)) return TypeOf(TypeKind::Money);
  return operand.kind == TypeKind::Decimal ? DecimalType(kMaxPrecision, operand.scale) : FloatType();
}

DataType AvgType(const DataType& operand) {
  const DataType sum = SumType(operand);
  return sum.kind == TypeKind::Decimal ? DecimalType(sum.precision, std::max(sum.scale, kLeastScale)) : sum;
}

}  // namespace rebate::tsql
