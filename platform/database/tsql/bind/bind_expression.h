#pragma once

#include "platform/database/tsql/bind/scope.h"

// Binding of expressions: one source for each kind. Each function raises the server's refusal for what isn't right.
namespace rebate::tsql {

// ---- bind_expression.cpp ----
bound::ExpressionPtr BindValue(BindContext& context, Scope& scope, const Expression& expression);
bound::ExpressionPtr BindCondition(BindContext& context, Scope& scope, const Expression& expression);
// A column that a `*` stands for.
bound::ExpressionPtr BindColumn(const bound::Source& source, std::size_t column);

// ---- bind_arithmetic.cpp ----
bound::ExpressionPtr BindUnary(BindContext& context, Scope& scope, const Unary& unary);
bound::ExpressionPtr BindBinary(BindContext& context, Scope& scope, const Binary& binary);

// ---- bind_comparison.cpp ----
bound::ExpressionPtr BindComparison(BindContext& context, Scope& scope, const Binary& binary);
bound::ExpressionPtr BindInList(BindContext& context, Scope& scope, const InList& in);
bound::ExpressionPtr BindInSelect(BindContext& context, Scope& scope, const InSelect& in);
bound::ExpressionPtr BindBetween(BindContext& context, Scope& scope, const Between& between);
bound::ExpressionPtr BindLike(BindContext& context, Scope& scope, const Like& like);

// ---- bind_case.cpp ----
bound::ExpressionPtr BindCase(BindContext& context, Scope& scope, const Case& node);
bound::ExpressionPtr BindIsNullFunction(BindContext& context, Scope& scope, const FunctionCall& call);
bound::ExpressionPtr BindCoalesce(BindContext& context, Scope& scope, const FunctionCall& call);
bound::ExpressionPtr BindNullIf(BindContext& context, Scope& scope, const FunctionCall& call);
// `choose(index, a, b, ...)`.
bound::ExpressionPtr BindChoose(BindContext& context, Scope& scope, const FunctionCall& call);

// ---- bind_cast.cpp ----
bound::ExpressionPtr BindCast(BindContext& context, Scope& scope, const Cast& cast);

// ---- bind_function.cpp ----
bound::ExpressionPtr BindFunction(BindContext& context, Scope& scope, const FunctionCall& call);
// Raises where the call has fewer or more arguments.
void CheckArguments(const FunctionCall& call, std::size_t low, std::size_t high);

// ---- bind_system.cpp ----
bound::ExpressionPtr BindVariable(BindContext& context, const VariableReference& reference);
// What the runner knows: getdate(), scope_identity(), object_id('x'); null where the call is of none of them.
bound::ExpressionPtr BindSystemFunction(BindContext& context, const FunctionCall& call);

// ---- bind_aggregate.cpp ----
bool IsAggregate(std::string_view function);
bound::ExpressionPtr BindAggregate(BindContext& context, Scope& scope, const FunctionCall& call);

}  // namespace rebate::tsql
