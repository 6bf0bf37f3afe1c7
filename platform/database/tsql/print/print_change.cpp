#include "platform/database/tsql/print/print_change.h"

#include <functional>

#include "platform/database/tsql/print/printer.h"

namespace rebate::tsql {
namespace {

// The count of a `top`, where there is one.
void PrintLimit(PrintState& state, const bound::ExpressionPtr& top, SqlText& out) {
  if (!top) return;
  out << " LIMIT t_top(";
  PrintValue(state, *top, out);
  out << ')';
}

// `select` with as many of its rows as a `top` leaves.
SqlText Topped(PrintState& state, const bound::ExpressionPtr& top, bool percent, SqlText select) {
  if (!top || !percent) {
    PrintLimit(state, top, select);
    return select;
  }
  const Text name = NewName(state, "_percent");
  SqlText out;
  out << "SELECT * FROM (WITH " << name << " AS MATERIALIZED (" << std::move(select) << ") SELECT * FROM " << name
      << " LIMIT (SELECT t_percent(count(*),";
  PrintValue(state, *top, out);
  out << ") FROM " << name << "))";
  return out;
}

Text ColumnNames(const bound::Insert& insert) {
  Text names;
  for (const std::size_t column : insert.columns) {
    names += (names.empty() ? "" : ",") + SqlName(insert.table->columns[column].name);
  }
  return names;
}

void PrintDefault(const ColumnInfo& column, SqlText& out) {
  out << (column.default_sql.empty() ? "NULL" : '(' + column.default_sql + ')');
}

void PrintRows(PrintState& state, const bound::Insert& insert, SqlText& out) {
  for (std::size_t row = 0; row < insert.rows.size(); ++row) {
    out << (row == 0 ? "VALUES(" : ",(");
    for (std::size_t i = 0; i < insert.rows[row].size(); ++i) {
      if (i > 0) out << ',';
      if (insert.rows[row][i]) {
        PrintValue(state, *insert.rows[row][i], out);
      } else {
        PrintDefault(insert.table->columns[insert.columns[i]], out);
      }
    }
    out << ')';
  }
}

// Whether the statement reads nothing but the rows that it changes.
bool IsAlone(const bound::Change& change) {
  return change.sources.size() == 1 && !change.top;
}

// The rows of a change: what `columns` says of each, behind its number as r.
SqlText PrintRowsOf(PrintState& state, const bound::Change& change,
                    const std::function<void(SqlText& out)>& print_columns) {
  SqlText from;
  PrintFrom(state, change.from, from);
  SqlText select;
  select << "SELECT " << state.aliases.at(change.target) << "._rowid_ AS r";
  print_columns(select);
  select << " FROM " << std::move(from);
  PrintWhere(state, change.where, {}, select);
  return Topped(state, change.top, change.top_percent, std::move(select));
}

const ColumnInfo& ColumnOf(const bound::Change& change, const bound::Assignment& assignment) {
  return change.table->columns[*assignment.column];
}

void PrintAssigned(PrintState& state, const bound::Change& change, const bound::Assignment& assignment, SqlText& out) {
  if (assignment.value) {
    PrintValue(state, *assignment.value, out);
  } else {
    PrintDefault(ColumnOf(change, assignment), out);
  }
}

// The table under its own name, with the sources' aliases known.
SqlText PrintAlone(PrintState& state, const bound::Change& change) {
  SqlText from;
  PrintFrom(state, change.from, from);
  return from;
}

}  // namespace

SqlText PrintInsert(const bound::Insert& insert) {
  PrintState state;
  const Text names = ColumnNames(insert);
  SqlText values;
  if (insert.query) {
    PrintQuery(state, *insert.query, false, values);
    if (insert.top) {
      SqlText wrapped;
      wrapped << "SELECT * FROM (" << std::move(values) << ')';
      values = Topped(state, insert.top, insert.top_percent, std::move(wrapped));
    }
  } else if (insert.columns.empty()) {
    values << "DEFAULT VALUES";
  } else {
    PrintRows(state, insert, values);
  }
  SqlText statement;
  statement << "INSERT INTO " << insert.table->SqlName() << (names.empty() ? " " : '(' + names + ") ")
            << std::move(values);
  return Finish(state, std::move(statement));
}

SqlText PrintUpdate(const bound::Change& change) {
  PrintState state;
  SqlText statement;
  if (IsAlone(change)) {
    statement << "UPDATE " << PrintAlone(state, change) << " SET ";
    for (std::size_t i = 0; i < change.assignments.size(); ++i) {
      const bound::Assignment& assignment = change.assignments[i];
      statement << (i == 0 ? "" : ",") << SqlName(ColumnOf(change, assignment).name) << '=';
      PrintAssigned(state, change, assignment, statement);
    }
    PrintWhere(state, change.where, {}, statement);
    return Finish(state, std::move(statement));
  }
  SqlText rows = PrintRowsOf(state, change, [&](SqlText& out) {
    for (std::size_t i = 0; i < change.assignments.size(); ++i) {
      out << ',';
      PrintAssigned(state, change, change.assignments[i], out);
      out << " AS v" << std::to_string(i + 1);
    }
  });
  statement << "UPDATE " << change.table->SqlName() << " AS \"_target\" SET ";
  for (std::size_t i = 0; i < change.assignments.size(); ++i) {
    statement << (i == 0 ? "" : ",") << SqlName(ColumnOf(change, change.assignments[i]).name) << "=\"_from\".v"
              << std::to_string(i + 1);
  }
  statement << " FROM (" << std::move(rows) << ") AS \"_from\" WHERE \"_target\"._rowid_=\"_from\".r";
  return Finish(state, std::move(statement));
}

SqlText PrintDelete(const bound::Change& change) {
  PrintState state;
  SqlText statement;
  if (IsAlone(change)) {
    statement << "DELETE FROM " << PrintAlone(state, change);
    PrintWhere(state, change.where, {}, statement);
    return Finish(state, std::move(statement));
  }
  SqlText rows = PrintRowsOf(state, change, [](SqlText&) {});
  statement << "DELETE FROM " << change.table->SqlName() << " WHERE _rowid_ IN (" << std::move(rows) << ')';
  return Finish(state, std::move(statement));
}

SqlText PrintChangedRows(const bound::Change& change, const std::vector<const bound::Expression*>& columns) {
  PrintState state;
  SqlText rows = PrintRowsOf(state, change, [&](SqlText& out) {
    for (const bound::Expression* column : columns) {
      out << ',';
      PrintValue(state, *column, out);
    }
  });
  return Finish(state, std::move(rows));
}

}  // namespace rebate::tsql
