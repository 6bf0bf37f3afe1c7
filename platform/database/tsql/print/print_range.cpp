#include <algorithm>

#include "platform/database/tsql/print/definition.h"
#include "platform/database/tsql/print/printer.h"

namespace rebate::tsql {
namespace {

// A column of text that must not be less, or not be greater, than a literal.
struct Bound {
  const bound::Expression* column;
  const bound::Expression* literal;
  bool is_low;
};

void AddBounds(const bound::Expression& condition, std::vector<Bound>& bounds) {
  if (const auto* both = std::get_if<bound::Logical>(&condition.node)) {
    if (!both->conjunction) return;
    AddBounds(*both->left, bounds);
    AddBounds(*both->right, bounds);
    return;
  }
  const auto* comparison = std::get_if<bound::Comparison>(&condition.node);
  if (comparison == nullptr || !IsText(comparison->left->type.kind)) return;
  const bool is_low = comparison->operation == BinaryOperator::GreaterEqual;
  if (!is_low && comparison->operation != BinaryOperator::LessEqual) return;
  const auto* column = std::get_if<bound::Column>(&comparison->left->node);
  if (column == nullptr || !std::holds_alternative<bound::Literal>(comparison->right->node)) return;
  if (IsServed(*column->source, column->index)) {
    bounds.push_back({comparison->left.get(), comparison->right.get(), is_low});
  }
}

bool AreOfOneColumn(const Bound& a, const Bound& b) {
  const auto& left = std::get<bound::Column>(a.column->node);
  const auto& right = std::get<bound::Column>(b.column->node);
  return left.source == right.source && left.index == right.index;
}

// By the likelihood the engine begins with the range.
SqlText Implied(PrintState& state, const Bound& low, const Bound& high, std::string_view sign, std::string_view end) {
  SqlText text;
  text << "likelihood(";
  PrintValue(state, *low.column, text);
  text << sign << end << '(';
  PrintValue(state, *low.literal, text);
  text << ',';
  PrintValue(state, *high.literal, text);
  text << "),0.001)";
  return text;
}

}  // namespace

void AddIndexRanges(PrintState& state, const bound::Expression& where, std::vector<SqlText>& conditions) {
  std::vector<Bound> bounds;
  AddBounds(where, bounds);
  for (const Bound& low : bounds) {
    if (!low.is_low) continue;
    const auto high = std::find_if(bounds.begin(), bounds.end(),
                                   [&](const Bound& bound) { return !bound.is_low && AreOfOneColumn(low, bound); });
    if (high == bounds.end()) continue;
    conditions.push_back(Implied(state, low, *high, ">=", kRangeFrom));
    conditions.push_back(Implied(state, low, *high, "<=", kRangeTo));
  }
}

}  // namespace rebate::tsql
