#pragma once

#include <memory>
#include <optional>
#include <variant>
#include <vector>

#include "platform/database/tsql/catalog.h"
#include "platform/database/tsql/eval/convert.h"
#include "platform/database/tsql/eval/function.h"

// What a statement means: names are resolved, every expression has its type, every conversion stands as a node of its
// own. Made by binding; printing only writes it down.
namespace rebate::tsql::bound {

struct Expression;
struct Query;
struct Source;
using ExpressionPtr = std::unique_ptr<Expression>;
using QueryPtr = std::unique_ptr<Query>;

// ---- values ----

struct Null {
  bool typed = false;  // by a cast, and so no longer of any type that is asked for
};
// A literal of the batch, bound as the expression's type whenever the statement runs.
struct Literal {
  std::size_t index;
  bool negated = false;
  bool as_written = false;  // a decimal keeps its own digits, whatever the type's scale
  bool converted = false;   // its type isn't that of the literal itself
  Purpose purpose = Purpose::Cast;
};
struct Constant {
  std::variant<std::int64_t, double, Text> value;  // as a column of the type keeps it
};
struct Column {
  const Source* source;
  std::size_t index;
};
struct Variable {
  Text key;  // LowerKey of the name, with its '@'
};
// What the runner knows when the statement runs.
enum class SystemValue {
  Now,  // the statement's instant
  UtcNow,
  Identity,          // the last number that an insert drew
  RowCount,          // rows touched by the last statement
  TransactionCount,  // how deep transactions nest
  ErrorNumber,       // of the last statement; a refused one ends its batch, so 0
  ObjectId,          // of the object that a text literal names; Null where there is none
  LastIdentity,      // that was drawn for the table which a text literal names; Null where there is none
  DatabaseName
};
struct System {
  SystemValue value;
  std::size_t literal = 0;  // of ObjectId and LastIdentity
};
struct Convert {
  ExpressionPtr operand;
  Purpose purpose = Purpose::Cast;
  ExpressionPtr style;  // null where not given
};
// A function or operator that is strict: it has a value for values.
struct Call {
  const Function* function;
  std::vector<ExpressionPtr> arguments;
};
struct Aggregate {
  enum class Kind { Count, Sum, Average, Minimum, Maximum, Deviation };
  Kind kind = Kind::Count;
  Text name;  // of a Deviation: stdev, stdevp, var, varp
  bool distinct = false;
  ExpressionPtr argument;  // null for count(*)
};
// The first of the arguments that isn't Null; they are of one type.
struct Coalesce {
  std::vector<ExpressionPtr> arguments;
};
// Null where the two are equal as values of the type, else the left one.
struct NullIf {
  ExpressionPtr left;
  ExpressionPtr right;
  DataType meeting;
};
struct CaseBranch {
  ExpressionPtr when;  // a condition; with an operand, a value of the type `meeting`
  ExpressionPtr then;
  DataType meeting;
  Purpose purpose = Purpose::Match;  // by which the operand comes to it
};
struct Case {
  ExpressionPtr operand;  // null in a searched case
  std::vector<CaseBranch> branches;
  ExpressionPtr otherwise;  // null where there is no else
};
struct ScalarQuery {
  QueryPtr query;
};

// ---- conditions ----

struct Comparison {
  BinaryOperator operation;
  ExpressionPtr left;  // both are of types that compare with each other as they are kept
  ExpressionPtr right;
};
struct Logical {
  bool conjunction;
  ExpressionPtr left;
  ExpressionPtr right;
};
struct Not {
  ExpressionPtr operand;
};
struct IsNull {
  ExpressionPtr operand;
  bool negated;
};
struct InList {
  ExpressionPtr operand;
  std::vector<ExpressionPtr> items;
  bool negated;
};
struct InQuery {
  ExpressionPtr operand;
  QueryPtr query;
  bool negated;
};
struct Exists {
  QueryPtr query;
};
struct Between {
  ExpressionPtr operand;
  ExpressionPtr low;
  ExpressionPtr high;
  bool negated;
};

struct Expression {
  using Node =
      std::variant<Null, Literal, Constant, Column, Variable, System, Convert, Call, Aggregate, Coalesce, NullIf, Case,
                   ScalarQuery, Comparison, Logical, Not, IsNull, InList, InQuery, Exists, Between>;
  Node node;
  DataType type;  // of a condition: bit
  bool nullable = true;
  bool identity = false;   // a plain column that draws numbers
  bool has_query = false;  // a query stands in it
  bool has_aggregate = false;
  int height = 1;  // levels of nodes, those of queries in it not counted
  // Of the aggregates and columns of an outer query in it nothing is told here.
};

// A node with its type; height and what it has are told by its parts.
ExpressionPtr Make(Expression::Node node, const DataType& type, bool nullable);

// Calls `visit` on each expression right below this one (not in queries).
template <typename Visit>
void ForEachPart(const Expression& expression, const Visit& visit);
// Whether two expressions are the same, literals being compared by the texts that `literals` gives.
bool Same(const Expression& left, const Expression& right, std::span<const LiteralToken> literals);

// ---- queries ----

struct OutputColumn {
  Text name;  // empty where it has none
  DataType type;
  bool nullable = true;
  bool identity = false;
};

// One `with` table; those that name it share it.
struct CommonTable {
  Text name;
  QueryPtr query;
  std::vector<OutputColumn> columns;
};
using CommonTablePtr = std::shared_ptr<CommonTable>;

// A table, view, derived or common table of a from clause.
struct Source {
  Text name;  // alias, or the table's name
  std::vector<OutputColumn> columns;
  std::vector<Text> sql_columns;  // as SQLite knows them
  // One of three:
  TablePtr table;
  QueryPtr query;
  CommonTablePtr common;
};
using SourcePtr = std::unique_ptr<Source>;

struct From;
using FromPtr = std::unique_ptr<From>;
struct Joined {
  JoinKind kind;
  FromPtr left;
  FromPtr right;
  ExpressionPtr condition;  // null for a cross join
};
struct From {
  std::variant<const Source*, Joined> node;
};

struct Item {
  ExpressionPtr value;
  Text variable;  // that it is assigned to, as LowerKey; empty where it goes to the client
};

struct OrderKey {
  ExpressionPtr value;       // null where it is an item
  std::size_t position = 0;  // of the item, from 1
  DataType type;
  bool descending = false;
};

struct Core {
  bool distinct = false;
  ExpressionPtr top;  // a bigint; with `top_percent` a float
  bool top_percent = false;
  std::vector<SourcePtr> sources;
  std::vector<FromPtr> from;
  ExpressionPtr where;
  std::vector<ExpressionPtr> group_by;
  ExpressionPtr having;
  bool grouped = false;
  std::vector<Item> items;
};

struct Query {
  std::vector<Core> cores;
  std::vector<SetOperator> operators;
  std::vector<OrderKey> order_by;
  std::vector<OutputColumn> columns;
  bool correlated = false;  // it uses columns of a query around it
  int depth = 1;            // levels of queries, this one counted
};

// ---- statements ----

struct Insert {
  TablePtr table;
  std::vector<std::size_t> columns;              // of the table, to which the values go
  std::vector<std::vector<ExpressionPtr>> rows;  // of their types; null for a column's default
  QueryPtr query;                                // instead of rows
  ExpressionPtr top;                             // null, or a bigint; with `top_percent` a float
  bool top_percent = false;
  bool gives_identity = false;
};

struct Assignment {
  std::optional<std::size_t> column;  // of the table
  Text variable;                      // as LowerKey; empty where none
  DataType variable_type;
  ExpressionPtr value;  // of the column's type, or of the variable's; null for the column's default
};

// An update or a delete.
struct Change {
  TablePtr table;
  std::vector<SourcePtr> sources;
  const Source* target = nullptr;  // the table, as the from clause knows it
  std::vector<FromPtr> from;       // the target alone where the statement has no from clause
  ExpressionPtr where;
  std::vector<Assignment> assignments;  // of an update
  ExpressionPtr top;
  bool top_percent = false;
};

// ---- inline ----

namespace detail {
template <typename Visit>
void VisitPart(const ExpressionPtr& part, const Visit& visit) {
  if (part) visit(*part);
}
}  // namespace detail

template <typename Visit>
void ForEachPart(const Expression& expression, const Visit& visit) {
  const auto part = [&](const ExpressionPtr& p) { detail::VisitPart(p, visit); };
  const auto parts = [&](const std::vector<ExpressionPtr>& all) {
    for (const ExpressionPtr& p : all) part(p);
  };
  std::visit(
      [&](const auto& node) {
        using Node = std::decay_t<decltype(node)>;
        if constexpr (std::is_same_v<Node, Convert>) {
          part(node.operand), part(node.style);
        } else if constexpr (std::is_same_v<Node, Call> || std::is_same_v<Node, Coalesce>) {
          parts(node.arguments);
        } else if constexpr (std::is_same_v<Node, Aggregate>) {
          part(node.argument);
        } else if constexpr (std::is_same_v<Node, NullIf> || std::is_same_v<Node, Comparison> ||
                             std::is_same_v<Node, Logical>) {
          part(node.left), part(node.right);
        } else if constexpr (std::is_same_v<Node, Case>) {
          part(node.operand);
          for (const CaseBranch& branch : node.branches) part(branch.when), part(branch.then);
          part(node.otherwise);
        } else if constexpr (std::is_same_v<Node, Not> || std::is_same_v<Node, IsNull> ||
                             std::is_same_v<Node, InQuery>) {
          part(node.operand);
        } else if constexpr (std::is_same_v<Node, InList>) {
          part(node.operand), parts(node.items);
        } else if constexpr (std::is_same_v<Node, Between>) {
          part(node.operand), part(node.low), part(node.high);
        }
      },
      expression.node);
}

}  // namespace rebate::tsql::bound
