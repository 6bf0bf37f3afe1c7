#include <span>

#include "platform/automation/conversion.h"
#include "platform/database/tsql/parse/parser_state.h"
#include "platform/database/tsql/parse/syntax_error.h"

namespace rebate::tsql {
namespace {

struct OperatorName {
  std::string_view symbol;
  BinaryOperator operation;
};
constexpr OperatorName kComparisons[] = {
    {"=", BinaryOperator::Equal},   {"<>", BinaryOperator::NotEqual},     {"!=", BinaryOperator::NotEqual},
    {"<", BinaryOperator::Less},    {"<=", BinaryOperator::LessEqual},    {"!>", BinaryOperator::LessEqual},
    {">", BinaryOperator::Greater}, {">=", BinaryOperator::GreaterEqual}, {"!<", BinaryOperator::GreaterEqual},
};
constexpr OperatorName kSums[] = {
    {"+", BinaryOperator::Add},   {"-", BinaryOperator::Subtract}, {"&", BinaryOperator::BitAnd},
    {"|", BinaryOperator::BitOr}, {"^", BinaryOperator::BitXor},
};
constexpr OperatorName kProducts[] = {
    {"*", BinaryOperator::Multiply},
    {"/", BinaryOperator::Divide},
    {"%", BinaryOperator::Modulo},
};

template <std::size_t Count>
const OperatorName* FindOperator(const OperatorName (&operators)[Count], const Token& token) {
  if (token.kind != TokenKind::Symbol) return nullptr;
  for (const OperatorName& candidate : operators) {
    if (candidate.symbol == token.text) return &candidate;
  }
  return nullptr;
}

ExpressionPtr MakeBinary(BinaryOperator operation, ExpressionPtr left, ExpressionPtr right) {
  return MakeExpression(Binary{operation, std::move(left), std::move(right)});
}

// `terms` joined by an associative operator, as a tree no deeper than it must be.
ExpressionPtr MakeBalanced(BinaryOperator operation, std::span<ExpressionPtr> terms) {
  if (terms.size() == 1) return std::move(terms.front());
  const std::size_t half = (terms.size() + 1) / 2;
  return MakeBinary(operation, MakeBalanced(operation, terms.first(half)),
                    MakeBalanced(operation, terms.subspan(half)));
}

bool IsCondition(const Expression& expression) {
  if (const auto* binary = std::get_if<Binary>(&expression.node)) return binary->operation >= BinaryOperator::Equal;
  if (const auto* unary = std::get_if<Unary>(&expression.node)) return unary->operation == UnaryOperator::Not;
  return std::holds_alternative<InList>(expression.node) || std::holds_alternative<InSelect>(expression.node) ||
         std::holds_alternative<Exists>(expression.node) || std::holds_alternative<Between>(expression.node) ||
         std::holds_alternative<Like>(expression.node) || std::holds_alternative<IsNull>(expression.node);
}

constexpr std::string_view kDatePartFunctions[] = {"dateadd", "datediff", "datediff_big", "datepart", "datename"};
constexpr std::string_view kSystemVariables[] = {"@@identity", "@@rowcount",     "@@trancount",  "@@error",
                                                 "@@version",  "@@spid",         "@@servername", "@@datefirst",
                                                 "@@language", "@@max_precision"};
// What a server tells besides.
constexpr std::string_view kForeignSystemVariables[] = {"@@connections",      "@@cpu_busy",
                                                        "@@cursor_rows",      "@@dbts",
                                                        "@@fetch_status",     "@@idle",
                                                        "@@io_busy",          "@@langid",
                                                        "@@lock_timeout",     "@@max_connections",
                                                        "@@microsoftversion", "@@nestlevel",
                                                        "@@options",          "@@pack_received",
                                                        "@@pack_sent",        "@@packet_errors",
                                                        "@@procid",           "@@remserver",
                                                        "@@servicename",      "@@textsize",
                                                        "@@timeticks",        "@@total_errors",
                                                        "@@total_read",       "@@total_write"};

template <std::size_t Count>
bool Contains(const std::string_view (&names)[Count], std::string_view name) {
  for (std::string_view candidate : names) {
    if (EqualsIgnoreCase(candidate, name)) return true;
  }
  return false;
}

}  // namespace

ExpressionPtr Parser::RequireValue(ExpressionPtr expression) const {
  if (IsCondition(*expression)) FailHere();
  return expression;
}

ExpressionPtr Parser::RequireCondition(ExpressionPtr expression) const {
  if (IsCondition(*expression)) return expression;
  const std::string_view near = AtEnd() && at_ > 0 ? tokens_[at_ - 1].text : Peek().text;
  ThrowSyntax("An expression of non-boolean type specified in a context where a condition is expected, near '" +
              Text(near) + "'.");
}

ExpressionPtr Parser::ParseValue() {
  return RequireValue(ParseSum());
}

ExpressionPtr Parser::ParseCondition() {
  return RequireCondition(ParseEither());
}

ExpressionPtr Parser::ParseEither() {
  ExpressionPtr first = ParseConjunction();
  if (!IsWord("or")) return first;
  std::vector<ExpressionPtr> terms;
  terms.push_back(RequireCondition(std::move(first)));
  while (TakeWord("or")) terms.push_back(RequireCondition(ParseConjunction()));
  return MakeBalanced(BinaryOperator::Or, terms);
}

ExpressionPtr Parser::ParseConjunction() {
  ExpressionPtr first = ParseNegation();
  if (!IsWord("and")) return first;
  std::vector<ExpressionPtr> terms;
  terms.push_back(RequireCondition(std::move(first)));
  while (TakeWord("and")) terms.push_back(RequireCondition(ParseNegation()));
  return MakeBalanced(BinaryOperator::And, terms);
}

ExpressionPtr Parser::ParseNegation() {
  if (!TakeWord("not")) return ParsePredicate();
  const Nesting nesting(*this);
  return MakeExpression(Unary{UnaryOperator::Not, RequireCondition(ParseNegation())});
}

ExpressionPtr Parser::ParsePredicate() {
  if (TakeWord("exists")) {
    ExpectSymbol("(");
    SelectPtr select = ParseSelect(SelectPlace::Nested);
    ExpectSymbol(")");
    return MakeExpression(Exists{std::move(select)});
  }
  ExpressionPtr operand = ParseSum();
  if (IsCondition(*operand)) return operand;
  if (const OperatorName* comparison = FindOperator(kComparisons, Peek())) {
    Take();
    for (std::string_view quantifier : {"any", "all", "some"}) RefuseWord(quantifier);
    return MakeBinary(comparison->operation, std::move(operand), ParseValue());
  }
  if (TakeWord("is")) {
    const bool negated = TakeWord("not");
    ExpectWord("null");
    return MakeExpression(IsNull{std::move(operand), negated});
  }
  if (!IsWord("not")) return ParsePredicateTail(std::move(operand), false);
  if (!IsAnyWord({"in", "like", "between"}, 1)) return operand;
  Take();
  return ParsePredicateTail(std::move(operand), true);
}

ExpressionPtr Parser::ParsePredicateTail(ExpressionPtr operand, bool negated) {
  if (TakeWord("in")) return ParseInTail(std::move(operand), negated);
  if (TakeWord("like")) {
    ExpressionPtr pattern = ParseValue();
    ExpressionPtr escape = TakeWord("escape") ? ParseValue() : nullptr;
    return MakeExpression(Like{std::move(operand), std::move(pattern), std::move(escape), negated});
  }
  if (TakeWord("between")) {
    ExpressionPtr low = ParseValue();
    ExpectWord("and");
    ExpressionPtr high = ParseValue();
    return MakeExpression(Between{std::move(operand), std::move(low), std::move(high), negated});
  }
  return operand;
}

ExpressionPtr Parser::ParseInTail(ExpressionPtr operand, bool negated) {
  ExpectSymbol("(");
  if (IsWord("select")) {
    SelectPtr select = ParseSelect(SelectPlace::Nested);
    ExpectSymbol(")");
    return MakeExpression(InSelect{std::move(operand), std::move(select), negated});
  }
  InList list{std::move(operand), {}, negated};
  do list.items.push_back(ParseValue());
  while (TakeSymbol(","));
  ExpectSymbol(")");
  return MakeExpression(std::move(list));
}

ExpressionPtr Parser::ParseSum() {
  Chain chain(*this);
  ExpressionPtr left = ParseProduct();
  while (const OperatorName* sum = FindOperator(kSums, Peek())) {
    chain.Grow();
    left = RequireValue(std::move(left));
    Take();
    left = MakeBinary(sum->operation, std::move(left), RequireValue(ParseProduct()));
  }
  return left;
}

ExpressionPtr Parser::ParseProduct() {
  Chain chain(*this);
  ExpressionPtr left = ParseUnary();
  while (const OperatorName* product = FindOperator(kProducts, Peek())) {
    chain.Grow();
    left = RequireValue(std::move(left));
    Take();
    left = MakeBinary(product->operation, std::move(left), RequireValue(ParseUnary()));
  }
  return left;
}

ExpressionPtr Parser::ParseUnary() {
  UnaryOperator operation;
  if (IsSymbol("-")) {
    operation = UnaryOperator::Minus;
  } else if (IsSymbol("+")) {
    operation = UnaryOperator::Plus;
  } else if (IsSymbol("~")) {
    operation = UnaryOperator::BitNot;
  } else {
    return ParsePrimary();
  }
  const Nesting nesting(*this);
  Take();
  return MakeExpression(Unary{operation, RequireValue(ParseUnary())});
}

ExpressionPtr Parser::ParsePrimary() {
  const Nesting nesting(*this);
  ExpressionPtr primary;
  switch (Peek().kind) {
    case TokenKind::Literal: {
      const Token& token = Take();
      primary = MakeExpression(Literal{token.literal_kind, token.literal});
      break;
    }
    case TokenKind::Variable:
      primary = ParseVariableReference();
      break;
    case TokenKind::QuotedName:
      primary = ParseColumnOrCall();
      break;
    case TokenKind::Word:
      primary = ParseWordPrimary();
      break;
    case TokenKind::Symbol:
      if (!IsSymbol("(")) FailHere();
      primary = ParseParenthesised();
      break;
    case TokenKind::End:
      FailHere();
  }
  RefuseWord("collate");
  return primary;
}

ExpressionPtr Parser::ParseParenthesised() {
  ExpectSymbol("(");
  ExpressionPtr inside;
  if (IsWord("select")) {
    inside = MakeExpression(ScalarSelect{ParseSelect(SelectPlace::Nested)});
  } else {
    inside = ParseEither();
  }
  ExpectSymbol(")");
  return inside;
}

ExpressionPtr Parser::ParseVariableReference() {
  Text name = ParseVariable();
  if (Contains(kForeignSystemVariables, name)) ThrowUnsupported(name);
  const bool known = name.starts_with("@@") ? Contains(kSystemVariables, name) : IsDeclared(name);
  if (!known) ThrowSyntax("Must declare the scalar variable \"" + name + "\".");
  return MakeExpression(VariableReference{std::move(name)});
}

ExpressionPtr Parser::ParseWordPrimary() {
  if (TakeWord("null")) return MakeExpression(NullLiteral{});
  if (IsWord("case")) return ParseCase();
  if (TakeWord("current_timestamp")) return MakeExpression(FunctionCall{"current_timestamp", {}, false, false, {}});
  if (IsSymbol("(", 1)) {
    if (IsAnyWord({"cast", "try_cast"})) return ParseCast(IsWord("try_cast"));
    if (IsAnyWord({"convert", "try_convert"})) return ParseConvert(IsWord("try_convert"));
    if (IsWord("iif")) return ParseIif();
    for (std::string_view refused : {"parse", "try_parse", "identity", "contains", "freetext", "rollup", "cube"})
      RefuseWord(refused);
    if (IsAnyWord({"left", "right", "coalesce", "nullif"})) return ParseCall(Text(Take().text));
  }
  for (std::string_view refused : {"current_user", "session_user", "system_user", "user"}) RefuseWord(refused);
  return ParseColumnOrCall();
}

ExpressionPtr Parser::ParseColumnOrCall() {
  std::vector<Text> parts = ParseNameParts();
  if (IsSymbol("(")) {
    Text name = std::move(parts.front());
    for (std::size_t part = 1; part < parts.size(); ++part) name += "." + parts[part];
    return ParseCall(std::move(name));
  }
  ColumnReference column;
  column.name = std::move(parts.back());
  if (parts.size() > 1) column.qualifier = std::move(parts[parts.size() - 2]);
  return MakeExpression(std::move(column));
}

ExpressionPtr Parser::ParseCall(Text name) {
  FunctionCall call{std::move(name), {}, false, false, {}};
  ExpectSymbol("(");
  if (TakeSymbol("*")) {
    call.star = true;
  } else if (!IsSymbol(")")) {
    call.distinct = TakeWord("distinct");
    if (!call.distinct) TakeWord("all");
    if (Contains(kDatePartFunctions, call.name)) {
      call.keyword = ParseName();
      ExpectSymbol(",");
    }
    do call.arguments.push_back(ParseValue());
    while (TakeSymbol(","));
  }
  ExpectSymbol(")");
  RefuseWord("over");
  return MakeExpression(std::move(call));
}

ExpressionPtr Parser::ParseCase() {
  ExpectWord("case");
  Case result;
  if (!IsWord("when")) result.operand = ParseValue();
  while (TakeWord("when")) {
    ExpressionPtr when = result.operand != nullptr ? ParseValue() : ParseCondition();
    ExpectWord("then");
    result.branches.push_back({std::move(when), ParseValue()});
  }
  if (result.branches.empty()) FailHere();
  if (TakeWord("else")) result.otherwise = ParseValue();
  ExpectWord("end");
  return MakeExpression(std::move(result));
}

ExpressionPtr Parser::ParseIif() {
  ExpectWord("iif");
  ExpectSymbol("(");
  Case result;
  ExpressionPtr condition = ParseCondition();
  ExpectSymbol(",");
  result.branches.push_back({std::move(condition), ParseValue()});
  ExpectSymbol(",");
  result.otherwise = ParseValue();
  ExpectSymbol(")");
  return MakeExpression(std::move(result));
}

ExpressionPtr Parser::ParseCast(bool tolerant) {
  Take();
  ExpectSymbol("(");
  Cast cast;
  cast.tolerant = tolerant;
  cast.operand = ParseValue();
  ExpectWord("as");
  cast.type = ParseType(true);
  ExpectSymbol(")");
  return MakeExpression(std::move(cast));
}

ExpressionPtr Parser::ParseConvert(bool tolerant) {
  Take();
  ExpectSymbol("(");
  Cast cast;
  cast.tolerant = tolerant;
  cast.convert = true;
  cast.type = ParseType(true);
  ExpectSymbol(",");
  cast.operand = ParseValue();
  if (TakeSymbol(",")) cast.style = ParseValue();
  ExpectSymbol(")");
  return MakeExpression(std::move(cast));
}

}  // namespace rebate::tsql
