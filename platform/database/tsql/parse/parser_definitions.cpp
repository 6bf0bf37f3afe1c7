#include <algorithm>

#include "platform/automation/conversion.h"
#include "platform/database/tsql/parse/parser_state.h"
#include "platform/database/tsql/parse/syntax_error.h"

namespace rebate::tsql {

void Parser::ParseCreate(Block& block) {
  const bool first = at_ == 0;
  ExpectWord("create");
  if (IsWord("or") && IsWord("alter", 1)) ThrowUnsupported("create or alter");
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
    RefuseForm("create");
  }
}

void Parser::RefuseForm(std::string_view statement) const {
  if (Peek().kind != TokenKind::Word) FailHere();
  ThrowUnsupported(Text(statement) + " " + Text(Peek().text));
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
  null_columns_.clear();
  CreateTable table;
  table.table = ParseObjectName();
  ExpectSymbol("(");
  do {
    // A comma behind the last element is allowed.
    if (IsSymbol(")") && !table.elements.columns.empty()) break;
    ParseTableElement(table.elements);
  } while (TakeSymbol(","));
  ExpectSymbol(")");
  SkipFileGroup();
  if (table.elements.columns.empty()) FailHere();
  SettlePrimaryColumns(table.elements, table.table);
  return table;
}

AlterTableAdd Parser::ParseAlter() {
  ExpectWord("alter");
  if (!TakeWord("table")) RefuseForm("alter");
  null_columns_.clear();
  AlterTableAdd alter;
  alter.table = ParseObjectName();
  // A new rule is checked against the rows that are there, unless the statement says otherwise.
  if (TakeWord("with") && !TakeWord("check")) {
    if (IsWord("nocheck")) ThrowUnsupported("with nocheck");
    FailHere();
  }
  if (IsWord("alter") && IsWord("column", 1)) ThrowUnsupported("alter table alter column");
  if (!TakeWord("add")) RefuseForm("alter table");
  do ParseTableElement(alter.elements);
  while (TakeSymbol(","));
  SettlePrimaryColumns(alter.elements, alter.table);
  return alter;
}

void Parser::SettlePrimaryColumns(TableElements& elements, const ObjectName& table) const {
  for (const KeyConstraint& key : elements.keys) {
    for (ColumnDefinition& column : elements.columns) {
      const auto is_column = [&](const Text& name) { return EqualsIgnoreCase(name, column.name); };
      if (!key.primary || std::none_of(key.columns.begin(), key.columns.end(), is_column)) continue;
      if (std::any_of(null_columns_.begin(), null_columns_.end(), is_column)) {
        ThrowSyntax("Cannot define PRIMARY KEY constraint on nullable column in table '" + table.name + "'.");
      }
      column.nullable = false;
    }
  }
}

void Parser::ParseTableElement(TableElements& elements) {
  const bool named = TakeWord("constraint");
  Text name = named ? ParseName() : Text();
  if (IsWord("check")) {
    elements.checks.push_back(ParseCheck(std::move(name), {}));
  } else if (IsAnyWord({"primary", "unique", "foreign"})) {
    elements.keys.push_back(ParseKeyConstraint(std::move(name)));
  } else if (IsWord("default")) {
    ThrowUnsupported("default for");
  } else if (named) {
    FailHere();
  } else {
    ParseColumn(elements);
  }
}

KeyConstraint Parser::ParseKeyConstraint(Text name) {
  if (IsWord("foreign")) ThrowUnsupported("foreign key");
  KeyConstraint key{std::move(name), TakeWord("primary"), {}};
  ExpectWord(key.primary ? "key" : "unique");
  SkipClustering();
  key.columns = ParseKeyColumns();
  SkipFileGroup();
  return key;
}

CheckConstraint Parser::ParseCheck(Text name, Text column) {
  ExpectWord("check");
  RefuseReplication();
  CheckConstraint check{std::move(name), std::move(column), nullptr};
  ExpectSymbol("(");
  check.condition = ParseCondition();
  ExpectSymbol(")");
  return check;
}

void Parser::RefuseReplication() const {
  if (IsWord("not") && IsWord("for", 1)) ThrowUnsupported("not for replication");
}

void Parser::ParseColumn(TableElements& elements) {
  ColumnDefinition column;
  column.name = ParseName();
  if (TakeWord("as")) {
    column.computed = ParseValue();
    if (TakeWord("persisted") && TakeWord("not")) ExpectWord("null");
  } else {
    column.type = ParseType();
    while (ParseColumnRule(column, elements)) {
    }
  }
  elements.columns.push_back(std::move(column));
}

bool Parser::ParseColumnRule(ColumnDefinition& column, TableElements& elements) {
  const bool named = TakeWord("constraint");
  Text name = named ? ParseName() : Text();
  for (std::string_view refused : {"references", "collate", "rowguidcol", "sparse"}) RefuseWord(refused);
  if (IsWord("foreign")) ThrowUnsupported("foreign key");
  RefuseReplication();
  if (TakeWord("null")) {
    column.nullable = true;
    null_columns_.push_back(column.name);
  } else if (TakeWord("not")) {
    ExpectWord("null");
    column.nullable = false;
  } else if (IsAnyWord({"primary", "unique"})) {
    const bool primary = TakeWord("primary");
    ExpectWord(primary ? "key" : "unique");
    SkipClustering();
    SkipFileGroup();
    elements.keys.push_back({std::move(name), primary, {column.name}});
  } else if (IsWord("check")) {
    elements.checks.push_back(ParseCheck(std::move(name), column.name));
  } else if (TakeWord("default")) {
    column.default_value = ParseValue();
  } else if (named) {
    FailHere();
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
  if (column.identity_step == 0) ThrowSyntax("Identity column '" + column.name + "' contains invalid INCREMENT.");
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
  view.with = ParseCommonTables();
  view.select = ParseSelect(SelectPlace::View);
  const std::size_t end = EndOfLastToken();
  while (TakeSymbol(";")) {
  }
  if (IsWord("with") && IsWord("check", 1)) ThrowUnsupported("with check option");
  if (!AtEnd()) FailHere();
  view.source = batch_.substr(begin, end - begin);
  for (const Token& token : tokens_) {
    if (token.kind == TokenKind::Literal) fixed_literals_.push_back(token.literal);
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
    RefuseForm("drop");
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
