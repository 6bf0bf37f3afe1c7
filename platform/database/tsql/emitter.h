#pragma once

#include <set>

#include "platform/database/tsql/command.h"
#include "platform/database/tsql/scope.h"

namespace rebate::tsql {

[[noreturn]] void RefuseStatement(Text description);

// Turns the trees of one statement into text of SQLite. Each of its files is about one kind of tree.
class Emitter {
 public:
  Emitter(const Surroundings& surroundings, Command& command)
      : catalog_(surroundings.catalog),
        literals_(surroundings.literals),
        variables_(surroundings.variables),
        command_(command) {}

  // ---- statements (emit_change.cpp) ----
  void EmitInsert(const Insert& insert);
  void EmitUpdate(const Update& update);
  void EmitDelete(const Delete& statement);

  // ---- queries (emit_query.cpp) ----
  struct Output {
    Text name;
    DataType type;
    bool nullable;
    bool collated;
    bool identity;
    Text variable;
  };
  // What the values of a select are turned into: the types in which the selects of a union meet, or those of the
  // columns that they are assigned to. Empty where they stay as they are.
  struct Targets {
    std::vector<DataType> types;
    Purpose purpose = Purpose::Cast;
  };

  // The select as text. `top_level` lets it have an order without top. Its columns are told in `outputs`, and carry the
  // names c1, c2, ... where `name_columns` is set.
  Text EmitSelect(const Select& select, const Scope* outer, std::vector<Output>& outputs, bool top_level,
                  bool name_columns);
  // A select whose values become those of `types`, one for each column.
  Text EmitSelectInto(const Select& select, const std::vector<DataType>& types);

  // ---- sources (emit_from.cpp) ----
  // The sources of a from clause as text; what must hold between them beyond their own conditions goes to `conditions`.
  Text EmitFrom(const std::vector<TableSourcePtr>& from, Scope& scope, std::vector<Text>& conditions);
  // A table as the one source of a statement that changes it.
  void AddTarget(const TablePtr& table, std::string_view name, Scope& scope);
  TablePtr UseObject(const ObjectName& name);

  // ---- expressions (emit_expression.cpp) ----
  Term EmitExpression(const Expression& expression, Scope& scope);
  Text EmitPredicate(const Expression& expression, Scope& scope);
  // The term's text with the type that it has by itself.
  Text Render(const Term& term);
  // As a value that can meet others of `type`: in a comparison, a union, a case.
  Text Coerce(const Term& term, const DataType& type, Purpose purpose = Purpose::Cast);
  // Exactly a value of `type`.
  Text ConvertTo(const Term& term, const DataType& type, Purpose purpose, Text style = {});
  // The text of a term, collated where it is text.
  Text Collated(const Term& term, Text sql) const;
  Text AddParameter(Parameter parameter);

  // ---- functions (emit_function.cpp) ----
  Term EmitFunction(const FunctionCall& call, Scope& scope);

  // Literals are written into the text instead of being bound, as where a definition is kept.
  void InlineLiterals() { inline_literals_ = true; }
  const LiteralToken& LiteralAt(std::size_t index) const { return literals_[index]; }

  static bool IsAggregate(const FunctionCall& call);
  // Whether an aggregate stands in the expression, outside of selects in it.
  static bool HasAggregate(const Expression& expression);

 private:
  Term Emit(const Literal& literal);
  Term EmitColumn(const ColumnReference& reference, Scope& scope);
  Term EmitVariable(const VariableReference& reference);
  Term EmitUnary(const Unary& unary, Scope& scope);
  Term EmitBinary(const Binary& binary, Scope& scope);
  Term EmitSum(const Term& left, const Term& right, BinaryOperator operation);
  Term EmitArithmetic(const Term& left, const Term& right, BinaryOperator operation);
  Term EmitCase(const Case& node, Scope& scope);
  Term EmitCast(const Cast& cast, Scope& scope);
  Term EmitScalarSelect(const ScalarSelect& node, Scope& scope);
  Text EmitComparison(Term left, Term right, std::string_view sql_operator);
  Text EmitInList(const InList& in, Scope& scope);
  Text EmitInSelect(const InSelect& in, Scope& scope);
  Text EmitBetween(const Between& between, Scope& scope);
  Text EmitLike(const Like& like, Scope& scope);
  void MeasureLiteral(Term& term);

  Term EmitAggregate(const FunctionCall& call, Scope& scope);
  Term EmitConditional(const FunctionCall& call, Scope& scope, std::string_view name);
  Term EmitDateFunction(const FunctionCall& call, Scope& scope, std::string_view name);
  Term EmitNumberFunction(const FunctionCall& call, Scope& scope, std::string_view name);
  std::optional<Term> EmitSystemFunction(const FunctionCall& call, std::string_view name);

  // A select's items as they are written so far.
  struct Items {
    std::vector<Output>& outputs;
    std::vector<Text> texts;
    const Targets& targets;
  };
  Text EmitCore(const SelectCore& core, const std::vector<OrderItem>& order, const Scope* outer,
                std::vector<Output>& outputs, const Targets& targets, bool name_columns);
  Text EmitUnion(const Select& select, const Scope* outer, std::vector<Output>& outputs, bool name_columns);
  void EmitItems(const SelectCore& core, Scope& scope, Items& items);
  void AddItem(const Term& term, Text name, Text variable, Items& items);
  Text EmitOrder(const std::vector<OrderItem>& order, bool distinct, Scope& scope, const Items& items);
  std::vector<DataType> UnionTypes(const Select& select, const Scope* outer);
  Term EmitHit(const Scope::Hit& hit, Scope& scope);

  Text EmitSource(const TableSource& source, Scope& scope);
  Text EmitNamed(const NamedTable& named, Scope& scope);
  Text EmitDerived(const DerivedTable& derived, Scope& scope);
  Text EmitView(const ViewDefinition& view, Scope& scope, Source source);
  Text EmitJoin(const Join& join, Scope& scope);
  Text EmitLed(const std::vector<const Join*>& chain, std::size_t leader, Scope& scope, std::vector<Text>& conditions);
  void AddSource(Source source, Scope& scope);
  Text NewAlias(std::string_view name);

  using Columns = std::vector<const ColumnInfo*>;
  Columns InsertColumns(const Insert& insert, const TableInfo& table);
  Text EmitRows(const Insert& insert, Columns& columns);
  Text EmitWhere(const ExpressionPtr& where, Scope& scope, std::vector<Text> conditions = {});
  // The table that an update or a delete with a from clause changes, and how the clause knows it.
  TablePtr FindTarget(const ObjectName& target, Scope& scope, Text& from, Text& alias);

  Catalog& catalog_;
  std::span<const LiteralToken> literals_;
  const VariableTypes& variables_;
  Command& command_;
  bool inline_literals_ = false;
  bool in_view_ = false;
  std::set<Text> aliases_;
  int view_depth_ = 0;
};

}  // namespace rebate::tsql
