#pragma once

#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/database/tsql/parse/parser.h"

// Trees as short prefix text, for tests: `(+ #0 a.FID)`. A literal is '#' and its position.
namespace rebate::tsql {

class Dump {
 public:
  static Text Of(const Batch& batch) {
    Text all;
    for (const StatementPtr& statement : batch.statements) all += (all.empty() ? "" : "; ") + Of(*statement);
    return all;
  }

  static Text Of(const ExpressionPtr& expression) {
    return expression == nullptr ? "-" : std::visit([](const auto& node) { return Node(node); }, expression->node);
  }

  static Text Of(const Select& select) {
    static constexpr std::string_view kNames[] = {" union ", " union-all ", " except ", " intersect "};
    Text text = Of(select.cores[0]);
    for (std::size_t i = 0; i < select.operators.size(); ++i) {
      text += Text(kNames[static_cast<int>(select.operators[i])]) + Of(select.cores[i + 1]);
    }
    for (const OrderItem& item : select.order_by)
      text += " order:" + Of(item.expression) + (item.descending ? "-" : "");
    return text;
  }

  static Text Of(const SelectCore& core) {
    Text text = "[";
    if (core.distinct) text += "distinct ";
    if (core.top != nullptr) text += "top:" + Of(core.top) + (core.top_percent ? "% " : " ");
    for (std::size_t i = 0; i < core.items.size(); ++i) text += (i > 0 ? "," : "") + Of(core.items[i]);
    if (core.into) text += " into:" + Of(*core.into);
    text += From(core.from) + Clause("where", core.where);
    for (const ExpressionPtr& group : core.group_by) text += " group:" + Of(group);
    return text + Clause("having", core.having) + "]";
  }

 private:
  static Text Of(const ObjectName& name) {
    Text text = name.database.empty() ? "" : name.database + ".";
    if (!name.owner.empty() || !name.database.empty()) text += name.owner + ".";
    return text + name.name;
  }
  static Text Of(const SelectItem& item) {
    if (item.star) return item.star_qualifier.empty() ? "*" : item.star_qualifier + ".*";
    Text text = item.variable.empty() ? "" : item.variable + ":=";
    text += Of(item.expression);
    return item.alias.empty() ? text : text + " as " + item.alias;
  }
  static Text Of(const TableSource& source) {
    if (const auto* named = std::get_if<NamedTable>(&source.node)) {
      return Of(named->name) + (named->alias.empty() ? "" : " " + named->alias);
    }
    if (const auto* derived = std::get_if<DerivedTable>(&source.node)) {
      return "{" + Of(*derived->select) + "} " + derived->alias + NamesIfAny(derived->columns);
    }
    static constexpr std::string_view kNames[] = {"inner", "left", "right", "full", "cross"};
    const Join& join = std::get<Join>(source.node);
    return "(" + Text(kNames[static_cast<int>(join.kind)]) + " " + Of(*join.left) + ", " + Of(*join.right) +
           Clause("on", join.condition) + ")";
  }
  static Text From(const std::vector<TableSourcePtr>& from) {
    Text text;
    for (const TableSourcePtr& source : from) text += (text.empty() ? " from:" : ", ") + Of(*source);
    return text;
  }
  static Text Clause(std::string_view name, const ExpressionPtr& expression) {
    return expression == nullptr ? "" : " " + Text(name) + ":" + Of(expression);
  }
  static Text List(const std::vector<ExpressionPtr>& expressions) {
    Text text;
    for (const ExpressionPtr& expression : expressions) text += " " + Of(expression);
    return text;
  }
  static Text Not(bool negated) { return negated ? "not-" : ""; }

  // ---- expressions ----
  static Text Node(const Literal& node) { return "#" + std::to_string(node.index); }
  static Text Node(const NullLiteral&) { return "null"; }
  static Text Node(const ColumnReference& node) {
    return node.qualifier.empty() ? node.name : node.qualifier + "." + node.name;
  }
  static Text Node(const VariableReference& node) { return node.name; }
  static Text Node(const Unary& node) {
    static constexpr std::string_view kNames[] = {"-", "+", "not", "~"};
    return "(" + Text(kNames[static_cast<int>(node.operation)]) + " " + Of(node.operand) + ")";
  }
  static Text Node(const Binary& node) {
    static constexpr std::string_view kNames[] = {"+", "-",  "*", "/",  "%", "&",  "|",   "^",
                                                  "=", "<>", "<", "<=", ">", ">=", "and", "or"};
    return "(" + Text(kNames[static_cast<int>(node.operation)]) + " " + Of(node.left) + " " + Of(node.right) + ")";
  }
  static Text Node(const FunctionCall& node) {
    return node.name + "(" +
           (node.star       ? "*"
            : node.distinct ? "distinct"
                            : node.keyword.value_or("")) +
           List(node.arguments) + ")";
  }
  static Text TypeOf(const DataType& type) {
    static constexpr std::string_view kNames[] = {
        "bit",  "tinyint", "smallint", "int",   "bigint",   "decimal",  "money",         "smallmoney", "float",
        "real", "char",    "varchar",  "nchar", "nvarchar", "datetime", "smalldatetime", "date",       "datetime2"};
    Text text(kNames[static_cast<int>(type.kind)]);
    if (type.length != 0) text += "(" + std::to_string(type.length) + ")";
    if (type.kind == TypeKind::Decimal) text += std::to_string(type.precision) + "." + std::to_string(type.scale);
    return type.kind == TypeKind::DateTime2 ? text + "." + std::to_string(type.scale) : text;
  }
  static Text Node(const Cast& node) {
    return Text(node.tolerant ? "(try-" : "(") + (node.convert ? "convert " : "cast ") + Of(node.operand) + " " +
           TypeOf(node.type) + Clause("style", node.style) + ")";
  }
  static Text Node(const Case& node) {
    Text text = "(case" + Clause("of", node.operand);
    for (const CaseBranch& branch : node.branches) text += " " + Of(branch.when) + "->" + Of(branch.then);
    return text + Clause("else", node.otherwise) + ")";
  }
  static Text Node(const InList& node) {
    return "(" + Not(node.negated) + "in " + Of(node.operand) + ":" + List(node.items) + ")";
  }
  static Text Node(const InSelect& node) {
    return "(" + Not(node.negated) + "in " + Of(node.operand) + " " + Of(*node.select) + ")";
  }
  static Text Node(const Exists& node) { return "(exists " + Of(*node.select) + ")"; }
  static Text Node(const Between& node) {
    return "(" + Not(node.negated) + "between " + Of(node.operand) + " " + Of(node.low) + " " + Of(node.high) + ")";
  }
  static Text Node(const Like& node) {
    return "(" + Not(node.negated) + "like " + Of(node.operand) + " " + Of(node.pattern) +
           Clause("escape", node.escape) + ")";
  }
  static Text Node(const IsNull& node) { return "(" + Not(node.negated) + "null " + Of(node.operand) + ")"; }
  static Text Node(const ScalarSelect& node) { return Of(*node.select); }

  // ---- statements ----
  static Text Of(const Statement& statement) {
    return std::visit([](const auto& node) { return Node(node); }, statement.node);
  }
  static Text Of(const Block& block) {
    Text text;
    for (const StatementPtr& statement : block) text += (text.empty() ? "" : "; ") + Of(*statement);
    return "{" + text + "}";
  }
  static Text Names(const std::vector<Text>& names) {
    Text text;
    for (const Text& name : names) text += (text.empty() ? "" : ",") + name;
    return "(" + text + ")";
  }
  static Text NamesIfAny(const std::vector<Text>& names) { return names.empty() ? Text() : Names(names); }
  static Text With(const CommonTables& tables) {
    Text text;
    for (const CommonTable& table : tables) {
      text += "with " + table.name + NamesIfAny(table.columns) + "{" + Of(*table.select) + "} ";
    }
    return text;
  }
  static Text TopOf(const Top& top) {
    return top.count == nullptr ? Text() : "top:" + Of(top.count) + (top.percent ? "% " : " ");
  }
  static Text Node(const SelectStatement& node) { return With(node.with) + Of(*node.select); }
  static Text Node(const Insert& node) {
    Text text = With(node.with) + "insert " + TopOf(node.top) + Of(node.table) + Names(node.columns);
    for (const auto& row : node.rows) text += " row:" + List(row);
    if (node.select != nullptr) text += " " + Of(*node.select);
    return text + (node.default_values ? " default" : "");
  }
  static Text Node(const Update& node) {
    Text text = With(node.with) + "update " + TopOf(node.top) + Of(node.target);
    for (const Assignment& set : node.assignments) {
      text += " " + set.variable + (set.variable.empty() || set.column.empty() ? "" : "=") +
              (set.qualifier.empty() ? "" : set.qualifier + ".") + set.column + ":=" + Of(set.value);
    }
    return text + From(node.from) + Clause("where", node.where);
  }
  static Text Node(const Delete& node) {
    return With(node.with) + "delete " + TopOf(node.top) + Of(node.target) + From(node.from) +
           Clause("where", node.where);
  }
  static Text Node(const Truncate& node) { return "truncate " + Of(node.table); }
  static Text Of(const ColumnDefinition& column) {
    Text text = " " + column.name + ":" + (column.computed == nullptr ? TypeOf(column.type) : "") +
                (column.nullable ? "?" : "!");
    if (column.identity) {
      text += "identity" + std::to_string(column.identity_seed) + "/" + std::to_string(column.identity_step);
    }
    if (column.default_value != nullptr) text += "=" + Of(column.default_value);
    return column.computed == nullptr ? text : text + "as" + Of(column.computed);
  }
  static Text Of(const TableElements& elements) {
    Text text;
    for (const ColumnDefinition& column : elements.columns) text += Of(column);
    for (const KeyConstraint& key : elements.keys) {
      text += (key.primary ? " primary" : " unique") + (key.name.empty() ? "" : ":" + key.name) + Names(key.columns);
    }
    for (const CheckConstraint& check : elements.checks) {
      text += " check" + (check.name.empty() ? "" : ":" + check.name) +
              (check.column.empty() ? "" : "@" + check.column) + Of(check.condition);
    }
    return text;
  }
  static Text Node(const CreateTable& node) { return "table " + Of(node.table) + Of(node.elements); }
  static Text Node(const AlterTableAdd& node) { return "alter " + Of(node.table) + Of(node.elements); }
  static Text Node(const CreateIndex& node) {
    return (node.unique ? "unique-index " : "index ") + node.name + " " + Of(node.table) + Names(node.columns);
  }
  static Text Node(const CreateView& node) {
    return "view " + Of(node.view) + Names(node.columns) + " " + With(node.with) + Of(*node.select) + " <" +
           node.source + ">";
  }
  static Text Node(const Drop& node) {
    static constexpr std::string_view kNames[] = {"table", "view", "index"};
    Text text = "drop-" + Text(kNames[static_cast<int>(node.kind)]) + (node.if_exists ? "?" : "");
    for (const ObjectName& name : node.names) text += " " + Of(name);
    return text + (node.on_table.empty() ? "" : " on " + node.on_table);
  }
  static Text Node(const If& node) {
    return "if " + Of(node.condition) + " " + Of(node.then) +
           (node.otherwise.empty() ? "" : " else " + Of(node.otherwise));
  }
  static Text Node(const While& node) { return "while " + Of(node.condition) + " " + Of(node.body); }
  static Text Node(const Declare& node) {
    return "declare " + node.variable + ":" + TypeOf(node.type) + (node.value == nullptr ? "" : "=" + Of(node.value));
  }
  static Text Node(const SetVariable& node) { return "set " + node.variable + ":=" + Of(node.value); }
  static Text Node(const SetOption& node) {
    return "option " + node.option + (node.table.name.empty() ? "" : " " + Of(node.table)) + (node.on ? " on" : " off");
  }
  static Text Node(const Print& node) { return "print " + Of(node.message); }
  static Text Node(const RaiseError& node) {
    return "raise " + Of(node.message) + " " + Of(node.severity) + " " + Of(node.state) + List(node.arguments);
  }
  static Text Node(const Throw& node) {
    return "throw " + Of(node.number) + " " + Of(node.message) + " " + Of(node.state);
  }
  static Text Node(const BeginTransaction& node) { return "begin" + (node.name.empty() ? "" : " " + node.name); }
  static Text Node(const CommitTransaction&) { return "commit"; }
  static Text Node(const RollbackTransaction& node) { return "rollback" + (node.name.empty() ? "" : " " + node.name); }
  static Text Node(const Jump& node) { return node.kind == LoopJump::Break ? "break" : "continue"; }
  static Text Node(const Return&) { return "return"; }
};

}  // namespace rebate::tsql
