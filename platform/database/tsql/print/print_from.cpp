#include <algorithm>

#include "platform/database/tsql/print/printer.h"

namespace rebate::tsql {
namespace {

std::string_view SqlJoin(JoinKind kind) {
  switch (kind) {
    case JoinKind::Inner:
      return " INNER JOIN ";
    case JoinKind::Left:
      return " LEFT JOIN ";
    case JoinKind::Right:
      return " RIGHT JOIN ";
    case JoinKind::Full:
      return " FULL JOIN ";
    case JoinKind::Cross:
      break;
  }
  return " CROSS JOIN ";
}

const bound::Joined* JoinOf(const bound::From& from) {
  return std::get_if<bound::Joined>(&from.node);
}

const bound::Source* SourceOf(const bound::From& from) {
  const auto* source = std::get_if<const bound::Source*>(&from.node);
  return source != nullptr ? *source : nullptr;
}

bool IsTemporary(const bound::From& from) {
  const bound::Source* source = SourceOf(from);
  return source != nullptr && source->table && source->table->temporary;
}

// The joins of a chain that leans to the left, the innermost first.
std::vector<const bound::Joined*> ChainOf(const bound::From& from) {
  std::vector<const bound::Joined*> chain;
  for (const bound::Joined* join = JoinOf(from); join != nullptr; join = JoinOf(*join->left)) chain.push_back(join);
  std::reverse(chain.begin(), chain.end());
  return chain;
}

// The join whose right side is a temporary table that may stand first: the chain's size where there is none.
std::size_t FindLeader(const std::vector<const bound::Joined*>& chain) {
  if (chain.empty() || IsTemporary(*chain.front()->left)) return chain.size();
  const bool movable = std::all_of(chain.begin(), chain.end(), [](const bound::Joined* join) {
    return join->kind == JoinKind::Inner || join->kind == JoinKind::Left || join->kind == JoinKind::Cross;
  });
  if (!movable) return chain.size();
  const auto found = std::find_if(chain.begin(), chain.end(), [](const bound::Joined* join) {
    return join->kind == JoinKind::Inner && IsTemporary(*join->right);
  });
  return static_cast<std::size_t>(found - chain.begin());
}

bool IsColumnOf(const bound::Expression& expression, const bound::Source* source) {
  const auto* column = std::get_if<bound::Column>(&expression.node);
  return column != nullptr && column->source == source;
}

// Whether the condition can't hold where the columns of the source are Null: an equation with one of them must hold.
bool NeedsSource(const bound::Expression& condition, const bound::Source* source) {
  if (const auto* both = std::get_if<bound::Logical>(&condition.node)) {
    return both->conjunction && (NeedsSource(*both->left, source) || NeedsSource(*both->right, source));
  }
  const auto* comparison = std::get_if<bound::Comparison>(&condition.node);
  return comparison != nullptr && comparison->operation == BinaryOperator::Equal &&
         (IsColumnOf(*comparison->left, source) || IsColumnOf(*comparison->right, source));
}

class FromPrinter {
 public:
  explicit FromPrinter(PrintState& state) : state_(state) {}

  void Print(const bound::From& from, SqlText& out) {
    if (const bound::Source* source = SourceOf(from)) return PrintSource(*source, out);
    const bound::Joined& join = std::get<bound::Joined>(from.node);
    Print(*join.left, out);
    out << SqlJoin(join.kind);
    PrintRight(*join.right, out);
    if (!join.condition) return;
    out << " ON ";
    PrintCondition(state_, *join.condition, out);
  }

  // A temporary table that is joined to permanent ones holds what a statement asks about: it leads the join, its
  // condition stands among those of the where clause, which keeps the meaning in a chain of inner and left joins.
  // Behind it comes the left joined view or derived table that its condition needs, which by that need is an inner
  // join; then the rest.
  void PrintWithLeader(const std::vector<const bound::Joined*>& chain, std::size_t leader, SqlText& out,
                       std::vector<SqlText>& conditions) {
    SqlText base;
    Print(*chain.front()->left, base);
    std::vector<SqlText> sources(chain.size());
    for (std::size_t i = 0; i < chain.size(); ++i) PrintRight(*chain[i]->right, sources[i]);
    const std::size_t second = FindSecond(chain, leader);
    out << std::move(sources[leader]);
    conditions.push_back(ConditionOf(*chain[leader]));
    if (second < chain.size()) {
      out << " CROSS JOIN " << std::move(sources[second]);
      conditions.push_back(ConditionOf(*chain[second]));
    }
    out << " CROSS JOIN " << std::move(base);
    for (std::size_t i = 0; i < chain.size(); ++i) {
      if (i == leader || i == second) continue;
      out << SqlJoin(chain[i]->kind) << std::move(sources[i]);
      if (chain[i]->condition) out << " ON " << ConditionOf(*chain[i]);
    }
  }

 private:
  void PrintRight(const bound::From& from, SqlText& out) {
    const bool join = JoinOf(from) != nullptr;
    if (join) out << '(';
    Print(from, out);
    if (join) out << ')';
  }

  void PrintSource(const bound::Source& source, SqlText& out) {
    const Text alias = NewName(state_, source.name);
    if (source.table) {
      out << source.table->SqlName();
    } else if (source.common) {
      out << CommonName(*source.common);
    } else {
      out << '(';
      PrintQuery(state_, *source.query, true, out);
      out << ')';
    }
    out << " AS " << alias;
    state_.aliases[&source] = alias;
  }

  // A common table stands in front of the statement once, however often it is used.
  const Text& CommonName(const bound::CommonTable& table) {
    const auto found = state_.common_names.find(&table);
    if (found != state_.common_names.end()) return found->second;
    const Text name = PutInFront(state_, *table.query, "_with_" + table.name);
    return state_.common_names.emplace(&table, name).first->second;
  }

  static std::size_t FindSecond(const std::vector<const bound::Joined*>& chain, std::size_t leader) {
    for (std::size_t i = 0; i < leader; ++i) {
      const bound::Source* source = SourceOf(*chain[i]->right);
      if (source == nullptr || source->table || !chain[i]->condition) continue;
      if (NeedsSource(*chain[leader]->condition, source)) return i;
    }
    return chain.size();
  }

  SqlText ConditionOf(const bound::Joined& join) {
    SqlText condition;
    PrintCondition(state_, *join.condition, condition);
    return condition;
  }

  PrintState& state_;
};

}  // namespace

void PrintFrom(PrintState& state, const std::vector<bound::FromPtr>& from, SqlText& out,
               std::vector<SqlText>& conditions) {
  FromPrinter printer(state);
  if (from.size() == 1) {
    const std::vector<const bound::Joined*> chain = ChainOf(*from.front());
    const std::size_t leader = FindLeader(chain);
    if (leader < chain.size()) return printer.PrintWithLeader(chain, leader, out, conditions);
  }
  for (std::size_t i = 0; i < from.size(); ++i) {
    if (i > 0) out << " INNER JOIN ";
    const bool join = from.size() > 1 && JoinOf(*from[i]) != nullptr;
    if (join) out << '(';
    printer.Print(*from[i], out);
    if (join) out << ')';
  }
}

void PrintWhere(PrintState& state, const bound::ExpressionPtr& where, std::vector<SqlText> conditions, SqlText& out) {
  if (where) PrintCondition(state, *where, conditions.emplace_back());
  for (std::size_t i = 0; i < conditions.size(); ++i) {
    out << (i == 0 ? " WHERE " : " AND ") << std::move(conditions[i]);
  }
}

}  // namespace rebate::tsql
