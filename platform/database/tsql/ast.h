#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "platform/automation/types.h"

// The tree of a batch of Transact-SQL. Names are kept as written, without brackets or double quotes; they compare
// without regard to case. A literal is known by its position among the literals of the batch, in the order in which
// they stand in the text: its value is no part of the tree, so that one tree serves every batch of the same shape.
namespace rebate::tsql {

// ---- types ----

enum class TypeKind {
  Bit,
  TinyInt,
  SmallInt,
  Int,
  BigInt,
  Decimal,
  Money,
  Float,
  Real,
  Char,
  VarChar,
  NChar,
  NVarChar,
  DateTime
};

struct DataType {
  TypeKind kind = TypeKind::Int;
  int length = 0;     // of the character types, in characters; kMaxLength for (max), text and ntext
  int precision = 0;  // of Decimal
  int scale = 0;      // of Decimal

  static constexpr int kMaxLength = -1;
};

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
  bool convert = false;  // written as convert(type, operand [, style])
  ExpressionPtr style;   // null where not given
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
  SelectPtr select;
};
struct Insert {
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
struct Update {
  ObjectName target;  // a table, or an alias of the from clause
  std::vector<Assignment> assignments;
  std::vector<TableSourcePtr> from;
  ExpressionPtr where;
};
struct Delete {
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
  bool primary_key = false;
  bool unique = false;
  ExpressionPtr default_value;  // null where none
  ExpressionPtr computed;       // `name as expression`; the type is then not given
};
struct KeyConstraint {
  bool primary = false;
  std::vector<Text> columns;
};
struct CreateTable {
  ObjectName table;
  std::vector<ColumnDefinition> columns;
  std::vector<KeyConstraint> keys;
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
  SelectPtr select;
  Text source;  // the select as written, to be kept in the account
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
struct BeginTransaction {};
struct CommitTransaction {};
struct RollbackTransaction {};
enum class LoopJump { Break, Continue };
struct Jump {
  LoopJump kind;
};
struct Return {};

struct Statement {
  std::variant<SelectStatement, Insert, Update, Delete, Truncate, CreateTable, CreateIndex, CreateView, Drop, If, While,
               Declare, SetVariable, SetOption, Print, BeginTransaction, CommitTransaction, RollbackTransaction, Jump,
               Return>
      node;
};

struct Batch {
  Block statements;
  // Literals whose values the tree holds (lengths of types, aliases in quotation marks, all in a view), rising: the
  // tree serves only batches with the same texts there.
  std::vector<std::size_t> pinned;
};

}  // namespace rebate::tsql
