#include "platform/database/embedded/account_upgrade.h"

#include <algorithm>

#include "platform/database/embedded/account_catalog.h"
#include "platform/database/embedded/table_rebuild.h"
#include "platform/values/ascii.h"
#include "platform/values/number_text.h"

namespace rebate {
namespace {

using tsql::DataType;
using tsql::KeyInfo;
using tsql::TypeKind;

// ---- amounts ----

std::optional<Decimal> DigitsMeant(double number) {
  const Text text = NumberText(number);
  if (text.find_first_of("eE") == Text::npos) return Decimal::Parse(text);
  const std::optional<Text> digits = PlainDigits(text);
  return digits ? Decimal::Parse(*digits) : std::nullopt;
}

std::optional<Decimal> AmountOf(sqlite3_value* value) {
  switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
      return Decimal(sqlite3_value_int64(value));
    case SQLITE_FLOAT:
      return DigitsMeant(sqlite3_value_double(value));
    default:
      return Decimal::Parse(TextOf(value));
  }
}

// account_amount(value, scale, column): the amount as version 2 keeps it.
void GiveAmount(sqlite3_context* context, int, sqlite3_value** arguments) noexcept {
  if (sqlite3_value_type(arguments[0]) == SQLITE_NULL) return sqlite3_result_null(context);
  Guarded(context, [&] {
    std::optional<Decimal> amount = AmountOf(arguments[0]);
    if (amount) amount = amount->WithScale(sqlite3_value_int(arguments[1]));
    if (!amount) {
      throw Error(database_error::kConnection, "",
                  "the column " + Text(TextOf(arguments[2])) + " holds what is no amount");
    }
    const Text key = amount->ToKey();
    sqlite3_result_text(context, key.data(), static_cast<int>(key.size()), SQLITE_TRANSIENT);
  });
}

// t_assign(value, from, to): in a default of version 1, the value of a column's type; account_amount converts it.
void GiveAssigned(sqlite3_context* context, int, sqlite3_value** arguments) noexcept {
  sqlite3_result_value(context, arguments[0]);
}

// The functions that the upgrade needs, for its time.
class UpgradeFunctions {
 public:
  explicit UpgradeFunctions(sqlite3* database) : database_(database) { Register(GiveAmount, GiveAssigned); }
  UpgradeFunctions(const UpgradeFunctions&) = delete;
  UpgradeFunctions& operator=(const UpgradeFunctions&) = delete;
  ~UpgradeFunctions() { Register(nullptr, nullptr); }

 private:
  using Function = void (*)(sqlite3_context*, int, sqlite3_value**);
  void Register(Function amount, Function assigned) {
    for (const auto& [name, function] : {std::pair("account_amount", amount), std::pair("t_assign", assigned)}) {
      const int result = sqlite3_create_function_v2(database_, name, 3, SQLITE_UTF8 | SQLITE_DETERMINISTIC, nullptr,
                                                    function, nullptr, nullptr, nullptr);
      if (function != nullptr) NeedDone(result);
    }
  }
  sqlite3* database_;
};

// ---- a table of version 1 ----

class TableUpgrade {
 public:
  TableUpgrade(sqlite3* database, const Text& path, Text name)
      : database_(database), path_(path), name_(std::move(name)) {
    draft_.name.name = name_;
  }

  void Run() {
    ReadColumns();
    ReadIndexes();
    if (identity_ && !has_primary_) draft_.keys.push_back({"PK_" + name_, true, {*identity_}});
    tsql::TableInfo info = InfoOf(draft_);
    info.keys.insert(info.keys.end(), indexes_.begin(), indexes_.end());
    std::vector<Text> statements = TableStatements(draft_, info);
    if (info.counted_identity) statements.push_back(CounterOfOldRows());
    std::vector<Text> index_statements;
    std::vector<Text> index_keys;
    for (const KeyInfo& key : info.keys) {
      for (Text& statement : KeyStatements(key, info)) {
        index_statements.push_back(std::move(statement));
        index_keys.push_back(key.name);
      }
    }
    const Rebuild rebuild = RebuildTable(database_, path_, info, statements, copies_, index_statements);
    if (rebuild.result == SQLITE_OK) return;
    if (rebuild.indexes_done < index_keys.size() && (rebuild.result == SQLITE_CONSTRAINT_UNIQUE)) {
      Refuse("several rows of table " + name_ + " have the same key " + index_keys[rebuild.indexes_done] +
             ", now that the width of letters doesn't count and a Null equals another one");
    }
    Refuse("rows of table " + name_ + " break its definition");
  }

 private:
  [[noreturn]] void Refuse(Text reason) { throw Error(database_error::kConnection, "", std::move(reason)); }

  // SQLite tells the type of a computed column with words behind it, and some types in capitals.
  static std::string_view WithoutGenerated(std::string_view declared) {
    return declared.substr(0, declared.find(" GENERATED ALWAYS"));
  }

  static DataType OldType(std::string_view declared) {
    Text text = AsciiLower(WithoutGenerated(declared));
    for (std::string_view name : {"decimal", "money"}) {
      if (text.starts_with(name)) text.insert(name.size(), " text");
    }
    return tsql::ParseDeclaration(text).value_or(tsql::TextType(TypeKind::NVarChar, DataType::kMaxLength));
  }

  Text Definition() {
    RowQuery rows(database_, path_, "SELECT sql FROM main.sqlite_schema WHERE type='table' AND name=?1", name_);
    return rows.Next() ? rows.TextAt(0) : Text();
  }

  void ReadColumns() {
    const Text definition = Definition();
    RowQuery rows(database_, path_,
                  "SELECT name, type, \"notnull\", pk, hidden, dflt_value FROM pragma_table_xinfo(?1, 'main')", name_);
    while (rows.Next()) {
      tsql::ColumnDraft column;
      column.info.name = rows.TextAt(0);
      column.info.type = OldType(rows.TextAt(1));
      column.info.identity = rows.NumberAt(3) != 0;
      column.info.nullable = rows.NumberAt(2) == 0 && !column.info.identity;
      if (rows.NumberAt(4) != 0) {
        column.computed_sql = SecondName(definition, column.info.name, rows.TextAt(1));
      } else {
        if (!rows.IsNull(5)) column.default_sql = NewDefault(rows.TextAt(5), column.info);
        copies_.push_back({column.info.name, NewValue(tsql::SqlName(column.info.name), column.info)});
      }
      if (column.info.identity) identity_ = column.info.name;
      draft_.columns.push_back(std::move(column));
    }
  }

  // A computed column of version 1 stands for another one, or holds a calculation in words that are gone. Gives the
  // other one as SQLite's text.
  Text SecondName(std::string_view definition, const Text& column, std::string_view declared) {
    const Text type = tsql::SqlName(column) + ' ' + AsciiLower(WithoutGenerated(declared));
    for (std::string_view collation : {"", " COLLATE account_text"}) {
      const Text head = type + Text(collation) + " GENERATED ALWAYS AS (";
      const std::size_t at = definition.find(head + '"');
      if (at == std::string_view::npos) continue;
      const std::string_view behind = definition.substr(at + head.size());
      const std::size_t end = behind.find('"', 1);
      if (behind.substr(std::min(end, behind.size())).starts_with("\") VIRTUAL"))
        return Text(behind.substr(0, end + 1));
    }
    Refuse("column " + column + " of table " + name_ + " is computed in a way that can't be carried over");
  }

  static int AmountScale(const DataType& type) { return type.kind == TypeKind::Decimal ? type.scale : 4; }

  Text NewValue(const Text& sql, const tsql::ColumnInfo& column) const {
    if (!IsExactNumber(column.type.kind)) return sql;
    return "account_amount(" + sql + ',' + std::to_string(AmountScale(column.type)) + ",'" +
           Replace(column.name + " of table " + name_, "'", "''") + "')";
  }

  Text NewDefault(const Text& sql, const tsql::ColumnInfo& column) {
    if (sql == "NULL") return sql;
    if (IsExactNumber(column.type.kind) && Replace(sql, "t_assign(", "").find("t_") == Text::npos) {
      RowQuery value(database_, path_, "SELECT " + NewValue(sql, column));
      return value.Next() ? '\'' + value.TextAt(0) + '\'' : sql;
    }
    const bool constant = sql.front() == '\'' || sql.find_first_of("(\"") == Text::npos;
    if (constant) return sql;
    if (sql == "t_now()" && IsDate(column.type.kind)) return Text(tsql::kNowDefault);
    Refuse("the default of column " + column.name + " of table " + name_ + " can't be carried over");
  }

  void ReadIndexes() {
    RowQuery rows(database_, path_,
                  "SELECT l.name, l.\"unique\", i.name FROM pragma_index_list(?1, 'main') l, "
                  "pragma_index_info(l.name, 'main') i ORDER BY l.seq DESC, i.seqno",
                  name_);
    std::vector<KeyInfo> keys;
    Text last;
    while (rows.Next()) {
      const Text index = rows.TextAt(0);
      if (index != last) {
        keys.push_back({index.substr(std::min(name_.size() + 1, index.size())),
                        rows.NumberAt(1) != 0 ? KeyInfo::Kind::UniqueIndex : KeyInfo::Kind::Index,
                        {}});
      }
      last = index;
      keys.back().columns.push_back(rows.TextAt(2));
    }
    for (KeyInfo& key : keys) Sort(std::move(key));
  }

  // Version 1 told a key by the beginning of its name.
  void Sort(KeyInfo key) {
    const bool primary = key.name == "PK_" + name_;
    if (key.IsUnique() && (primary || key.name.starts_with("UQ_" + name_))) {
      has_primary_ = has_primary_ || primary;
      draft_.keys.push_back({std::move(key.name), primary, std::move(key.columns)});
    } else {
      indexes_.push_back(std::move(key));
    }
  }

  Text CounterOfOldRows() const {
    return "UPDATE main." + Text(tsql::kCounterTable) + " SET last=(SELECT seq FROM main.sqlite_sequence WHERE name='" +
           Text(kOldRows) + "') WHERE table_name='" + Replace(tsql::LowerKey(name_), "'", "''") + '\'';
  }

  sqlite3* database_;
  const Text& path_;
  Text name_;
  tsql::TableDraft draft_;
  std::vector<KeyInfo> indexes_;
  std::vector<ColumnCopy> copies_;
  std::optional<Text> identity_;
  bool has_primary_ = false;
};

std::int64_t VersionOf(sqlite3* database, const Text& path) {
  RowQuery rows(database, path, "PRAGMA main.user_version");
  return rows.Next() ? rows.NumberAt(0) : 0;
}

void UpgradeTables(sqlite3* database, const Text& path) {
  std::vector<Text> names;
  {
    RowQuery rows(database, path,
                  "SELECT name FROM main.sqlite_schema WHERE type='table' AND substr(name,1,7)<>'sqlite_' AND name<>?1",
                  kViewTable);
    while (rows.Next()) names.push_back(rows.TextAt(0));
  }
  Run(database, CounterTableStatement(), path);
  for (const Text& name : names) TableUpgrade(database, path, name).Run();
  Run(database, "PRAGMA main.user_version=" + std::to_string(kAccountVersion), path);
}

}  // namespace

Text CounterTableStatement() {
  return "CREATE TABLE main." + Text(tsql::kCounterTable) +
         "(table_name TEXT NOT NULL PRIMARY KEY,seed INTEGER NOT NULL,step INTEGER NOT NULL,last INTEGER) WITHOUT "
         "ROWID";
}

void UpgradeAccount(sqlite3* database, const Text& path) {
  const UpgradeFunctions functions(database);
  Run(database, "BEGIN IMMEDIATE", path);
  try {
    if (VersionOf(database, path) < kAccountVersion) UpgradeTables(database, path);
    Run(database, "COMMIT", path);
  } catch (const Error& error) {
    sqlite3_exec(database, "ROLLBACK", nullptr, nullptr, nullptr);
    if (error.number != database_error::kConnection || error.description.find(path) != Text::npos) throw;
    throw Error(error.number, "",
                "The account " + path + " can't be brought to this version: " + error.description +
                    ". Nothing was changed; mend it with the version that made the account.");
  }
}

}  // namespace rebate
