#include <algorithm>

#include "platform/automation/conversion.h"
#include "platform/database/tsql/parser_state.h"
#include "platform/database/tsql/syntax_error.h"

namespace rebate::tsql {
namespace {

// What begins a statement of the language that isn't served.
constexpr std::string_view kRefusedStatements[] = {
    "alter",       "merge",    "exec",       "execute",   "with",  "grant", "revoke",     "deny",
    "goto",        "waitfor",  "use",        "open",      "fetch", "close", "deallocate", "backup",
    "restore",     "dbcc",     "raiserror",  "throw",     "kill",  "bulk",  "checkpoint", "shutdown",
    "reconfigure", "readtext", "updatetext", "writetext", "revert"};

struct Option {
  std::string_view name;
  bool on_refused;  // a value that would change what the statements behind it mean
  bool off_refused;
};
constexpr Option kOptions[] = {
    {"nocount", false, false},
    {"xact_abort", false, false},
    {"arithabort", false, false},
    {"ansi_padding", false, true},
    {"ansi_nulls", false, true},
    {"ansi_warnings", false, true},
    {"quoted_identifier", false, true},
    {"ansi_defaults", true, true},
    {"concat_null_yields_null", false, true},
    {"numeric_roundabort", true, false},
    {"fmtonly", true, false},
    {"implicit_transactions", true, false},
    {"noexec", true, false},
    {"parseonly", true, false},
    {"ansi_null_dflt_on", false, false},
    {"ansi_null_dflt_off", true, false},
};

}  // namespace

bool Parser::IsDeclared(std::string_view variable) const {
  return std::any_of(variables_.begin(), variables_.end(),
                     [&](const Text& declared) { return EqualsIgnoreCase(declared, variable); });
}

Text Parser::ParseDeclaredVariable() {
  if (Peek().kind == TokenKind::Variable && !IsDeclared(Peek().text)) {
    ThrowSyntax("Must declare the scalar variable \"" + Text(Peek().text) + "\".");
  }
  return ParseVariable();
}

void Parser::ParseStatement(Block& block) {
  const Nesting nesting(*this);
  if (!ParseDataStatement(block) && !ParseControlStatement(block) && !ParseTransactionStatement(block) &&
      !ParseDefinitionStatement(block)) {
    FailStatement();
  }
  while (TakeSymbol(";")) {
  }
}

void Parser::FailStatement() {
  for (std::string_view refused : kRefusedStatements) RefuseWord(refused);
  // A batch that begins with a name calls the procedure of that name.
  if (at_ == 0 && IsName()) {
    const Token& name = Take();
    if (IsName() || Peek().kind == TokenKind::Literal) Take();
    if (AtEnd()) ThrowSyntax("Could not find stored procedure '" + Text(name.text) + "'.");
  }
  FailHere();
}

bool Parser::ParseDataStatement(Block& block) {
  if (IsWord("select") || IsSymbol("(")) {
    Append(block, SelectStatement{ParseSelect(SelectPlace::Statement)});
  } else if (IsWord("insert")) {
    Append(block, ParseInsert());
  } else if (IsWord("update")) {
    Append(block, ParseUpdate());
  } else if (IsWord("delete")) {
    Append(block, ParseDelete());
  } else {
    return false;
  }
  return true;
}

bool Parser::ParseControlStatement(Block& block) {
  if (IsWord("if")) {
    Append(block, ParseIf());
  } else if (IsWord("while")) {
    Append(block, ParseWhile());
  } else if (IsWord("begin") && !IsAnyWord({"tran", "transaction", "distributed"}, 1)) {
    ParseBlock(block);
  } else if (IsWord("declare")) {
    ParseDeclare(block);
  } else if (IsWord("set")) {
    ParseSet(block);
  } else if (TakeWord("print")) {
    Append(block, Print{ParseValue()});
  } else if (IsWord("break")) {
    Append(block, ParseJump(LoopJump::Break));
  } else if (IsWord("continue")) {
    Append(block, ParseJump(LoopJump::Continue));
  } else if (IsWord("return")) {
    Append(block, ParseReturn());
  } else {
    return false;
  }
  return true;
}

bool Parser::ParseTransactionStatement(Block& block) {
  if (IsWord("begin") && IsWord("distributed", 1)) ThrowUnsupported("begin distributed transaction");
  if (TakeWord("begin")) {
    Take();
    SkipTransactionName();
    Append(block, BeginTransaction{});
  } else if (TakeWord("commit")) {
    if (!TakeWord("work") && (TakeWord("tran") || TakeWord("transaction"))) SkipTransactionName();
    Append(block, CommitTransaction{});
  } else if (TakeWord("rollback")) {
    if (!TakeWord("work") && (TakeWord("tran") || TakeWord("transaction"))) SkipTransactionName();
    Append(block, RollbackTransaction{});
  } else if (IsWord("save")) {
    ThrowUnsupported("save transaction");
  } else {
    return false;
  }
  return true;
}

void Parser::SkipTransactionName() {
  if (IsName()) {
    Take();
  } else if (Peek().kind == TokenKind::Variable) {
    ParseVariableReference();
  }
}

bool Parser::ParseDefinitionStatement(Block& block) {
  if (IsWord("create")) {
    ParseCreate(block);
  } else if (IsWord("drop")) {
    Append(block, ParseDrop());
  } else if (TakeWord("truncate")) {
    ExpectWord("table");
    Append(block, Truncate{ParseObjectName()});
  } else {
    return false;
  }
  return true;
}

// ---- blocks and loops ----

Block Parser::ParseBody() {
  Block body;
  ParseStatement(body);
  return body;
}

void Parser::ParseBlock(Block& block) {
  ExpectWord("begin");
  if (IsAnyWord({"try", "catch"})) ThrowUnsupported("try...catch");
  while (TakeSymbol(";")) {
  }
  do ParseStatement(block);
  while (!IsWord("end"));
  ExpectWord("end");
}

If Parser::ParseIf() {
  ExpectWord("if");
  If statement;
  statement.condition = ParseCondition();
  statement.then = ParseBody();
  if (TakeWord("else")) statement.otherwise = ParseBody();
  return statement;
}

While Parser::ParseWhile() {
  ExpectWord("while");
  While statement;
  statement.condition = ParseCondition();
  ++loops_;
  statement.body = ParseBody();
  --loops_;
  return statement;
}

Jump Parser::ParseJump(LoopJump kind) {
  if (loops_ == 0) {
    ThrowSyntax(Text("Cannot use a ") + (kind == LoopJump::Break ? "BREAK" : "CONTINUE") +
                " statement outside the scope of a WHILE statement.");
  }
  Take();
  return {kind};
}

Return Parser::ParseReturn() {
  ExpectWord("return");
  if (Peek().kind == TokenKind::Literal || Peek().kind == TokenKind::Variable || IsSymbol("-")) {
    ThrowSyntax("A RETURN statement with a return value cannot be used in this context.");
  }
  return {};
}

// ---- variables and options ----

void Parser::ParseDeclare(Block& block) {
  ExpectWord("declare");
  do {
    if (IsName() && (IsWord("cursor", 1) || IsAnyWord({"insensitive", "scroll"}, 1))) ThrowUnsupported("cursor");
    Declare declare;
    declare.variable = ParseVariable();
    TakeWord("as");
    RefuseWord("cursor");
    if (IsWord("table")) ThrowUnsupported("table variable");
    declare.type = ParseType();
    if (IsDeclared(declare.variable)) {
      ThrowSyntax("The variable name '" + declare.variable +
                  "' has already been declared. Variable names must be unique within a query batch or stored "
                  "procedure.");
    }
    if (TakeSymbol("=")) declare.value = ParseValue();
    variables_.push_back(declare.variable);
    Append(block, std::move(declare));
  } while (TakeSymbol(","));
}

void Parser::ParseSet(Block& block) {
  ExpectWord("set");
  if (Peek().kind != TokenKind::Variable) {
    ParseSetOptions(block);
    return;
  }
  SetVariable set;
  set.variable = ParseDeclaredVariable();
  set.value = ParseAssigned(MakeExpression(VariableReference{set.variable}));
  Append(block, std::move(set));
}

ExpressionPtr Parser::ParseAssigned(ExpressionPtr current) {
  constexpr std::pair<std::string_view, BinaryOperator> kCompound[] = {
      {"+", BinaryOperator::Add},    {"-", BinaryOperator::Subtract}, {"*", BinaryOperator::Multiply},
      {"/", BinaryOperator::Divide}, {"%", BinaryOperator::Modulo},   {"&", BinaryOperator::BitAnd},
      {"|", BinaryOperator::BitOr},  {"^", BinaryOperator::BitXor}};
  for (const auto& [symbol, operation] : kCompound) {
    if (!IsSymbol(symbol) || !IsSymbol("=", 1)) continue;
    Take();
    Take();
    return MakeExpression(Binary{operation, std::move(current), ParseValue()});
  }
  ExpectSymbol("=");
  return ParseValue();
}

void Parser::ParseSetOptions(Block& block) {
  if (TakeWord("transaction")) {
    // Work is serializable here, which is what every level may have.
    ExpectWord("isolation");
    ExpectWord("level");
    if (TakeWord("read")) {
      if (!TakeWord("committed")) ExpectWord("uncommitted");
    } else if (TakeWord("repeatable")) {
      ExpectWord("read");
    } else if (!TakeWord("snapshot")) {
      ExpectWord("serializable");
    }
    Append(block, SetOption{"transaction isolation level", true, {}});
    return;
  }
  if (TakeWord("identity_insert")) {
    SetOption option{"identity_insert", false, ParseObjectName()};
    option.on = ParseSwitch();
    Append(block, std::move(option));
    return;
  }
  std::vector<const Option*> options;
  do {
    const auto* option =
        std::find_if(std::begin(kOptions), std::end(kOptions), [&](const Option& known) { return IsWord(known.name); });
    if (option == std::end(kOptions)) {
      if (Peek().kind != TokenKind::Word) FailHere();
      ThrowUnsupported("set " + Text(Peek().text));
    }
    Take();
    options.push_back(option);
  } while (TakeSymbol(","));
  const bool on = ParseSwitch();
  for (const Option* option : options) {
    if (on ? option->on_refused : option->off_refused) {
      ThrowUnsupported("set " + Text(option->name) + (on ? " on" : " off"));
    }
    Append(block, SetOption{Text(option->name), on, {}});
  }
}

bool Parser::ParseSwitch() {
  if (TakeWord("on")) return true;
  ExpectWord("off");
  return false;
}

// ---- insert, update, delete ----

ObjectName Parser::ParseTarget() {
  RefuseWord("top");
  if (Peek().kind == TokenKind::Variable) ThrowUnsupported("table variable");
  ObjectName target = ParseObjectName();
  if (IsWord("with")) SkipHints();
  return target;
}

Insert Parser::ParseInsert() {
  ExpectWord("insert");
  RefuseWord("top");
  TakeWord("into");
  Insert insert;
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
    const std::size_t wanted = insert.columns.empty() ? insert.rows.front().size() : insert.columns.size();
    if (row.size() == wanted) continue;
    if (insert.columns.empty()) {
      ThrowSyntax("All the rows in a VALUES clause must have the same number of values.");
    }
    ThrowSyntax(Text("There are ") + (row.size() < wanted ? "more" : "fewer") +
                " columns in the INSERT statement than values specified in the VALUES clause. The number of values in "
                "the VALUES clause must match the number of columns specified in the INSERT statement.");
  } while (TakeSymbol(","));
}

Update Parser::ParseUpdate() {
  ExpectWord("update");
  Update update;
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

Assignment Parser::ParseAssignment() {
  Assignment assignment;
  if (Peek().kind == TokenKind::Variable) {
    assignment.variable = ParseDeclaredVariable();
    const bool column_too = IsSymbol("=") && IsName(1) && IsSymbol("=", 2);
    if (!column_too) {
      assignment.value = ParseAssigned(MakeExpression(VariableReference{assignment.variable}));
      return assignment;
    }
    ExpectSymbol("=");
  }
  std::vector<Text> parts = ParseNameParts();
  assignment.column = parts.back();
  if (parts.size() > 1) assignment.qualifier = parts[parts.size() - 2];
  if (IsSymbol("=") && IsWord("default", 1)) {
    Take();
    Take();
    return assignment;
  }
  assignment.value = ParseAssigned(MakeExpression(ColumnReference{assignment.qualifier, assignment.column}));
  return assignment;
}

Delete Parser::ParseDelete() {
  ExpectWord("delete");
  Delete statement;
  TakeWord("from");
  statement.target = ParseTarget();
  RefuseWord("output");
  if (IsWord("from")) statement.from = ParseFrom();
  if (TakeWord("where")) statement.where = ParseCondition();
  RefuseWord("option");
  return statement;
}

}  // namespace rebate::tsql
