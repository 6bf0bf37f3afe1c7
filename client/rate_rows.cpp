#include "client/rate_rows.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "client/account.h"
#include "client/grid_kind.h"
#include "client/rate_ranges.h"
#include "client/row_tables.h"
#include "client/stored_request.h"
#include "platform/automation/conversion.h"
#include "platform/containers/vector.h"

namespace rebate {
namespace {

// The entities of a grid that the user may see.
std::set<Long> VisibleEntities(Account& account, Long type, Long user) {
  std::set<Long> ids;
  for (const Long selected : {0, 1}) {
    const auto entities = ObjectAs<Vector>(account.Call("GetItemInfo", {type, selected, user}));
    if (!entities && account.refusal()) account.ThrowFailure({});
    for (Long i = 1; entities && i <= entities->Size(); ++i) {
      ids.insert(ToLong(ObjectAs<Dictionary>(entities->Item(i))->Value("FItemID")));
    }
  }
  return ids;
}

// A stored rate as a row of a file: what it doesn't say is left out.
Json RateRow(const Recordset& rate, Long position, bool by_goods) {
  Json row = Json::object();
  if (by_goods) row["FItemID"] = CellText(rate.FieldValue("FItemID"));
  if (const Variant organisation = rate.FieldValue("FOrgID"); !organisation.IsNull())
    row["FOrgID"] = ToLong(organisation);
  row["FIndex"] = position;
  row["FRebateRate"] = AmountJson(CellText(rate.FieldValue("FRebateRate")));
  for (const char* key : {"FRowID", "FUnitID"}) {
    if (!rate.FieldValue(key).IsNull()) row[key] = ToLong(rate.FieldValue(key));
  }
  for (const char* key : {"FNote", "FCheckItemID"}) {
    if (const Text text = CellText(rate.FieldValue(key)); !text.empty()) row[key] = text;
  }
  return row;
}

}  // namespace

Json StoredRates(Account& account, Long type, Long organisation, Long user, Long& lost) {
  const GridKind kind = GridKindOf(type);
  const std::set<Long> visible = kind.by_goods ? std::set<Long>() : VisibleEntities(account, type, user);
  const std::vector<AmountRange> ranges = RangesOfType(account, type);
  Text query =
      "select FItemID,FOrgID,FAmtRangeID,FRebateRate,FNote,FRowID,FUnitID,FCheckItemID from t_FL_RebateRule where "
      "isnull(FSchemeID,0)=0 and FClassTypeID=" +
      std::to_string(type);
  if (organisation > 0) query += " and FOrgID=" + std::to_string(organisation);
  const RecordsetRef rates = account.Query(query + " order by FOrgID,FItemID,FIndex,FID");
  Json rows = Json::array();
  for (; !rates->Eof(); rates->MoveNext()) {
    const Variant owner = rates->FieldValue("FOrgID");
    if (!kind.by_goods && !owner.IsNull() && !visible.contains(ToLong(owner))) continue;
    const auto range = std::find_if(ranges.begin(), ranges.end(), [&](const AmountRange& r) {
      return EqualsNumber(rates->FieldValue("FAmtRangeID"), r.id);
    });
    if (range == ranges.end()) {
      ++lost;
    } else {
      rows.push_back(RateRow(*rates, range->position, kind.by_goods));
    }
  }
  return rows;
}

std::set<Text> RangesOfForms(Account& account, Long type) {
  const RecordsetRef rows =
      account.Query("select FID from t_FL_RebateRange where FSchemeID>0 and FClassTypeID=" + std::to_string(type));
  std::set<Text> ids;
  for (; !rows->Eof(); rows->MoveNext()) ids.insert(CellText(rows->FieldValue("FID")));
  return ids;
}

}  // namespace rebate
