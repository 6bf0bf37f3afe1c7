#pragma once

#include <span>
#include <unordered_map>

#include "platform/database/tsql/catalog.h"
#include "platform/database/tsql/value.h"

// Statements of Transact-SQL as statements of SQLite.
namespace rebate::tsql {

enum class ParameterSource {
  Literal,
  Variable,
  Now,               // the statement's instant
  Identity,          // the last number that an insert drew
  RowCount,          // rows touched by the last statement
  TransactionCount,  // how deep transactions nest
  ErrorNumber,       // of the last statement; a refused one ends its batch, so 0
  ObjectId           // of the object that a literal names; Null where there is none
};

// What is bound to `?1`, `?2` and so on.
struct Parameter {
  ParameterSource source = ParameterSource::Literal;
  std::size_t literal = 0;  // its position among the literals of the batch
  bool negated = false;
  DataType type;  // that a literal or a variable is bound as
  Purpose purpose = Purpose::Cast;
  Text variable;
};

struct ResultColumn {
  Text name;
  DataType type;
  Text variable;  // that the value goes to; empty where it goes to the client
};

struct ColumnDraft {
  ColumnInfo info;
  std::int64_t identity_seed = 1;
  bool primary_key = false;
  bool unique = false;
  Text default_sql;   // empty where there is none
  Text computed_sql;  // empty where it isn't computed
};

// A table to be made.
struct TableDraft {
  ObjectName name;
  std::vector<ColumnDraft> columns;
  std::vector<KeyConstraint> keys;
};

struct ObjectUse {
  ObjectName name;
  std::uint64_t signature;
};

// One statement, ready to be prepared.
struct Command {
  enum class Kind { Query, Insert, Change, SelectInto };
  Kind kind = Kind::Query;
  Text sql;
  std::vector<Parameter> parameters;
  std::vector<ResultColumn> columns;  // of a query
  TablePtr target;                    // of an insert or a change
  bool gives_identity = false;        // an insert that names the identity column
  TableDraft draft;                   // of a select into: the table that the statement fills
  std::vector<ObjectUse> uses;        // it is good as long as these objects are as they were
  std::vector<std::size_t> pins;      // and for literals with the texts that these had
};

using VariableTypes = std::unordered_map<Text, DataType>;  // by LowerKey of the name, with its '@'

// What a statement is emitted against: the account, the literals of the batch and its variables.
struct Surroundings {
  Catalog& catalog;
  std::span<const LiteralToken> literals;
  const VariableTypes& variables;
};

// Each raises the server's error for a name that isn't there, and for types that don't go together.
Command EmitQuery(const Surroundings& surroundings, const Select& select);
Command EmitInsert(const Surroundings& surroundings, const Insert& insert);
Command EmitUpdate(const Surroundings& surroundings, const Update& update);
Command EmitDelete(const Surroundings& surroundings, const Delete& statement);
// A query that gives one row where the condition holds and none where not.
Command EmitCondition(const Surroundings& surroundings, const Expression& condition);
// A query of one row and one column: the expression, assigned to a `type`.
Command EmitValue(const Surroundings& surroundings, const Expression& expression, const DataType& type);

// The table that a create statement describes, with every expression in it as SQLite's own text.
TableDraft DraftTable(const Surroundings& surroundings, const CreateTable& statement);
// The statements that make it, keys and all, and set where its identity starts.
std::vector<Text> CreateStatements(const TableDraft& draft);
std::vector<Text> CreateStatements(const CreateIndex& statement, const TableInfo& table);
// The name under which an index stands in SQLite, where names of indexes are one for the whole database.
Text IndexName(std::string_view table, std::string_view index);

// Parses a view's select as the account keeps it.
std::shared_ptr<const ViewDefinition> ParseView(Text source, std::vector<Text> columns);
// Raises where the view can't be read: an unknown name, a column without a name.
void CheckView(const Surroundings& surroundings, const ViewDefinition& view, const Text& name);

// The name of the collation by which the account's texts compare.
inline constexpr std::string_view kCollation = "account_text";

}  // namespace rebate::tsql
