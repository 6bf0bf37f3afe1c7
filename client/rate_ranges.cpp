#include "client/rate_ranges.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/entity_sense.h"
#include "client/range_sense.h"
#include "client/row_tables.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

// The rows of a type under a scheme id, in a condition.
Text SetOf(Long rebate_type, Long scheme) {
  return "FClassTypeID=" + std::to_string(rebate_type) + " and FSchemeID=" + std::to_string(scheme);
}

// The new range with the limits of a stored one, null where it goes.
const Json* Kept(const AmountRange& range, const Json& ranges) {
  const auto same = [&](const Json& row) {
    return AmountOf(row["FLower"]) == LeadingNumber(range.lower) &&
           AmountOf(row["FUpper"]) == LeadingNumber(range.upper);
  };
  const auto found = std::find_if(ranges.begin(), ranges.end(), same);
  return found == ranges.end() ? nullptr : &*found;
}

bool HasRates(const Account& account, const AmountRange& range) {
  return account.QueryNumber("select count(*) from t_FL_RebateRule where FAmtRangeID=" + std::to_string(range.id)) != 0;
}

Long CountRates(const Account& account, Long rebate_type, Long scheme) {
  return account
      .QueryNumber("select count(*) from t_FL_RebateRule where FRebateRate<>0 and " + SetOf(rebate_type, scheme))
      .value_or(0);
}

// The operation finds a rate's range by the scheme id and the position that the rate bears: rates are to bear those of
// their range, and position 0 where a range that stays would otherwise take them.
std::vector<Text> Preparation(Long rebate_type, Long scheme, const std::vector<Long>& detached) {
  const Text set = SetOf(rebate_type, scheme);
  std::vector<Text> statements;
  if (scheme == 0) {
    for (const char* table : {"t_FL_RebateRule", "t_FL_RebateRange"}) {
      statements.push_back("update " + Text(table) +
                           " set FSchemeID=0 where FSchemeID is null and FClassTypeID=" + std::to_string(rebate_type));
    }
  }
  statements.push_back(
      "update a set a.FIndex=b.FIndex from t_FL_RebateRule a inner join t_FL_RebateRange b on b.FID=a.FAmtRangeID and "
      "b.FClassTypeID=a.FClassTypeID and b.FSchemeID=a.FSchemeID where a.FClassTypeID=" +
      std::to_string(rebate_type) + " and a.FSchemeID=" + std::to_string(scheme));
  statements.push_back("update t_FL_RebateRule set FIndex=0 where " + set +
                       " and FAmtRangeID is not null and FAmtRangeID not in (select FID from t_FL_RebateRange where " +
                       set + ")");
  for (const Long id : detached) {
    statements.push_back("update t_FL_RebateRule set FIndex=0 where FAmtRangeID=" + std::to_string(id));
  }
  return statements;
}

}  // namespace

std::vector<AmountRange> RangesOfType(Account& account, Long rebate_type, Long scheme) {
  const RecordsetRef rows = account.Query(
      "select FID,FIndex,FLowerLimit,FUpperLimit from t_FL_RebateRange where FClassTypeID=" +
      std::to_string(rebate_type) + " and isnull(FSchemeID,0)=" + std::to_string(scheme) + " order by FLowerLimit,FID");
  std::vector<AmountRange> ranges;
  for (; !rows->Eof(); rows->MoveNext()) {
    ranges.push_back({ToLong(rows->FieldValue("FID")),
                      static_cast<Long>(LeadingNumber(CellText(rows->FieldValue("FIndex")))),
                      CellText(rows->FieldValue("FLowerLimit")), CellText(rows->FieldValue("FUpperLimit"))});
  }
  return ranges;
}

RangeChange ReplaceRanges(Account& account, Long rebate_type, Long scheme, const Json& ranges) {
  RangeChange change;
  std::vector<Long> detached;
  const std::vector<AmountRange> stored = RangesOfType(account, rebate_type, scheme);
  const auto stays = [&](const Json& row) {
    return std::any_of(stored.begin(), stored.end(),
                       [&](const AmountRange& range) { return Kept(range, ranges) == &row; });
  };
  for (const AmountRange& range : stored) {
    if (Kept(range, ranges) || !HasRates(account, range)) continue;
    const auto next = std::find_if(ranges.begin(), ranges.end(),
                                   [&](const Json& row) { return IntegerOf(row["FIndex"]) == range.position; });
    if (next == ranges.end()) continue;
    if (stays(*next)) {
      detached.push_back(range.id);
    } else {
      change.moved.push_back(
          {range,
           {0, range.position, ToText(FromJson((*next)["FLower"], "")), ToText(FromJson((*next)["FUpper"], ""))}});
    }
  }
  account.Change(Preparation(rebate_type, scheme, detached));
  const Long before = CountRates(account, rebate_type, scheme);
  const Variant saved = account.Call("SaveRebateRange", {rebate_type, FromJson(ranges, "ranges"), scheme});
  if (!ToBoolean(saved)) account.ThrowFailure("The ranges can't be stored");
  change.lost = before - CountRates(account, rebate_type, scheme);
  return change;
}

}  // namespace rebate
