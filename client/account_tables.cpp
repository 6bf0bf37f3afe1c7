#include "client/account_tables.h"

#include <algorithm>

#include "platform/automation/conversion.h"

namespace rebate {
namespace {

constexpr AccountTable kTables[] = {
    {kTypeTable, "FRebateType"},
    {"t_ItemClass", "FItemClassID"},
    {"t_Item", "FItemID"},
    {"t_Supplier", "FItemID"},
    {"t_Organization", "FItemID"},
    {"t_Emp", "FItemID"},
    {"t_ICItem", "FItemID"},
    {"t_MeasureUnit", "FItemID"},
    {"t_ItemUnit", "FSrcItemId"},
    {"t_User", "FUserID"},
    {"t_FL_RebateRange", "FID", "FID"},
    {"t_FL_RebateRule", "FID", "FID"},
    {"t_FL_AllOrgs", "FID", "FID"},
    {"t_FL_AllItems", "FID", "FID"},
    {"t_FL_CheckItems", "FSchemeID"},
    {"t_FL_SchemeLink", "FLinkID", "FLinkID"},
    {"t_ItemSelect", "FSchemeID"},
    {kSchemeTable, "FSchemeID", "FSchemeID", "FID"},
};

constexpr const char* kViews[] = {"VW_FL_SchemeOrg", "vw_Unit"};

bool IsOfAccount(std::string_view name) {
  const auto is_it = [&](std::string_view own) { return EqualsIgnoreCase(own, name); };
  return std::any_of(std::begin(kTables), std::end(kTables),
                     [&](const AccountTable& table) { return is_it(table.name); }) ||
         std::any_of(std::begin(kViews), std::end(kViews), is_it);
}

std::vector<Text> FirstColumn(Connection& connection, const Text& query) {
  std::vector<Text> texts;
  const RecordsetRef rows = connection.Execute(query);
  for (; !rows->Eof(); rows->MoveNext()) texts.push_back(ToText(rows->FieldValue(std::size_t{0})));
  return texts;
}

}  // namespace

std::span<const AccountTable> AccountTables() {
  return kTables;
}

bool HasAccountTables(Connection& connection) {
  return !FirstColumn(connection, "select TABLE_NAME from INFORMATION_SCHEMA.TABLES where lower(TABLE_NAME) = lower('" +
                                      Text(kSchemeTable) + "')")
              .empty();
}

std::vector<Text> WritableColumns(Connection& connection, const AccountTable& table) {
  std::vector<Text> columns =
      FirstColumn(connection, "select COLUMN_NAME from INFORMATION_SCHEMA.COLUMNS where lower(TABLE_NAME) = lower('" +
                                  Text(table.name) + "') order by ORDINAL_POSITION");
  if (table.computed != nullptr) {
    std::erase_if(columns, [&](const Text& column) { return EqualsIgnoreCase(column, table.computed); });
  }
  return columns;
}

std::vector<Text> OtherTables(Connection& connection) {
  std::vector<Text> others = FirstColumn(connection,
                                         "select TABLE_NAME from INFORMATION_SCHEMA.TABLES where TABLE_SCHEMA not in "
                                         "('information_schema', 'pg_catalog', 'sys')");
  std::erase_if(others, IsOfAccount);
  std::sort(others.begin(), others.end());
  return others;
}

}  // namespace rebate
