#pragma once

#include "platform/database/tsql/bind/bind_statement.h"
#include "platform/database/tsql/print/sql_text.h"

// Statements of Transact-SQL as statements of SQLite.
namespace rebate::tsql {

// A column of a result by which its rows are to be sorted, as the server sorts its type.
struct ResultOrder {
  std::size_t column;
  bool descending;
};

struct ResultColumn {
  Text name;
  DataType type;
};

// A value that goes to a variable or to a column, calculated row by row outside of SQLite: the arguments of its program
// are columns of the row, or parameters.
struct RowValue {
  struct Argument {
    std::optional<std::size_t> column = {};  // of the row; nothing for a parameter
    Parameter parameter = {};
  };
  Text variable = {};                      // as LowerKey; empty where it goes to none
  DataType variable_type = {};             // where it goes to a column as well
  std::optional<std::size_t> target = {};  // the place of its column among those that are stored
  DataType type = {};
  Text program = {};  // empty where the column gets its default
  std::vector<Argument> arguments = {};
  Text default_sql = {};  // of the column, as SQLite's text; empty for Null
};

// The update of a row at a time, for what SQLite can't do in one statement: a key that moves over its neighbours, and
// variables that take their values from row to row.
struct RowUpdate {
  SqlText select;                      // the row's number, then the columns that the values are made of,
  std::vector<DataType> column_types;  // of which those that are stored come first
  std::vector<std::size_t> stored;     // columns of the table
  std::vector<RowValue> values;        // to be worked out in this order
  Text remove;                         // DELETE ... WHERE _rowid_=?
  Text insert;                         // the row under its old number: INSERT ... VALUES(?, ?, ...)
};

// One statement, ready to be prepared.
struct Command {
  enum class Kind { Query, Assign, Insert, Change, SelectInto };
  Kind kind = Kind::Query;
  SqlText sql;
  std::vector<ResultOrder> order;           // of a query's rows, which its text leaves to whoever reads them
  std::vector<ResultColumn> columns;        // of a query, and of the columns that an Assign calculates with
  std::vector<RowValue> values;             // of an Assign: to be worked out in this order
  TablePtr target;                          // of an insert or a change
  bool gives_identity = false;              // an insert that names the identity column
  std::optional<std::size_t> row;           // where the row of an insert of literals alone begins: more may follow it
  TableDraft draft;                         // of a select into: the table that the statement fills
  std::optional<RowUpdate> rows;            // of an update that may need it
  bool row_by_row = false;                  // and does
  std::vector<ObjectUse> uses;              // it is good as long as these objects are as they were
  std::vector<std::size_t> fixed_literals;  // and for literals with the texts that these had
};

// The text of an insert that has a `row`, with so many of them.
Text WithRows(const Command& insert, std::size_t rows);

// Each raises the server's error for a name that isn't there, and for types that don't go together.
Command MakeQuery(BindContext& context, const SelectStatement& statement);
Command MakeInsert(BindContext& context, const Insert& insert);
Command MakeUpdate(BindContext& context, const Update& update);
Command MakeDelete(BindContext& context, const Delete& statement);
// A query that gives one row where the condition holds and none where not.
Command MakeCondition(BindContext& context, const Expression& condition);
// The expression, assigned to the variable of the type.
Command MakeAssignment(BindContext& context, const Expression& expression, const Text& variable, const DataType& type);
// A query of one row and one column: the expression as a `type`.
Command MakeValue(BindContext& context, const Expression& expression, const DataType& type);

// What a create table or an alter table makes, with every expression in it as SQLite's own text.
TableDraft DraftTable(BindContext& context, const TableElements& elements, const ObjectName& name,
                      const TableInfo* table);

}  // namespace rebate::tsql
