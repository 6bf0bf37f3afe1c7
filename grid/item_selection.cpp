#include "grid/rights_filter.h"
#include "model/rebate_type.h"
#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"
#include "service/data_rights.h"
#include "service/row_conversion.h"
#include "service/statement_list.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

constexpr Long kNotSelected = 0;
constexpr Long kSelected = 1;

// The rest of the column list and the table; empty for a type without entities.
std::string_view EntityColumnsAndTable(Long type) {
  switch (type) {
    case rebate_type::kPurchaseTotalPercent:
      return "from t_Supplier ";
    case rebate_type::kSalesTotalPercent:
      return "from t_Organization ";
    case rebate_type::kSalesmanTotal:
      return "from t_Emp ";
    case rebate_type::kPurchaseGoodsPercent:
    case rebate_type::kSalesGoodsPercent:
    case rebate_type::kSalesmanGoods:
      return ",a.FModel from t_ICItem ";
    default:
      return "";
  }
}

Text SelectionCondition(Long type, Long status) {
  switch (status) {
    case kNotSelected:
      return Statement(
          " WHERE NOT EXISTS (Select 1 from t_ItemSelect b WHERE a.FItemID=b.FItemID and b.FClassTypeID={})\r\n", type);
    case kSelected:
      return Statement(" Inner Join t_ItemSelect b on a.FItemID=b.FItemID where 1=1 and b.FClassTypeID={} \r\n", type);
    default:
      return "";
  }
}

Text EntitiesQuery(Long type, Long status, Long user_id) {
  Text query = Statement("Select a.FItemID,a.FNumber,a.FName {}a{} And a.FDeleted=0 And 1=1 order by a.FNumber",
                         EntityColumnsAndTable(type), SelectionCondition(type, status));
  if (!rebate_type::IsOrganisationGrid(type) || !NeedAuthrize()) return query;
  return Replace(query, "1=1", Statement("charindex('{}',a.FRightUserID)>0", user_id));
}

// An organisation that is selected for its total grid leaves the goods grid.
Text SelectStatement(Long type, Long organisation, const Text& entity) {
  Text text = Statement("Insert into t_ItemSelect (FClassTypeID,FItemID,FOrgID,FStatus) \r\n Values({},{},{},1)\r\n",
                        type, entity, organisation);
  if (!rebate_type::IsOrganisationGrid(type)) return text;
  const Long partner = type + 1;
  return text + Statement("Delete from t_FL_RebateRule where FClassTypeID={} and FOrgID={}\r\n", partner, entity) +
         Statement("Delete from t_ItemSelect where FClassTypeID={} and FOrgID={}", partner, entity);
}

Text DeleteWithoutRule(Long type) {
  return Statement(
      "Delete from t_Itemselect where FItemID not in (select FOrgID from t_FL_RebateRule where FClassTypeID={}) and "
      "FClassTypeID={}\r\n",
      type, type);
}

Text DeleteGoodsWithoutRule(Long type) {
  return Statement(
      "Delete t  From t_ItemSelect t Inner JOin (select a.* from t_ItemSelect a where not exists \r\n"
      "(select 1 from t_fl_rebateRule b where a.FClassTypeID=b.FClassTypeid and  a.FOrgID=b.ForgID and "
      "a.FItemID=b.FItemID)\r\n"
      "and a.FClassTypeID={}) x ON t.FClassTypeID=x.FClassTypeID and t.FItemID=x.FItemID and t.FOrgID=x.FOrgID ",
      type);
}

}  // namespace

Ref<Vector> BaseInfoMgr::GetItemInfo(Long lType, Long lStatus, const Text& sDsn, Long UserID) {
  return frame_.Run<Ref<Vector>>(sDsn, OnFailure::Swallow, [&](Call& call, Ref<Vector>& entities) {
    const RecordsetRef rows = call.Execute(EntitiesQuery(lType, lStatus, UserID));
    if (!rows->Eof()) entities = RecordsetToVector(rows);
    call.Complete();
  });
}

bool BaseInfoMgr::SaveSelectedItem(const Text& sDsn, Ref<Dictionary>& dicData, Long lType, Long lUserID, Long lOrgID) {
  return frame_.Run<bool>(sDsn, OnFailure::Swallow, [&](Call& call, bool& done) {
    const Text filter = RightsFilter("FItemID", lType, lUserID);
    call.Execute(Statement("Delete from t_ItemSelect where FClassTypeID={} And FOrgID={}{}", lType, lOrgID, filter));
    const Long count = dicData ? dicData->Count() : 0;
    RunGathered(call, [&](StatementList& statements) {
      for (Long i = 1; i <= count; ++i) {
        statements.Append(SelectStatement(lType, lOrgID, ToText(dicData->Value(std::to_string(i)))));
      }
    });
    call.Complete();
    done = true;
  });
}

bool BaseInfoMgr::DeleteItemNotInRule(const Text& sDsn, Long lType, bool bGoods) {
  return frame_.Run<bool>(sDsn, OnFailure::Swallow, [&](Call& call, bool& done) {
    call.Execute(bGoods ? DeleteGoodsWithoutRule(lType) : DeleteWithoutRule(lType));
    call.Complete();
    done = true;
  });
}

}  // namespace rebate
