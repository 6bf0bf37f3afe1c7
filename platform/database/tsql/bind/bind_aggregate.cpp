#include <algorithm>
#include <array>

#include "platform/database/tsql/bind/bind_expression.h"
#include "platform/database/tsql/bind/meeting.h"
#include "platform/values/ascii.h"

namespace rebate::tsql {

using bound::Aggregate;

namespace {

struct Spelling {
  std::string_view name;
  Aggregate::Kind kind;
};
constexpr std::array<Spelling, 10> kAggregates{{{"avg", Aggregate::Kind::Average},
                                                {"count", Aggregate::Kind::Count},
                                                {"count_big", Aggregate::Kind::Count},
                                                {"max", Aggregate::Kind::Maximum},
                                                {"min", Aggregate::Kind::Minimum},
                                                {"stdev", Aggregate::Kind::Deviation},
                                                {"stdevp", Aggregate::Kind::Deviation},
                                                {"sum", Aggregate::Kind::Sum},
                                                {"var", Aggregate::Kind::Deviation},
                                                {"varp", Aggregate::Kind::Deviation}}};

const Spelling* FindAggregate(std::string_view name) {
  const auto found = std::find_if(kAggregates.begin(), kAggregates.end(),
                                  [&](const Spelling& spelling) { return EqualsIgnoreCase(spelling.name, name); });
  return found == kAggregates.end() ? nullptr : found;
}

// Raises where an aggregate can't stand here.
void CheckPlace(Scope& scope) {
  if (scope.in_aggregate) {
    RefuseStatement("Cannot perform an aggregate function on an expression containing an aggregate or a subquery.");
  }
  if (scope.clause == Clause::Where || scope.clause == Clause::From) {
    RefuseStatement(
        "An aggregate may not appear in the WHERE clause unless it is in a subquery contained in a HAVING clause or a "
        "select list, and the column being aggregated is an outer reference.");
  }
  if (scope.clause == Clause::GroupBy) {
    RefuseStatement(
        "Cannot use an aggregate or a subquery in an expression used for the group by list of a GROUP BY "
        "clause.");
  }
  if (scope.clause == Clause::Set) {
    RefuseStatement("An aggregate may not appear in the set list of an UPDATE statement.");
  }
  if (scope.clause == Clause::Values) RefuseUnsupported("aggregate outside of a query");
}

bound::ExpressionPtr BindArgument(BindContext& context, Scope& scope, const Expression& argument) {
  scope.in_aggregate = true;
  scope.own_columns = scope.outer_columns = false;
  bound::ExpressionPtr bound_argument = BindValue(context, scope, argument);
  scope.in_aggregate = false;
  if (bound_argument->has_query) {
    RefuseStatement("Cannot perform an aggregate function on an expression containing an aggregate or a subquery.");
  }
  if (scope.outer_columns) RefuseUnsupported("aggregate over columns of an outer query");
  return bound_argument;
}

DataType ResultType(Aggregate::Kind kind, std::string_view name, const DataType& argument) {
  switch (kind) {
    case Aggregate::Kind::Count:
      return name == "count" ? IntType() : TypeOf(TypeKind::BigInt);
    case Aggregate::Kind::Sum:
      return SumType(argument);
    case Aggregate::Kind::Average:
      return AvgType(argument);
    case Aggregate::Kind::Deviation:
      return FloatType();
    default:
      return argument;
  }
}

void CheckType(Aggregate::Kind kind, std::string_view name, const DataType& type) {
  const bool counts =
      kind == Aggregate::Kind::Sum || kind == Aggregate::Kind::Average || kind == Aggregate::Kind::Deviation;
  const bool orders = kind == Aggregate::Kind::Minimum || kind == Aggregate::Kind::Maximum;
  const bool bit = type.kind == TypeKind::Bit;
  if ((counts && (!IsNumber(type.kind) || bit)) || (orders && bit)) {
    RefuseStatement("Operand data type " + Text(MessageName(type.kind)) + " is invalid for " + Text(name) +
                    " operator.");
  }
}

}  // namespace

bool IsAggregate(std::string_view function) {
  return FindAggregate(function) != nullptr;
}

bound::ExpressionPtr BindAggregate(BindContext& context, Scope& scope, const FunctionCall& call) {
  const Spelling& spelling = *FindAggregate(call.name);
  CheckPlace(scope);
  scope.has_aggregate = true;
  Aggregate node{spelling.kind, Text(spelling.name), call.distinct, nullptr};
  const bool count = spelling.kind == Aggregate::Kind::Count;
  if (call.star) {
    if (!count) RefuseStatement("Incorrect syntax near '*'.");
    return bound::Make(std::move(node), ResultType(spelling.kind, spelling.name, IntType()), false);
  }
  CheckArguments(call, 1, 1);
  node.argument = BindArgument(context, scope, *call.arguments.front());
  if (IsNullLiteral(*node.argument)) {
    RefuseStatement("Operand data type NULL is invalid for " + Text(spelling.name) + " operator.");
  }
  DataType argument = OwnType(context, *node.argument);
  CheckType(spelling.kind, spelling.name, argument);
  if (spelling.kind == Aggregate::Kind::Deviation) {
    node.argument = ConvertTo(context, std::move(node.argument), FloatType(), Purpose::Cast);
  }
  const DataType type = ResultType(spelling.kind, spelling.name, argument);
  return bound::Make(std::move(node), type, !count);
}

}  // namespace rebate::tsql
