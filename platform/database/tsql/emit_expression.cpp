#include "platform/database/tsql/emitter.h"

#include <algorithm>

#include "platform/automation/conversion.h"
#include "platform/automation/error.h"

namespace rebate::tsql {
namespace {

bool SameType(const DataType& a, const DataType& b) {
  return a.kind == b.kind && a.length == b.length && a.precision == b.precision && a.scale == b.scale;
}

// Whether every value of a column of type `from` is one of `to` already.
bool Fits(const DataType& from, const DataType& to) {
  if (SameType(from, to)) return true;
  if (IsInteger(from.kind) && IsInteger(to.kind)) return from.kind < to.kind;
  if (from.kind == TypeKind::VarChar || from.kind == TypeKind::NVarChar) {
    const bool varying = to.kind == TypeKind::NVarChar || to.kind == from.kind;
    const bool as_long = from.length != DataType::kMaxLength && from.length <= to.length;
    return varying && (to.length == DataType::kMaxLength || as_long);
  }
  return false;
}

std::string_view SqlOperator(BinaryOperator operation) {
  switch (operation) {
    case BinaryOperator::Add:
      return "+";
    case BinaryOperator::Subtract:
      return "-";
    case BinaryOperator::Multiply:
      return "*";
    case BinaryOperator::BitAnd:
      return "&";
    case BinaryOperator::BitOr:
      return "|";
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
    case BinaryOperator::GreaterEqual:
      return ">=";
    case BinaryOperator::And:
      return " AND ";
    case BinaryOperator::Or:
      return " OR ";
    default:
      return "";
  }
}

std::string_view OperatorName(BinaryOperator operation) {
  switch (operation) {
    case BinaryOperator::Subtract:
      return "subtract";
    case BinaryOperator::Multiply:
      return "multiply";
    case BinaryOperator::Divide:
      return "divide";
    case BinaryOperator::Modulo:
      return "modulo";
    default:
      return "add";
  }
}

Text Call(std::string_view function, const Text& argument, const DataType& from, const DataType& to) {
  return Text(function) + '(' + argument + ',' + std::to_string(PackType(from)) + ',' + std::to_string(PackType(to)) +
         ')';
}

}  // namespace

[[noreturn]] void RefuseStatement(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}

Text Emitter::AddParameter(Parameter parameter) {
  command_.parameters.push_back(std::move(parameter));
  return '?' + std::to_string(command_.parameters.size());
}

Text Emitter::Render(const Term& term) {
  return term.literal ? ConvertTo(term, term.type, Purpose::Cast) : term.sql;
}

Text Emitter::Coerce(const Term& term, const DataType& type, Purpose purpose) {
  if (term.null_literal) return "NULL";
  const bool text = IsText(term.type.kind);
  if (term.literal) {
    // Between numbers, and between texts, a literal stays what it is: 1.5 is no integer.
    const bool alike = (text && IsText(type.kind)) || (IsNumber(term.type.kind) && IsNumber(type.kind));
    return ConvertTo(term, alike ? term.type : type, purpose);
  }
  if (text == IsText(type.kind) && (term.type.kind == TypeKind::DateTime) == (type.kind == TypeKind::DateTime)) {
    return term.sql;
  }
  DataType target = type;
  if (IsText(type.kind)) target.length = DataType::kMaxLength;
  return ConvertTo(term, target, purpose);
}

Text Emitter::ConvertTo(const Term& term, const DataType& type, Purpose purpose, Text style) {
  if (term.null_literal) return "NULL";
  if (term.literal && style.empty()) {
    if (!inline_literals_) {
      return AddParameter({ParameterSource::Literal, term.literal->index, term.negated, type, purpose, {}});
    }
    Text scratch;
    return SqlConstant(LiteralValue(literals_[term.literal->index], term.negated, type, purpose, scratch));
  }
  if (style.empty()) {
    if (term.column && Fits(term.type, type)) return term.sql;
    if (SameType(term.type, type) && (type.kind == TypeKind::DateTime || type.kind == TypeKind::Float)) return term.sql;
    const std::string_view function = purpose == Purpose::Assign  ? "t_assign"
                                      : purpose == Purpose::Match ? "t_match"
                                                                  : "t_cast";
    return Call(function, Render(term), term.type, type);
  }
  Text sql = Call("t_cast", Render(term), term.type, type);
  sql.back() = ',';
  return sql + style + ')';
}

Text Emitter::Collated(const Term& term, Text sql) const {
  if (term.collated || !IsText(term.type.kind)) return sql;
  return '(' + std::move(sql) + ") COLLATE " + Text(kCollation);
}

Term Emitter::EmitExpression(const Expression& expression, Scope& scope) {
  struct Visitor {
    Emitter& emitter;
    Scope& scope;
    Term operator()(const Literal& node) { return emitter.Emit(node); }
    Term operator()(const NullLiteral&) {
      Term term;
      term.sql = "NULL";
      term.type = IntType();
      term.null_literal = true;
      return term;
    }
    Term operator()(const ColumnReference& node) { return emitter.EmitColumn(node, scope); }
    Term operator()(const VariableReference& node) { return emitter.EmitVariable(node); }
    Term operator()(const Unary& node) { return emitter.EmitUnary(node, scope); }
    Term operator()(const Binary& node) { return emitter.EmitBinary(node, scope); }
    Term operator()(const FunctionCall& node) { return emitter.EmitFunction(node, scope); }
    Term operator()(const Cast& node) { return emitter.EmitCast(node, scope); }
    Term operator()(const Case& node) { return emitter.EmitCase(node, scope); }
    Term operator()(const ScalarSelect& node) { return emitter.EmitScalarSelect(node, scope); }
    Term operator()(const InList&) { return Refuse(); }
    Term operator()(const InSelect&) { return Refuse(); }
    Term operator()(const Exists&) { return Refuse(); }
    Term operator()(const Between&) { return Refuse(); }
    Term operator()(const Like&) { return Refuse(); }
    Term operator()(const IsNull&) { return Refuse(); }
    static Term Refuse() { RefuseStatement("Incorrect syntax: a condition stands where a value is due."); }
  };
  return std::visit(Visitor{*this, scope}, expression.node);
}

Text Emitter::EmitPredicate(const Expression& expression, Scope& scope) {
  if (const auto* binary = std::get_if<Binary>(&expression.node)) {
    if (binary->operation == BinaryOperator::And || binary->operation == BinaryOperator::Or) {
      Text left = EmitPredicate(*binary->left, scope);
      return '(' + std::move(left) + Text(SqlOperator(binary->operation)) + EmitPredicate(*binary->right, scope) + ')';
    }
    if (binary->operation >= BinaryOperator::Equal && binary->operation <= BinaryOperator::GreaterEqual) {
      Term left = EmitExpression(*binary->left, scope);
      return EmitComparison(std::move(left), EmitExpression(*binary->right, scope), SqlOperator(binary->operation));
    }
  }
  if (const auto* unary = std::get_if<Unary>(&expression.node); unary && unary->operation == UnaryOperator::Not) {
    return "(NOT " + EmitPredicate(*unary->operand, scope) + ')';
  }
  if (const auto* in = std::get_if<InList>(&expression.node)) return EmitInList(*in, scope);
  if (const auto* in = std::get_if<InSelect>(&expression.node)) return EmitInSelect(*in, scope);
  if (const auto* between = std::get_if<Between>(&expression.node)) return EmitBetween(*between, scope);
  if (const auto* like = std::get_if<Like>(&expression.node)) return EmitLike(*like, scope);
  if (const auto* is_null = std::get_if<IsNull>(&expression.node)) {
    return '(' + Render(EmitExpression(*is_null->operand, scope)) + (is_null->negated ? " IS NOT NULL)" : " IS NULL)");
  }
  if (const auto* exists = std::get_if<Exists>(&expression.node)) {
    std::vector<Output> outputs;
    return "EXISTS(" + EmitSelect(*exists->select, &scope, outputs, false, false) + ')';
  }
  RefuseStatement("An expression of non-boolean type specified in a context where a condition is expected.");
}

Term Emitter::Emit(const Literal& literal) {
  Term term;
  term.type = LiteralType(literal.kind);
  term.literal = literal;
  term.nullable = false;
  return term;
}

Term Emitter::EmitColumn(const ColumnReference& reference, Scope& scope) {
  return EmitHit(scope.Resolve(reference), scope);
}

Term Emitter::EmitHit(const Scope::Hit& hit, Scope& scope) {
  Term term;
  term.type = hit.column->type;
  term.nullable = hit.column->nullable;
  term.collated = hit.column->collated;
  term.identity = hit.column->identity;
  term.column = true;
  term.sql = hit.source->sql_alias.empty() ? hit.column->sql : hit.source->sql_alias + '.' + hit.column->sql;
  if (hit.scope == &scope && scope.grouped && scope.aggregate_depth == 0) {
    if (scope.collecting_group) {
      scope.group_columns.push_back(term.sql);
    } else if (std::find(scope.group_columns.begin(), scope.group_columns.end(), term.sql) ==
               scope.group_columns.end()) {
      RefuseStatement("Column '" + hit.source->name + '.' + hit.column->name +
                      "' is invalid in the select list because it is not contained in either an aggregate function or "
                      "the GROUP BY clause.");
    }
  }
  if (hit.scope->narrowed) term.sql = NarrowedColumn(*hit.scope, term.sql);
  return term;
}

Term Emitter::EmitVariable(const VariableReference& reference) {
  static const std::unordered_map<Text, ParameterSource> kSystem{{"@@identity", ParameterSource::Identity},
                                                                 {"@@rowcount", ParameterSource::RowCount},
                                                                 {"@@trancount", ParameterSource::TransactionCount},
                                                                 {"@@error", ParameterSource::ErrorNumber}};
  const Text key = LowerKey(reference.name);
  Term term;
  if (key.starts_with("@@")) {
    const auto found = kSystem.find(key);
    if (found == kSystem.end()) RefuseStatement("Must declare the scalar variable \"" + reference.name + "\".");
    term.type = found->second == ParameterSource::Identity ? DecimalType(38, 0) : IntType();
    term.sql = AddParameter({found->second, 0, false, term.type, Purpose::Cast, {}});
    return term;
  }
  const auto found = variables_.find(key);
  if (found == variables_.end()) RefuseStatement("Must declare the scalar variable \"" + reference.name + "\".");
  term.type = found->second;
  term.sql = AddParameter({ParameterSource::Variable, 0, false, term.type, Purpose::Cast, key});
  return term;
}

Term Emitter::EmitUnary(const Unary& unary, Scope& scope) {
  Term term = EmitExpression(*unary.operand, scope);
  if (term.null_literal) return term;
  const bool bits = unary.operation == UnaryOperator::BitNot;
  if (unary.operation == UnaryOperator::Plus) return term;
  if (bits ? !IsInteger(term.type.kind) : !IsNumber(term.type.kind)) {
    RefuseStatement("Operand data type " + Text(MessageName(term.type.kind)) + " is invalid for " +
                    (bits ? "'~'" : "minus") + " operator.");
  }
  if (term.literal && !bits) {
    term.negated = !term.negated;
    return term;
  }
  Term result;
  result.type = term.type;
  result.nullable = term.nullable;
  result.sql = (bits ? "(~" : "(-") + Render(term) + ')';
  return result;
}

Term Emitter::EmitBinary(const Binary& binary, Scope& scope) {
  const Term left = EmitExpression(*binary.left, scope);
  const Term right = EmitExpression(*binary.right, scope);
  if (binary.operation == BinaryOperator::Add || binary.operation == BinaryOperator::Subtract) {
    return EmitSum(left, right, binary.operation);
  }
  return EmitArithmetic(left, right, binary.operation);
}

Term Emitter::EmitSum(const Term& left, const Term& right, BinaryOperator operation) {
  const bool add = operation == BinaryOperator::Add;
  const DataType common = left.null_literal    ? right.type
                          : right.null_literal ? left.type
                                               : CommonType(left.type, right.type);
  Term term;
  term.nullable = left.nullable || right.nullable;
  if (IsText(common.kind)) {
    if (!add)
      RefuseStatement("Operand data type " + Text(MessageName(common.kind)) + " is invalid for subtract operator.");
    term.type = common;
    const bool unlimited = left.type.length == DataType::kMaxLength || right.type.length == DataType::kMaxLength;
    term.type.length = unlimited ? DataType::kMaxLength : left.type.length + right.type.length;
    term.type.kind = IsNational(common.kind) ? TypeKind::NVarChar : TypeKind::VarChar;
    Text sql = Coerce(left, common);
    term.sql = '(' + std::move(sql) + "||" + Coerce(right, common) + ')';
    return term;
  }
  if (common.kind == TypeKind::DateTime) {
    term.type = common;
    Text sql = ConvertTo(left, common, Purpose::Cast);
    term.sql = Text(add ? "t_add_days(" : "t_subtract_days(") + std::move(sql) + ',' +
               ConvertTo(right, common, Purpose::Cast) + ')';
    return term;
  }
  return EmitArithmetic(left, right, operation);
}

// Gives a number in a decimal division the digits that it is written with, since these decide about those of the
// result: the tree then serves only batches with the same number there.
void Emitter::MeasureLiteral(Term& term) {
  if (!term.literal || !(IsExactNumber(term.type.kind) || IsInteger(term.type.kind))) return;
  if (!inline_literals_) command_.pins.push_back(term.literal->index);
  const std::string_view digits = literals_[term.literal->index].text;
  const std::size_t point = digits.find('.');
  const int scale = point == std::string_view::npos ? 0 : static_cast<int>(digits.size() - point - 1);
  term.type = DecimalType(static_cast<int>(digits.size()) - (point == std::string_view::npos ? 0 : 1), scale);
}

Term Emitter::EmitArithmetic(const Term& left_in, const Term& right_in, BinaryOperator operation) {
  Term left = left_in;
  Term right = right_in;
  if (operation == BinaryOperator::Divide && CommonType(left.type, right.type).kind == TypeKind::Decimal) {
    for (Term* term : {&left, &right}) MeasureLiteral(*term);
  }
  if (left.null_literal) left.type = right.type;
  if (right.null_literal) right.type = left.type;
  const DataType common = CommonType(left.type, right.type);
  const bool bits =
      operation == BinaryOperator::BitAnd || operation == BinaryOperator::BitOr || operation == BinaryOperator::BitXor;
  if (!IsNumber(common.kind) || (bits && !IsInteger(common.kind))) {
    RefuseStatement("Operand data type " + Text(MessageName(common.kind)) + " is invalid for " +
                    Text(OperatorName(operation)) + " operator.");
  }
  Term term;
  term.type = bits ? common : ArithmeticType(operation, left.type, right.type);
  term.nullable = left.nullable || right.nullable;
  const Text a = Coerce(left, common);
  const Text b = Coerce(right, common);
  switch (operation) {
    case BinaryOperator::Divide:
      if (IsInteger(common.kind)) {
        term.sql = "t_divide_whole(" + a + ',' + b + ')';
      } else {
        term.sql = "t_divide(" + a + ',' + b + ')';
        if (const int scale = ScaleOf(term.type); scale != kAnyScale)
          term.sql = "t_round(" + term.sql + ',' + std::to_string(scale) + ')';
      }
      break;
    case BinaryOperator::Modulo:
      term.sql = "t_modulo(" + a + ',' + b + ')';
      break;
    case BinaryOperator::BitXor:
      term.sql = "((" + a + '|' + b + ")-(" + a + '&' + b + "))";
      break;
    default:
      term.sql = '(' + a + Text(SqlOperator(operation)) + b + ')';
      // Decimals are kept in binary: their sums are set right behind the fifteenth digit.
      if (IsExactNumber(common.kind)) term.sql = "t_tidy" + term.sql;
  }
  return term;
}

Term Emitter::EmitCase(const Case& node, Scope& scope) {
  std::vector<Text> conditions;
  std::vector<Term> values;
  for (const CaseBranch& branch : node.branches) {
    if (node.operand) {
      Term operand = EmitExpression(*node.operand, scope);
      conditions.push_back(EmitComparison(std::move(operand), EmitExpression(*branch.when, scope), "="));
    } else {
      conditions.push_back(EmitPredicate(*branch.when, scope));
    }
    values.push_back(EmitExpression(*branch.then, scope));
  }
  if (node.otherwise) values.push_back(EmitExpression(*node.otherwise, scope));
  std::optional<DataType> type;
  for (const Term& value : values) {
    if (!value.null_literal) type = type ? CommonType(*type, value.type) : value.type;
  }
  if (!type)
    RefuseStatement(
        "At least one of the result expressions in a CASE must be an expression other than the NULL "
        "constant.");
  Term term;
  term.type = *type;
  term.sql = "CASE";
  for (std::size_t i = 0; i < conditions.size(); ++i) {
    term.sql += " WHEN " + conditions[i] + " THEN " + Coerce(values[i], *type);
  }
  if (node.otherwise) term.sql += " ELSE " + Coerce(values.back(), *type);
  term.sql = '(' + term.sql + " END)";
  return term;
}

Term Emitter::EmitCast(const Cast& cast, Scope& scope) {
  const Term operand = EmitExpression(*cast.operand, scope);
  Term term;
  term.type = cast.type;
  if (IsText(term.type.kind) && term.type.length == 0) term.type.length = 30;
  term.nullable = operand.nullable;
  Text style;
  // Only dates are written in styles.
  if (cast.style && operand.type.kind == TypeKind::DateTime)
    style = ConvertTo(EmitExpression(*cast.style, scope), IntType(), Purpose::Cast);
  term.sql = ConvertTo(operand, term.type, Purpose::Cast, std::move(style));
  return term;
}

Term Emitter::EmitScalarSelect(const ScalarSelect& node, Scope& scope) {
  std::vector<Output> outputs;
  Term term;
  term.sql = '(' + EmitSelect(*node.select, &scope, outputs, false, false) + ')';
  if (outputs.size() != 1) {
    RefuseStatement(
        "Only one expression can be specified in the select list when the subquery is not introduced with EXISTS.");
  }
  term.type = outputs.front().type;
  term.collated = false;
  return term;
}

Text Emitter::EmitComparison(Term left, Term right, std::string_view sql_operator) {
  if (left.null_literal) left.type = right.type;
  if (right.null_literal) right.type = left.type;
  const DataType common = CommonType(left.type, right.type);
  Text sql = Coerce(left, common, Purpose::Match);
  const bool texts = IsText(common.kind);
  if (texts && !left.collated && !right.collated) sql = '(' + sql + ") COLLATE " + Text(kCollation);
  return '(' + std::move(sql) + Text(sql_operator) + Coerce(right, common, Purpose::Match) + ')';
}

Text Emitter::EmitInList(const InList& in, Scope& scope) {
  const Term operand = EmitExpression(*in.operand, scope);
  std::vector<Term> items;
  DataType common = operand.type;
  for (const ExpressionPtr& item : in.items) {
    items.push_back(EmitExpression(*item, scope));
    if (!items.back().null_literal) common = CommonType(common, items.back().type);
  }
  Text sql = '(' + Collated(operand, Coerce(operand, common, Purpose::Match)) + (in.negated ? " NOT IN (" : " IN (");
  for (const Term& item : items) {
    sql += Coerce(item, common, Purpose::Match);
    sql += ',';
  }
  sql.back() = ')';
  return sql + ')';
}

Text Emitter::EmitInSelect(const InSelect& in, Scope& scope) {
  const Term operand = EmitExpression(*in.operand, scope);
  std::vector<Output> outputs;
  Text select = EmitSelect(*in.select, &scope, outputs, false, true);
  if (outputs.size() != 1) {
    RefuseStatement(
        "Only one expression can be specified in the select list when the subquery is not introduced with EXISTS.");
  }
  const DataType common = CommonType(operand.type, outputs.front().type);
  Term column;
  column.type = outputs.front().type;
  column.sql = "\"_in\".c1";
  const Text item = Coerce(column, common, Purpose::Match);
  if (item != column.sql) select = "SELECT " + item + " FROM (" + select + ") AS \"_in\"";
  return '(' + Collated(operand, Coerce(operand, common, Purpose::Match)) + (in.negated ? " NOT IN (" : " IN (") +
         select + "))";
}

Text Emitter::EmitBetween(const Between& between, Scope& scope) {
  const Term operand = EmitExpression(*between.operand, scope);
  Text low = EmitComparison(operand, EmitExpression(*between.low, scope), ">=");
  Text both =
      '(' + std::move(low) + " AND " + EmitComparison(operand, EmitExpression(*between.high, scope), "<=") + ')';
  return between.negated ? "(NOT " + both + ')' : both;
}

Text Emitter::EmitLike(const Like& like, Scope& scope) {
  const DataType text = TextType(TypeKind::NVarChar, DataType::kMaxLength);
  Text sql = like.negated ? "(NOT t_like(" : "(t_like(";
  sql += Coerce(EmitExpression(*like.operand, scope), text);
  sql += ',' + Coerce(EmitExpression(*like.pattern, scope), text);
  if (like.escape) sql += ',' + Coerce(EmitExpression(*like.escape, scope), text);
  return sql + "))";
}

}  // namespace rebate::tsql
