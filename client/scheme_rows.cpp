#include "client/scheme_rows.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/code_words.h"
#include "client/row_tables.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/database/recordset.h"

namespace rebate {
namespace {

constexpr Long kAbnormalAccounts = -1;
constexpr const char* kOrganisationKeys[] = {"FItemID", "FNumber", "FName"};

Text OrganisationText(const Recordset& row) {
  const Variant item = row.FieldValue("FItemID");
  if (item.IsNull()) return {};
  if (EqualsNumber(item, kAbnormalAccounts)) return "往来异常";
  const Text number = CellText(row.FieldValue("FNumber"));
  return (number.empty() ? Text() : number + "_") + CellText(row.FieldValue("FName"));
}

Ref<Dictionary> SchemeOf(const Recordset& row) {
  auto scheme = New<Dictionary>();
  for (std::size_t i = 0; i < row.FieldCount(); ++i) {
    scheme->SetValue(row.FieldName(i), Trim(CellText(row.FieldValue(i))));
  }
  for (const char* key : kOrganisationKeys) scheme->Remove(key);
  scheme->SetValue("FOrg", "");
  scheme->SetValue("FOrgDetail", New<Vector>());
  return scheme;
}

void AddOrganisation(const Recordset& row, Dictionary& scheme) {
  const Text text = OrganisationText(row);
  if (text.empty()) return;
  const Text before = ToText(scheme.Value("FOrg"));
  scheme.SetValue("FOrg", before + (before.empty() ? "" : ",") + text);
  auto detail = New<Dictionary>();
  for (const char* key : kOrganisationKeys) detail->SetValue(key, row.FieldValue(key));
  ObjectAs<Vector>(scheme.Value("FOrgDetail"))->Add(detail);
}

}  // namespace

Ref<Vector> MatchingSchemes(Account& account, const Ref<Dictionary>& request) {
  auto schemes = ObjectAs<Vector>(account.Call("LoadSchemeListData", {request}));
  if (!schemes) {
    account.ThrowFailure("The schemes of class " + CellText(*request, "RebateClassType") + " can't be listed");
  }
  return schemes;
}

Ref<Vector> FoldOrganisations(Recordset& rows) {
  auto schemes = New<Vector>();
  Ref<Dictionary> scheme;
  for (rows.MoveFirst(); !rows.Eof(); rows.MoveNext()) {
    if (!scheme || CellText(*scheme, "FSchemeID") != CellText(rows.FieldValue("FSchemeID"))) {
      scheme = SchemeOf(rows);
      schemes->Add(scheme);
    }
    AddOrganisation(rows, *scheme);
  }
  return schemes;
}

void PrintSchemes(const Vector& schemes, bool json, Tool& tool) {
  if (json) {
    Json list = Json::array();
    for (Long i = 1; i <= schemes.Size(); ++i) list.push_back(ToJson(schemes.Item(i)));
    tool.out << JsonLine(WithNumericIds(std::move(list))) << '\n';
    return;
  }
  if (schemes.Size() == 0) {
    tool.out << "No scheme matches.\n";
    return;
  }
  const std::vector<RowColumn> columns = {{"Scheme", "FSchemeID", true},
                                          {"Name", "FSchemeName"},
                                          {"Type", "FRebateType", true},
                                          {"Rebate", "FRebateMode", false, 2},
                                          {"Status", "FEnable"},
                                          {"Organisations", "FOrg", false, 1},
                                          {"Checker", "FCheckerID", false, 4},
                                          {"Modified", "FModifyDate", false, 3},
                                          {"Note", "FNote", false, 5}};
  RowTable(columns, schemes).Print(tool.out, tool.width);
  tool.out << '(' << schemes.Size() << (schemes.Size() == 1 ? " scheme)\n" : " schemes)\n");
}

}  // namespace rebate
