#pragma once

#include <span>
#include <unordered_map>

#include "platform/database/tsql/bind/bound_tree.h"

namespace rebate::tsql {

using VariableTypes = std::unordered_map<Text, DataType>;  // by LowerKey of the name, with its '@'

struct ObjectUse {
  ObjectName name;
  std::uint64_t signature;
};

// What a statement is bound against, and what the binding rests on.
struct BindContext {
  Catalog& catalog;
  std::span<const LiteralToken> literals;
  const VariableTypes& variables;

  // What comes of the statement is good as long as these objects are as they were,
  std::vector<ObjectUse> uses = {};
  // and for literals with the texts that these had.
  std::vector<std::size_t> fixed_literals = {};

  // Literals become constants: inside a view, whose literals aren't those of the batch, and in a definition.
  bool constant_literals = false;
  // Inside a definition that the account keeps: there are no variables, and nothing of the statement that runs.
  bool in_definition = false;
  // The lengths of text literals matter, as where a select makes a table.
  bool measures_texts = false;
  int view_depth = 0;
  // Those of the statement, the innermost `with` last.
  std::vector<bound::CommonTablePtr> common_tables = {};
};

// Raises -2147217900 with the server's text.
[[noreturn]] void RefuseStatement(Text description);
// Raises the refusal of what the dialect has and an embedded account doesn't.
[[noreturn]] void RefuseUnsupported(std::string_view name);

// The object of the name, noted among the uses; raises "Invalid object name 'x'.".
TablePtr UseObject(BindContext& context, const ObjectName& name);
// The literal's value becomes part of what comes of the statement.
void FixLiteral(BindContext& context, std::size_t literal);

}  // namespace rebate::tsql
