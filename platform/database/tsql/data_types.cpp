#include "platform/database/tsql/data_types.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/automation/conversion.h"

namespace rebate::tsql {
namespace {

struct TypeNames {
  std::string_view declared;
  std::string_view in_messages;
  int rank;  // the higher one wins where two types meet
};

// In the order of TypeKind.
constexpr std::array<TypeNames, 14> kNames{{{"bit", "bit", 5},
                                            {"tinyint", "tinyint", 6},
                                            {"smallint", "smallint", 7},
                                            {"int", "int", 8},
                                            {"bigint", "bigint", 9},
                                            {"decimal", "numeric", 11},
                                            {"money", "money", 10},
                                            {"float", "float", 13},
                                            {"real", "real", 12},
                                            {"char", "char", 1},
                                            {"varchar", "varchar", 2},
                                            {"nchar", "nchar", 3},
                                            {"nvarchar", "nvarchar", 4},
                                            {"datetime", "datetime", 14}}};

constexpr int kMaxPrecision = 38;

const TypeNames& NamesOf(TypeKind kind) {
  return kNames[static_cast<std::size_t>(kind)];
}

// The digits in front of the point of a number that takes part in decimal arithmetic.
int IntegerDigits(const DataType& type) {
  switch (type.kind) {
    case TypeKind::Bit:
      return 1;
    case TypeKind::TinyInt:
      return 3;
    case TypeKind::SmallInt:
      return 5;
    case TypeKind::BigInt:
      return 19;
    case TypeKind::Money:
      return 15;
    case TypeKind::Decimal:
      return type.scale == kAnyScale ? kMaxPrecision : type.precision - type.scale;
    default:
      return 10;
  }
}

DataType DecimalOf(int integer_digits, int scale) {
  if (scale == kAnyScale) return DecimalType(kMaxPrecision, kAnyScale);
  return DecimalType(std::min(integer_digits + scale, kMaxPrecision), scale);
}

DataType CommonDecimal(const DataType& left, const DataType& right) {
  const int left_scale = ScaleOf(left);
  const int right_scale = ScaleOf(right);
  if (left_scale == kAnyScale || right_scale == kAnyScale) return DecimalOf(0, kAnyScale);
  return DecimalOf(std::max(IntegerDigits(left), IntegerDigits(right)), std::max(left_scale, right_scale));
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
bool IsInteger(TypeKind kind) {
  return kind <= TypeKind::BigInt;
}
bool IsExactNumber(TypeKind kind) {
  return kind == TypeKind::Decimal || kind == TypeKind::Money;
}
bool IsFloat(TypeKind kind) {
  return kind == TypeKind::Float || kind == TypeKind::Real;
}
bool IsNumber(TypeKind kind) {
  return kind <= TypeKind::Real;
}

int ScaleOf(const DataType& type) {
  if (IsInteger(type.kind)) return 0;
  if (type.kind == TypeKind::Money) return 4;
  return type.kind == TypeKind::Decimal ? type.scale : kAnyScale;
}

Text Declaration(const DataType& type) {
  Text text(NamesOf(type.kind).declared);
  if (type.kind == TypeKind::Decimal) {
    text += '(' + std::to_string(type.precision) + ',' + std::to_string(std::max(type.scale, 0)) + ')';
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
  } else if (IsText(type.kind)) {
    type.length = text.starts_with('-') ? DataType::kMaxLength : ReadNumber(text);
  }
  return type;
}

std::string_view MessageName(TypeKind kind) {
  return NamesOf(kind).in_messages;
}

DataType CommonType(const DataType& left, const DataType& right) {
  if (IsText(left.kind) && IsText(right.kind)) {
    const bool national = IsNational(left.kind) || IsNational(right.kind);
    const bool fixed = left.kind == right.kind && left.length == right.length;
    if (fixed) return left;
    const bool unlimited = left.length == DataType::kMaxLength || right.length == DataType::kMaxLength;
    return TextType(national ? TypeKind::NVarChar : TypeKind::VarChar,
                    unlimited ? DataType::kMaxLength : std::max(left.length, right.length));
  }
  const DataType& winner = NamesOf(left.kind).rank >= NamesOf(right.kind).rank ? left : right;
  if (winner.kind != TypeKind::Decimal || !IsNumber(left.kind) || !IsNumber(right.kind)) return winner;
  return CommonDecimal(left, right);
}

DataType ArithmeticType(BinaryOperator operation, const DataType& left, const DataType& right) {
  const DataType common = CommonType(left, right);
  if (common.kind == TypeKind::Bit) return IntType();
  if (common.kind != TypeKind::Decimal) return common;
  const int left_scale = ScaleOf(left);
  const int right_scale = ScaleOf(right);
  if (left_scale == kAnyScale || right_scale == kAnyScale) return common;
  switch (operation) {
    case BinaryOperator::Multiply:
      return DecimalOf(IntegerDigits(left) + IntegerDigits(right) + 1, left_scale + right_scale);
    case BinaryOperator::Divide: {
      const int right_precision = IntegerDigits(right) + right_scale;
      const int integer_digits = IntegerDigits(left) + right_scale;
      const int scale = std::max(6, left_scale + right_precision + 1);
      // Digits that don't fit go from the fraction first, down to six.
      return DecimalOf(integer_digits, std::max(std::min(scale, kMaxPrecision - integer_digits), std::min(scale, 6)));
    }
    case BinaryOperator::Modulo:
      return common;
    default:
      return DecimalOf(std::max(IntegerDigits(left), IntegerDigits(right)) + 1, common.scale);
  }
}

}  // namespace rebate::tsql
