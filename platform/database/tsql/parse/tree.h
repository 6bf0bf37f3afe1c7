#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "platform/database/tsql/data_types.h"
#include "platform/values/types.h"

// The tree of a batch of Transact-SQL. Names are kept as written, without brackets or double quotes; they compare
// without regard to case. A literal is known by its position among the literals of the batch, in the order in which
// they stand in the text: its value is no part of the tree, so that one tree serves every batch of the same template.
namespace rebate::tsql {

// ---- names ----

// `database..name`, `owner.name`, `name`. The owner `dbo` and the database `tempdb` are the only ones that mean
// anything.
struct ObjectName {
  Text database;  // empty where not given
  Text owner;     // empty where not given
  Text name;      // a temporary table's begins with '#'
};

// ---- expressions ----

struct Expression;
struct Select;
using ExpressionPtr = std::unique_ptr<Expression>;
using SelectPtr = std::unique_ptr<Select>;

enum class LiteralKind : std::uint8_t { Integer, Decimal, Float, String, NationalString };  // 12  1.5  1e3  'a'  N'a'

struct Literal {
  LiteralKind kind;
  std::size_t index;  // among the literals of the batch, from 0
};
struct NullLiteral {};
struct ColumnReference {
  Text qualifier;  // table, alias, or empty
  Text name;
};
struct VariableReference {
  Text name;  // with its '@'; system functions such as @@identity too, with both; either is known to exist
};
enum class UnaryOperator { Minus, Plus, Not, BitNot };
struct Unary {
  UnaryOperator operation;
  ExpressionPtr operand;
};
enum class BinaryOperator {
  Add,
  Subtract,
  Multiply,
  Divide,
  Modulo,
  BitAnd,
  BitOr,
  BitXor,
  Equal,
  NotEqual,
  Less,
  LessEqual,
  Greater,
  GreaterEqual,
  And,
  Or
};
struct Binary {
  BinaryOperator operation;
  ExpressionPtr left;
  ExpressionPtr right;
};
struct FunctionCall {
  Text name;
  std::vector<ExpressionPtr> arguments;
  bool star = false;            // count(*)
  bool distinct = false;        // count(distinct x)
  std::optional<Text> keyword;  // the first argument of datediff, dateadd, datepart, as written
};
struct Cast {
  ExpressionPtr operand;
  DataType type;
  bool convert = false;   // written as convert(type, operand [, style])
  bool tolerant = false;  // try_cast, try_convert: Null for what doesn't convert
  ExpressionPtr style;    // null where not given
};
// `iif(condition, a, b)` is a searched case, too.
struct CaseBranch {
  ExpressionPtr when;
  ExpressionPtr then;
};
struct Case {
  ExpressionPtr operand;  // null in a searched case
  std::vector<CaseBranch> branches;
  ExpressionPtr otherwise;  // null where there is no else
};
struct InList {
  ExpressionPtr operand;
  std::vector<ExpressionPtr> items;
  bool negated = false;
};
struct InSelect {
  ExpressionPtr operand;
  SelectPtr select;
  bool negated = false;
};
struct Exists {
  SelectPtr select;
};
struct Between {
  ExpressionPtr operand;
  ExpressionPtr low;
  ExpressionPtr high;
  bool negated = false;
};
struct Like {
  ExpressionPtr operand;
  ExpressionPtr pattern;
  ExpressionPtr escape;  // null where not given
  bool negated = false;
};
struct IsNull {
  ExpressionPtr operand;
  bool negated = false;
};
struct ScalarSelect {
  SelectPtr select;
};

// Where a condition is due (where, having, on, if, while, a searched case's when, the operands of and, or, not) the
// node is one, and everywhere else it is a value: the parser sees to it. Chains of `and` and of `or` come as balanced
// trees.
struct Expression {
  std::variant<Literal, NullLiteral, ColumnReference, VariableReference, Unary, Binary, FunctionCall, Cast, Case,
               InList, InSelect, Exists, Between, Like, IsNull, ScalarSelect>
      node;
};

// ---- queries ----

struct TableSource;
using TableSourcePtr = std::unique_ptr<TableSource>;

struct NamedTable {
  ObjectName name;
  Text alias;  // empty where not given
};
struct DerivedTable {
  SelectPtr select;
  Text alias;
  std::vector<Text> columns;  // `(select ...) as alias (columns)`; empty where not given
};
enum class JoinKind { Inner, Left, Right, Full, Cross };
struct Join {
  JoinKind kind;
  TableSourcePtr left;
  TableSourcePtr right;
  ExpressionPtr condition;  // null for a cross join
};
struct TableSource {
  std::variant<NamedTable, DerivedTable, Join> node;
};

// `*`, `alias.*`, an expression with or without an alias, or `@variable = expression`.
struct SelectItem {
  bool star = false;
  Text star_qualifier;
  ExpressionPtr expression;
  Text alias;
  Text variable;
};

struct OrderItem {
  ExpressionPtr expression;
  bool descending = false;
};

enum class SetOperator { Union, UnionAll, Except, Intersect };

// One `select ... from ... where ... group by ... having ...`.
struct SelectCore {
  bool distinct = false;
  ExpressionPtr top;  // null where not given
  bool top_percent = false;
  std::vector<SelectItem> items;
  std::optional<ObjectName> into;
  std::vector<TableSourcePtr> from;  // the elements of the comma list; empty without a from
  ExpressionPtr where;
  std::vector<ExpressionPtr> group_by;
  ExpressionPtr having;
};

// `with name (columns) as (select ...)`, in front of a statement; each may use those before it.
struct CommonTable {
  Text name;
  std::vector<Text> columns;  // empty where not given
  SelectPtr select;
};
using CommonTables = std::vector<CommonTable>;

// The `top` of an insert, update or delete.
struct Top {
  ExpressionPtr count;  // null where not given
  bool percent = false;
};

// Cores joined by set operators, strictly left to right (what binds otherwise comes as `select * from (...)`):
// `operators[i]` stands between `cores[i]` and `cores[i + 1]`.
struct Select {
  std::vector<SelectCore> cores;
  std::vector<SetOperator> operators;
  std::vector<OrderItem> order_by;
};

// ---- statements ----

struct Statement;
using StatementPtr = std::unique_ptr<Statement>;
using Block = std::vector<StatementPtr>;

struct SelectStatement {
  CommonTables with;
  SelectPtr select;
};
struct Insert {
  CommonTables with;
  Top top;
  ObjectName table;
  std::vector<Text> columns;                     // empty where not given
  std::vector<std::vector<ExpressionPtr>> rows;  // of a values clause; an item is null for `default`
  SelectPtr select;                              // instead of rows
  bool default_values = false;
};
struct Assignment {
  Text qualifier;  // of the column; empty where not given
  Text column;     // empty where only a variable is assigned
  Text variable;
  ExpressionPtr value;  // null for `default`
};
// `update t set column = value`, `set @variable = value`, `set @variable = column = value`.
struct Update {
  CommonTables with;
  Top top;
  ObjectName target;  // a table, or an alias of the from clause
  std::vector<Assignment> assignments;
  std::vector<TableSourcePtr> from;
  ExpressionPtr where;
};
struct Delete {
  CommonTables with;
  Top top;
  ObjectName target;  // a table, or an alias of the from clause
  std::vector<TableSourcePtr> from;
  ExpressionPtr where;
};
struct Truncate {
  ObjectName table;
};
struct ColumnDefinition {
  Text name;
  DataType type;
  bool nullable = true;
  bool identity = false;
  std::int64_t identity_seed = 1;
  std::int64_t identity_step = 1;
  ExpressionPtr default_value;  // null where none
  ExpressionPtr computed;       // `name as expression`; the type is then not given
};
struct KeyConstraint {
  Text name;  // empty where not given
  bool primary = false;
  std::vector<Text> columns;
};
struct CheckConstraint {
  Text name;    // empty where not given
  Text column;  // that it was written behind; empty for one of the table
  ExpressionPtr condition;
};
// Columns with their keys and checks, which a column's own `primary key`, `unique` and `check` are among.
struct TableElements {
  std::vector<ColumnDefinition> columns;
  std::vector<KeyConstraint> keys;
  std::vector<CheckConstraint> checks;
};
struct CreateTable {
  ObjectName table;
  TableElements elements;
};
// `alter table t add ...`.
struct AlterTableAdd {
  ObjectName table;
  TableElements elements;
};
struct CreateIndex {
  Text name;
  ObjectName table;
  bool unique = false;
  std::vector<Text> columns;
};
struct CreateView {
  ObjectName view;
  std::vector<Text> columns;  // empty where not given
  CommonTables with;
  SelectPtr select;
  Text source;  // the select as written, its common tables in front, to be kept in the account
};
enum class ObjectKind { Table, View, Index };
struct Drop {
  ObjectKind kind = ObjectKind::Table;
  std::vector<ObjectName> names;  // of an index: owner is the table's name where written `table.index`
  Text on_table;                  // drop index name on table
  bool if_exists = false;
};
struct If {
  ExpressionPtr condition;
  Block then;
  Block otherwise;
};
struct While {
  ExpressionPtr condition;
  Block body;
};
struct Declare {
  Text variable;
  DataType type;
  ExpressionPtr value;  // null where not given
};
struct SetVariable {
  Text variable;
  ExpressionPtr value;
};
// `set nocount on` and the like. Only values that keep the meaning of the statements behind them get here; the one
// option with an effect is `identity_insert`.
struct SetOption {
  Text option;  // in lower case
  bool on = false;
  ObjectName table;  // of identity_insert
};
struct Print {
  ExpressionPtr message;
};
// `raiserror(message, severity, state, arguments...)`; the message is a text with the marks of printf.
struct RaiseError {
  ExpressionPtr message;
  ExpressionPtr severity;
  ExpressionPtr state;
  std::vector<ExpressionPtr> arguments;
};
// `throw number, message, state`.
struct Throw {
  ExpressionPtr number;
  ExpressionPtr message;
  ExpressionPtr state;
};
// The names of transactions: empty where not given; of a variable the one with its '@'.
struct BeginTransaction {
  Text name;
};
struct CommitTransaction {};
struct RollbackTransaction {
  Text name;
};
enum class LoopJump { Break, Continue };
struct Jump {
  LoopJump kind;
};
struct Return {};

struct Statement {
  std::variant<SelectStatement, Insert, Update, Delete, Truncate, CreateTable, AlterTableAdd, CreateIndex, CreateView,
               Drop, If, While, Declare, SetVariable, SetOption, Print, RaiseError, Throw, BeginTransaction,
               CommitTransaction, RollbackTransaction, Jump, Return>
      node;
};

struct Batch {
  Block statements;
  // Literals whose values the tree holds (lengths of types, aliases in quotation marks, all in a view), rising: the
  // tree serves only batches with the same texts there.
  std::vector<std::size_t> fixed_literals;
};

}  // namespace rebate::tsql
