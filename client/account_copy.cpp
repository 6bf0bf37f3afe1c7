#include "client/account_copy.h"

#include <algorithm>

#include "client/table_rows.h"
#include "platform/automation/conversion.h"
#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"

namespace rebate {
namespace {

constexpr std::size_t kRowsAStatement = 100;
constexpr std::size_t kBytesAStatement = 60'000;

[[noreturn]] void Refuse(const Text& reason) {
  throw Error(error_number::kInvalidCall, "rebate", reason + ". Nothing was copied");
}

Text ListOf(const std::vector<Text>& columns) {
  Text list;
  for (const Text& column : columns) list += (list.empty() ? "" : ",") + column;
  return list;
}

Text RowText(const Recordset& rows) {
  Text text;
  for (std::size_t i = 0; i < rows.FieldCount(); ++i) text += (i == 0 ? "" : ",") + LiteralOf(rows.FieldValue(i));
  return text;
}

// The rows in an order that is the same on both sides.
std::vector<Text> SortedRows(Recordset& rows) {
  std::vector<Text> texts;
  for (; !rows.Eof(); rows.MoveNext()) texts.push_back(RowText(rows));
  std::sort(texts.begin(), texts.end());
  return texts;
}

Text LastNumberQuery(const Text& table) {
  return "select ident_current('" + table + "')";
}

}  // namespace

std::vector<Text> NumberedTables(Connection& target) {
  std::vector<Text> tables;
  try {
    for (const AccountTable& table : AccountTables()) {
      if (table.identity == nullptr) continue;
      const RecordsetRef found = target.Execute("select count(*) from sys.columns where object_id = object_id('" +
                                                Text(table.name) + "') and is_identity = 1");
      if (ToLong(found->FieldValue(std::size_t{0})) > 0) tables.emplace_back(table.name);
    }
  } catch (const Error& error) {
    // A server that doesn't know the question has no `identity_insert` either.
    if (error.number != database_error::kStatement) throw;
    tables.clear();
  }
  return tables;
}

std::vector<Text> NumberedTables() {
  std::vector<Text> tables;
  for (const AccountTable& table : AccountTables()) {
    if (table.identity != nullptr) tables.emplace_back(table.name);
  }
  return tables;
}

bool TellsLastNumbers(Connection& source) {
  try {
    source.Execute(LastNumberQuery(kSchemeTable));
    return true;
  } catch (const Error& error) {
    if (error.number != database_error::kStatement) throw;
    return false;
  }
}

AccountCopy::AccountCopy(Connection& source, Connection& target, const std::vector<Text>& numbered, bool tells_numbers)
    : source_(source), target_(target), tells_numbers_(tells_numbers) {
  for (const AccountTable& table : AccountTables()) {
    const std::vector<Text> columns = WritableColumns(source, table);
    if (columns.empty()) Refuse("The source is no account: it has no table " + Text(table.name));
    const std::vector<Text> there = WritableColumns(target, table);
    for (const Text& column : columns) {
      if (std::any_of(there.begin(), there.end(), [&](const Text& name) { return EqualsIgnoreCase(name, column); })) {
        continue;
      }
      Refuse("The target's table " + Text(table.name) + " has no column " + column + "; add it there first");
    }
    const bool has_identity = std::find(numbered.begin(), numbered.end(), table.name) != numbered.end();
    tables_.push_back({table, columns, has_identity, TableRows(source, table, columns).Count()});
    total_ += tables_.back().rows;
  }
}

void AccountCopy::CheckTarget() {
  // Schemes are what is told first.
  for (auto at = tables_.rbegin(); at != tables_.rend(); ++at) {
    const Table& table = *at;
    if (Text(table.table.name) == kTypeTable) continue;
    const std::int64_t rows = TableRows(target_, table.table, {}).Count();
    if (rows == 0) continue;
    const bool schemes = Text(table.table.name) == kSchemeTable;
    Refuse("The target " +
           (schemes ? Text("holds schemes") : "isn't empty: its table " + Text(table.table.name) + " holds rows") +
           " (" + std::to_string(rows) + "); a copy needs an account of its own");
  }
}

std::vector<AccountCopy::Copied> AccountCopy::Run(const PercentListener& tell) {
  tell_ = tell;
  target_.Execute("delete from " + Text(kTypeTable));
  std::vector<Copied> copied;
  for (const Table& table : tables_) {
    Copy(table);
    copied.push_back({table.table.name, table.rows});
  }
  for (const Table& table : tables_) Compare(table);
  return copied;
}

void AccountCopy::Copy(const Table& table) {
  const Text setting = Text("set identity_insert ") + table.table.name;
  if (table.has_identity) target_.Execute(setting + " on");
  CopyRows(table);
  if (!table.has_identity) return;
  if (tells_numbers_) DrawNumbers(table);
  target_.Execute(setting + " off");
}

// A number that was drawn for a row that is gone may still be named by others, who must not find a new row under it.
void AccountCopy::DrawNumbers(const Table& table) {
  const Variant last = source_.Execute(LastNumberQuery(table.table.name))->FieldValue(std::size_t{0});
  if (last.IsNull()) return;
  const Text where = Text(" where ") + table.table.identity + " = " + ToText(last);
  if (!source_.Execute(Text("select 1 from ") + table.table.name + where)->Eof()) return;
  target_.Execute(Text("insert into ") + table.table.name + " (" + table.table.identity + ") values (" + ToText(last) +
                  ")");
  target_.Execute(Text("delete from ") + table.table.name + where);
}

void AccountCopy::CopyRows(const Table& table) {
  const Text name = table.table.name;
  const Text head = "insert into " + name + " (" + ListOf(table.columns) + ") values ";
  TableRows(source_, table.table, table.columns).EachPart([&](const TableRows::Part& part) {
    Text statement;
    std::size_t rows = 0;
    const auto flush = [&] {
      if (rows > 0) target_.Execute(statement);
      Advance(static_cast<std::int64_t>(rows));
      rows = 0;
    };
    for (; !part.rows->Eof(); part.rows->MoveNext()) {
      statement = rows == 0 ? head : statement + ",";
      statement += "(" + RowText(*part.rows) + ")";
      if (++rows == kRowsAStatement || statement.size() > kBytesAStatement) flush();
    }
    flush();
  });
}

void AccountCopy::Compare(const Table& table) {
  const Text name = table.table.name;
  const TableRows there(target_, table.table, table.columns);
  if (const std::int64_t rows = there.Count(); rows != table.rows) {
    Refuse("The copy of " + name + " holds " + std::to_string(rows) + " rows, not " + std::to_string(table.rows));
  }
  TableRows(source_, table.table, table.columns).EachPart([&](const TableRows::Part& part) {
    const std::vector<Text> here = SortedRows(*part.rows);
    const std::vector<Text> copies = SortedRows(*there.Find(part.condition));
    const auto [own, copy] = std::mismatch(here.begin(), here.end(), copies.begin(), copies.end());
    if (own != here.end() || copy != copies.end()) {
      Refuse("The copy of " + name + " differs from it: " + (own == here.end() ? "nothing" : *own) + " became " +
             (copy == copies.end() ? "nothing" : *copy));
    }
    Advance(static_cast<std::int64_t>(here.size()));
  });
}

void AccountCopy::Advance(std::int64_t rows) {
  done_ += rows;
  // Each row is read twice.
  tell_(static_cast<int>(total_ == 0 ? 100 : done_ * 50 / total_));
}

}  // namespace rebate
