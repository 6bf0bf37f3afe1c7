#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/bind/meeting.h"

namespace rebate::tsql {


namespace {

struct Operator {
  BinaryOperator operation;
  std::string_view function;
  std::string_view name;  // in messages
};
constexpr Operator kOperators[] = {
    {BinaryOperator::Add, "add", "add"},           {BinaryOperator::Subtract, "subtract", "subtract"},
    {BinaryOperator::Multiply, "multiply", "multiply"}, {BinaryOperator::Divide, "divide", "divide"},
    {BinaryOperator::Modulo, "modulo", "modulo"},  {BinaryOperator::BitAnd, "bit_and", "'&'"},
    {BinaryOperator::BitOr, "bit_or", "'|'"},      {BinaryOperator::BitXor, "bit_xor", "'^'"}};

const Operator& FindOperator(BinaryOperator operation) {
  for (const Operator& candidate : kOperators) {
    if (candidate.operation == operation) return candidate;
  }
  RefuseStatement("Incorrect syntax: a condition stands where a value is due.");
}

bool IsBits(BinaryOperator operation) {
  return operation >= BinaryOperator::BitAnd && operation <= BinaryOperator::BitXor;
}

[[noreturn]] void RefuseOperand(TypeKind kind, std::string_view name) {
  RefuseStatement("Operand data type " + Text(MessageName(kind)) + " is invalid for " + Text(name) + " operator.");
}

template <typename... Arguments>
bound::ExpressionPtr MakeCall(std::string_view function, const DataType& type, Arguments... arguments) {
  bound::Call call{FindFunction(function), {}};
  bool nullable = false;
  (..., (nullable = nullable || arguments->nullable));
  (..., call.arguments.push_back(std::move(arguments)));
  return bound::Make(std::move(call), type, nullable);
}

constexpr std::size_t kMostParts = 50;

// Joins of joins become one of all parts. What is cut is cut at the end either way.
void AppendPart(std::vector<bound::ExpressionPtr>& parts, bound::ExpressionPtr part, const DataType& whole) {
  auto* call = std::get_if<bound::Call>(&part->node);
  if (call == nullptr || call->function->name != "concat_text" || part->type.kind != whole.kind ||
      call->arguments.size() >= kMostParts) {
    parts.push_back(std::move(part));
    return;
  }
  for (bound::ExpressionPtr& inner : call->arguments) parts.push_back(std::move(inner));
}

int JoinedLength(const DataType& left, const DataType& right, bool national) {
  if (left.length == DataType::kMaxLength || right.length == DataType::kMaxLength) return DataType::kMaxLength;
  return std::min(left.length + right.length, national ? 4000 : 8000);
}

bound::ExpressionPtr JoinTexts(BindContext& context, bound::ExpressionPtr left, bound::ExpressionPtr right) {
  if (context.measures_texts) {
    left->type = OwnType(context, *left);
    right->type = OwnType(context, *right);
  }
  const bool national = IsNational(left->type.kind) || IsNational(right->type.kind);
  const DataType type = TextType(national ? TypeKind::NVarChar : TypeKind::VarChar,
                                 JoinedLength(left->type, right->type, national));
  const bool nullable = left->nullable || right->nullable;
  bound::Call call{FindFunction("concat_text"), {}};
  AppendPart(call.arguments, std::move(left), type);
  call.arguments.push_back(std::move(right));
  return bound::Make(std::move(call), type, nullable);
}

bool IsDays(const DataType& type) {
  return FamilyOf(type.kind) == TypeFamily::DateTime;
}

bound::ExpressionPtr CombineDays(BindContext& context, bound::ExpressionPtr left, bound::ExpressionPtr right, BinaryOperator operation,
                          const DataType& common) {
  const bool add = operation == BinaryOperator::Add;
  if (!add && operation != BinaryOperator::Subtract) RefuseOperand(common.kind, FindOperator(operation).name);
  left = ConvertTo(context, std::move(left), common, Purpose::Assign);
  right = ConvertTo(context, std::move(right), common, Purpose::Assign);
  return MakeCall(add ? "add_days" : "subtract_days", common, std::move(left), std::move(right));
}

bool IsIntegerLiteral(const bound::Expression& expression) {
  const auto* literal = std::get_if<bound::Literal>(&expression.node);
  return literal != nullptr && !literal->converted && expression.type.kind == TypeKind::Int;
}

// A whole number that is written beside a decimal is a decimal of its own digits, which decide about those of the
// result; beside money it becomes money.
DataType OperandType(BindContext& context, bound::Expression& operand, bool beside_decimal) {
  const auto* constant = std::get_if<bound::Constant>(&operand.node);
  if (constant != nullptr && beside_decimal && operand.type.kind == TypeKind::Int) {
    return DecimalType(std::max(Decimal(std::get<std::int64_t>(constant->value)).IntegerDigits(), 1), 0);
  }
  if (IsIntegerLiteral(operand)) return beside_decimal ? OwnType(context, operand, true) : operand.type;
  return OwnType(context, operand);
}

bound::ExpressionPtr AsDecimal(BindContext& context, bound::ExpressionPtr operand, const DataType& type) {
  if (FamilyOf(operand->type.kind) == TypeFamily::Decimal) return operand;
  return ConvertTo(context, std::move(operand), IsExactNumber(type.kind) ? type : DecimalTypeOf(type), Purpose::Assign);
}

bound::ExpressionPtr Calculate(BindContext& context, bound::ExpressionPtr left, bound::ExpressionPtr right, BinaryOperator operation) {
  const Operator& op = FindOperator(operation);
  const DataType common = CommonType(left->type, right->type);
  if (!IsNumber(common.kind) || (IsBits(operation) && !IsInteger(common.kind))) RefuseOperand(common.kind, op.name);
  if (IsFloat(common.kind) && operation == BinaryOperator::Modulo) {
    RefuseStatement("The data types " + Text(MessageName(left->type.kind)) + " and " +
                    Text(MessageName(right->type.kind)) + " are incompatible in the modulo operator.");
  }
  // A text takes the type of the number that it meets.
  if (IsText(left->type.kind)) left = ConvertTo(context, std::move(left), OwnType(context, *right), Purpose::Assign);
  if (IsText(right->type.kind)) right = ConvertTo(context, std::move(right), OwnType(context, *left), Purpose::Assign);
  if (IsExactNumber(common.kind)) {
    const bool decimal = common.kind == TypeKind::Decimal;
    const DataType left_type = OperandType(context, *left, decimal);
    const DataType right_type = OperandType(context, *right, decimal);
    const DataType type = ArithmeticType(operation, left_type, right_type);
    left = AsDecimal(context, std::move(left), left_type);
    right = AsDecimal(context, std::move(right), right_type);
    return MakeCall(op.function, type, std::move(left), std::move(right));
  }
  const DataType type = IsBits(operation) ? common : ArithmeticType(operation, left->type, right->type);
  if (IsFloat(common.kind)) {
    left = ConvertTo(context, std::move(left), common, Purpose::Assign);
    right = ConvertTo(context, std::move(right), common, Purpose::Assign);
  }
  return MakeCall(op.function, type, std::move(left), std::move(right));
}

}  // namespace

bound::ExpressionPtr BindUnary(BindContext& context, Scope& scope, const Unary& unary) {
  bound::ExpressionPtr operand = BindValue(context, scope, *unary.operand);
  if (IsNullLiteral(*operand) || unary.operation == UnaryOperator::Plus) return operand;
  const bool bits = unary.operation == UnaryOperator::BitNot;
  const DataType type = operand->type;
  if (bits ? !IsInteger(type.kind) : (!IsNumber(type.kind) || type.kind == TypeKind::Bit)) {
    RefuseOperand(type.kind, bits ? "'~'" : "minus");
  }
  if (auto* literal = std::get_if<bound::Literal>(&operand->node); literal && !literal->converted && !bits) {
    literal->negated = !literal->negated;
    return operand;
  }
  return MakeCall(bits ? "bit_not" : "negate", type.kind == TypeKind::TinyInt && !bits ? TypeOf(TypeKind::SmallInt) : type,
                  std::move(operand));
}

bound::ExpressionPtr BindBinary(BindContext& context, Scope& scope, const Binary& binary) {
  bound::ExpressionPtr left = BindValue(context, scope, *binary.left);
  bound::ExpressionPtr right = BindValue(context, scope, *binary.right);
  if (IsNullLiteral(*left)) left->type = right->type;
  if (IsNullLiteral(*right)) right->type = left->type;
  const DataType common = CommonType(left->type, right->type);
  if (IsText(common.kind) && binary.operation == BinaryOperator::Add) {
    return JoinTexts(context, std::move(left), std::move(right));
  }
  if (IsDays(common)) return CombineDays(context, std::move(left), std::move(right), binary.operation, common);
  return Calculate(context, std::move(left), std::move(right), binary.operation);
}

}  // namespace rebate::tsql
