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

// The table of a derived one that is nothing but `select distinct a, b, ... from t`; null where it is anything else.
const bound::Source* TableMadeDifferent(const bound::Source& derived) {
  if (!derived.query || derived.query->cores.size() != 1) return nullptr;
  const bound::Core& core = derived.query->cores.front();
  const bool plain = core.distinct && !core.top && !core.where && !core.grouped && core.from.size() == 1 &&
                     !derived.query->correlated &&
                     std::all_of(core.items.begin(), core.items.end(), [](const bound::Item& item) {
                       return std::holds_alternative<bound::Column>(item.value->node);
                     });
  const bound::Source* source = plain ? SourceOf(*core.from.front()) : nullptr;
  return source != nullptr && source->table && source->table->system_source.empty() ? source : nullptr;
}

const bound::Column& ColumnOfItem(const bound::Source& derived, std::size_t item) {
  return std::get<bound::Column>(derived.query->cores.front().items[item].value->node);
}

// Whether the condition asks for one value of the source's column.
bool AsksFor(const bound::Expression& condition, const bound::Source& source, std::size_t column) {
  if (const auto* both = std::get_if<bound::Logical>(&condition.node)) {
    return both->conjunction && (AsksFor(*both->left, source, column) || AsksFor(*both->right, source, column));
  }
  const auto* comparison = std::get_if<bound::Comparison>(&condition.node);
  if (comparison == nullptr || comparison->operation != BinaryOperator::Equal) return false;
  const auto is_asked = [&](const bound::Expression& side) {
    const auto* asked = std::get_if<bound::Column>(&side.node);
    return asked != nullptr && asked->source == &source && asked->index == column;
  };
  return is_asked(*comparison->left) || is_asked(*comparison->right);
}

// Whether the derived table is one of different rows which an index finds: it begins with a column that the join asks
// for, and tells each row from its doubles.
bool IsLookedUp(const bound::Source& derived, const bound::Joined& join) {
  const bound::Source* source = TableMadeDifferent(derived);
  if (source == nullptr || !join.condition || (join.kind != JoinKind::Left && join.kind != JoinKind::Inner))
    return false;
  const std::size_t count = derived.columns.size();
  const auto item_of = [&](const Text& column) {
    std::size_t item = 0;
    while (item < count &&
           ColumnOfItem(derived, item).source->sql_columns[ColumnOfItem(derived, item).index] != SqlName(column)) {
      ++item;
    }
    return item;
  };
  return std::any_of(source->table->keys.begin(), source->table->keys.end(), [&](const KeyInfo& key) {
    if (key.columns.size() != count || !AsksFor(*join.condition, derived, item_of(key.columns.front()))) return false;
    return std::all_of(key.columns.begin(), key.columns.end(),
                       [&](const Text& column) { return item_of(column) < count; });
  });
}

class FromPrinter {
 public:
  explicit FromPrinter(PrintState& state) : state_(state) {}

  void Print(const bound::From& from, SqlText& out) {
    if (const bound::Source* source = SourceOf(from)) return PrintSource(*source, out);
    const bound::Joined& join = std::get<bound::Joined>(from.node);
    Print(*join.left, out);
    out << SqlJoin(join.kind);
    const bound::Source* right = SourceOf(*join.right);
    if (right != nullptr && IsLookedUp(*right, join)) {
      PrintLookedUp(*right, out);
    } else {
      PrintRight(*join.right, out);
    }
    if (!join.condition) return;
    out << " ON ";
    PrintCondition(state_, *join.condition, out);
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

 private:
  // Each row that has no double before it, so that the engine finds them one value at a time.
  void PrintLookedUp(const bound::Source& derived, SqlText& out) {
    const Text alias = NewName(state_, derived.name);
    const bound::Source& source = *TableMadeDifferent(derived);
    const Text row = NewName(state_, source.name);
    const Text before = NewName(state_, source.name);
    SqlText doubles;
    out << "(SELECT ";
    for (std::size_t i = 0; i < derived.columns.size(); ++i) {
      const Text& column = source.sql_columns[ColumnOfItem(derived, i).index];
      out << (i > 0 ? "," : "") << row << '.' << column << " AS " << derived.sql_columns[i];
      doubles << before << '.' << column << " IS " << row << '.' << column << " AND ";
    }
    const Text table = source.table->SqlName();
    out << " FROM " << table << " AS " << row << " WHERE NOT EXISTS(SELECT 1 FROM " << table << " AS " << before
        << " WHERE " << std::move(doubles) << before << "._rowid_<" << row << "._rowid_)) AS " << alias;
    state_.aliases[&derived] = alias;
  }

  void PrintRight(const bound::From& from, SqlText& out) {
    const bool join = JoinOf(from) != nullptr;
    if (join) out << '(';
    Print(from, out);
    if (join) out << ')';
  }

  // A common table stands in front of the statement once, however often it is used.
  const Text& CommonName(const bound::CommonTable& table) {
    const auto found = state_.common_names.find(&table);
    if (found != state_.common_names.end()) return found->second;
    const Text name = PutInFront(state_, *table.query, "_with_" + table.name);
    return state_.common_names.emplace(&table, name).first->second;
  }

  PrintState& state_;
};

}  // namespace

void PrintSource(PrintState& state, const bound::Source& source, SqlText& out) {
  FromPrinter(state).PrintSource(source, out);
}

void PrintFrom(PrintState& state, const std::vector<bound::FromPtr>& from, SqlText& out) {
  FromPrinter printer(state);
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
