#include <algorithm>

#include "platform/automation/conversion.h"
#include "platform/database/tsql/parse/parser_state.h"
#include "platform/database/tsql/parse/syntax_error.h"

namespace rebate::tsql {
namespace {

// What begins a statement of the language that isn't served.
constexpr std::string_view kRefusedStatements[] = {
    "merge",      "exec",     "execute",     "grant",      "revoke",     "deny",      "goto",  "waitfor", "use",
    "open",       "fetch",    "close",       "deallocate", "backup",     "restore",   "dbcc",  "kill",    "bulk",
    "checkpoint", "shutdown", "reconfigure", "readtext",   "updatetext", "writetext", "revert"};

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

constexpr std::size_t kMostSubstitutions = 20;  // of marks in a message

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

void Parser::CheckEndBefore() const {
  if (!IsWord("with")) return;
  const Token& before = tokens_[at_ - 1];
  if (before.kind == TokenKind::Symbol && before.text == ";") return;
  ThrowSyntax(
      "Incorrect syntax near the keyword 'with'. If this statement is a common table expression, an xmlnamespaces "
      "clause or a change tracking context clause, the previous statement must be terminated with a semicolon.");
}

void Parser::FailStatement() {
  for (std::string_view refused : kRefusedStatements) RefuseWord(refused);
  if (IsName() && IsSymbol(":", 1)) ThrowUnsupported("label");
  // A batch that begins with a name calls the procedure of that name.
  if (at_ == 0 && IsName()) {
    const Token& name = Take();
    if (IsName() || Peek().kind == TokenKind::Literal) Take();
    if (AtEnd()) ThrowSyntax("Could not find stored procedure '" + Text(name.text) + "'.");
  }
  FailHere();
}

bool Parser::ParseDataStatement(Block& block) {
  CommonTables with = ParseCommonTables();
  if (IsWord("select") || IsSymbol("(")) {
    Append(block, SelectStatement{std::move(with), ParseSelect(SelectPlace::Statement)});
  } else if (IsWord("insert")) {
    Append(block, ParseInsert(std::move(with)));
  } else if (IsWord("update")) {
    Append(block, ParseUpdate(std::move(with)));
  } else if (IsWord("delete")) {
    Append(block, ParseDelete(std::move(with)));
  } else if (!with.empty()) {
    RefuseWord("merge");
    FailHere();
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
  } else if (IsWord("raiserror")) {
    Append(block, ParseRaiseError());
  } else if (IsWord("throw")) {
    Append(block, ParseThrow());
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
    Append(block, BeginTransaction{ParseTransactionName()});
    if (IsWord("with") && IsWord("mark", 1)) ThrowUnsupported("with mark");
  } else if (TakeWord("commit")) {
    if (!TakeWord("work") && (TakeWord("tran") || TakeWord("transaction"))) ParseTransactionName();
    Append(block, CommitTransaction{});
  } else if (TakeWord("rollback")) {
    RollbackTransaction rollback;
    if (!TakeWord("work") && (TakeWord("tran") || TakeWord("transaction"))) rollback.name = ParseTransactionName();
    Append(block, std::move(rollback));
  } else if (IsWord("save")) {
    ThrowUnsupported("save transaction");
  } else {
    return false;
  }
  return true;
}

Text Parser::ParseTransactionName() {
  if (IsName()) return ParseName();
  return Peek().kind == TokenKind::Variable ? ParseDeclaredVariable() : Text();
}

bool Parser::ParseDefinitionStatement(Block& block) {
  if (IsWord("create")) {
    ParseCreate(block);
  } else if (IsWord("drop")) {
    Append(block, ParseDrop());
  } else if (IsWord("alter")) {
    Append(block, ParseAlter());
  } else if (TakeWord("truncate")) {
    ExpectWord("table");
    Append(block, Truncate{ParseObjectName()});
  } else {
    return false;
  }
  return true;
}

// ---- blocks ----

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
  do {
    ParseStatement(block);
    CheckEndBefore();
  } while (!IsWord("end"));
  ExpectWord("end");
}

// ---- messages and errors ----

ExpressionPtr Parser::ParseConstant() {
  if (Peek().kind == TokenKind::Variable) return ParseVariableReference();
  const bool negative = TakeSymbol("-");
  if (Peek().kind != TokenKind::Literal || (negative && IsString())) FailHere();
  const Token& token = Take();
  ExpressionPtr literal = MakeExpression(Literal{token.literal_kind, token.literal});
  return negative ? MakeExpression(Unary{UnaryOperator::Minus, std::move(literal)}) : std::move(literal);
}

RaiseError Parser::ParseRaiseError() {
  ExpectWord("raiserror");
  ExpectSymbol("(");
  RaiseError raise;
  raise.message = ParseConstant();
  ExpectSymbol(",");
  raise.severity = ParseConstant();
  ExpectSymbol(",");
  raise.state = ParseConstant();
  while (TakeSymbol(",")) {
    raise.arguments.push_back(TakeWord("null") ? MakeExpression(NullLiteral{}) : ParseConstant());
  }
  ExpectSymbol(")");
  if (raise.arguments.size() > kMostSubstitutions) {
    ThrowSyntax("Too many substitution parameters for RAISERROR. Cannot exceed " + std::to_string(kMostSubstitutions) +
                " substitution parameters.");
  }
  if (IsWord("with") && IsAnyWord({"nowait", "log", "seterror"}, 1)) {
    do {
      Take();
      if (!IsAnyWord({"nowait", "log", "seterror"})) FailHere();
      Take();
    } while (IsSymbol(","));
  }
  return raise;
}

Throw Parser::ParseThrow() {
  ExpectWord("throw");
  if (Peek().kind != TokenKind::Literal && Peek().kind != TokenKind::Variable && !IsSymbol("-")) {
    ThrowSyntax(
        "To rethrow an error, a THROW statement must be used inside a CATCH block. Insert the THROW statement inside a "
        "CATCH block, or add error parameters to the THROW statement.");
  }
  Throw statement;
  statement.number = ParseConstant();
  ExpectSymbol(",");
  statement.message = ParseConstant();
  ExpectSymbol(",");
  statement.state = ParseConstant();
  return statement;
}

// ---- conditions and loops ----

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

}  // namespace rebate::tsql
