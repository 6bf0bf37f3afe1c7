#pragma once

#include <sqlite3.h>

#include <new>
#include <span>

#include "platform/automation/error.h"
#include "platform/database/tsql/value.h"

namespace rebate {

// Teaches a connection the collation of the account's texts and the functions that emitted statements call.
void RegisterFunctions(sqlite3* database);

// ---- for the files that define functions ----

using SqlFunction = void (*)(sqlite3_context* context, int count, sqlite3_value** arguments);

struct FunctionDefinition {
  const char* name;
  int arguments;  // -1 for any number
  SqlFunction function;
  bool deterministic = true;
};

std::span<const FunctionDefinition> TextFunctions();
std::span<const FunctionDefinition> NumberFunctions();
std::span<const FunctionDefinition> DateFunctions();

// Wraps a body that works with values, for a function that is Null where one of its arguments is: what it raises
// becomes the statement's error.
template <void (*Body)(sqlite3_context*, int, sqlite3_value**)>
void Guarded(sqlite3_context* context, int count, sqlite3_value** arguments) {
  for (int i = 0; i < count; ++i) {
    if (sqlite3_value_type(arguments[i]) == SQLITE_NULL) return;
  }
  try {
    Body(context, count, arguments);
  } catch (const Error& error) {
    sqlite3_result_error(context, error.description.data(), static_cast<int>(error.description.size()));
  } catch (const std::bad_alloc&) {
    sqlite3_result_error_nomem(context);
  }
}

inline std::string_view TextOf(sqlite3_value* value) {
  const auto* text = reinterpret_cast<const char*>(sqlite3_value_text(value));
  return {text != nullptr ? text : "", static_cast<std::size_t>(sqlite3_value_bytes(value))};
}

tsql::Value ValueOf(sqlite3_value* value);
void GiveText(sqlite3_context* context, std::string_view text);
void Give(sqlite3_context* context, const tsql::Value& value);

}  // namespace rebate
