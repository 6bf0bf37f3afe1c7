#include <algorithm>

#include "platform/database/tsql/bind/bind_query.h"

namespace rebate::tsql {
namespace {

constexpr std::string_view kOrderBy = "ORDER BY clause";

class GroupingCheck {
 public:
  GroupingCheck(BindContext& context, const bound::Core& core) : context_(context), core_(core) {}

  // `clause` as the server's message names it.
  void Check(const bound::Expression& expression, std::string_view clause) {
    if (IsGroup(expression) || std::holds_alternative<bound::Aggregate>(expression.node)) return;
    if (const auto* column = std::get_if<bound::Column>(&expression.node)) return CheckColumn(*column, clause);
    ForEachPart(expression, [&](const bound::Expression& part) { Check(part, clause); });
    if (const auto* query = std::get_if<bound::ScalarQuery>(&expression.node)) CheckQuery(*query->query, clause);
    if (const auto* exists = std::get_if<bound::Exists>(&expression.node)) CheckQuery(*exists->query, clause);
    if (const auto* in = std::get_if<bound::InQuery>(&expression.node)) CheckQuery(*in->query, clause);
  }

 private:
  bool IsGroup(const bound::Expression& expression) {
    const auto same = [&](const auto& group) { return Same(*group, expression, context_.literals); };
    if (std::none_of(core_.group_by.begin(), core_.group_by.end(), same)) return false;
    FixLiterals(expression);
    return true;
  }

  // They were found to be those of a group.
  void FixLiterals(const bound::Expression& expression) {
    if (const auto* literal = std::get_if<bound::Literal>(&expression.node)) FixLiteral(context_, literal->index);
    ForEachPart(expression, [&](const bound::Expression& part) { FixLiterals(part); });
  }

  void CheckColumn(const bound::Column& column, std::string_view clause) {
    const auto own = [&](const bound::SourcePtr& source) { return source.get() == column.source; };
    if (std::none_of(core_.sources.begin(), core_.sources.end(), own)) return;
    const char quote = clause == kOrderBy ? '"' : '\'';
    const Text& table = column.source->table ? column.source->table->name : column.source->name;
    RefuseStatement("Column " + (quote + table) + '.' + column.source->columns[column.index].name + quote +
                    " is invalid in the " + Text(clause) +
                    " because it is not contained in either an aggregate function or the GROUP BY clause.");
  }

  // What a query inside takes from this core is grouped, too.
  void CheckQuery(const bound::Query& query, std::string_view clause) {
    if (!query.correlated) return;
    for (const bound::Core& core : query.cores) {
      for (const bound::Item& item : core.items) Check(*item.value, clause);
      for (const auto* part : {&core.where, &core.having}) {
        if (*part) Check(**part, clause);
      }
    }
  }

  BindContext& context_;
  const bound::Core& core_;
};

}  // namespace

void CheckGrouping(BindContext& context, const bound::Core& core, const std::vector<bound::OrderKey>& order_by) {
  if (!core.grouped) return;
  GroupingCheck check(context, core);
  for (const bound::Item& item : core.items) check.Check(*item.value, "select list");
  if (core.having) check.Check(*core.having, "HAVING clause");
  for (const bound::OrderKey& key : order_by) {
    if (key.value) check.Check(*key.value, kOrderBy);
  }
}

}  // namespace rebate::tsql
