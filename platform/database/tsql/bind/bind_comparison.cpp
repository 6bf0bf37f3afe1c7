#include <algorithm>

#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/bind/bind_query.h"
#include "platform/database/tsql/bind/meeting.h"

namespace rebate::tsql {

namespace {

// A text as it stands; another value as the text that it converts to.
bound::ExpressionPtr AsText(BindContext& context, bound::ExpressionPtr expression) {
  if (IsText(expression->type.kind)) return expression;
  return ConvertTo(context, std::move(expression), TextType(TypeKind::VarChar, 8000), Purpose::Cast);
}

// The type in which all meet: that of a comparison of them all.
DataType MeetingType(BindContext& context, const bound::Expression& operand, std::vector<bound::Expression*> others) {
  std::optional<DataType> common;
  if (!IsNullLiteral(operand)) common = operand.type;
  for (bound::Expression* other : others) {
    if (IsNullLiteral(*other)) continue;
    const bool decimal_beside_text = IsExactNumber(other->type.kind) && common && IsText(common->kind);
    const DataType own = decimal_beside_text ? OwnType(context, *other) : other->type;
    common = common ? CommonType(*common, own) : own;
  }
  return common.value_or(IntType());
}

}  // namespace

bound::ExpressionPtr BindComparison(BindContext& context, Scope& scope, const Binary& binary) {
  bound::ExpressionPtr left = BindValue(context, scope, *binary.left);
  bound::ExpressionPtr right = BindValue(context, scope, *binary.right);
  Meet(context, left, right);
  const bool nullable = left->nullable || right->nullable;
  return bound::Make(bound::Comparison{binary.operation, std::move(left), std::move(right)}, TypeOf(TypeKind::Bit),
                     nullable);
}

bound::ExpressionPtr BindInList(BindContext& context, Scope& scope, const InList& in) {
  bound::InList list{BindValue(context, scope, *in.operand), {}, in.negated};
  list.items.reserve(in.items.size());
  std::vector<bound::Expression*> items;
  items.reserve(in.items.size());
  bool nullable = list.operand->nullable;
  for (const auto& item : in.items) {
    list.items.push_back(BindValue(context, scope, *item));
    items.push_back(list.items.back().get());
    nullable = nullable || items.back()->nullable;
  }
  const DataType common = MeetingType(context, *list.operand, items);
  list.operand = BringTo(context, std::move(list.operand), common, Purpose::Match);
  for (bound::ExpressionPtr& item : list.items) item = BringTo(context, std::move(item), common, Purpose::Match);
  return bound::Make(std::move(list), TypeOf(TypeKind::Bit), nullable);
}

bound::ExpressionPtr BindInSelect(BindContext& context, Scope& scope, const InSelect& in) {
  bound::ExpressionPtr operand = BindValue(context, scope, *in.operand);
  bound::QueryPtr query = BindSelect(context, *in.select, &scope, SelectPlace::Value);
  if (query->columns.size() != 1) {
    RefuseStatement(
        "Only one expression can be specified in the select list when the subquery is not introduced with EXISTS.");
  }
  // How often a value comes doesn't count, and the engine finds more over indexes where it needn't see to it.
  if (query->cores.size() == 1 && !query->cores.front().top) query->cores.front().distinct = false;
  const DataType item = query->columns.front().type;
  if (IsNullLiteral(*operand)) operand->type = item;
  const DataType common = CommonType(operand->type, item);
  operand = BringTo(context, std::move(operand), common, Purpose::Match);
  query = BringQueryTo(context, std::move(query), common, scope);
  return bound::Make(bound::InQuery{std::move(operand), std::move(query), in.negated}, TypeOf(TypeKind::Bit), true);
}

bound::ExpressionPtr BindBetween(BindContext& context, Scope& scope, const Between& between) {
  bound::Between node{BindValue(context, scope, *between.operand), BindValue(context, scope, *between.low),
                      BindValue(context, scope, *between.high), between.negated};
  const DataType common = MeetingType(context, *node.operand, {node.low.get(), node.high.get()});
  bool nullable = false;
  for (bound::ExpressionPtr* part : {&node.operand, &node.low, &node.high}) {
    *part = BringTo(context, std::move(*part), common, Purpose::Match);
    nullable = nullable || (*part)->nullable;
  }
  return bound::Make(std::move(node), TypeOf(TypeKind::Bit), nullable);
}

bound::ExpressionPtr BindLike(BindContext& context, Scope& scope, const Like& like) {
  bound::Call call{FindFunction("like"), {}};
  call.arguments.push_back(AsText(context, BindValue(context, scope, *like.operand)));
  call.arguments.push_back(AsText(context, BindValue(context, scope, *like.pattern)));
  if (like.escape) call.arguments.push_back(AsText(context, BindValue(context, scope, *like.escape)));
  const bool nullable =
      std::any_of(call.arguments.begin(), call.arguments.end(), [](const auto& a) { return a->nullable; });
  bound::ExpressionPtr condition = bound::Make(std::move(call), TypeOf(TypeKind::Bit), nullable);
  if (!like.negated) return condition;
  return bound::Make(bound::Not{std::move(condition)}, TypeOf(TypeKind::Bit), nullable);
}

}  // namespace rebate::tsql
