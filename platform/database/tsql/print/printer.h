#pragma once

#include <map>
#include <set>

#include "platform/database/tsql/print/sql_text.h"

namespace rebate::tsql {

// What the pieces of one statement's text share: how its sources are called, and what stands in front of it.
struct PrintState {
  // What SQLite calls a source. A source without a name here is the only one: its columns stand for themselves.
  std::map<const bound::Source*, Text> aliases;
  std::set<Text> used_names;
  // A select that groups over a join takes its columns from an inner select: for each of its sources the list of the
  // columns wanted from it so far, as the inner select writes them.
  std::map<const bound::Source*, std::vector<Text>*> regrouped;
  // Sources whose rows a query in the where clause finds by a key, than which no other index of theirs is better: what
  // is compared with a literal is written so that the engine takes none for it.
  std::set<const bound::Source*> found_by_key;
  // Queries that stand in front of the statement under a name: common tables, and what is nested so deep that SQLite's
  // parser would give up.
  std::vector<std::pair<Text, SqlText>> in_front;
  std::map<const bound::CommonTable*, Text> common_names;
  // How a `getdate()` is written: in a definition as a function that the engine calls.
  bool in_definition = false;
  int query_depth = 0;
  // About how many symbols the engine's parser, which takes a hundred, holds on its stack where the printing is.
  int symbols = 0;
};

// ---- print_expression.cpp ----
void PrintValue(PrintState& state, const bound::Expression& expression, SqlText& out);
void PrintCondition(PrintState& state, const bound::Expression& expression, SqlText& out);
// A value with the collation by which it is equal to others, or by which it sorts, where SQLite doesn't know it itself.
enum class Collated { Equality, Order };
void PrintCollated(PrintState& state, const bound::Expression& expression, Collated by, SqlText& out);
// The sign of a comparison, in SQLite's text as in a program's: `=`, `<>`, `<`, ...
std::string_view ComparisonSign(BinaryOperator operation);
// The name of the collation for values of the type; empty where they compare by themselves.
std::string_view CollationOf(const DataType& type, Collated by);

// The function of SQLite's that sums (`sum`) or averages (`avg`) for a result of the type.
Text AggregateFunctionName(std::string_view aggregate, const DataType& type);

// ---- print_calculation.cpp ----
// The expression as one call of the calculating function, over those of its parts that only SQLite can tell.
void PrintCalculation(PrintState& state, const bound::Expression& expression, SqlText& out);

// A calculation outside of SQLite: the program, and what it takes from SQLite or from the runner.
struct Calculation {
  Text program;
  std::vector<const bound::Expression*> arguments;
  bool varies = false;  // the same arguments don't always give the same
};
Calculation MakeCalculation(const bound::Expression& expression);
// Whether only SQLite, or the runner, can tell the value: to a calculation it is an argument.
bool IsArgument(const bound::Expression& expression);

// ---- print_query.cpp ----
// `named`: its columns are called c1, c2, ... and carry their collations.
void PrintQuery(PrintState& state, const bound::Query& query, bool named, SqlText& out);
// A query of one core with other items than its own.
void PrintCore(PrintState& state, const bound::Query& query, std::vector<const bound::Expression*> items, SqlText& out);
// Puts the query in front of the statement; gives the name under which it stands there, made from `name`.
Text PutInFront(PrintState& state, const bound::Query& query, std::string_view name);
Text NewName(PrintState& state, std::string_view name);

// ---- print_from.cpp ----
// The sources of a from clause.
void PrintFrom(PrintState& state, const std::vector<bound::FromPtr>& from, SqlText& out);
// One of them, under a new alias.
void PrintSource(PrintState& state, const bound::Source& source, SqlText& out);
// `where` and the conditions, with ` WHERE ` in front; nothing where there are none.
void PrintWhere(PrintState& state, const bound::ExpressionPtr& where, std::vector<SqlText> conditions, SqlText& out);

// ---- access_paths.cpp ----
// The sources of which `where` wants those rows whose key, a single column, is among the values of a query.
std::set<const bound::Source*> FoundByKey(const bound::Expression& where);
// Whether rows of the source are found by a value of the column without reading all of them.
bool IsServed(const bound::Source& source, std::size_t column);

// ---- print_reduction.cpp ----
// The sources of a core whose join a temporary table decides: of each other one there stand in front of the statement
// the rows alone that can meet the temporary table's, found over indexes from source to source. What must hold between
// them goes to `conditions`. Gives false, and prints nothing, where the core has no such join.
bool PrintReducedFrom(PrintState& state, const bound::Core& core, const std::vector<bound::OrderKey>& order_by,
                      SqlText& out, std::vector<SqlText>& conditions);

// ---- print_range.cpp ----
// What follows from a range of texts in `where` that an index could serve: the index goes by another order, in which
// the range of one text alone is narrow.
void AddIndexRanges(PrintState& state, const bound::Expression& where, std::vector<SqlText>& conditions);

// The whole statement: what stands in front of it, then itself.
SqlText Finish(PrintState& state, SqlText statement);

}  // namespace rebate::tsql
