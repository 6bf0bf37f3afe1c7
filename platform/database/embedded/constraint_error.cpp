#include "platform/database/embedded/constraint_error.h"

#include <sqlite3.h>

#include <algorithm>

#include "platform/database/tsql/print/definition.h"
#include "platform/files/files.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

using tsql::KeyInfo;
using tsql::TableInfo;

Error Refused(Text description) {
  return Error(database_error::kConstraint, "", std::move(description));
}

// What stands behind "NOT NULL constraint failed: " and its like.
Text Subject(std::string_view message) {
  const std::size_t colon = message.find(": ");
  return Text(message.substr(colon == std::string_view::npos ? message.size() : colon + 2));
}

// "t.a, t.b" gives "a, b".
Text ColumnsOf(Text subject, const Text& table) {
  const Text prefix = table + '.';
  for (std::size_t at; (at = subject.find(prefix)) != Text::npos;) subject.erase(at, prefix.size());
  return subject;
}

Text StoredNames(const KeyInfo& key, const TableInfo& table) {
  Text names;
  for (const Text& name : key.columns) {
    const tsql::ColumnInfo* column = table.FindColumn(name);
    names += (names.empty() ? "" : ", ") + (column != nullptr && !column->alias_of.empty() ? column->alias_of : name);
  }
  return names;
}

// The key that SQLite tells of: by its columns, or by the index beside it that holds the rows with Nulls.
const KeyInfo* FindKey(const Text& subject, const TableInfo& table) {
  const Text columns = ColumnsOf(subject, table.name);
  for (const KeyInfo& key : table.keys) {
    if (!key.IsUnique()) continue;
    if (EqualsIgnoreCase(StoredNames(key, table), columns)) return &key;
    if (subject.find(IndexName(table.name, key) + '\'') != Text::npos) return &key;
  }
  return nullptr;
}

Error DuplicateError(const Text& subject, const TableInfo& table) {
  const KeyInfo* key = FindKey(subject, table);
  const Text object = "'dbo." + table.name + "'";
  // An identity without a key of its own keeps its numbers apart, too.
  const Text name = key != nullptr ? key->name : "PK_" + table.name;
  const KeyInfo::Kind kind = key != nullptr ? key->kind : KeyInfo::Kind::Primary;
  if (kind == KeyInfo::Kind::UniqueIndex) {
    return Refused("Cannot insert duplicate key row in object " + object + " with unique index '" + name + "'.");
  }
  return Refused(Text("Violation of ") + (kind == KeyInfo::Kind::Primary ? "PRIMARY" : "UNIQUE") + " KEY constraint '" +
                 name + "'. Cannot insert duplicate key in object " + object + ".");
}

Error CheckError(const Text& subject, const TableInfo& table, Doing doing, const Text& path) {
  if (subject == tsql::kIdentityCheck) {
    const tsql::ColumnInfo* identity = table.Identity();
    return IdentityOverflow(identity != nullptr ? identity->type : tsql::IntType());
  }
  const tsql::CheckDraft check = tsql::ParseCheckName(subject);
  constexpr std::string_view kVerbs[] = {"INSERT", "UPDATE", "ALTER TABLE"};
  return Refused(
      "The " + Text(kVerbs[static_cast<std::size_t>(doing)]) + " statement conflicted with the CHECK constraint \"" +
      check.name + "\". The conflict occurred in database \"" + (table.temporary ? "tempdb" : DatabaseName(path)) +
      "\", table \"dbo." + table.name + '"' + (check.column.empty() ? "" : ", column '" + check.column + "'") + '.');
}

}  // namespace

Error ConstraintError(int extended_code, std::string_view message, const TableInfo& table, Doing doing,
                      const Text& path) {
  const Text subject = Subject(message);
  switch (extended_code) {
    case SQLITE_CONSTRAINT_NOTNULL:
      return Refused("Cannot insert the value NULL into column '" + ColumnsOf(subject, table.name) + "', table '" +
                     FullName(table, path) + "'; column does not allow nulls. " +
                     (doing == Doing::Update ? "UPDATE" : "INSERT") + " fails.");
    case SQLITE_CONSTRAINT_CHECK:
      return CheckError(subject, table, doing, path);
    default:
      return DuplicateError(subject, table);
  }
}

Error IdentityOverflow(const tsql::DataType& type) {
  Text name(tsql::MessageName(type.kind));
  return Error(database_error::kStatement, "",
               "Arithmetic overflow error converting IDENTITY to data type " + name + '.');
}

Text DatabaseName(const Text& path) {
  return files::FromPath(files::ToPath(path).stem());
}

Text FullName(const TableInfo& table, const Text& path) {
  return (table.temporary ? "tempdb" : DatabaseName(path)) + ".dbo." + table.name;
}

}  // namespace rebate
