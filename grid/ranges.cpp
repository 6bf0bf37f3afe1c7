#include "model/rebate_type.h"
#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"
#include "service/rebate_rule_mgr.h"
#include "service/row_conversion.h"
#include "service/statement_text.h"

namespace rebate {
namespace {

// The set of ranges that one save replaces: those of a type under one scheme id. The type's ranges and rules under any
// other scheme id are left alone by every statement here; rows without a scheme id belong to the set without a scheme.
struct RangeSet {
  Long type;
  Long scheme_id;
};

Text RangeBlock(const RangeSet& set, const Dictionary& row) {
  const Text lower = ToText(row.GetValue("FLower", "0"));
  const Text upper = ToText(row.GetValue("FUpper", "0"));
  const Text index = ToText(row.GetValue("FIndex", "0"));
  return Statement(
             "if exists(select 1 from t_FL_RebateRange where FClassTypeID={} and FSchemeID={} And FLowerLimit={} And "
             "FUpperLimit={}) \r\n",
             set.type, set.scheme_id, lower, upper) +
         Statement(
             "   Update t_FL_RebateRange set FFlag=1,FIndex={} where FClassTypeID={} and FSchemeID={} And "
             "FLowerLimit={} And FUpperLimit={}\r\nelse \r\n",
             index, set.type, set.scheme_id, lower, upper) +
         Statement(
             "   Insert into t_FL_RebateRange (FClassTypeID,FLowerLimit,FUpperLimit,FNote,FIndex,FSchemeID) "
             "Values({},{},{},'{}',{},{}) \r\n",
             set.type, lower, upper, rebate_type::ModeName(set.type), index, set.scheme_id);
}

// Marks all ranges of the set and confirms or adds the ones that stay.
Text ConfirmBatch(const RangeSet& set, const Vector& rows) {
  Text batch =
      Statement("begin tran Update t_FL_RebateRange set FFlag=-1 where FClassTypeID={} and IsNull(FSchemeID,0)={}\r\n",
                set.type, set.scheme_id);
  for (Long i = 1; i <= rows.Size(); ++i) batch += RangeBlock(set, *ObjectAs<Dictionary>(rows.Item(i)));
  return batch + "Commit tran";
}

Text RenumberRules(const RangeSet& set) {
  return Statement(
      "update a set a.FIndex=b.FIndex from t_FL_RebateRule a inner join t_FL_RebateRange b on b.FID=a.FAmtRangeID And "
      "a.FClassTypeID=b.FClassTypeID and a.FSchemeID=b.FSchemeID where b.FFlag=1 and b.FClassTypeID = {} and "
      "b.FSchemeID={}",
      set.type, set.scheme_id);
}

Text RelinkRules(const RangeSet& set) {
  return Statement(
      "update a set a.FAmtRangeID=b.FID from t_FL_RebateRule a inner join t_FL_RebateRange b on b.FIndex=a.FIndex "
      "where b.FFlag=1 and b.FClassTypeID = {} and a.FClassTypeID = {} and b.FSchemeID={} and "
      "IsNull(a.FSchemeID,0)={}",
      set.type, set.type, set.scheme_id, set.scheme_id);
}

Text RemoveUnconfirmed(const RangeSet& set) {
  return Statement("Delete from t_FL_RebateRange where FClassTypeID={} and FFlag=-1 and IsNull(FSchemeID,0)={} \r\n",
                   set.type, set.scheme_id);
}

// A rule that matches no range that is left, in id and position, keeps its row and loses its rate.
Text ResetLostRules(const RangeSet& set) {
  return Statement(
      "Update t_FL_RebateRule set FRebateRate=0 where FClassTypeID={} and FSchemeID={} and cast(FAmtRangeID as "
      "varchar) "
      "+ '  ' + cast(FIndex as varchar) not in (select cast(FID as varchar) + '  ' + cast(FIndex as varchar) from "
      "t_FL_RebateRange where FClassTypeID={} and FSchemeID={}) \r\n",
      set.type, set.scheme_id, set.type, set.scheme_id);
}

}  // namespace

Ref<Vector> BaseInfoMgr::GetRebateRange(const Text& sDsn, Long lType) {
  return frame_.Run<Ref<Vector>>(sDsn, OnFailure::Swallow, [&](Call& call, Ref<Vector>& ranges) {
    const RecordsetRef rows = call.Execute(Statement(
        "Select FID,FLowerLimit,FUpperLimit from t_fl_rebaterange where FClassTypeID={} order by FLowerLimit", lType));
    if (!rows->Eof()) ranges = RecordsetToVector(rows);
    call.Complete();
  });
}

bool BaseInfoMgr::SaveRebateRange(const Text& sDsn, Long lType, Ref<Vector>& vecData, Long SchemeID) {
  return frame_.Run<bool>(sDsn, OnFailure::Swallow, [&](Call& call, bool& done) {
    if (!vecData || vecData->Size() == 0) Refuse("BaseInfoMgr.SaveRebateRange", "No ranges to save");
    const RangeSet set{lType, SchemeID};
    call.Execute(ConfirmBatch(set, *vecData));
    call.Execute(RenumberRules(set));
    call.Execute(RelinkRules(set));
    call.Execute(RemoveUnconfirmed(set));
    call.Execute(ResetLostRules(set));
    call.Complete();
    done = true;
  });
}

Text RebateRuleMgr::GetRangeID(const Text& sDsn, Long lType) {
  const auto work = [&](Call& call, Text& ids) {
    const RecordsetRef rows =
        call.Execute(Statement("Select FID from t_fl_rebaterange where FClassTypeID={} Order By flowerlimit", lType));
    ids = ",";
    if (rows->Eof()) return;
    for (rows->MoveFirst(); !rows->Eof(); rows->MoveNext()) ids += ToText(rows->FieldValue(std::size_t{0})) + ",";
  };
  return frame_.Run<Text>(sDsn, OnFailure::Swallow, work, Opening::NoVote);
}

Long RebateRuleMgr::GetRebateRangeIndex(const Text& sDsn, Long RangeIndex, Long lType) {
  return frame_.Run<Long>(sDsn, OnFailure::Swallow, [&](Call& call, Long& position) {
    const RecordsetRef rows = call.Execute(
        Statement("select FIndex from t_FL_RebateRange where FClassTypeID={} and FID={}", lType, RangeIndex));
    if (!rows->Eof()) position = ToLong(rows->FieldValue("FIndex"));
  });
}

}  // namespace rebate
