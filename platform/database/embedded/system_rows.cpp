#include "platform/database/embedded/system_rows.h"

#include <algorithm>

#include "platform/database/embedded/account_catalog.h"
#include "platform/database/embedded/constraint_error.h"
#include "platform/database/tsql/bind/bind_statement.h"

namespace rebate {
namespace {

using tsql::ColumnInfo;
using tsql::DataType;
using tsql::KeyInfo;
using tsql::TableInfo;
using tsql::TypeKind;

constexpr const char* kCollationName = "Chinese_PRC_CI_AS";
constexpr SystemCell kNull{};

SystemCell Cell(std::int64_t number) {
  return number;
}
SystemCell Cell(std::string_view text) {
  return Text(text);
}

// ---- types in numbers ----

struct TypeFacts {
  TypeKind kind;
  int id;
  int bytes;      // 0 where the type's length or precision tells
  int precision;  // as sys.columns has it
  int scale;
};
constexpr TypeFacts kTypeFacts[] = {
    {TypeKind::Bit, 104, 1, 1, 0},           {TypeKind::TinyInt, 48, 1, 3, 0},      {TypeKind::SmallInt, 52, 2, 5, 0},
    {TypeKind::Int, 56, 4, 10, 0},           {TypeKind::BigInt, 127, 8, 19, 0},     {TypeKind::Decimal, 106, 0, 0, 0},
    {TypeKind::Money, 60, 8, 19, 4},         {TypeKind::SmallMoney, 122, 4, 10, 4}, {TypeKind::Float, 62, 8, 53, 0},
    {TypeKind::Real, 59, 4, 24, 0},          {TypeKind::Char, 175, 0, 0, 0},        {TypeKind::VarChar, 167, 0, 0, 0},
    {TypeKind::NChar, 239, 0, 0, 0},         {TypeKind::NVarChar, 231, 0, 0, 0},    {TypeKind::DateTime, 61, 8, 23, 3},
    {TypeKind::SmallDateTime, 58, 4, 16, 0}, {TypeKind::Date, 40, 3, 10, 0},        {TypeKind::DateTime2, 42, 0, 0, 0}};

TypeFacts FactsOf(const DataType& type) {
  TypeFacts facts =
      *std::find_if(std::begin(kTypeFacts), std::end(kTypeFacts), [&](const auto& f) { return f.kind == type.kind; });
  if (type.kind == TypeKind::Decimal) {
    facts.precision = type.precision;
    facts.scale = type.scale;
    facts.bytes = type.precision <= 9 ? 5 : type.precision <= 19 ? 9 : type.precision <= 28 ? 13 : 17;
  } else if (type.kind == TypeKind::DateTime2) {
    facts.precision = type.scale == 0 ? 19 : 20 + type.scale;
    facts.scale = type.scale;
    facts.bytes = type.scale <= 2 ? 6 : type.scale <= 4 ? 7 : 8;
  } else if (IsText(type.kind)) {
    const bool wide = IsNational(type.kind) && type.length != DataType::kMaxLength;
    facts.bytes = wide ? 2 * type.length : type.length;
  }
  return facts;
}

// The type's name as programs write it.
Text TypeName(const DataType& type) {
  const Text declared = Declaration(type);
  return declared.substr(0, declared.find_first_of(" ("));
}

SystemCell CollationOf(const DataType& type) {
  return IsText(type.kind) ? Cell(kCollationName) : kNull;
}

// A default as a server would write it; Null for what the account keeps in its own words.
SystemCell DefaultOf(const ColumnInfo& column) {
  const Text& sql = column.default_sql;
  if (sql.empty()) return kNull;
  const bool number = sql.find_first_not_of("0123456789.-") == Text::npos;
  if (number) return Cell("((" + sql + "))");
  if (sql == "NULL") return Cell("(NULL)");
  if (sql.size() < 2 || sql.front() != '\'' || sql.find('\'', 1) != sql.size() - 1) return kNull;
  return IsExactNumber(column.type.kind) ? Cell("((" + sql.substr(1, sql.size() - 2) + "))") : Cell('(' + sql + ')');
}

// ---- what there is ----

const std::vector<ColumnInfo>& ColumnsOf(AccountCatalog& catalog, const TableInfo& object,
                                         std::vector<ColumnInfo>& of_view) {
  if (!object.view) return object.columns;
  try {
    of_view = tsql::ViewColumns(catalog, *object.view, object.name);
  } catch (const Error& error) {
    // A view whose tables are gone has no columns to tell of.
    if (error.number != database_error::kStatement) throw;
  }
  return of_view;
}

template <typename Row>
std::vector<SystemRow> EachColumn(AccountCatalog& catalog, const Row& row) {
  std::vector<SystemRow> rows;
  for (const tsql::TablePtr& object : catalog.Objects()) {
    std::vector<ColumnInfo> of_view;
    std::int64_t position = 0;
    for (const ColumnInfo& column : ColumnsOf(catalog, *object, of_view)) {
      rows.push_back(row(*object, column, ++position));
    }
  }
  return rows;
}

struct ObjectFacts {
  Text name;
  std::string_view type;
  std::string_view description;
  std::int64_t parent = 0;
};

// The account's tables and views, and the keys that are objects of their own.
template <typename Row>
std::vector<SystemRow> EachObject(AccountCatalog& catalog, const Row& row) {
  std::vector<SystemRow> rows;
  for (const tsql::TablePtr& object : catalog.Objects()) {
    rows.push_back(row(ObjectFacts{object->name, object->view ? "V " : "U ", object->view ? "VIEW" : "USER_TABLE"}));
    for (const KeyInfo& key : object->keys) {
      const bool primary = key.kind == KeyInfo::Kind::Primary;
      if (!primary && key.kind != KeyInfo::Kind::UniqueConstraint) continue;
      rows.push_back(
          row(ObjectFacts{key.name, primary ? "PK" : "UQ", primary ? "PRIMARY_KEY_CONSTRAINT" : "UNIQUE_CONSTRAINT",
                          AccountCatalog::IdOf(object->name)}));
    }
  }
  return rows;
}

// ---- the rows of each ----

std::vector<SystemRow> Tables(AccountCatalog& catalog) {
  std::vector<SystemRow> rows;
  for (const tsql::TablePtr& object : catalog.Objects()) {
    rows.push_back({Cell(DatabaseName(catalog.path())), Cell("dbo"), Cell(object->name),
                    Cell(object->view ? "VIEW" : "BASE TABLE")});
  }
  return rows;
}

std::vector<SystemRow> Columns(AccountCatalog& catalog) {
  return EachColumn(catalog, [&](const TableInfo& table, const ColumnInfo& column, std::int64_t position) {
    const DataType& type = column.type;
    const TypeFacts facts = FactsOf(type);
    const bool text = IsText(type.kind);
    const bool number = IsNumber(type.kind) && type.kind != TypeKind::Bit;
    return SystemRow{Cell(DatabaseName(catalog.path())),
                     Cell("dbo"),
                     Cell(table.name),
                     Cell(column.name),
                     Cell(position),
                     DefaultOf(column),
                     Cell(column.nullable ? "YES" : "NO"),
                     Cell(TypeName(type)),
                     text ? Cell(type.length) : kNull,
                     text ? Cell(facts.bytes) : kNull,
                     number ? Cell(facts.precision) : kNull,
                     number ? Cell(IsFloat(type.kind) ? 2 : 10) : kNull,
                     number && !IsFloat(type.kind) ? Cell(facts.scale) : kNull,
                     IsDate(type.kind) ? Cell(facts.scale) : kNull,
                     text ? Cell(IsNational(type.kind) ? "UNICODE" : "cp936") : kNull,
                     CollationOf(type)};
  });
}

std::vector<SystemRow> SysObjects(AccountCatalog& catalog) {
  return EachObject(catalog, [](const ObjectFacts& object) {
    const bool key = object.parent != 0;
    return SystemRow{Cell(object.name),
                     Cell(AccountCatalog::IdOf(object.name)),
                     Cell(object.type),
                     Cell(1),
                     Cell(object.parent),
                     kNull,
                     Cell(key ? "K " : object.type)};
  });
}

std::vector<SystemRow> Objects(AccountCatalog& catalog) {
  return EachObject(catalog, [](const ObjectFacts& object) {
    return SystemRow{Cell(object.name),
                     Cell(AccountCatalog::IdOf(object.name)),
                     kNull,
                     Cell(1),
                     Cell(object.parent),
                     Cell(object.type),
                     Cell(object.description),
                     kNull,
                     kNull,
                     Cell(0)};
  });
}

std::vector<SystemRow> SysColumns(AccountCatalog& catalog) {
  return EachColumn(catalog, [](const TableInfo& table, const ColumnInfo& column, std::int64_t position) {
    const TypeFacts facts = FactsOf(column.type);
    const int digits = IsText(column.type.kind) ? column.type.length : facts.precision;
    const bool scaled = IsNumber(column.type.kind) || IsDate(column.type.kind);
    return SystemRow{Cell(column.name),
                     Cell(AccountCatalog::IdOf(table.name)),
                     Cell(facts.id),
                     Cell(facts.id),
                     Cell(facts.bytes),
                     Cell(facts.precision),
                     Cell(facts.scale),
                     Cell(position),
                     Cell(column.identity ? 1 : 0),
                     Cell((column.identity ? 0x80 : 0) | (column.nullable ? 0x08 : 0)),
                     Cell(digits),
                     scaled && !IsFloat(column.type.kind) ? Cell(facts.scale) : kNull,
                     Cell(column.computed ? 1 : 0),
                     Cell(column.nullable ? 1 : 0),
                     CollationOf(column.type)};
  });
}

std::vector<SystemRow> NewColumns(AccountCatalog& catalog) {
  return EachColumn(catalog, [](const TableInfo& table, const ColumnInfo& column, std::int64_t position) {
    const TypeFacts facts = FactsOf(column.type);
    return SystemRow{Cell(AccountCatalog::IdOf(table.name)),
                     Cell(column.name),
                     Cell(position),
                     Cell(facts.id),
                     Cell(facts.id),
                     Cell(facts.bytes),
                     Cell(facts.precision),
                     Cell(facts.scale),
                     CollationOf(column.type),
                     Cell(column.nullable ? 1 : 0),
                     Cell(column.identity ? 1 : 0),
                     Cell(column.computed ? 1 : 0)};
  });
}

// ---- their columns ----

ColumnInfo Column(const char* name, const DataType& type, bool nullable = false) {
  ColumnInfo column;
  column.name = name;
  column.type = type;
  column.nullable = nullable;
  return column;
}
ColumnInfo Named(const char* name, bool nullable = false) {
  return Column(name, tsql::TextType(TypeKind::NVarChar, 128), nullable);
}
ColumnInfo Number(const char* name, TypeKind kind, bool nullable = false) {
  return Column(name, tsql::TypeOf(kind), nullable);
}
ColumnInfo Letters(const char* name, int length, bool nullable = false) {
  return Column(name, tsql::TextType(TypeKind::Char, length), nullable);
}
ColumnInfo Words(const char* name, TypeKind kind, int length, bool nullable = false) {
  return Column(name, tsql::TextType(kind, length), nullable);
}

std::vector<SystemTable> MakeTables() {
  using enum TypeKind;
  return {
      {"information_schema",
       "tables",
       {Named("TABLE_CATALOG", true), Named("TABLE_SCHEMA", true), Named("TABLE_NAME"),
        Words("TABLE_TYPE", VarChar, 10, true)},
       Tables},
      {"information_schema",
       "columns",
       {Named("TABLE_CATALOG", true), Named("TABLE_SCHEMA", true), Named("TABLE_NAME"), Named("COLUMN_NAME", true),
        Number("ORDINAL_POSITION", Int, true), Words("COLUMN_DEFAULT", NVarChar, 4000, true),
        Words("IS_NULLABLE", VarChar, 3, true), Named("DATA_TYPE", true), Number("CHARACTER_MAXIMUM_LENGTH", Int, true),
        Number("CHARACTER_OCTET_LENGTH", Int, true), Number("NUMERIC_PRECISION", TinyInt, true),
        Number("NUMERIC_PRECISION_RADIX", SmallInt, true), Number("NUMERIC_SCALE", Int, true),
        Number("DATETIME_PRECISION", SmallInt, true), Named("CHARACTER_SET_NAME", true), Named("COLLATION_NAME", true)},
       Columns},
      {"",
       "sysobjects",
       {Named("name"), Number("id", Int), Letters("xtype", 2), Number("uid", SmallInt, true), Number("parent_obj", Int),
        Number("crdate", DateTime, true), Letters("type", 2, true)},
       SysObjects},
      {"",
       "syscolumns",
       {Named("name", true), Number("id", Int), Number("xtype", TinyInt), Number("xusertype", SmallInt, true),
        Number("length", SmallInt), Number("xprec", TinyInt), Number("xscale", TinyInt),
        Number("colid", SmallInt, true), Number("colstat", SmallInt, true), Number("status", TinyInt, true),
        Number("prec", SmallInt, true), Number("scale", Int, true), Number("iscomputed", Int, true),
        Number("isnullable", Int, true), Named("collation", true)},
       SysColumns},
      {"sys",
       "objects",
       {Named("name"), Number("object_id", Int), Number("principal_id", Int, true), Number("schema_id", Int),
        Number("parent_object_id", Int), Letters("type", 2, true), Words("type_desc", NVarChar, 60, true),
        Number("create_date", DateTime, true), Number("modify_date", DateTime, true), Number("is_ms_shipped", Bit)},
       Objects},
      {"sys",
       "columns",
       {Number("object_id", Int), Named("name", true), Number("column_id", Int), Number("system_type_id", TinyInt),
        Number("user_type_id", Int), Number("max_length", SmallInt), Number("precision", TinyInt),
        Number("scale", TinyInt), Named("collation_name", true), Number("is_nullable", Bit, true),
        Number("is_identity", Bit), Number("is_computed", Bit)},
       NewColumns}};
}

}  // namespace

const std::vector<SystemTable>& SystemTables() {
  static const std::vector<SystemTable> tables = MakeTables();
  return tables;
}

}  // namespace rebate
