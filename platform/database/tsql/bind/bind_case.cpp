#include <algorithm>

#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/bind/constant.h"
#include "platform/database/tsql/bind/meeting.h"

namespace rebate::tsql {

namespace {

std::vector<bound::Expression*> ResultsOf(bound::Case& node) {
  std::vector<bound::Expression*> results;
  for (bound::CaseBranch& branch : node.branches) results.push_back(branch.then.get());
  if (node.otherwise) results.push_back(node.otherwise.get());
  return results;
}

// The case with its results brought to one type.
bound::ExpressionPtr FinishCase(BindContext& context, bound::Case node, std::string_view name) {
  const std::vector<bound::Expression*> results = ResultsOf(node);
  const auto type = CommonTypeOf(context, results);
  if (!type) {
    RefuseStatement("At least one of the result expressions in a " + Text(name) +
                    " must be an expression other than the NULL constant.");
  }
  bool nullable = !node.otherwise;
  for (const bound::Expression* result : results) nullable = nullable || result->nullable;
  for (bound::CaseBranch& branch : node.branches) {
    branch.then = ConvertTo(context, std::move(branch.then), *type, Purpose::Cast);
  }
  if (node.otherwise) node.otherwise = ConvertTo(context, std::move(node.otherwise), *type, Purpose::Cast);
  return bound::Make(std::move(node), *type, nullable);
}

// Each comparison of a simple case has a type of its own, to which the operand comes anew.
void BindSimpleBranch(BindContext& context, Scope& scope, const CaseBranch& branch, bound::Expression& operand,
                      bound::CaseBranch& bound_branch) {
  bound_branch.when = BindValue(context, scope, *branch.when);
  bound::Expression& when = *bound_branch.when;
  if (IsNullLiteral(when)) when.type = operand.type;
  if (IsNullLiteral(operand)) operand.type = when.type;
  const bool texts_apart = IsText(operand.type.kind) != IsText(when.type.kind);
  const DataType own = texts_apart ? OwnType(context, when) : when.type;
  bound_branch.meeting = CommonType(operand.type, own);
  bound_branch.when = BringTo(context, std::move(bound_branch.when), bound_branch.meeting, Purpose::Match);
  // What stays of a family as it is kept compares with every type of it.
  if (FamilyOf(bound_branch.meeting.kind) == FamilyOf(operand.type.kind)) bound_branch.meeting = operand.type;
}

}  // namespace

bound::ExpressionPtr BindCase(BindContext& context, Scope& scope, const Case& node) {
  bound::Case result;
  if (node.operand) {
    result.operand = BindValue(context, scope, *node.operand);
    result.operand->type = OwnType(context, *result.operand);
  }
  for (const CaseBranch& branch : node.branches) {
    bound::CaseBranch& bound_branch = result.branches.emplace_back();
    if (node.operand) {
      BindSimpleBranch(context, scope, branch, *result.operand, bound_branch);
    } else {
      bound_branch.when = BindCondition(context, scope, *branch.when);
    }
    bound_branch.then = BindValue(context, scope, *branch.then);
  }
  if (node.otherwise) result.otherwise = BindValue(context, scope, *node.otherwise);
  return FinishCase(context, std::move(result), "CASE specification");
}

bound::ExpressionPtr BindChoose(BindContext& context, Scope& scope, const FunctionCall& call) {
  CheckArguments(call, 2, 254);
  bound::Case result;
  result.operand = ConvertTo(context, BindValue(context, scope, *call.arguments.front()), IntType(), Purpose::Cast);
  for (std::size_t i = 1; i < call.arguments.size(); ++i) {
    bound::CaseBranch& branch = result.branches.emplace_back();
    branch.when = IntConstant(static_cast<std::int64_t>(i));
    branch.meeting = IntType();
    branch.then = BindValue(context, scope, *call.arguments[i]);
  }
  return FinishCase(context, std::move(result), "CHOOSE");
}

bound::ExpressionPtr BindIsNullFunction(BindContext& context, Scope& scope, const FunctionCall& call) {
  CheckArguments(call, 2, 2);
  bound::ExpressionPtr tested = BindValue(context, scope, *call.arguments[0]);
  bound::ExpressionPtr stand_in = BindValue(context, scope, *call.arguments[1]);
  if (IsNullLiteral(*tested)) return stand_in;
  // ISNULL has the type of what it tests, and what stands in for it is made one of these.
  const DataType type = OwnType(context, *tested);
  tested->type = type;
  const bool nullable = tested->nullable && stand_in->nullable;
  bound::Coalesce node;
  node.arguments.push_back(std::move(tested));
  node.arguments.push_back(ConvertTo(context, std::move(stand_in), type, Purpose::Cast));
  return bound::Make(std::move(node), type, nullable);
}

bound::ExpressionPtr BindCoalesce(BindContext& context, Scope& scope, const FunctionCall& call) {
  CheckArguments(call, 2, 1000);
  bound::Coalesce node;
  std::vector<bound::Expression*> arguments;
  for (const auto& argument : call.arguments) {
    node.arguments.push_back(BindValue(context, scope, *argument));
    arguments.push_back(node.arguments.back().get());
  }
  const auto type = CommonTypeOf(context, arguments);
  if (!type) {
    RefuseStatement("At least one of the arguments to COALESCE must be an expression that is not the NULL constant.");
  }
  const bool nullable =
      std::all_of(arguments.begin(), arguments.end(), [](const bound::Expression* a) { return a->nullable; });
  for (bound::ExpressionPtr& argument : node.arguments) {
    argument = ConvertTo(context, std::move(argument), *type, Purpose::Cast);
  }
  return bound::Make(std::move(node), *type, nullable);
}

bound::ExpressionPtr BindNullIf(BindContext& context, Scope& scope, const FunctionCall& call) {
  CheckArguments(call, 2, 2);
  bound::ExpressionPtr left = BindValue(context, scope, *call.arguments[0]);
  bound::ExpressionPtr right = BindValue(context, scope, *call.arguments[1]);
  if (IsNullLiteral(*left)) {
    RefuseStatement(
        "The type of the first argument to NULLIF cannot be the NULL constant because the type of the "
        "first argument has to be known.");
  }
  const DataType type = OwnType(context, *left);
  left->type = type;
  if (IsNullLiteral(*right)) right->type = type;
  DataType meeting = CommonType(type, OwnType(context, *right));
  right = BringTo(context, std::move(right), meeting, Purpose::Match);
  if (FamilyOf(meeting.kind) == FamilyOf(type.kind)) meeting = type;
  return bound::Make(bound::NullIf{std::move(left), std::move(right), meeting}, type, true);
}

}  // namespace rebate::tsql
