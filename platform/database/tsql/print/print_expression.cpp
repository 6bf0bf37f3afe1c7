#include <algorithm>

#include "platform/database/tsql/bind/bind_context.h"
#include "platform/database/tsql/eval/program.h"
#include "platform/database/tsql/print/definition.h"
#include "platform/database/tsql/print/printer.h"
#include "platform/values/number_text.h"

namespace rebate::tsql {
namespace {

// SQLite's parser takes no deep text: a value of more levels is calculated outside of it, and so is what lies deeper in
// conditions, in which it must see what an index could serve.
constexpr int kHighestValue = 6;
// What a value of so many levels needs is left of the parser's stack.
constexpr int kMostSymbols = 50;

// The symbols that wait on the parser's stack while it reads an operand of the node, at most.
int SymbolsOf(const bound::Expression::Node& node) {
  if (std::holds_alternative<bound::Case>(node)) return 6;
  const bool listed = std::holds_alternative<bound::Coalesce>(node) || std::holds_alternative<bound::NullIf>(node) ||
                      std::holds_alternative<bound::Aggregate>(node) || std::holds_alternative<bound::InList>(node) ||
                      std::holds_alternative<bound::InQuery>(node) || std::holds_alternative<bound::Between>(node);
  return listed ? 5 : 3;
}

bool IsOrdering(BinaryOperator operation) {
  return operation != BinaryOperator::Equal && operation != BinaryOperator::NotEqual;
}

bool IsColumn(const bound::Expression& expression) {
  return std::holds_alternative<bound::Column>(expression.node);
}

// Whether a value of the one type is, as it is kept, one of the other.
bool IsKeptAlike(const DataType& from, const DataType& to) {
  if (from == to) return true;
  if (IsText(from.kind) && IsText(to.kind)) {
    const bool varying = to.kind == TypeKind::NVarChar || to.kind == TypeKind::VarChar;
    const bool as_long =
        to.length == DataType::kMaxLength || (from.length != DataType::kMaxLength && from.length <= to.length);
    // Bytes of a code page are never fewer than UTF-16 units.
    return varying && as_long && (IsNational(to.kind) || !IsNational(from.kind));
  }
  if (IsInteger(from.kind) && IsInteger(to.kind)) return from.kind < to.kind;
  const bool money = IsExactNumber(from.kind) && IsExactNumber(to.kind);
  const DataType from_digits = money ? DecimalTypeOf(from) : from;
  if (money && to.kind == TypeKind::Decimal) {
    return from_digits.scale <= to.scale && from_digits.precision - from_digits.scale <= to.precision - to.scale;
  }
  return from.kind == TypeKind::SmallMoney && to.kind == TypeKind::Money;
}

// What SQLite itself does for a conversion: the pieces around the operand.
struct Wrapping {
  std::string_view before;
  std::string_view behind;
};
std::optional<Wrapping> NativeConversion(const DataType& from, const DataType& to) {
  if (IsKeptAlike(from, to)) return Wrapping{"", ""};
  const bool whole_decimal =
      IsInteger(from.kind) && to.kind == TypeKind::Decimal && DecimalTypeOf(from).precision <= to.precision - to.scale;
  if (whole_decimal || (IsInteger(from.kind) && to.kind == TypeKind::Money && from.kind <= TypeKind::Int)) {
    return Wrapping{"CAST(", " AS TEXT)"};
  }
  if (IsInteger(from.kind) && to.kind == TypeKind::Float) return Wrapping{"CAST(", " AS REAL)"};
  if (from.kind == TypeKind::Date && to.kind == TypeKind::DateTime2) return Wrapping{"(", "||' 00:00:00.0000000')"};
  if (from.kind == TypeKind::SmallDateTime && to.kind == TypeKind::DateTime) return Wrapping{"", ""};
  if (from.kind == TypeKind::Real && to.kind == TypeKind::Float) return Wrapping{"", ""};
  return std::nullopt;
}

class ExpressionPrinter {
 public:
  ExpressionPrinter(PrintState& state, SqlText& out) : state_(state), out_(out) {}

  // A value, or a condition as the 0 or 1 that it is.
  void Print(const bound::Expression& expression) {
    if (!IsText(expression)) return PrintCalculation(state_, expression, out_);
    const int symbols = SymbolsOf(expression.node);
    state_.symbols += symbols;
    std::visit([&](const auto& node) { PrintNode(expression, node); }, expression.node);
    state_.symbols -= symbols;
  }

 private:
  bool IsText(const bound::Expression& expression) const {
    if (expression.height == 1) return true;
    if (state_.symbols >= kMostSymbols) return IsArgument(expression);
    const bool value = std::holds_alternative<bound::Coalesce>(expression.node) ||
                       std::holds_alternative<bound::Case>(expression.node) ||
                       std::holds_alternative<bound::NullIf>(expression.node) ||
                       std::holds_alternative<bound::Call>(expression.node) ||
                       std::holds_alternative<bound::Convert>(expression.node);
    return !value || expression.has_query || expression.height <= kHighestValue;
  }

  void PrintNode(const bound::Expression&, const bound::Null&) { out_ << "NULL"; }

  void PrintNode(const bound::Expression& expression, const bound::Literal& node) {
    out_ << '?';
    out_.parameters.push_back({Parameter::Source::Literal, expression.type, node});
  }

  void PrintNode(const bound::Expression&, const bound::Constant& node) {
    if (const auto* integer = std::get_if<std::int64_t>(&node.value)) {
      out_ << std::to_string(*integer);
    } else if (const auto* real = std::get_if<double>(&node.value)) {
      out_ << ShortestText(*real);
    } else {
      out_ << SqlString(std::get<Text>(node.value));
    }
  }

  void PrintNode(const bound::Expression&, const bound::Column& node) {
    const Text& column = node.source->sql_columns[node.index];
    const auto alias = state_.aliases.find(node.source);
    Text sql = alias == state_.aliases.end() ? column : alias->second + '.' + column;
    const auto regrouped = state_.regrouped.find(node.source);
    out_ << (regrouped == state_.regrouped.end() ? sql : RegroupedColumn(*regrouped->second, sql));
  }

  // Where a column of an inner select is to be found in the outer one.
  static Text RegroupedColumn(std::vector<Text>& wanted, const Text& sql) {
    auto found = std::find(wanted.begin(), wanted.end(), sql);
    if (found == wanted.end()) found = wanted.insert(found, sql);
    return "\"_grouped\".c" + std::to_string(found - wanted.begin() + 1);
  }

  void PrintNode(const bound::Expression& expression, const bound::Variable& node) {
    out_ << '?';
    out_.parameters.push_back({Parameter::Source::Variable, expression.type, {}, {}, node.key});
  }

  void PrintNode(const bound::Expression& expression, const bound::System& node) {
    if (state_.in_definition) {
      if (node.value != bound::SystemValue::Now) RefuseUnsupported("a definition by what a session knows");
      if (expression.type != DateTimeType()) RefuseUnsupported("SYSDATETIME in a definition");
      out_ << kNowDefault;
      return;
    }
    out_ << '?';
    out_.parameters.push_back({Parameter::Source::System, expression.type, {}, node});
  }

  void PrintNode(const bound::Expression& expression, const bound::Convert& node) {
    const auto native = node.style || (node.purpose == Purpose::Match && tsql::IsText(node.operand->type.kind))
                            ? std::nullopt
                            : NativeConversion(node.operand->type, expression.type);
    if (!native) return PrintCalculation(state_, expression, out_);
    out_ << native->before;
    Print(*node.operand);
    out_ << native->behind;
  }

  void PrintNode(const bound::Expression& expression, const bound::Call& node) {
    const bool joins = node.function->name == "concat_text" && !IsCut(expression, node);
    if (!joins) return PrintCalculation(state_, expression, out_);
    out_ << '(';
    PrintList(node.arguments, "||");
    out_ << ')';
  }

  // Whether a join of texts may be longer than its type.
  static bool IsCut(const bound::Expression& expression, const bound::Call& node) {
    constexpr std::size_t kLongestChain = 50;
    if (node.arguments.size() > kLongestChain) return true;
    if (expression.type.length == DataType::kMaxLength) return false;
    int length = 0;
    for (const auto& part : node.arguments) length += part->type.length;
    return length > expression.type.length;
  }

  void PrintNode(const bound::Expression& expression, const bound::Aggregate& node) {
    using Kind = bound::Aggregate::Kind;
    if (!node.argument) {
      out_ << "count(*)";
      return;
    }
    const bool orders = node.kind == Kind::Minimum || node.kind == Kind::Maximum;
    out_ << AggregateName(node, expression.type) << (node.distinct ? "(DISTINCT " : "(");
    PrintCollated(state_, *node.argument, orders ? Collated::Order : Collated::Equality, out_);
    out_ << ')';
  }

  // The engine takes one argument where it looks for different ones: the type of the result is part of the name.
  static Text AggregateName(const bound::Aggregate& node, const DataType& type) {
    switch (node.kind) {
      case bound::Aggregate::Kind::Count:
        return "count";
      case bound::Aggregate::Kind::Minimum:
        return "min";
      case bound::Aggregate::Kind::Maximum:
        return "max";
      case bound::Aggregate::Kind::Deviation:
        return "t_" + node.name;
      default:
        return AggregateFunctionName(node.kind == bound::Aggregate::Kind::Sum ? "sum" : "avg", type);
    }
  }

  void PrintNode(const bound::Expression&, const bound::Coalesce& node) {
    // The engine's functions take 127 arguments: the rest of a longer list is a list of its own.
    constexpr std::size_t kMostArguments = 100;
    std::size_t lists = 0;
    for (std::size_t i = 0; i < node.arguments.size(); ++i) {
      const bool opens = i % kMostArguments == 0 && (i == 0 || i + 1 < node.arguments.size());
      if (i > 0) out_ << ',';
      if (opens) out_ << "coalesce(", ++lists;
      Print(*node.arguments[i]);
    }
    out_ << Text(lists, ')');
  }

  void PrintNode(const bound::Expression& expression, const bound::NullIf& node) {
    if (node.meeting != node.left->type) return PrintCalculation(state_, expression, out_);
    out_ << "nullif(";
    PrintCollated(state_, *node.left, Collated::Equality, out_);
    out_ << ',';
    Print(*node.right);
    out_ << ')';
  }

  void PrintNode(const bound::Expression& expression, const bound::Case& node) {
    if (node.operand && !IsPlainCase(node)) return PrintMixedCase(expression, node);
    out_ << "CASE";
    if (node.operand) {
      out_ << ' ';
      PrintCollated(state_, *node.operand, Collated::Equality, out_);
    }
    for (const bound::CaseBranch& branch : node.branches) {
      out_ << " WHEN ";
      Print(*branch.when);
      out_ << " THEN ";
      Print(*branch.then);
    }
    if (node.otherwise) {
      out_ << " ELSE ";
      Print(*node.otherwise);
    }
    out_ << " END";
  }

  // Whether the operand is compared as what it is in every branch.
  static bool IsPlainCase(const bound::Case& node) {
    return std::all_of(node.branches.begin(), node.branches.end(),
                       [&](const bound::CaseBranch& branch) { return branch.meeting == node.operand->type; });
  }

  void PrintMixedCase(const bound::Expression& expression, const bound::Case& node) {
    const bool queried = std::any_of(node.branches.begin(), node.branches.end(), [](const bound::CaseBranch& branch) {
      return branch.when->has_query || branch.then->has_query;
    });
    // The calculation would ask all queries before it knows which it needs.
    if (queried || (node.otherwise && node.otherwise->has_query)) {
      RefuseUnsupported("CASE over values of several types with a subquery in a branch");
    }
    PrintCalculation(state_, expression, out_);
  }

  void PrintNode(const bound::Expression&, const bound::ScalarQuery& node) {
    out_ << '(';
    PrintSingleRow(*node.query);
    out_ << ')';
  }

  // A query that may have several rows is asked for the only one.
  void PrintSingleRow(const bound::Query& query) {
    const bound::Core& core = query.cores.front();
    const bool single = query.cores.size() == 1 && ((core.grouped && core.group_by.empty() && !core.having) ||
                                                    (core.from.empty() && !core.where) || IsTopOne(core));
    if (single) return PrintQuery(state_, query, false, out_);
    out_ << "SELECT t_single(\"_one\".c1) FROM (";
    PrintQuery(state_, query, true, out_);
    out_ << ") AS \"_one\"";
  }

  static bool IsTopOne(const bound::Core& core) {
    const auto* constant = core.top ? std::get_if<bound::Constant>(&core.top->node) : nullptr;
    return constant != nullptr && !core.top_percent && constant->value == decltype(constant->value)(std::int64_t{1});
  }

  // ---- conditions ----

  void PrintNode(const bound::Expression&, const bound::Comparison& node) {
    out_ << '(';
    if (IsFoundByKey(*node.left) && std::holds_alternative<bound::Literal>(node.right->node)) out_ << '+';
    PrintOperand(*node.left, *node.right, IsOrdering(node.operation) ? Collated::Order : Collated::Equality);
    out_ << ComparisonSign(node.operation);
    Print(*node.right);
    out_ << ')';
  }

  bool IsFoundByKey(const bound::Expression& expression) const {
    const auto* column = std::get_if<bound::Column>(&expression.node);
    return column != nullptr && state_.found_by_key.contains(column->source);
  }

  // The left operand of a comparison: its collation, or the right one's, decides.
  void PrintOperand(const bound::Expression& left, const bound::Expression& right, Collated by) {
    const std::string_view collation = CollationOf(left.type, by);
    const bool known = by == Collated::Equality || IsExactNumber(left.type.kind);
    const bool by_column = known && (IsColumn(left) || IsColumn(right));
    const bool by_bytes = by == Collated::Equality && IsExactNumber(left.type.kind);
    if (collation.empty() || by_column || by_bytes) return Print(left);
    Print(left);
    out_ << " COLLATE " << collation;
  }

  void PrintNode(const bound::Expression&, const bound::Logical& node) {
    out_ << '(';
    Print(*node.left);
    out_ << (node.conjunction ? " AND " : " OR ");
    Print(*node.right);
    out_ << ')';
  }

  void PrintNode(const bound::Expression&, const bound::Not& node) {
    out_ << "(NOT ";
    Print(*node.operand);
    out_ << ')';
  }

  void PrintNode(const bound::Expression&, const bound::IsNull& node) {
    out_ << '(';
    Print(*node.operand);
    out_ << (node.negated ? " IS NOT NULL)" : " IS NULL)");
  }

  void PrintNode(const bound::Expression&, const bound::InList& node) {
    out_ << '(';
    PrintCollated(state_, *node.operand, Collated::Equality, out_);
    out_ << (node.negated ? " NOT IN (" : " IN (");
    PrintList(node.items, ",");
    out_ << "))";
  }

  void PrintNode(const bound::Expression&, const bound::InQuery& node) {
    out_ << '(';
    PrintCollated(state_, *node.operand, Collated::Equality, out_);
    out_ << (node.negated ? " NOT IN (" : " IN (");
    PrintQuery(state_, *node.query, true, out_);
    out_ << "))";
  }

  void PrintNode(const bound::Expression&, const bound::Exists& node) {
    out_ << "EXISTS(";
    PrintQuery(state_, *node.query, false, out_);
    out_ << ')';
  }

  void PrintNode(const bound::Expression&, const bound::Between& node) {
    out_ << (node.negated ? "(NOT " : "(");
    PrintOperand(*node.operand, *node.operand, Collated::Order);
    out_ << " BETWEEN ";
    Print(*node.low);
    out_ << " AND ";
    Print(*node.high);
    out_ << ')';
  }

  void PrintList(const std::vector<bound::ExpressionPtr>& list, std::string_view separator) {
    for (std::size_t i = 0; i < list.size(); ++i) {
      if (i > 0) out_ << separator;
      Print(*list[i]);
    }
  }

  PrintState& state_;
  SqlText& out_;
};

}  // namespace

std::string_view ComparisonSign(BinaryOperator operation) {
  switch (operation) {
    case BinaryOperator::Equal:
      return "=";
    case BinaryOperator::NotEqual:
      return "<>";
    case BinaryOperator::Less:
      return "<";
    case BinaryOperator::LessEqual:
      return "<=";
    case BinaryOperator::Greater:
      return ">";
    default:
      return ">=";
  }
}

std::string_view CollationOf(const DataType& type, Collated by) {
  if (IsText(type.kind)) return by == Collated::Equality ? kTextCollation : kTextOrder;
  return IsExactNumber(type.kind) ? kNumberCollation : std::string_view();
}

Text AggregateFunctionName(std::string_view aggregate, const DataType& type) {
  Text name = "t_" + Text(aggregate) + '_' + TypeCode(type);
  std::replace(name.begin(), name.end(), '/', '_');
  return name;
}

void PrintValue(PrintState& state, const bound::Expression& expression, SqlText& out) {
  ExpressionPrinter(state, out).Print(expression);
}

void PrintCondition(PrintState& state, const bound::Expression& expression, SqlText& out) {
  ExpressionPrinter(state, out).Print(expression);
}

void PrintCollated(PrintState& state, const bound::Expression& expression, Collated by, SqlText& out) {
  const std::string_view collation = CollationOf(expression.type, by);
  const bool known = std::holds_alternative<bound::Column>(expression.node) &&
                     (by == Collated::Equality || IsExactNumber(expression.type.kind));
  PrintValue(state, expression, out);
  if (!collation.empty() && !known) out << " COLLATE " << collation;
}

}  // namespace rebate::tsql
