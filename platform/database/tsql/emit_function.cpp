#include "platform/database/tsql/emitter.h"

#include <algorithm>
#include <array>

#include "platform/automation/conversion.h"
#include "platform/database/tsql/moment.h"

namespace rebate::tsql {
namespace {

// A function whose arguments are brought to fixed types and whose result has one: t text, i integer, f float,
// d datetime; arguments behind '|' may be left out. A result `1` is text as long as the first argument's.
struct PlainFunction {
  std::string_view name;
  std::string_view sql;
  std::string_view arguments;
  char result;
};

constexpr PlainFunction kPlain[] = {{"ascii", "t_ascii", "t", 'i'},
                                    {"char", "t_char", "i", 't'},
                                    {"charindex", "t_charindex", "tt|i", 'i'},
                                    {"datalength", "t_datalength", "t", 'i'},
                                    {"day", "t_day", "d", 'i'},
                                    {"isdate", "t_isdate", "t", 'i'},
                                    {"isnumeric", "t_isnumeric", "t", 'i'},
                                    {"left", "t_left", "ti", '1'},
                                    {"len", "t_len", "t", 'i'},
                                    {"lower", "t_lower", "t", '1'},
                                    {"ltrim", "t_ltrim", "t", '1'},
                                    {"month", "t_month", "d", 'i'},
                                    {"nchar", "t_nchar", "i", 't'},
                                    {"patindex", "t_patindex", "tt", 'i'},
                                    {"replace", "t_replace", "ttt", 't'},
                                    {"replicate", "t_replicate", "ti", 't'},
                                    {"reverse", "t_reverse", "t", '1'},
                                    {"right", "t_right", "ti", '1'},
                                    {"rtrim", "t_rtrim", "t", '1'},
                                    {"space", "t_space", "i", 't'},
                                    {"str", "t_str", "f|ii", 't'},
                                    {"stuff", "t_stuff", "tiit", 't'},
                                    {"substring", "t_substring", "tii", '1'},
                                    {"unicode", "t_unicode", "t", 'i'},
                                    {"upper", "t_upper", "t", '1'},
                                    {"year", "t_year", "d", 'i'},
                                    {"exp", "t_exp", "f", 'f'},
                                    {"log", "t_log", "f", 'f'},
                                    {"pi", "t_pi", "", 'f'},
                                    {"sqrt", "t_sqrt", "f", 'f'},
                                    {"square", "t_square", "f", 'f'}};

constexpr std::array<std::string_view, 6> kAggregates{"avg", "count", "count_big", "max", "min", "sum"};
constexpr std::array<std::string_view, 6> kNumberFunctions{"abs", "ceiling", "floor", "power", "round", "sign"};

const DataType kText = TextType(TypeKind::NVarChar, DataType::kMaxLength);

DataType ArgumentType(char letter) {
  switch (letter) {
    case 'i':
      return IntType();
    case 'f':
      return FloatType();
    case 'd':
      return DateTimeType();
    default:
      return kText;
  }
}

[[noreturn]] void RefuseCount(std::string_view name, std::size_t count) {
  RefuseStatement("The " + Text(name) + " function requires " + std::to_string(count) + " argument(s).");
}

void NeedArguments(const FunctionCall& call, std::string_view name, std::size_t low, std::size_t high) {
  if (call.arguments.size() < low || call.arguments.size() > high) RefuseCount(name, low);
}

bool ArgumentsHaveAggregate(const std::vector<ExpressionPtr>& expressions) {
  return std::any_of(expressions.begin(), expressions.end(),
                     [](const ExpressionPtr& e) { return e && Emitter::HasAggregate(*e); });
}

bool Has(const ExpressionPtr& expression) {
  return expression && Emitter::HasAggregate(*expression);
}

}  // namespace

bool Emitter::IsAggregate(const FunctionCall& call) {
  return std::find(kAggregates.begin(), kAggregates.end(), LowerKey(call.name)) != kAggregates.end();
}

bool Emitter::HasAggregate(const Expression& expression) {
  struct Visitor {
    bool operator()(const FunctionCall& n) { return IsAggregate(n) || ArgumentsHaveAggregate(n.arguments); }
    bool operator()(const Unary& n) { return Has(n.operand); }
    bool operator()(const Binary& n) { return Has(n.left) || Has(n.right); }
    bool operator()(const Cast& n) { return Has(n.operand); }
    bool operator()(const Case& n) {
      return Has(n.operand) || Has(n.otherwise) ||
             std::any_of(n.branches.begin(), n.branches.end(),
                         [](const CaseBranch& b) { return Has(b.when) || Has(b.then); });
    }
    bool operator()(const InList& n) { return Has(n.operand) || ArgumentsHaveAggregate(n.items); }
    bool operator()(const InSelect& n) { return Has(n.operand); }
    bool operator()(const Between& n) { return Has(n.operand) || Has(n.low) || Has(n.high); }
    bool operator()(const Like& n) { return Has(n.operand) || Has(n.pattern); }
    bool operator()(const IsNull& n) { return Has(n.operand); }
    bool operator()(const Literal&) { return false; }
    bool operator()(const NullLiteral&) { return false; }
    bool operator()(const ColumnReference&) { return false; }
    bool operator()(const VariableReference&) { return false; }
    bool operator()(const Exists&) { return false; }
    bool operator()(const ScalarSelect&) { return false; }
  };
  return std::visit(Visitor{}, expression.node);
}

Term Emitter::EmitFunction(const FunctionCall& call, Scope& scope) {
  const Text name = LowerKey(call.name);
  if (IsAggregate(call)) return EmitAggregate(call, scope);
  if (name == "isnull" || name == "coalesce" || name == "nullif") return EmitConditional(call, scope, name);
  if (call.keyword) return EmitDateFunction(call, scope, name);
  if (std::find(kNumberFunctions.begin(), kNumberFunctions.end(), name) != kNumberFunctions.end()) {
    return EmitNumberFunction(call, scope, name);
  }
  if (auto term = EmitSystemFunction(call, name)) return std::move(*term);
  for (const PlainFunction& function : kPlain) {
    if (function.name != name) continue;
    const std::size_t bar = std::min(function.arguments.find('|'), function.arguments.size());
    Text letters(function.arguments);
    std::erase(letters, '|');
    NeedArguments(call, name, bar, letters.size());
    Term term;
    term.sql = Text(function.sql) + '(';
    term.type = ArgumentType(function.result);
    bool two_bytes = false;  // for each unit of the first argument
    for (std::size_t i = 0; i < call.arguments.size(); ++i) {
      const Term argument = EmitExpression(*call.arguments[i], scope);
      if (i == 0) two_bytes = IsNational(argument.type.kind);
      if (i == 0 && function.result == '1' && IsText(argument.type.kind)) {
        term.type = argument.type;
        if (!term.null_literal && term.type.kind == TypeKind::Char) term.type.kind = TypeKind::VarChar;
        if (term.type.kind == TypeKind::NChar) term.type.kind = TypeKind::NVarChar;
      }
      const DataType type = ArgumentType(letters[i]);
      if (i > 0) term.sql += ',';
      term.sql += letters[i] == 't' ? Coerce(argument, type) : ConvertTo(argument, type, Purpose::Cast);
    }
    term.sql += ')';
    if (name == "datalength" && two_bytes) term.sql = "(2*" + term.sql + ')';
    return term;
  }
  RefuseStatement("'" + call.name + "' is not a recognized built-in function name.");
}

Term Emitter::EmitAggregate(const FunctionCall& call, Scope& scope) {
  const Text name = LowerKey(call.name);
  Term term;
  if (call.star) {
    term.type = IntType();
    term.sql = "count(*)";
    return term;
  }
  NeedArguments(call, name, 1, 1);
  ++scope.aggregate_depth;
  const Term argument = EmitExpression(*call.arguments.front(), scope);
  --scope.aggregate_depth;
  const Text inner = (call.distinct ? "DISTINCT " : "") + Collated(argument, Render(argument));
  term.type = argument.type;
  if (name.starts_with("count")) {
    term.type = name == "count" ? IntType() : DataType{TypeKind::BigInt, 0, 0, 0};
    term.sql = "count(" + inner + ')';
    return term;
  }
  if (name == "min" || name == "max") {
    if (argument.type.kind == TypeKind::Bit)
      RefuseStatement("Operand data type bit is invalid for " + name + " operator.");
    term.sql = name + '(' + inner + ')';
    return term;
  }
  if (!IsNumber(argument.type.kind) || argument.type.kind == TypeKind::Bit) {
    RefuseStatement("Operand data type " + Text(MessageName(argument.type.kind)) + " is invalid for " + name +
                    " operator.");
  }
  if (argument.type.kind < TypeKind::Int) term.type = IntType();
  if (argument.type.kind == TypeKind::Decimal) {
    const int scale = argument.type.scale;
    term.type = DecimalType(38, name == "avg" && scale != kAnyScale ? std::max(scale, 6) : scale);
  }
  if (name == "avg" && IsInteger(argument.type.kind)) {
    term.sql = "(sum(" + inner + ")/count(" + inner + "))";
  } else {
    term.sql = name + '(' + inner + ')';
    if (IsExactNumber(argument.type.kind)) term.sql = "t_tidy(" + term.sql + ')';
  }
  return term;
}

Term Emitter::EmitConditional(const FunctionCall& call, Scope& scope, std::string_view name) {
  const bool coalesce = name == "coalesce";
  NeedArguments(call, name, 2, coalesce ? 64 : 2);
  std::vector<Term> arguments;
  for (const ExpressionPtr& argument : call.arguments) arguments.push_back(EmitExpression(*argument, scope));
  Term term;
  const auto typed = std::find_if(arguments.begin(), arguments.end(), [](const Term& a) { return !a.null_literal; });
  term.type = typed == arguments.end() ? IntType() : typed->type;
  if (name == "nullif") {
    // The first argument twice: once to compare and once to give.
    const Text condition = EmitComparison(arguments[0], arguments[1], "=");
    term.sql = "(CASE WHEN " + condition + " THEN NULL ELSE " + Render(arguments[0]) + " END)";
    return term;
  }
  if (coalesce) {
    for (const Term& argument : arguments) {
      if (!argument.null_literal) term.type = CommonType(term.type, argument.type);
    }
  }
  term.nullable = std::all_of(arguments.begin(), arguments.end(), [](const Term& a) { return a.nullable; });
  term.sql = "coalesce(";
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (i > 0) term.sql += ',';
    // ISNULL has the type of what it tests, and what stands in for it is made one of these.
    const bool exactly = !coalesce && i == 1 && !(IsNumber(term.type.kind) && IsFloat(term.type.kind));
    term.sql += exactly ? ConvertTo(arguments[i], term.type, Purpose::Cast) : Coerce(arguments[i], term.type);
  }
  term.sql += ')';
  return term;
}

Term Emitter::EmitDateFunction(const FunctionCall& call, Scope& scope, std::string_view name) {
  const auto part = ParseDatePart(*call.keyword);
  if (!part) RefuseStatement("'" + *call.keyword + "' is not a recognized " + Text(name) + " option.");
  const Text code = std::to_string(static_cast<int>(*part));
  Term term;
  const auto date = [&](std::size_t i) {
    return ConvertTo(EmitExpression(*call.arguments[i], scope), DateTimeType(), Purpose::Cast);
  };
  if (name == "dateadd") {
    NeedArguments(call, name, 2, 2);
    const Text count = ConvertTo(EmitExpression(*call.arguments[0], scope), IntType(), Purpose::Cast);
    term.type = DateTimeType();
    term.sql = "t_dateadd(" + code + ',' + count + ',' + date(1) + ')';
  } else if (name == "datediff") {
    NeedArguments(call, name, 2, 2);
    term.type = IntType();
    const Text from = date(0);
    term.sql = "t_datediff(" + code + ',' + from + ',' + date(1) + ')';
  } else if (name == "datepart" || name == "datename") {
    NeedArguments(call, name, 1, 1);
    term.type = name == "datepart" ? IntType() : TextType(TypeKind::NVarChar, 30);
    term.sql = "t_" + Text(name) + '(' + code + ',' + date(0) + ')';
  } else {
    RefuseStatement("'" + call.name + "' is not a recognized built-in function name.");
  }
  return term;
}

Term Emitter::EmitNumberFunction(const FunctionCall& call, Scope& scope, std::string_view name) {
  const bool two = name == "round" || name == "power";
  NeedArguments(call, name, two ? 2 : 1, name == "round" ? 3 : two ? 2 : 1);
  Term argument = EmitExpression(*call.arguments.front(), scope);
  if (IsText(argument.type.kind)) {
    argument.sql = ConvertTo(argument, FloatType(), Purpose::Cast);
    argument.literal.reset();
    argument.type = FloatType();
  }
  if (!IsNumber(argument.type.kind)) {
    RefuseStatement("Argument data type " + Text(MessageName(argument.type.kind)) + " is invalid for argument 1 of " +
                    Text(name) + " function.");
  }
  Term term;
  term.type = argument.type;
  term.nullable = argument.nullable;
  if (name == "ceiling" || name == "floor") {
    if (term.type.kind == TypeKind::Decimal) term.type = DecimalType(38, 0);
  }
  term.sql = "t_" + Text(name) + '(' + Render(argument);
  for (std::size_t i = 1; i < call.arguments.size(); ++i) {
    const Term other = EmitExpression(*call.arguments[i], scope);
    term.sql += ',' + ConvertTo(other, name == "power" ? FloatType() : IntType(), Purpose::Cast);
  }
  term.sql += ')';
  // The power of an integer is one.
  if (name == "power" && IsInteger(term.type.kind)) term.sql = "CAST(" + term.sql + " AS INTEGER)";
  return term;
}

std::optional<Term> Emitter::EmitSystemFunction(const FunctionCall& call, std::string_view name) {
  Term term;
  if (name == "getdate" || name == "current_timestamp" || name == "sysdatetime" || name == "getutcdate") {
    if (name == "getutcdate") return std::nullopt;
    term.type = DateTimeType();
    term.nullable = false;
    term.sql = inline_literals_ && !in_view_
                   ? "t_now()"
                   : AddParameter({ParameterSource::Now, 0, false, term.type, Purpose::Cast, {}});
  } else if (name == "scope_identity") {
    term.type = DecimalType(38, 0);
    term.sql = AddParameter({ParameterSource::Identity, 0, false, term.type, Purpose::Cast, {}});
  } else if (name == "newid") {
    term.type = TextType(TypeKind::VarChar, 36);
    term.nullable = false;
    term.sql = "t_newid()";
  } else if (name == "rand") {
    term.type = FloatType();
    term.sql = "t_rand()";
  } else if (name == "object_id") {
    const Literal* literal = call.arguments.empty() ? nullptr : std::get_if<Literal>(&call.arguments.front()->node);
    if (literal == nullptr || !IsText(LiteralType(literal->kind).kind) || in_view_) {
      RefuseStatement("The object_id function takes the name as a text constant.");
    }
    term.type = IntType();
    term.sql = AddParameter({ParameterSource::ObjectId, literal->index, false, term.type, Purpose::Cast, {}});
  } else {
    return std::nullopt;
  }
  return term;
}

}  // namespace rebate::tsql
