#include "client/row_checks.h"

#include <string_view>
#include <utility>

#include "platform/values/ascii.h"

namespace rebate {
namespace {

// What stands in the conditions in braces.
constexpr std::pair<std::string_view, std::string_view> kWords[] = {
    {"{gone}", "t.FSchemeID <> 0 and not {head}"},
    {"{head}", "exists (select 1 from t_FL_SchemeList h where h.FSchemeID = t.FSchemeID)"},
    {"{plain}", "exists (select 1 from t_FL_SchemeList h where h.FSchemeID = t.FSchemeID and h.FRebateMode is null)"},
    {"{grid}", "isnull(t.FSchemeID, 0) = 0"},
    {"{row}", "exists (select 1 from t_FL_AllOrgs o where o.FSchemeID = t.FSchemeID and o.FRowID = t.FRowID)"},
    {"{range}",
     "exists (select 1 from t_FL_RebateRange r where r.FID = t.FAmtRangeID and r.FClassTypeID = t.FClassTypeID and "
     "isnull(r.FSchemeID, 0) = isnull(t.FSchemeID, 0))"},
    {"{again}",
     "t.FID not in (select min(FID) from t_FL_RebateRule group by FSchemeID, FRowID, FClassTypeID, FOrgID, "
     "FAmtRangeID, FIndex, FItemID, FUnitID, FCheckItemID, FRebateRate)"},
};

constexpr char kRemove[] = "delete t";
constexpr char kCheckItemKey[] = "FSchemeID,FRowID,FItemClassID,FItemID";
constexpr char kSelectionKey[] = "FSchemeID,FClassTypeID,FItemID,FOrgID";

// A form that replaces another one removes its head alone.
constexpr RowCheck kChecks[] = {
    {"ghost", "t_FL_RebateRange", "FID", "form {} is gone and has left ranges", "{gone} and t.FClassTypeID is not null",
     kRemove},
    {"ghost", "t_FL_AllItems", "FID", "a form's rule is gone and has left its goods",
     "isnull(t.FSchemeID, 0) = 0 and t.FRuleTableID is not null and not exists (select 1 from t_FL_RebateRule r where "
     "r.FID = t.FRuleTableID and (isnull(r.FSchemeID, 0) = 0 or exists (select 1 from t_FL_SchemeList h where "
     "h.FSchemeID = r.FSchemeID)))",
     kRemove},
    {"ghost", "t_FL_RebateRule", "FID", "form {} is gone and has left rates", "{gone} and t.FClassTypeID is not null",
     kRemove},
    {"ghost", "t_ItemSelect", kSelectionKey, "form {} is gone and has left its selection", "{gone}", kRemove},

    {"orphan", "t_FL_RebateRange", "FID", "scheme {} is gone and has left ranges", "{gone} and t.FClassTypeID is null",
     kRemove},
    {"orphan", "t_FL_RebateRule", "FID", "scheme {} is gone and has left rates", "{gone} and t.FClassTypeID is null",
     kRemove},
    {"orphan", "t_FL_AllOrgs", "FID", "scheme {} is gone and has left organisations", "not {head}", kRemove},
    {"orphan", "t_FL_AllItems", "FID", "scheme {} is gone and has left goods",
     "not {head} and (t.FSchemeID <> 0 or t.FRuleTableID is null)", kRemove},
    {"orphan", "t_FL_CheckItems", kCheckItemKey, "scheme {} is gone and has left check items", "not {head}", kRemove},
    {"orphan", "t_FL_RebateRange", "FID", "ranges belong to no scheme and no type", "{grid} and t.FClassTypeID is null",
     kRemove},
    {"orphan", "t_FL_RebateRule", "FID", "rates belong to no scheme and no type", "{grid} and t.FClassTypeID is null",
     kRemove},
    {"link", "t_FL_SchemeLink", "FLinkID", "scheme {} is gone, and something else rests on it", "{gone}", nullptr},

    // A rate that lost its range when the ranges were replaced keeps its row, as 0.
    {"range", "t_FL_RebateRule", "FID", "rates of form {} stand in ranges that are not its own or are gone",
     "{head} and t.FAmtRangeID is not null and t.FRebateRate <> 0 and not {range}", nullptr},
    {"range", "t_FL_RebateRule", "FID", "rates of a rate grid stand in ranges that are not its own or are gone",
     "{grid} and t.FClassTypeID is not null and t.FRebateRate <> 0 and not {range}", nullptr},
    {"range", "t_FL_RebateRule", "FID", "scheme {} has rates in positions where it has no range",
     "{plain} and t.FAmtRangeID is null and not exists (select 1 from t_FL_RebateRange r where r.FSchemeID = "
     "t.FSchemeID and r.FIndex = t.FIndex)",
     nullptr},

    {"position", "t_FL_RebateRange", "FID", "the ranges of scheme {} aren't counted from 1 on",
     "{head} and (t.FIndex is null or t.FIndex < 1 or t.FIndex > (select count(*) from t_FL_RebateRange r where "
     "r.FSchemeID = t.FSchemeID) or exists (select 1 from t_FL_RebateRange r where r.FSchemeID = t.FSchemeID and "
     "r.FIndex = t.FIndex and r.FID <> t.FID))",
     nullptr},
    {"position", "t_FL_AllOrgs", "FID", "scheme {} has organisations in no grid row",
     "{head} and isnull(t.FRowID, 0) < 1", nullptr},
    {"position", "t_FL_AllItems", "FID", "scheme {} has goods in grid rows without an organisation",
     "{head} and not {row}", nullptr},
    {"position", "t_FL_RebateRule", "FID", "scheme {} has rates in grid rows without an organisation",
     "{plain} and t.FAmtRangeID is null and not {row}", nullptr},
    {"position", "t_FL_CheckItems", kCheckItemKey, "scheme {} has check items in grid rows without an organisation",
     "{head} and isnull(t.FRowID, -1) <> 0 and not {row}", nullptr},
    {"position", "t_FL_RebateRule", "FID", "scheme {} has rates in grid rows without goods",
     "t.FAmtRangeID is null and exists (select 1 from t_FL_SchemeList h inner join t_FL_SchemeMode m on m.FRebateType "
     "= h.FRebateType where h.FSchemeID = t.FSchemeID and h.FRebateMode is null and m.FRangeItemClass = 4) and "
     "{row} and not exists (select 1 from t_FL_AllItems i where i.FSchemeID = t.FSchemeID and "
     "i.FRowID = t.FRowID)",
     nullptr},
    // What the ranges are replaced by goes by the position; what is read, by the range.
    {"position", "t_FL_RebateRule", "FID", "rates of a rate grid bear another position than their range",
     "{grid} and exists (select 1 from t_FL_RebateRange r where r.FID = t.FAmtRangeID and r.FClassTypeID = "
     "t.FClassTypeID and isnull(r.FSchemeID, 0) = 0 and r.FIndex <> t.FIndex)",
     "update t set FIndex = (select r.FIndex from t_FL_RebateRange r where r.FID = t.FAmtRangeID)"},

    {"duplicate", "t_FL_AllOrgs", "FID", "scheme {} names organisations twice in a grid row",
     "{head} and t.FID not in (select min(FID) from t_FL_AllOrgs group by FSchemeID, FRowID, FItemClassID, FItemID)",
     kRemove},
    {"duplicate", "t_FL_AllItems", "FID", "scheme {} names goods twice in a grid row",
     "{head} and t.FID not in (select min(FID) from t_FL_AllItems group by FSchemeID, FRowID, FItemID, FUnitID)",
     kRemove},
    {"duplicate", "t_FL_RebateRule", "FID", "scheme {} has the same rate twice in one place",
     "{plain} and t.FAmtRangeID is null and {again}", kRemove},
    {"duplicate", "t_FL_RebateRule", "FID", "scheme {} has several rates in one place",
     "{plain} and t.FAmtRangeID is null and t.FID not in (select min(FID) from t_FL_RebateRule group by FSchemeID, "
     "FRowID, FIndex) and not ({again})",
     nullptr},
    {"duplicate", "t_FL_RebateRule", "FID", "a rate grid has the same rate twice in one place",
     "{grid} and t.FClassTypeID is not null and {again}", kRemove},
    {"duplicate", "t_FL_RebateRule", "FID", "a rate grid has several rates in one place",
     "{grid} and t.FClassTypeID is not null and t.FID not in (select min(FID) from t_FL_RebateRule where "
     "isnull(FSchemeID, 0) = 0 group by FClassTypeID, FOrgID, FItemID, FAmtRangeID, FUnitID) and not ("
     "{again})",
     nullptr},

    {"unknown", "t_FL_SchemeList", "FSchemeID", "scheme {} was stored by a user who isn't known",
     "not exists (select 1 from t_User u where u.FUserID = t.FCheckerID)", nullptr},
    {"unknown", "t_FL_SchemeList", "FSchemeID", "scheme {} is of a type that the account doesn't offer",
     "not exists (select 1 from t_FL_SchemeMode m where m.FRebateType = t.FRebateType)", nullptr},
    {"unknown", "t_FL_AllOrgs", "FID", "scheme {} names organisations that aren't known",
     "{head} and isnull(t.FItemID, -2) not in (0, -1) and not exists (select 1 from t_Item i where i.FItemClassID = "
     "t.FItemClassID and i.FItemID = t.FItemID)",
     nullptr},
    {"unknown", "t_FL_AllOrgs", "FID", "scheme {} names an item class that isn't known",
     "{head} and t.FItemID = 0 and not exists (select 1 from t_ItemClass c where c.FItemClassID = t.FItemClassID)",
     nullptr},
    {"unknown", "t_FL_RebateRule", "FID", "form {} has rates for organisations that aren't known",
     "{head} and isnull(t.FOrgID, 0) not in (0, -1) and not exists (select 1 from t_Item i where i.FItemID = t.FOrgID "
     "and i.FItemClassID in (1, 3, 8))",
     nullptr},
    {"unknown", "t_FL_RebateRule", "FID", "a rate grid has rates for organisations that aren't known",
     "{grid} and t.FClassTypeID is not null and isnull(t.FOrgID, 0) not in (0, -1) and not exists (select 1 from "
     "t_Item i where i.FItemID = t.FOrgID and i.FItemClassID in (1, 3, 8))",
     nullptr},
    {"unknown", "t_FL_AllItems", "FID", "scheme {} names goods that aren't known",
     "{head} and not exists (select 1 from t_Item i where i.FItemClassID = 4 and i.FItemID = t.FItemID)", nullptr},

    {"amount", "t_FL_RebateRange", "FID", "scheme {} has ranges that are below zero or end where they begin",
     "{head} and (t.FLowerLimit is null or t.FUpperLimit is null or t.FLowerLimit < 0 or t.FUpperLimit <= "
     "t.FLowerLimit)",
     nullptr},
    {"amount", "t_FL_RebateRange", "FID", "scheme {} has ranges that begin inside of another one",
     "{head} and exists (select 1 from t_FL_RebateRange r where r.FSchemeID = t.FSchemeID and r.FID <> t.FID and "
     "r.FLowerLimit < t.FUpperLimit and (r.FLowerLimit < t.FLowerLimit or (r.FLowerLimit = t.FLowerLimit and r.FID < "
     "t.FID)) and r.FUpperLimit > t.FLowerLimit)",
     nullptr},
    {"amount", "t_FL_RebateRule", "FID", "scheme {} has rates below zero, above the whole amount or without a number",
     "{head} and (t.FRebateRate is null or t.FRebateRate < 0 or (t.FRebateRate > 100 and exists (select 1 from "
     "t_FL_SchemeList h inner join t_FL_SchemeMode m on m.FRebateType = h.FRebateType where h.FSchemeID = t.FSchemeID "
     "and m.FIsPercent = 1)))",
     nullptr},
};

}  // namespace

Text ConditionOf(const RowCheck& check) {
  Text condition = check.condition;
  for (const auto& [word, meaning] : kWords) condition = Replace(condition, word, meaning);
  return condition;
}

std::span<const RowCheck> RowChecks() {
  return kChecks;
}

}  // namespace rebate
