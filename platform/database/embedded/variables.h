#pragma once

#include <unordered_map>

#include "platform/database/tsql/eval/value.h"

namespace rebate {

// The variables of a text while it runs. One that nothing was assigned to is Null.
class Variables {
 public:
  tsql::Value Get(const Text& key) const {
    const auto found = variables_.find(key);
    return found == variables_.end() ? tsql::Value() : found->second.value;
  }

  // Keeps a copy of the value's text.
  void Set(const Text& key, const tsql::Value& value) {
    Variable& variable = variables_[key];
    Text text(value.text);
    variable.value = value;
    variable.text = std::move(text);
    variable.value.text = variable.text;
  }

 private:
  struct Variable {
    tsql::Value value;
    Text text;
  };
  std::unordered_map<Text, Variable> variables_;
};

}  // namespace rebate
