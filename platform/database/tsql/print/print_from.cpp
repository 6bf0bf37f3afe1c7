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
