#include <algorithm>

#include "platform/database/tsql/print/printer.h"

namespace rebate::tsql {
namespace {

// The engine joins no more selects than this in one compound.
constexpr std::size_t kMostCores = 400;
// A query in so many others stands in front of the statement: the engine's parser takes no deep text.
constexpr int kDeepestQuery = 4;
constexpr int kSymbols = 7;  // that wait on the parser's stack while it reads a part of a query, about
constexpr int kMostSymbols = 40;

std::string_view SqlOperator(SetOperator operation) {
  switch (operation) {
    case SetOperator::Union:
      return " UNION ";
    case SetOperator::UnionAll:
      return " UNION ALL ";
    case SetOperator::Except:
      return " EXCEPT ";
    case SetOperator::Intersect:
      break;
  }
  return " INTERSECT ";
}

class CorePrinter {
 public:
  using Items = std::vector<const bound::Expression*>;

  CorePrinter(PrintState& state, const bound::Core& core, const std::vector<bound::OrderKey>& order_by, bool named)
      : CorePrinter(state, core, order_by, ItemsOf(core), named) {}
  // With other items than those of the core.
  CorePrinter(PrintState& state, const bound::Core& core, const std::vector<bound::OrderKey>& order_by, Items items,
              bool named)
      : state_(state), core_(core), order_by_(order_by), items_(std::move(items)), named_(named) {}

  void Print(SqlText& out) {
    if (core_.top && core_.top_percent) return PrintPercent(out);
    PrintPlain(out);
    if (!core_.top) return;
    out << " LIMIT t_top(";
    PrintValue(state_, *core_.top, out);
    out << ')';
  }

 private:
  static Items ItemsOf(const bound::Core& core) {
    Items items;
    for (const bound::Item& item : core.items) items.push_back(item.value.get());
    return items;
  }

  // All rows are made first, then so many of them are taken.
  void PrintPercent(SqlText& out) {
    const Text name = NewName(state_, "_percent");
    out << "SELECT * FROM (WITH " << name << " AS MATERIALIZED (";
    PrintPlain(out);
    out << ") SELECT * FROM " << name << " LIMIT (SELECT t_percent(count(*),";
    PrintValue(state_, *core_.top, out);
    out << ") FROM " << name << "))";
  }

  void PrintPlain(SqlText& out) {
    SqlText from;
    std::vector<SqlText> conditions;
    if (!PrintReducedFrom(state_, core_, order_by_, from, conditions)) PrintFrom(state_, core_.from, from);
    SqlText where;
    if (core_.where) {
      AddIndexRanges(state_, *core_.where, conditions);
      state_.found_by_key.merge(FoundByKey(*core_.where));
    }
    PrintWhere(state_, core_.where, std::move(conditions), where);
    std::vector<Text> wanted;
    if (Regroups()) {
      for (const bound::SourcePtr& source : core_.sources) state_.regrouped[source.get()] = &wanted;
    }
    SqlText head;
    head << (core_.distinct ? "SELECT DISTINCT " : "SELECT ");
    PrintItems(head);
    SqlText tail;
    PrintGroups(tail);
    PrintOrder(tail);
    out << std::move(head);
    if (Regroups()) {
      for (const bound::SourcePtr& source : core_.sources) state_.regrouped.erase(source.get());
      PrintRegrouped(wanted, std::move(from), std::move(where), out);
    } else {
      if (!from.text.empty()) out << " FROM " << std::move(from);
      out << std::move(where);
    }
    out << std::move(tail);
  }

  // The engine pushes a join into a union only where the select around them doesn't group.
  bool Regroups() const {
    return core_.grouped && (core_.sources.size() > 1 || (core_.sources.size() == 1 && !core_.sources.front()->table));
  }

  // The inner select from which one that groups takes its columns. Its limit keeps the engine from merging the two.
  static void PrintRegrouped(const std::vector<Text>& wanted, SqlText from, SqlText where, SqlText& out) {
    out << " FROM (SELECT ";
    for (std::size_t i = 0; i < wanted.size(); ++i) {
      if (i > 0) out << ',';
      out << wanted[i] << " AS c" << std::to_string(i + 1);
    }
    if (wanted.empty()) out << '1';
    out << " FROM " << std::move(from) << std::move(where) << " LIMIT -1) AS \"_grouped\"";
  }

  void PrintItems(SqlText& out) {
    if (items_.empty()) out << '1';
    for (std::size_t i = 0; i < items_.size(); ++i) {
      if (i > 0) out << ',';
      const bound::Expression& value = *items_[i];
      if (named_ || core_.distinct) {
        PrintCollated(state_, value, Collated::Equality, out);
      } else {
        PrintValue(state_, value, out);
      }
      if (named_) out << " AS c" << std::to_string(i + 1);
    }
  }

  void PrintGroups(SqlText& out) {
    for (std::size_t i = 0; i < core_.group_by.size(); ++i) {
      out << (i == 0 ? " GROUP BY " : ",");
      // A bare number would be taken for a position.
      const bool constant =
          core_.group_by[i]->height == 1 && !std::holds_alternative<bound::Column>(core_.group_by[i]->node);
      if (constant) out << "NULL";
      if (!constant) PrintCollated(state_, *core_.group_by[i], Collated::Equality, out);
    }
    if (!core_.having) return;
    // The engine wants a group where only the condition on groups has an aggregate.
    if (core_.group_by.empty()) out << " GROUP BY NULL";
    out << " HAVING ";
    PrintCondition(state_, *core_.having, out);
  }

  void PrintOrder(SqlText& out) {
    for (std::size_t i = 0; i < order_by_.size(); ++i) {
      const bound::OrderKey& key = order_by_[i];
      out << (i == 0 ? " ORDER BY " : ",");
      if (key.value) {
        PrintCollated(state_, *key.value, Collated::Order, out);
      } else {
        out << std::to_string(key.position);
        const std::string_view collation = CollationOf(key.type, Collated::Order);
        if (!collation.empty()) out << " COLLATE " << collation;
      }
      if (key.descending) out << " DESC";
    }
  }

  PrintState& state_;
  const bound::Core& core_;
  const std::vector<bound::OrderKey>& order_by_;
  Items items_;
  bool named_;
};

const std::vector<bound::OrderKey> kNoOrder;

void PrintUnion(PrintState& state, const bound::Query& query, SqlText& out) {
  SqlText compound;
  std::size_t joined = 0;
  for (std::size_t i = 0; i < query.cores.size(); ++i) {
    if (joined == kMostCores) {
      // What is joined so far becomes the first of a new compound.
      SqlText so_far = std::move(compound);
      compound = {};
      compound << "SELECT * FROM (" << std::move(so_far) << ')';
      joined = 1;
    }
    if (i > 0) compound << SqlOperator(query.operators[i - 1]);
    const bool wrapped = query.cores[i].top != nullptr;
    if (wrapped) compound << "SELECT * FROM (";
    // The engine takes the collations of a compound's columns from its cores.
    CorePrinter(state, query.cores[i], kNoOrder, true).Print(compound);
    if (wrapped) compound << ')';
    ++joined;
  }
  out << std::move(compound);
  for (std::size_t i = 0; i < query.order_by.size(); ++i) {
    const bound::OrderKey& key = query.order_by[i];
    out << (i == 0 ? " ORDER BY " : ",") << std::to_string(key.position);
    const std::string_view collation = CollationOf(key.type, Collated::Order);
    if (!collation.empty()) out << " COLLATE " << collation;
    if (key.descending) out << " DESC";
  }
}

void PrintWhole(PrintState& state, const bound::Query& query, bool named, SqlText& out) {
  if (query.cores.size() > 1) return PrintUnion(state, query, out);
  CorePrinter(state, query.cores.front(), query.order_by, named).Print(out);
}

}  // namespace

Text NewName(PrintState& state, std::string_view name) {
  const Text base = LowerKey(name);
  Text unique = base;
  for (int number = 2; !state.used_names.insert(unique).second; ++number) unique = base + '_' + std::to_string(number);
  return SqlName(unique);
}

void PrintQuery(PrintState& state, const bound::Query& query, bool named, SqlText& out) {
  if ((state.query_depth < kDeepestQuery && state.symbols < kMostSymbols) || query.correlated) {
    ++state.query_depth;
    state.symbols += kSymbols;
    PrintWhole(state, query, named, out);
    --state.query_depth;
    state.symbols -= kSymbols;
    return;
  }
  out << "SELECT * FROM " << PutInFront(state, query, "_query");
}

Text PutInFront(PrintState& state, const bound::Query& query, std::string_view name) {
  const int depth = std::exchange(state.query_depth, 0);
  const int symbols = std::exchange(state.symbols, 0);
  SqlText text;
  PrintQuery(state, query, true, text);
  state.query_depth = depth;
  state.symbols = symbols;
  Text unique = NewName(state, name);
  state.in_front.emplace_back(unique, std::move(text));
  return unique;
}

void PrintCore(PrintState& state, const bound::Query& query, std::vector<const bound::Expression*> items,
               SqlText& out) {
  CorePrinter(state, query.cores.front(), query.order_by, std::move(items), false).Print(out);
}

SqlText Finish(PrintState& state, SqlText statement) {
  if (state.in_front.empty()) return statement;
  SqlText whole;
  for (std::size_t i = 0; i < state.in_front.size(); ++i) {
    whole << (i == 0 ? "WITH " : ",") << state.in_front[i].first << " AS (" << std::move(state.in_front[i].second)
          << ')';
  }
  whole << ' ' << std::move(statement);
  return whole;
}

}  // namespace rebate::tsql
