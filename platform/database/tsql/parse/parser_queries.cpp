#include "platform/automation/conversion.h"
#include "platform/database/tsql/parse/parser_state.h"
#include "platform/database/tsql/parse/syntax_error.h"

namespace rebate::tsql {
namespace {

constexpr std::string_view kTableHints[] = {
    "nolock",   "readuncommitted", "readcommitted", "readcommittedlock", "readpast", "repeatableread", "serializable",
    "holdlock", "rowlock",         "paglock",       "tablock",           "tablockx", "updlock",        "xlock",
    "nowait",   "noexpand",        "forceseek",     "forcescan",         "index"};

bool IsTableHint(const Token& token) {
  if (token.kind != TokenKind::Word) return false;
  for (std::string_view hint : kTableHints) {
    if (EqualsIgnoreCase(token.text, hint)) return true;
  }
  return false;
}

TableSourcePtr MakeSource(decltype(TableSource::node) node) {
  auto source = std::make_unique<TableSource>();
  source->node = std::move(node);
  return source;
}

// A query in brackets as one operand of a set operator.
SelectCore AsOperand(SelectPtr select) {
  if (select->cores.size() == 1 && select->order_by.empty()) return std::move(select->cores.front());
  SelectCore core;
  core.items.emplace_back();
  core.items.back().star = true;
  core.from.push_back(MakeSource(DerivedTable{std::move(select), "operand", {}}));
  return core;
}

void CheckVariables(const SelectCore& core) {
  bool assigns = false;
  bool retrieves = false;
  for (const SelectItem& item : core.items) (item.variable.empty() ? retrieves : assigns) = true;
  if (assigns && (retrieves || core.into)) {
    ThrowSyntax(
        "A SELECT statement that assigns a value to a variable must not be combined with data-retrieval operations.");
  }
}

}  // namespace

SelectPtr Parser::ParseSelect(SelectPlace place) {
  const Nesting nesting(*this);
  SelectPtr select = ParseSetOperands(place);
  if (IsWord("order")) {
    const bool ordered_by_itself = place == SelectPlace::Statement || place == SelectPlace::Insert;
    if (!ordered_by_itself && (select->cores.size() > 1 || select->cores.front().top == nullptr)) {
      ThrowSyntax(
          "The ORDER BY clause is invalid in views, inline functions, derived tables, subqueries, and common table "
          "expressions, unless TOP, OFFSET or FOR XML is also specified.");
    }
    select->order_by = ParseOrderBy();
  }
  RefuseWord("for");
  RefuseWord("option");
  return select;
}

CommonTables Parser::ParseCommonTables() {
  CommonTables tables;
  if (!TakeWord("with")) return tables;
  if (IsWord("xmlnamespaces") && IsSymbol("(", 1)) ThrowUnsupported("with xmlnamespaces");
  do {
    CommonTable table{ParseName(), {}, nullptr};
    for (const CommonTable& other : tables) {
      if (EqualsIgnoreCase(other.name, table.name)) {
        ThrowSyntax("Duplicate common table expression name '" + table.name + "' was specified.");
      }
    }
    if (IsSymbol("(")) table.columns = ParseColumnNames();
    ExpectWord("as");
    ExpectSymbol("(");
    table.select = ParseSelect(SelectPlace::Nested);
    ExpectSymbol(")");
    tables.push_back(std::move(table));
  } while (TakeSymbol(","));
  return tables;
}

SelectPtr Parser::ParseSetOperands(SelectPlace place) {
  Chain chain(*this);
  SelectPtr select = ParseIntersections(place);
  while (IsAnyWord({"union", "except"})) {
    chain.Grow();
    SetOperator operation = SetOperator::Except;
    if (TakeWord("union")) {
      operation = TakeWord("all") ? SetOperator::UnionAll : SetOperator::Union;
    } else {
      ExpectWord("except");
    }
    select->operators.push_back(operation);
    select->cores.push_back(AsOperand(ParseIntersections(SelectPlace::Nested)));
  }
  return select;
}

SelectPtr Parser::ParseIntersections(SelectPlace place) {
  Chain chain(*this);
  SelectPtr select = ParseSetOperand(place);
  while (TakeWord("intersect")) {
    chain.Grow();
    if (select->cores.size() > 1 && select->operators.back() != SetOperator::Intersect) {
      auto wrapped = std::make_unique<Select>();
      wrapped->cores.push_back(AsOperand(std::move(select)));
      select = std::move(wrapped);
    }
    select->operators.push_back(SetOperator::Intersect);
    select->cores.push_back(AsOperand(ParseSetOperand(SelectPlace::Nested)));
  }
  return select;
}

SelectPtr Parser::ParseSetOperand(SelectPlace place) {
  if (TakeSymbol("(")) {
    const Nesting nesting(*this);
    SelectPtr inside = ParseSetOperands(place);
    ExpectSymbol(")");
    return inside;
  }
  auto select = std::make_unique<Select>();
  select->cores.push_back(ParseCore(place));
  return select;
}

SelectCore Parser::ParseCore(SelectPlace place) {
  ExpectWord("select");
  SelectCore core;
  core.distinct = TakeWord("distinct");
  if (!core.distinct) TakeWord("all");
  ParseTop(core);
  ParseItems(core, place);
  if (place == SelectPlace::Statement && TakeWord("into")) core.into = ParseObjectName();
  CheckVariables(core);
  if (IsWord("from")) core.from = ParseFrom();
  if (TakeWord("where")) core.where = ParseCondition();
  ParseGrouping(core);
  return core;
}

void Parser::ParseTop(SelectCore& core) {
  if (!TakeWord("top")) return;
  if (TakeSymbol("(")) {
    core.top = ParseValue();
    ExpectSymbol(")");
  } else {
    const Token& token = Peek();
    if (token.kind != TokenKind::Literal || IsString()) FailHere();
    Take();
    core.top = MakeExpression(Literal{token.literal_kind, token.literal});
  }
  core.top_percent = TakeWord("percent");
  if (IsWord("with") && IsWord("ties", 1)) ThrowUnsupported("with ties");
}

void Parser::ParseItems(SelectCore& core, SelectPlace place) {
  do core.items.push_back(ParseItem(place));
  while (TakeSymbol(","));
}

SelectItem Parser::ParseItem(SelectPlace place) {
  SelectItem item;
  item.star = TakeSymbol("*");
  if (item.star) return item;

  if (place == SelectPlace::Statement && Peek().kind == TokenKind::Variable && IsSymbol("=", 1)) {
    item.variable = ParseDeclaredVariable();
    ExpectSymbol("=");
    item.expression = ParseValue();
    return item;
  }
  if ((IsName() || IsString()) && IsSymbol("=", 1)) {
    item.alias = ParseAlias();
    ExpectSymbol("=");
    item.expression = ParseValue();
    return item;
  }
  std::size_t ahead = 0;
  while (IsName(ahead) && IsSymbol(".", ahead + 1)) ahead += 2;
  if (ahead > 0 && IsSymbol("*", ahead)) {
    at_ += ahead - 2;
    item.star = true;
    item.star_qualifier = ParseName();
    at_ += 2;
    return item;
  }
  item.expression = ParseValue();
  item.alias = ParseAlias();
  return item;
}

void Parser::ParseGrouping(SelectCore& core) {
  if (TakeWord("group")) {
    ExpectWord("by");
    if (IsWord("all")) ThrowUnsupported("group by all");
    if (IsWord("grouping") && IsWord("sets", 1)) ThrowUnsupported("grouping sets");
    do core.group_by.push_back(ParseValue());
    while (TakeSymbol(","));
    for (std::string_view refused : {"rollup", "cube"}) {
      if (IsWord("with") && IsWord(refused, 1)) ThrowUnsupported("with " + Text(refused));
    }
  }
  if (TakeWord("having")) core.having = ParseCondition();
}

std::vector<OrderItem> Parser::ParseOrderBy() {
  ExpectWord("order");
  ExpectWord("by");
  std::vector<OrderItem> items;
  do {
    OrderItem item{ParseValue(), TakeWord("desc")};
    if (!item.descending) TakeWord("asc");
    items.push_back(std::move(item));
  } while (TakeSymbol(","));
  RefuseWord("offset");
  return items;
}

std::vector<TableSourcePtr> Parser::ParseFrom() {
  ExpectWord("from");
  std::vector<TableSourcePtr> sources;
  do sources.push_back(ParseTableSource());
  while (TakeSymbol(","));
  return sources;
}

TableSourcePtr Parser::ParseTableSource() {
  const Nesting nesting(*this);
  Chain chain(*this);
  return ParseJoins(ParseTable(), chain);
}

TableSourcePtr Parser::ParseJoins(TableSourcePtr left, Chain& chain) {
  JoinKind kind;
  while (TakeJoin(kind)) {
    chain.Grow();
    Join join{kind, std::move(left), ParseTable(), nullptr};
    if (kind != JoinKind::Cross) {
      // `a join b join c on ... on ...`: the inner pair comes first.
      if (!IsWord("on")) {
        const Nesting nesting(*this);
        join.right = ParseJoins(std::move(join.right), chain);
      }
      ExpectWord("on");
      join.condition = ParseCondition();
    }
    left = MakeSource(std::move(join));
  }
  return left;
}

bool Parser::TakeJoin(JoinKind& kind) {
  if (IsAnyWord({"cross", "outer"}) && IsWord("apply", 1)) ThrowUnsupported("apply");
  kind = JoinKind::Inner;
  if (TakeWord("join")) return true;
  if (TakeWord("inner")) {
    kind = JoinKind::Inner;
  } else if (TakeWord("cross")) {
    kind = JoinKind::Cross;
  } else if (IsAnyWord({"left", "right", "full"})) {
    kind = IsWord("left") ? JoinKind::Left : IsWord("right") ? JoinKind::Right : JoinKind::Full;
    Take();
    TakeWord("outer");
  } else {
    return false;
  }
  for (std::string_view hint : {"loop", "hash", "merge", "remote"}) RefuseWord(hint);
  ExpectWord("join");
  return true;
}

TableSourcePtr Parser::ParseTable() {
  if (IsSymbol("(")) return ParseParenthesisedTable();
  for (std::string_view refused : {"openquery", "openrowset", "opendatasource", "openxml"}) RefuseWord(refused);
  if (Peek().kind == TokenKind::Variable) ThrowUnsupported("table variable");
  TableSourcePtr table = ParseNamedTable();
  for (std::string_view refused : {"pivot", "unpivot", "tablesample"}) RefuseWord(refused);
  return table;
}

bool Parser::StartsQuery() const {
  if (IsWord("select", 1)) return true;
  if (!IsSymbol("(", 1)) return false;
  // Joined tables have an alias or a join behind their first bracket, a query has a set operator or its own bracket.
  std::size_t ahead = 1;
  for (int open = 0; at_ + ahead < tokens_.size(); ++ahead) {
    if (IsSymbol("(", ahead)) ++open;
    if (IsSymbol(")", ahead) && --open == 0) break;
  }
  ++ahead;
  return IsAnyWord({"union", "except", "intersect"}, ahead) || IsSymbol(")", ahead);
}

TableSourcePtr Parser::ParseParenthesisedTable() {
  if (StartsQuery()) {
    ExpectSymbol("(");
    SelectPtr select = ParseSelect(SelectPlace::Nested);
    ExpectSymbol(")");
    Text alias = ParseTableAlias();
    if (alias.empty()) FailHere();
    std::vector<Text> columns = IsSymbol("(") ? ParseColumnNames() : std::vector<Text>();
    for (std::string_view refused : {"pivot", "unpivot"}) RefuseWord(refused);
    return MakeSource(DerivedTable{std::move(select), std::move(alias), std::move(columns)});
  }
  ExpectSymbol("(");
  RefuseWord("values");
  TableSourcePtr inside = ParseTableSource();
  ExpectSymbol(")");
  return inside;
}

TableSourcePtr Parser::ParseNamedTable() {
  NamedTable table{ParseObjectName(), {}};
  SkipHints();
  if (IsSymbol("(")) ThrowUnsupported("function in from");
  table.alias = ParseTableAlias();
  SkipHints();
  return MakeSource(std::move(table));
}

Text Parser::ParseTableAlias() {
  if (TakeWord("as")) return ParseName();
  return IsName() ? ParseName() : Text();
}

void Parser::SkipHints() {
  if (IsWord("with") && IsSymbol("(", 1)) {
    Take();
    SkipHintList();
  } else if (IsSymbol("(") && IsTableHint(Peek(1))) {
    SkipHintList();
  }
}

void Parser::SkipHintList() {
  ExpectSymbol("(");
  do {
    if (!IsTableHint(Peek())) FailHere();
    const bool index = IsWord("index");
    Take();
    if (!index) continue;
    TakeSymbol("=");
    const bool bracketed = TakeSymbol("(");
    do Take();
    while (bracketed && TakeSymbol(","));
    if (bracketed) ExpectSymbol(")");
  } while (TakeSymbol(","));
  ExpectSymbol(")");
}

}  // namespace rebate::tsql
