#include "platform/database/embedded/constraint_error.h"

namespace rebate {
namespace {

// "NOT NULL constraint failed: t.a" and "UNIQUE constraint failed: t.a, t.b" give "a" and "a, b".
Text ColumnsOf(const Text& message, const Text& table) {
  const std::size_t colon = message.find(": ");
  Text columns = colon == Text::npos ? Text() : message.substr(colon + 2);
  const Text prefix = table + '.';
  for (std::size_t at; (at = columns.find(prefix)) != Text::npos;) columns.erase(at, prefix.size());
  return columns;
}

Text DuplicateText(const Text& index, const Text& table) {
  const Text object = "'dbo." + table + "'";
  if (index.starts_with("PK_")) {
    return "Violation of PRIMARY KEY constraint '" + index + "'. Cannot insert duplicate key in object " + object + ".";
  }
  if (index.starts_with("UQ_")) {
    return "Violation of UNIQUE KEY constraint '" + index + "'. Cannot insert duplicate key in object " + object + ".";
  }
  return "Cannot insert duplicate key row in object " + object + " with unique index '" + index + "'.";
}

}  // namespace

Error ConstraintError(int extended_code, const Text& message, const tsql::Command& command, AccountCatalog& catalog) {
  const tsql::TablePtr table = command.target ? command.target : catalog.Find(command.draft.name);
  if (!table) return Error(database_error::kConstraint, "", message);
  const Text columns = ColumnsOf(message, table->name);
  if (extended_code == SQLITE_CONSTRAINT_NOTNULL) {
    return Error(database_error::kConstraint, "",
                 "Cannot insert the value NULL into column '" + columns + "', table '" + table->name +
                     "'; column does not allow nulls. " +
                     (command.kind == tsql::Command::Kind::Change ? "UPDATE" : "INSERT") + " fails.");
  }
  return Error(database_error::kConstraint, "", DuplicateText(catalog.UniqueIndexOver(*table, columns), table->name));
}

}  // namespace rebate
