#pragma once

#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "platform/database/tsql/parser.h"

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
      return "{" + Of(*derived->select) + "} " + derived->alias;
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
  static Text Node(const Cast& node) {
    const Text type = std::to_string(static_cast<int>(node.type.kind)) + "/" + std::to_string(node.type.length) + "/" +
                      std::to_string(node.type.precision) + "/" + std::to_string(node.type.scale);
    return (node.convert ? "(convert " : "(cast ") + Of(node.operand) + " " + type + Clause("style", node.style) + ")";
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
  static Text Node(const SelectStatement& node) { return Of(*node.select); }
  static Text Node(const Insert& node) {
    Text text = "insert " + Of(node.table) + Names(node.columns);
    for (const auto& row : node.rows) text += " row:" + List(row);
    if (node.select != nullptr) text += " " + Of(*node.select);
    return text + (node.default_values ? " default" : "");
  }
  static Text Node(const Update& node) {
    Text text = "update " + Of(node.target);
    for (const Assignment& set : node.assignments) {
      text +=
          " " + set.variable + (set.qualifier.empty() ? "" : set.qualifier + ".") + set.column + ":=" + Of(set.value);
    }
    return text + From(node.from) + Clause("where", node.where);
  }
  static Text Node(const Delete& node) {
    return "delete " + Of(node.target) + From(node.from) + Clause("where", node.where);
  }
  static Text Node(const Truncate& node) { return "truncate " + Of(node.table); }
  static Text Node(const CreateTable& node) {
    Text text = "table " + Of(node.table);
    for (const ColumnDefinition& column : node.columns) {
      text +=
          " " + column.name + ":" + std::to_string(static_cast<int>(column.type.kind)) + (column.nullable ? "?" : "!");
      if (column.identity) {
        text += "identity" + std::to_string(column.identity_seed) + "/" + std::to_string(column.identity_step);
      }
      text += Text(column.primary_key ? "primary" : "") + (column.unique ? "unique" : "");
      if (column.default_value != nullptr) text += "=" + Of(column.default_value);
      if (column.computed != nullptr) text += "as" + Of(column.computed);
    }
    for (const KeyConstraint& key : node.keys) text += (key.primary ? " primary" : " unique") + Names(key.columns);
    return text;
  }
  static Text Node(const CreateIndex& node) {
    return (node.unique ? "unique-index " : "index ") + node.name + " " + Of(node.table) + Names(node.columns);
  }
  static Text Node(const CreateView& node) {
    return "view " + Of(node.view) + Names(node.columns) + " " + Of(*node.select) + " <" + node.source + ">";
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
    return "declare " + node.variable + ":" + std::to_string(static_cast<int>(node.type.kind)) +
           (node.value == nullptr ? "" : "=" + Of(node.value));
  }
  static Text Node(const SetVariable& node) { return "set " + node.variable + ":=" + Of(node.value); }
  static Text Node(const SetOption& node) {
    return "option " + node.option + (node.table.name.empty() ? "" : " " + Of(node.table)) + (node.on ? " on" : " off");
  }
  static Text Node(const Print& node) { return "print " + Of(node.message); }
  static Text Node(const BeginTransaction&) { return "begin"; }
  static Text Node(const CommitTransaction&) { return "commit"; }
  static Text Node(const RollbackTransaction&) { return "rollback"; }
  static Text Node(const Jump& node) { return node.kind == LoopJump::Break ? "break" : "continue"; }
  static Text Node(const Return&) { return "return"; }
};

}  // namespace rebate::tsql
