#include "platform/database/tsql/bind/bound_tree.h"

#include <algorithm>

namespace rebate::tsql::bound {
namespace {

bool SameParts(const Expression& left, const Expression& right, std::span<const LiteralToken> literals) {
  std::vector<const Expression*> left_parts, right_parts;
  ForEachPart(left, [&](const Expression& part) { left_parts.push_back(&part); });
  ForEachPart(right, [&](const Expression& part) { right_parts.push_back(&part); });
  return std::equal(left_parts.begin(), left_parts.end(), right_parts.begin(), right_parts.end(),
                    [&](const Expression* a, const Expression* b) { return Same(*a, *b, literals); });
}

struct SameNode {
  const Expression& right;
  std::span<const LiteralToken> literals;

  template <typename Node>
  const Node& Other() const {
    return std::get<Node>(right.node);
  }

  bool operator()(const Null&) const { return true; }
  bool operator()(const Literal& node) const {
    const Literal& other = Other<Literal>();
    return node.negated == other.negated && literals[node.index].text == literals[other.index].text;
  }
  bool operator()(const Constant& node) const { return node.value == Other<Constant>().value; }
  bool operator()(const Column& node) const {
    return node.source == Other<Column>().source && node.index == Other<Column>().index;
  }
  bool operator()(const Variable& node) const { return node.key == Other<Variable>().key; }
  bool operator()(const System& node) const {
    return node.value == Other<System>().value && node.literal == Other<System>().literal;
  }
  bool operator()(const Convert& node) const { return node.purpose == Other<Convert>().purpose; }
  bool operator()(const Call& node) const { return node.function == Other<Call>().function; }
  bool operator()(const Aggregate& node) const {
    const Aggregate& other = Other<Aggregate>();
    return node.kind == other.kind && node.name == other.name && node.distinct == other.distinct;
  }
  bool operator()(const Coalesce&) const { return true; }
  bool operator()(const NullIf& node) const { return node.meeting == Other<NullIf>().meeting; }
  bool operator()(const Case& node) const {
    const Case& other = Other<Case>();
    return !node.operand == !other.operand && !node.otherwise == !other.otherwise;
  }
  bool operator()(const Comparison& node) const { return node.operation == Other<Comparison>().operation; }
  bool operator()(const Logical& node) const { return node.conjunction == Other<Logical>().conjunction; }
  bool operator()(const Not&) const { return true; }
  bool operator()(const IsNull& node) const { return node.negated == Other<IsNull>().negated; }
  bool operator()(const InList& node) const { return node.negated == Other<InList>().negated; }
  bool operator()(const Between& node) const { return node.negated == Other<Between>().negated; }
  // Queries are never taken for the same.
  bool operator()(const ScalarQuery&) const { return false; }
  bool operator()(const InQuery&) const { return false; }
  bool operator()(const Exists&) const { return false; }
};

}  // namespace

ExpressionPtr Make(Expression::Node node, const DataType& type, bool nullable) {
  auto expression = std::make_unique<Expression>();
  expression->node = std::move(node);
  expression->type = type;
  expression->nullable = nullable;
  expression->has_query = std::holds_alternative<ScalarQuery>(expression->node) ||
                          std::holds_alternative<InQuery>(expression->node) ||
                          std::holds_alternative<Exists>(expression->node);
  expression->has_aggregate = std::holds_alternative<Aggregate>(expression->node);
  ForEachPart(*expression, [&](const Expression& part) {
    expression->has_query = expression->has_query || part.has_query;
    expression->has_aggregate = expression->has_aggregate || part.has_aggregate;
    expression->height = std::max(expression->height, part.height + 1);
  });
  return expression;
}

bool Same(const Expression& left, const Expression& right, std::span<const LiteralToken> literals) {
  if (left.node.index() != right.node.index() || left.type != right.type) return false;
  return std::visit(SameNode{right, literals}, left.node) && SameParts(left, right, literals);
}

}  // namespace rebate::tsql::bound
