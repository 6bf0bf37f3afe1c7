#include "model/item_class.h"
#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"
#include "service/row_conversion.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

Text HeadQuery(Long scheme_id) {
  return Statement(
      "SELECT l.*,u.FName AS FCheckerName \r\n"
      "FROM t_FL_SchemeList l LEFT JOIN t_User u ON l.FCheckerID =u.FUserID \r\n"
      "WHERE FSchemeID={} ",
      scheme_id);
}

Text TypesQuery(Long scheme_id) {
  return Statement(
      "SELECT * FROM t_FL_SchemeMode WHERE FRebateClass = \r\n"
      "(SELECT m.FRebateClass  FROM  t_FL_SchemeList l \r\n"
      "LEFT JOIN  t_FL_SchemeMode m  \r\n"
      "ON m.FRebateType =l.FRebateType  WHERE l.FSchemeID={}) \r\n"
      "ORDER BY t_FL_SchemeMode.FIndex ",
      scheme_id);
}

Text RangesQuery(Long scheme_id) {
  return Statement(
      "SELECT FSchemeID,FIndex,FLowerLimit,FUpperLimit from t_FL_RebateRange \r\n"
      "WHERE FSchemeID={} ORDER BY FIndex ",
      scheme_id);
}

Text OrganisationsQuery(Long scheme_id) {
  return Statement(
      "SELECT o.*,ISNULL(i.FNumber,'') AS FNumber ,ISNULL(i.FName,'') AS FName FROM t_FL_AllOrgs o\r\n"
      "LEFT JOIN t_Item i ON i.FItemClassID =o.FItemClassID AND i.FItemID =o.FItemID \r\n"
      "WHERE FSchemeID={} ORDER BY  o.FRowID,i.FNumber  ",
      scheme_id);
}

Text RulesQuery(Long scheme_id) {
  return Statement(
      "SELECT FID, FSchemeID, FRowID, FIndex, FRebateRate\r\n"
      "FROM t_FL_RebateRule WHERE FSchemeID={} ORDER BY FRowID,FIndex",
      scheme_id);
}

Text RowIdsQuery(Long scheme_id) {
  return Statement("SELECT FRowID FROM t_FL_RebateRule WHERE FSchemeID={} GROUP BY FRowID  ORDER BY FRowID", scheme_id);
}

Text ItemsQuery(Long scheme_id) {
  return Statement(
      "SELECT a.*,i.FNumber ,i.FName,i.FModel,u.FNumber AS FUnitNumber,u.FName AS FUnitName FROM t_FL_AllItems a \r\n"
      "LEFT JOIN t_ICItem i ON a.FItemID =i.FItemID \r\n"
      "LEFT JOIN vw_Unit u ON u.FSrcItemId =a.FItemID AND u.FItemID =a.FUnitID \r\n"
      "WHERE FSchemeID={} ORDER BY a.FRowID ,i.FNumber",
      scheme_id);
}

Text ChecksQuery(Long scheme_id) {
  return Statement("SELECT * FROM t_FL_CheckItems WHERE FSchemeID={} ORDER BY FRowID ", scheme_id);
}

// The scheme's own type among the types of its class; null where it isn't there.
Ref<Dictionary> FindType(const Vector& types, const Dictionary& head) {
  const Text wanted = ToText(head.GetValue("FRebateType", ""));
  for (Long i = types.LBound(); i <= types.UBound(); ++i) {
    Ref<Dictionary> type = ObjectAs<Dictionary>(types.Item(i));
    if (ToText(type->GetValue("FRebateType", "")) == wanted) return type;
  }
  return nullptr;
}

// A goods type lists the organisations of the first grid row alone; a scheme without a type row lists all of them; any
// other type leaves them to the recordset.
void AddOrganisationRows(Dictionary& scheme, const RecordsetRef& organisations, const Ref<Dictionary>& type) {
  if (!type) {
    scheme.SetValue("AllOrgs", RecordsetToVector(organisations));
    return;
  }
  if (!EqualsNumber(type->GetValue("FRangeItemClass", Long{-1}), item_class::kGoods)) return;
  organisations->SetFilter("FRowID=" + ToText(organisations->FieldValue("FRowID")));
  scheme.SetValue("AllOrgs", RecordsetToVector(organisations));
  organisations->SetFilter("");
}

}  // namespace

bool BaseInfoMgr::LoadSchemeRowData(const Text& sDsn, Long lSchemeID, Ref<Dictionary>& dctSchemeData) {
  return frame_.Run<bool>(sDsn, OnFailure::Leave, [&](Call& call, bool& done) {
    if (dctSchemeData) {
      dctSchemeData->Clear();
    } else {
      dctSchemeData = New<Dictionary>();
    }
    Dictionary& scheme = *dctSchemeData;
    const Ref<Dictionary> head = ExecuteToRow(call.connection(), HeadQuery(lSchemeID));
    if (!head) return;
    scheme.SetValue("SchemeMain", head);
    const Ref<Vector> types = ExecuteToRows(call.connection(), TypesQuery(lSchemeID));
    scheme.SetValue("SchemeConst", types);
    const Ref<Dictionary> type = FindType(*types, *head);
    scheme.SetValue("AllRanges", ExecuteToRows(call.connection(), RangesQuery(lSchemeID)));
    const RecordsetRef organisations = call.Execute(OrganisationsQuery(lSchemeID));
    scheme.SetValue("AllOrgsRS", organisations);
    AddOrganisationRows(scheme, organisations, type);
    scheme.SetValue("AllRulesRS", call.Execute(RulesQuery(lSchemeID)));
    scheme.SetValue("AllRowIDs", ExecuteToRows(call.connection(), RowIdsQuery(lSchemeID)));
    scheme.SetValue("AllItemsRS", call.Execute(ItemsQuery(lSchemeID)));
    scheme.SetValue("AllChecksRS", call.Execute(ChecksQuery(lSchemeID)));
    call.Complete();
    done = true;
  });
}

}  // namespace rebate
