#include <algorithm>

#include "platform/database/tsql/parse/parser_state.h"
#include "platform/database/tsql/parse/syntax_error.h"

// Inserts, updates and deletes, and what assigns in them.
namespace rebate::tsql {
namespace {

// `+=` and the like.
struct Compound {
  std::string_view symbol;
  BinaryOperator operation;
};
constexpr Compound kCompounds[] = {{"+", BinaryOperator::Add},      {"-", BinaryOperator::Subtract},
                                   {"*", BinaryOperator::Multiply}, {"/", BinaryOperator::Divide},
                                   {"%", BinaryOperator::Modulo},   {"&", BinaryOperator::BitAnd},
                                   {"|", BinaryOperator::BitOr},    {"^", BinaryOperator::BitXor}};

const Compound* FindCompound(const Token& token) {
  if (token.kind != TokenKind::Symbol) return nullptr;
  const auto* found = std::find_if(std::begin(kCompounds), std::end(kCompounds),
                                   [&](const Compound& compound) { return compound.symbol == token.text; });
  return found != std::end(kCompounds) ? found : nullptr;
}

constexpr std::size_t kMostRows = 1000;  // of one values clause

}  // namespace

ObjectName Parser::ParseTarget() {
  if (Peek().kind == TokenKind::Variable) ThrowUnsupported("table variable");
  for (std::string_view refused : {"openquery", "openrowset", "opendatasource"}) RefuseWord(refused);
  ObjectName target = ParseObjectName();
  if (IsWord("with")) SkipHints();
  return target;
}

Top Parser::ParseChangeTop() {
  Top top;
  if (!TakeWord("top")) return top;
  // A select may leave the brackets out, a change may not.
  ExpectSymbol("(");
  top.count = ParseValue();
  ExpectSymbol(")");
  top.percent = TakeWord("percent");
  return top;
}

Insert Parser::ParseInsert(CommonTables with) {
  ExpectWord("insert");
  Insert insert;
  insert.with = std::move(with);
  insert.top = ParseChangeTop();
  TakeWord("into");
  insert.table = ParseTarget();
  if (IsSymbol("(") && !IsWord("select", 1) && !IsSymbol("(", 1)) insert.columns = ParseColumnNames();
  for (std::string_view refused : {"output", "exec", "execute"}) RefuseWord(refused);
  if (TakeWord("default")) {
    ExpectWord("values");
    insert.default_values = true;
  } else if (TakeWord("values")) {
    ParseRows(insert);
  } else {
    insert.select = ParseSelect(SelectPlace::Insert);
  }
  return insert;
}

void Parser::ParseRows(Insert& insert) {
  do {
    ExpectSymbol("(");
    std::vector<ExpressionPtr>& row = insert.rows.emplace_back();
    do row.push_back(TakeWord("default") ? nullptr : ParseValue());
    while (TakeSymbol(","));
    ExpectSymbol(")");
    if (row.size() != insert.rows.front().size()) {
      ThrowSyntax("The number of columns for each row in a table value constructor must be the same.");
    }
  } while (TakeSymbol(","));
  if (insert.rows.size() > kMostRows) {
    ThrowSyntax(
        "The number of row value expressions in the INSERT statement exceeds the maximum allowed number of 1000 row "
        "values.");
  }
  const std::size_t values = insert.rows.front().size();
  if (insert.columns.empty() || values == insert.columns.size()) return;
  ThrowSyntax(Text("There are ") + (values < insert.columns.size() ? "more" : "fewer") +
              " columns in the INSERT statement than values specified in the VALUES clause. The number of values in "
              "the VALUES clause must match the number of columns specified in the INSERT statement.");
}

ExpressionPtr Parser::ParseAssigned(ExpressionPtr current) {
  const Compound* compound = FindCompound(Peek());
  if (compound != nullptr && IsSymbol("=", 1)) {
    Take();
    Take();
    return MakeExpression(Binary{compound->operation, std::move(current), ParseValue()});
  }
  ExpectSymbol("=");
  return ParseValue();
}

Update Parser::ParseUpdate(CommonTables with) {
  ExpectWord("update");
  Update update;
  update.with = std::move(with);
  update.top = ParseChangeTop();
  update.target = ParseTarget();
  ExpectWord("set");
  do update.assignments.push_back(ParseAssignment());
  while (TakeSymbol(","));
  RefuseWord("output");
  if (IsWord("from")) update.from = ParseFrom();
  if (TakeWord("where")) update.where = ParseCondition();
  RefuseWord("option");
  return update;
}

bool Parser::AssignsColumn() const {
  if (!IsSymbol("=") || !IsName(1)) return false;
  std::size_t ahead = 2;
  while (IsSymbol(".", ahead)) ahead += IsSymbol(".", ahead + 1) ? 1 : 2;
  return IsSymbol("=", ahead) || (FindCompound(Peek(ahead)) != nullptr && IsSymbol("=", ahead + 1));
}

Assignment Parser::ParseAssignment() {
  Assignment assignment;
  if (Peek().kind == TokenKind::Variable) {
    assignment.variable = ParseDeclaredVariable();
    if (!AssignsColumn()) {
      assignment.value = ParseAssigned(MakeExpression(VariableReference{assignment.variable}));
      return assignment;
    }
    ExpectSymbol("=");
  }
  std::vector<Text> parts = ParseNameParts();
  assignment.column = parts.back();
  if (parts.size() > 1) assignment.qualifier = parts[parts.size() - 2];
  if (assignment.variable.empty() && IsSymbol("=") && IsWord("default", 1)) {
    Take();
    Take();
    return assignment;
  }
  assignment.value = ParseAssigned(MakeExpression(ColumnReference{assignment.qualifier, assignment.column}));
  return assignment;
}

Delete Parser::ParseDelete(CommonTables with) {
  ExpectWord("delete");
  Delete statement;
  statement.with = std::move(with);
  statement.top = ParseChangeTop();
  TakeWord("from");
  statement.target = ParseTarget();
  RefuseWord("output");
  if (IsWord("from")) statement.from = ParseFrom();
  if (TakeWord("where")) statement.where = ParseCondition();
  RefuseWord("option");
  return statement;
}

}  // namespace rebate::tsql
