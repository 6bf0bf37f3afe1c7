#include "platform/database/tsql/bind/bind_expression.h"

#include "platform/database/tsql/bind/bind_query.h"
#include "platform/database/tsql/bind/constant.h"
#include "platform/database/tsql/bind/meeting.h"
#include "platform/database/tsql/eval/literal.h"

namespace rebate::tsql {

namespace {

bound::ExpressionPtr BindLiteral(BindContext& context, const Literal& literal) {
  const LiteralToken& token = context.literals[literal.index];
  const bool text = token.kind >= LiteralKind::String;
  if (context.constant_literals) {
    TextPool pool;
    const DataType type = MeasuredType(token);
    const DataType own = token.kind == LiteralKind::Integer ? IntType() : type;
    return bound::Make(KeptConstant(LiteralValue(token, false, true, own, Purpose::Cast, pool)), own, false);
  }
  // A text longer than any type but (max) is one of (max).
  const bool is_long = text && token.text.size() > kLongestPlainText;
  if (is_long) FixLiteral(context, literal.index);
  const bool measured = is_long || token.kind == LiteralKind::Decimal;
  bound::Literal node{literal.index};
  node.as_written = token.kind == LiteralKind::Decimal;
  return bound::Make(node, measured ? MeasuredType(token) : LiteralType(token.kind), false);
}

bound::ExpressionPtr BindScalarSelect(BindContext& context, Scope& scope, const Select& select) {
  bound::QueryPtr query = BindSelect(context, select, &scope, SelectPlace::Value);
  if (query->columns.size() != 1) {
    RefuseStatement(
        "Only one expression can be specified in the select list when the subquery is not introduced with EXISTS.");
  }
  const DataType type = query->columns.front().type;
  return bound::Make(bound::ScalarQuery{std::move(query)}, type, true);
}

struct ValueBinder {
  BindContext& context;
  Scope& scope;

  bound::ExpressionPtr operator()(const Literal& node) const { return BindLiteral(context, node); }
  bound::ExpressionPtr operator()(const NullLiteral&) const { return bound::Make(bound::Null{}, IntType(), true); }
  bound::ExpressionPtr operator()(const ColumnReference& node) const {
    const Scope::Hit hit = scope.Resolve(node);
    return BindColumn(*hit.source, hit.column);
  }
  bound::ExpressionPtr operator()(const VariableReference& node) const { return BindVariable(context, node); }
  bound::ExpressionPtr operator()(const Unary& node) const { return BindUnary(context, scope, node); }
  bound::ExpressionPtr operator()(const Binary& node) const { return BindBinary(context, scope, node); }
  bound::ExpressionPtr operator()(const FunctionCall& node) const { return BindFunction(context, scope, node); }
  bound::ExpressionPtr operator()(const Cast& node) const { return BindCast(context, scope, node); }
  bound::ExpressionPtr operator()(const Case& node) const { return BindCase(context, scope, node); }
  bound::ExpressionPtr operator()(const ScalarSelect& node) const {
    return BindScalarSelect(context, scope, *node.select);
  }
  template <typename Condition>
  bound::ExpressionPtr operator()(const Condition&) const {
    RefuseStatement("Incorrect syntax: a condition stands where a value is due.");
  }
};

bound::ExpressionPtr Negated(bound::ExpressionPtr condition) {
  // Two negations are none, in the logic of three values too.
  if (auto* negation = std::get_if<bound::Not>(&condition->node)) return std::move(negation->operand);
  const bool nullable = condition->nullable;
  return bound::Make(bound::Not{std::move(condition)}, TypeOf(TypeKind::Bit), nullable);
}

struct ConditionBinder {
  BindContext& context;
  Scope& scope;

  bound::ExpressionPtr operator()(const Binary& node) const {
    if (node.operation >= BinaryOperator::Equal && node.operation <= BinaryOperator::GreaterEqual) {
      return BindComparison(context, scope, node);
    }
    if (node.operation != BinaryOperator::And && node.operation != BinaryOperator::Or) return Refuse();
    bound::ExpressionPtr left = BindCondition(context, scope, *node.left);
    bound::ExpressionPtr right = BindCondition(context, scope, *node.right);
    const bool nullable = left->nullable || right->nullable;
    return bound::Make(bound::Logical{node.operation == BinaryOperator::And, std::move(left), std::move(right)},
                       TypeOf(TypeKind::Bit), nullable);
  }
  bound::ExpressionPtr operator()(const Unary& node) const {
    if (node.operation != UnaryOperator::Not) return Refuse();
    return Negated(BindCondition(context, scope, *node.operand));
  }
  bound::ExpressionPtr operator()(const InList& node) const { return BindInList(context, scope, node); }
  bound::ExpressionPtr operator()(const InSelect& node) const { return BindInSelect(context, scope, node); }
  bound::ExpressionPtr operator()(const Between& node) const { return BindBetween(context, scope, node); }
  bound::ExpressionPtr operator()(const Like& node) const { return BindLike(context, scope, node); }
  bound::ExpressionPtr operator()(const IsNull& node) const {
    return bound::Make(bound::IsNull{BindValue(context, scope, *node.operand), node.negated}, TypeOf(TypeKind::Bit),
                       false);
  }
  bound::ExpressionPtr operator()(const Exists& node) const {
    return bound::Make(bound::Exists{BindSelect(context, *node.select, &scope, SelectPlace::Existence)},
                       TypeOf(TypeKind::Bit), false);
  }
  template <typename Value>
  bound::ExpressionPtr operator()(const Value&) const {
    return Refuse();
  }
  static bound::ExpressionPtr Refuse() {
    RefuseStatement("An expression of non-boolean type specified in a context where a condition is expected.");
  }
};

}  // namespace

bound::ExpressionPtr BindValue(BindContext& context, Scope& scope, const Expression& expression) {
  return std::visit(ValueBinder{context, scope}, expression.node);
}

bound::ExpressionPtr BindCondition(BindContext& context, Scope& scope, const Expression& expression) {
  return std::visit(ConditionBinder{context, scope}, expression.node);
}

bound::ExpressionPtr BindColumn(const bound::Source& source, std::size_t column) {
  const bound::OutputColumn& output = source.columns[column];
  bound::ExpressionPtr expression = bound::Make(bound::Column{&source, column}, output.type, output.nullable);
  expression->identity = output.identity;
  return expression;
}

}  // namespace rebate::tsql
