#include "platform/database/embedded/functions.h"

#include "platform/database/tsql/command.h"
#include "platform/database/tsql/utf8.h"

namespace rebate {
namespace {

int CompareTexts(void*, int left_size, const void* left, int right_size, const void* right) {
  return tsql::CompareText({static_cast<const char*>(left), static_cast<std::size_t>(left_size)},
                           {static_cast<const char*>(right), static_cast<std::size_t>(right_size)});
}

void Register(sqlite3* database, const FunctionDefinition& definition) {
  const int flags = SQLITE_UTF8 | SQLITE_INNOCUOUS | (definition.deterministic ? SQLITE_DETERMINISTIC : 0);
  sqlite3_create_function_v2(database, definition.name, definition.arguments, flags, nullptr, definition.function,
                             nullptr, nullptr, nullptr);
}

}  // namespace

void RegisterFunctions(sqlite3* database) {
  sqlite3_create_collation_v2(database, Text(tsql::kCollation).c_str(), SQLITE_UTF8, nullptr, CompareTexts, nullptr);
  for (const auto& functions : {TextFunctions(), NumberFunctions(), DateFunctions()}) {
    for (const FunctionDefinition& definition : functions) Register(database, definition);
  }
}

tsql::Value ValueOf(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return tsql::Value::Of(std::int64_t{sqlite3_value_int64(value)});
    case SQLITE_FLOAT:
      return tsql::Value::Of(sqlite3_value_double(value));
    case SQLITE_NULL:
      return {};
    default:
      return tsql::Value::Of(TextOf(value));
  }
}

void GiveText(sqlite3_context* context, std::string_view text) {
  sqlite3_result_text(context, text.data() != nullptr ? text.data() : "", static_cast<int>(text.size()),
                      SQLITE_TRANSIENT);
}

void Give(sqlite3_context* context, const tsql::Value& value) {
  switch (value.kind) {
    case tsql::Value::Kind::Null:
      sqlite3_result_null(context);
      break;
    case tsql::Value::Kind::Integer:
      sqlite3_result_int64(context, value.integer);
      break;
    case tsql::Value::Kind::Real:
      sqlite3_result_double(context, value.real);
      break;
    case tsql::Value::Kind::Text:
      GiveText(context, value.text);
      break;
  }
}

}  // namespace rebate
