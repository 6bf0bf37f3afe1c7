#include <algorithm>

#include "platform/automation/conversion.h"
#include "platform/database/tsql/parser_state.h"
#include "platform/database/tsql/syntax_error.h"

namespace rebate::tsql {

void Parser::ParseCreate(Block& block) {
  const bool first = at_ == 0;
  ExpectWord("create");
  const bool unique = TakeWord("unique");
  SkipClustering();
  if (TakeWord("index")) {
    Append(block, ParseCreateIndex(unique));
  } else if (unique) {
    FailHere();
  } else if (TakeWord("table")) {
    Append(block, ParseCreateTable());
  } else if (TakeWord("view")) {
    if (!first) ThrowSyntax("'CREATE VIEW' must be the first statement in a query batch.");
    Append(block, ParseCreateView());
  } else {
    if (Peek().kind != TokenKind::Word) FailHere();
    ThrowUnsupported("create " + Text(Peek().text));
  }
}

void Parser::SkipClustering() {
  if (!TakeWord("clustered")) TakeWord("nonclustered");
}

void Parser::SkipFileGroup() {
  if (TakeWord("on")) ParseName();
}

std::vector<Text> Parser::ParseColumnNames() {
  std::vector<Text> columns;
  ExpectSymbol("(");
  do columns.push_back(ParseName());
  while (TakeSymbol(","));
  ExpectSymbol(")");
  return columns;
}

std::vector<Text> Parser::ParseKeyColumns() {
  std::vector<Text> columns;
  ExpectSymbol("(");
  do {
    columns.push_back(ParseName());
    if (!TakeWord("asc")) TakeWord("desc");
  } while (TakeSymbol(","));
  ExpectSymbol(")");
  return columns;
}

// ---- tables ----

CreateTable Parser::ParseCreateTable() {
  CreateTable table;
  table.table = ParseObjectName();
  ExpectSymbol("(");
  do {
    // A comma behind the last element is allowed.
    if (IsSymbol(")") && !table.columns.empty()) break;
    ParseTableElement(table);
  } while (TakeSymbol(","));
  ExpectSymbol(")");
  SkipFileGroup();
  if (table.columns.empty()) FailHere();
  return table;
}

void Parser::ParseTableElement(CreateTable& table) {
  if (TakeWord("constraint")) {
    ParseName();
    table.keys.push_back(ParseKeyConstraint());
  } else if (IsAnyWord({"primary", "unique", "foreign", "check"})) {
    table.keys.push_back(ParseKeyConstraint());
  } else {
    table.columns.push_back(ParseColumn());
  }
}

KeyConstraint Parser::ParseKeyConstraint() {
  if (IsWord("foreign")) ThrowUnsupported("foreign key");
  RefuseWord("check");
  KeyConstraint key;
  key.primary = TakeWord("primary");
  ExpectWord(key.primary ? "key" : "unique");
  SkipClustering();
  key.columns = ParseKeyColumns();
  SkipFileGroup();
  return key;
}

ColumnDefinition Parser::ParseColumn() {
  ColumnDefinition column;
  column.name = ParseName();
  if (TakeWord("as")) {
    column.computed = ParseValue();
    if (TakeWord("persisted") && TakeWord("not")) ExpectWord("null");
    return column;
  }
  column.type = ParseType();
  while (ParseColumnConstraint(column)) {
  }
  return column;
}

bool Parser::ParseColumnConstraint(ColumnDefinition& column) {
  for (std::string_view refused : {"check", "references", "collate", "rowguidcol", "sparse"}) RefuseWord(refused);
  if (IsWord("foreign")) ThrowUnsupported("foreign key");
  if (TakeWord("constraint")) {
    ParseName();
    if (!IsAnyWord({"null", "not", "primary", "unique", "default"})) FailHere();
  }
  if (TakeWord("null")) {
    column.nullable = true;
  } else if (TakeWord("not")) {
    ExpectWord("null");
    column.nullable = false;
  } else if (TakeWord("primary")) {
    ExpectWord("key");
    column.primary_key = true;
    column.nullable = false;
    SkipClustering();
  } else if (TakeWord("unique")) {
    column.unique = true;
    SkipClustering();
  } else if (TakeWord("default")) {
    column.default_value = ParseValue();
  } else if (TakeWord("identity")) {
    ParseIdentity(column);
  } else {
    return false;
  }
  return true;
}

void Parser::ParseIdentity(ColumnDefinition& column) {
  column.identity = true;
  column.nullable = false;
  if (!TakeSymbol("(")) return;
  column.identity_seed = ParseSignedInteger();
  ExpectSymbol(",");
  column.identity_step = ParseSignedInteger();
  ExpectSymbol(")");
}

// ---- indexes and views ----

CreateIndex Parser::ParseCreateIndex(bool unique) {
  CreateIndex index;
  index.unique = unique;
  index.name = ParseName();
  ExpectWord("on");
  index.table = ParseObjectName();
  index.columns = ParseKeyColumns();
  for (std::string_view refused : {"include", "where", "with"}) RefuseWord(refused);
  SkipFileGroup();
  return index;
}

CreateView Parser::ParseCreateView() {
  CreateView view;
  view.view = ParseObjectName();
  if (IsSymbol("(")) view.columns = ParseColumnNames();
  RefuseWord("with");
  ExpectWord("as");
  const std::size_t begin = Peek().offset;
  view.select = ParseSelect(SelectPlace::View);
  const std::size_t end = EndOfLastToken();
  while (TakeSymbol(";")) {
  }
  if (IsWord("with") && IsWord("check", 1)) ThrowUnsupported("with check option");
  if (!AtEnd()) FailHere();
  view.source = batch_.substr(begin, end - begin);
  for (const Token& token : tokens_) {
    if (token.kind == TokenKind::Literal) pinned_.push_back(token.literal);
  }
  return view;
}

std::size_t Parser::EndOfLastToken() const {
  const Token& last = tokens_[at_ - 1];
  const std::size_t end = static_cast<std::size_t>(last.text.data() - batch_.data()) + last.text.size();
  return IsQuoted(last) ? end + 1 : end;
}

Drop Parser::ParseDrop() {
  ExpectWord("drop");
  Drop drop;
  if (TakeWord("table")) {
    drop.kind = ObjectKind::Table;
  } else if (TakeWord("view")) {
    drop.kind = ObjectKind::View;
  } else if (TakeWord("index")) {
    drop.kind = ObjectKind::Index;
  } else {
    if (Peek().kind != TokenKind::Word) FailHere();
    ThrowUnsupported("drop " + Text(Peek().text));
  }
  if (IsWord("if")) {
    Take();
    ExpectWord("exists");
    drop.if_exists = true;
  }
  do drop.names.push_back(ParseObjectName());
  while (TakeSymbol(","));
  if (drop.kind == ObjectKind::Index && TakeWord("on")) drop.on_table = ParseObjectName().name;
  return drop;
}

}  // namespace rebate::tsql
