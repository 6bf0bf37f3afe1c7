#include "platform/database/tsql/bind/meeting.h"

#include "platform/database/tsql/bind/constant.h"
#include "platform/database/tsql/eval/literal.h"

namespace rebate::tsql {


namespace {

bool IsNullValue(const bound::Expression& expression) {
  return std::holds_alternative<bound::Null>(expression.node);
}

bool IsDayAlone(TypeKind kind) {
  return kind == TypeKind::Date || kind == TypeKind::DateTime2;
}

// A constant converted where it stands.
bound::ExpressionPtr ConvertConstant(const bound::Constant& constant, const DataType& from, const DataType& to,
                              Purpose purpose) {
  TextPool pool;
  return bound::Make(KeptConstant(Convert(ConstantValue(constant, from), from, to, purpose, pool)), to, false);
}

}  // namespace

TypeFamily FamilyOf(TypeKind kind) {
  if (IsInteger(kind)) return TypeFamily::Integer;
  if (IsExactNumber(kind)) return TypeFamily::Decimal;
  if (IsFloat(kind)) return TypeFamily::Float;
  if (IsText(kind)) return TypeFamily::Text;
  if (kind == TypeKind::Date) return TypeFamily::Date;
  return kind == TypeKind::DateTime2 ? TypeFamily::DateTime2 : TypeFamily::DateTime;
}

bool IsNullLiteral(const bound::Expression& expression) {
  const auto* null = std::get_if<bound::Null>(&expression.node);
  return null != nullptr && !null->typed;
}

void CheckConvertible(const DataType& from, const DataType& to, bool is_explicit) {
  const bool from_day = IsDayAlone(from.kind) && IsNumber(to.kind);
  const bool to_day = IsDayAlone(to.kind) && IsNumber(from.kind);
  const bool from_time = FamilyOf(from.kind) == TypeFamily::DateTime && IsNumber(to.kind) && !is_explicit;
  if (from_day || to_day) {
    if (is_explicit) {
      RefuseStatement("Explicit conversion from data type " + Text(MessageName(from.kind)) + " to " +
                      Text(MessageName(to.kind)) + " is not allowed.");
    }
    RefuseStatement("Operand type clash: " + Text(MessageName(from.kind)) + " is incompatible with " +
                    Text(MessageName(to.kind)));
  }
  if (from_time) {
    RefuseStatement("Implicit conversion from data type " + Text(MessageName(from.kind)) + " to " +
                    Text(MessageName(to.kind)) + " is not allowed. Use the CONVERT function to run this query.");
  }
}

bound::ExpressionPtr ConvertTo(BindContext& context, bound::ExpressionPtr expression, const DataType& type, Purpose purpose,
                        bound::ExpressionPtr style) {
  if (IsNullValue(*expression)) {
    expression->type = type;
    return expression;
  }
  if (!style) {
    if (auto* literal = std::get_if<bound::Literal>(&expression->node); literal != nullptr && !literal->converted) {
      literal->converted = true;
      literal->as_written = false;
      literal->purpose = purpose;
      expression->nullable = purpose == Purpose::Match || purpose == Purpose::Tolerant;
      expression->type = type;
      return expression;
    }
    if (expression->type == type) return expression;
    CheckConvertible(expression->type, type, purpose == Purpose::Cast || purpose == Purpose::Tolerant);
    if (const auto* constant = std::get_if<bound::Constant>(&expression->node); constant && context.constant_literals) {
      return ConvertConstant(*constant, expression->type, type, purpose);
    }
  }
  const bool nullable = expression->nullable || purpose == Purpose::Match || purpose == Purpose::Tolerant;
  return bound::Make(bound::Convert{std::move(expression), purpose, std::move(style)}, type, nullable);
}

DataType OwnType(BindContext& context, bound::Expression& expression, bool in_decimal_arithmetic) {
  const auto* literal = std::get_if<bound::Literal>(&expression.node);
  if (literal == nullptr || literal->converted) return expression.type;
  const LiteralToken& token = context.literals[literal->index];
  const bool measured = token.kind == LiteralKind::Decimal || token.kind >= LiteralKind::String ||
                        (token.kind == LiteralKind::Integer && in_decimal_arithmetic);
  if (!measured) return expression.type;
  FixLiteral(context, literal->index);
  return MeasuredType(token);
}

bound::ExpressionPtr BringTo(BindContext& context, bound::ExpressionPtr expression, const DataType& common, Purpose purpose) {
  if (IsNullValue(*expression)) {
    expression->type = common;
    return expression;
  }
  const TypeFamily family = FamilyOf(expression->type.kind);
  const TypeFamily wanted = FamilyOf(common.kind);
  auto* literal = std::get_if<bound::Literal>(&expression->node);
  if (family == wanted) return expression;
  const bool number_literal = literal != nullptr && !literal->converted && wanted == TypeFamily::Decimal &&
                              (family == TypeFamily::Integer || family == TypeFamily::Decimal);
  if (number_literal) {
    // Its own digits: 1.5 is compared with a decimal of no places as what it is.
    expression = ConvertTo(context, std::move(expression), DecimalType(38, 0), purpose);
    std::get<bound::Literal>(expression->node).as_written = true;
    return expression;
  }
  DataType target = common;
  if (wanted == TypeFamily::Text) target.length = DataType::kMaxLength;
  if (wanted == TypeFamily::Decimal && family == TypeFamily::Integer) target = DecimalTypeOf(expression->type);
  return ConvertTo(context, std::move(expression), target, purpose);
}

void Meet(BindContext& context, bound::ExpressionPtr& left, bound::ExpressionPtr& right) {
  if (IsNullLiteral(*left)) left->type = right->type;
  if (IsNullLiteral(*right)) right->type = left->type;
  // A text becomes a decimal with the places of the number that it is compared with.
  if (IsText(left->type.kind) && IsExactNumber(right->type.kind)) right->type = OwnType(context, *right);
  if (IsText(right->type.kind) && IsExactNumber(left->type.kind)) left->type = OwnType(context, *left);
  const DataType common = CommonType(left->type, right->type);
  left = BringTo(context, std::move(left), common, Purpose::Match);
  right = BringTo(context, std::move(right), common, Purpose::Match);
}

std::optional<DataType> CommonTypeOf(BindContext& context, const std::vector<bound::Expression*>& expressions) {
  std::optional<DataType> common;
  for (bound::Expression* expression : expressions) {
    if (IsNullLiteral(*expression)) continue;
    const bool text = IsText(expression->type.kind);
    const DataType own = text && !context.measures_texts ? expression->type : OwnType(context, *expression);
    common = common ? CommonType(*common, own) : own;
  }
  return common;
}

}  // namespace rebate::tsql
