#pragma once

#include <span>

#include "platform/database/tsql/eval/value.h"

// The functions and operators of Transact-SQL as functions over values. Null in gives Null out, and the body never sees
// one, but for those that say otherwise.
namespace rebate::tsql {

// One call.
struct Invocation {
  std::span<const Value> arguments;
  std::span<const DataType> types;  // of the arguments; as the binder left them, which has converted each already
  const DataType& result;           // the type of the result, which tells its scale
  TextPool& pool;                   // keeps a text that is made

  const Value& operator[](std::size_t i) const { return arguments[i]; }
  std::int64_t Integer(std::size_t i) const { return arguments[i].integer; }
  double Real(std::size_t i) const { return arguments[i].real; }
  const Decimal& Number(std::size_t i) const { return arguments[i].decimal; }
  std::string_view TextAt(std::size_t i) const { return arguments[i].text; }
  std::size_t size() const { return arguments.size(); }
};

using FunctionBody = Value (*)(const Invocation&);

struct Function {
  std::string_view name;  // by which programs know it; it never changes, since account files hold such programs
  FunctionBody body;
  bool sees_nulls = false;
  bool varies = false;  // the same arguments don't always give the same
};

// The function of the name; null where there is none.
const Function* FindFunction(std::string_view name);

// ---- the sources that define functions; FindFunction looks through all ----
std::span<const Function> ArithmeticFunctions();  // + - * / % & | ^ ~ and the sign, by type
std::span<const Function> NumberFunctions();      // abs, round, power, ...
std::span<const Function> TextFunctions();        // len, substring, like, ...
std::span<const Function> DateFunctions();        // dateadd, year, ...

}  // namespace rebate::tsql
