#include "platform/database/tsql/eval/function.h"

#include <unordered_map>

namespace rebate::tsql {
namespace {

using FunctionsByName = std::unordered_map<std::string_view, const Function*>;

FunctionsByName AllFunctions() {
  FunctionsByName all;
  for (const auto functions : {ArithmeticFunctions(), NumberFunctions(), TextFunctions(), DateFunctions()}) {
    for (const Function& function : functions) all.emplace(function.name, &function);
  }
  return all;
}

}  // namespace

const Function* FindFunction(std::string_view name) {
  static const FunctionsByName kAll = AllFunctions();
  const auto found = kAll.find(name);
  return found == kAll.end() ? nullptr : found->second;
}

}  // namespace rebate::tsql
