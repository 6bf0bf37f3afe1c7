#include "client/scheme_rows.h"

#include <nlohmann/json.hpp>
#include <ostream>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/code_words.h"
#include "client/row_tables.h"
#include "client/tool.h"
#include "model/item_class.h"
#include "model/rebate_type.h"
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

// The organisations that the rules of a form are for; rules of organisation 0 are for the whole class.
Text OrganisationsOfRules(Account& account, const Dictionary& scheme) {
  const Text id = CellText(scheme, "FSchemeID");
  const Long type = static_cast<Long>(LeadingNumber(CellText(scheme, "FRebateType")));
  const bool purchases = type >= rebate_type::kPurchasesFirst && type <= rebate_type::kPurchasesLast;
  const Long item_class = purchases ? item_class::kSuppliers : item_class::kCustomers;
  const RecordsetRef rows = account.Query(
      "select distinct r.FOrgID, i.FNumber, i.FName from t_FL_RebateRule r left join t_Item i on i.FItemID=r.FOrgID "
      "and "
      "i.FItemClassID=" +
      std::to_string(item_class) + " where r.FAmtRangeID is not null and r.FSchemeID=" + id + " order by i.FNumber");
  Text list;
  for (; !rows->Eof(); rows->MoveNext()) {
    const bool everyone = EqualsNumber(rows->FieldValue("FOrgID"), item_class::kWholeClass);
    const Text one = everyone ? Text(purchases ? "全部供应商" : "全部客户")
                              : CellText(rows->FieldValue("FNumber")) + "_" + CellText(rows->FieldValue("FName"));
    list += (list.empty() ? "" : ",") + one;
  }
  return list;
}

}  // namespace

Ref<Vector> MatchingSchemes(Account& account, const Ref<Dictionary>& request) {
  auto schemes = ObjectAs<Vector>(account.Call("LoadSchemeListData", {request}));
  if (!schemes) {
    account.ThrowFailure("The schemes of class " + CellText(*request, "RebateClassType") + " can't be listed");
  }
  NameFormOrganisations(account, *schemes);
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

void NameFormOrganisations(Account& account, Vector& schemes) {
  for (Long i = 1; i <= schemes.Size(); ++i) {
    const auto scheme = ObjectAs<Dictionary>(schemes.Item(i));
    const Text shown = CellText(*scheme, "FOrg");
    if (shown == "_" || shown.empty()) scheme->SetValue("FOrg", OrganisationsOfRules(account, *scheme));
  }
}

void TellUnlisted(Account& account, Tool& tool) {
  const RecordsetRef rows = account.Query(
      "select FCheckerID, count(*) as FCount from t_FL_SchemeList where FCheckerID not in (select FUserID from t_User) "
      "group by FCheckerID order by FCheckerID");
  for (; !rows->Eof(); rows->MoveNext()) {
    const Long count = ToLong(rows->FieldValue("FCount"));
    tool.err << "Not listed: " << count << (count == 1 ? " scheme" : " schemes") << " of user "
             << CellText(rows->FieldValue("FCheckerID")) << ", for whom t_User has no row.\n";
  }
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
