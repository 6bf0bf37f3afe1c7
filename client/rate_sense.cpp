#include "client/rate_sense.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <set>

#include "client/account.h"
#include "client/entity_sense.h"
#include "client/grid_kind.h"
#include "client/range_sense.h"
#include "client/rate_ranges.h"
#include "client/rebate_classes.h"
#include "client/scheme_lookup.h"
#include "model/rebate_type.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

bool Names(const Json& row, const char* key) {
  return row.contains(key) && row[key] != 0 && row[key] != "0" && row[key] != "";
}

// The rows of one file under examination.
class RatesCheck {
 public:
  RatesCheck(Account& account, const RateTarget& target, Findings& findings)
      : account_(account),
        target_(target),
        findings_(findings),
        entities_(account, findings),
        kind_(GridKindOf(target.type)),
        type_(TypeRow(account, target.type)),
        ranges_(RangesOfType(account, target.type)) {}

  void Run(Json& rows) {
    if (target_.rest && target_.type != rebate_type::kPurchaseTotalPercent &&
        target_.type != rebate_type::kSalesTotalPercent) {
      findings_.Refuse("rest", "types 2040 and 3020 alone have rates for all that isn't selected");
      return;
    }
    for (std::size_t i = 0; i < rows.size(); ++i) CheckRow(rows[i], PlaceOf("rows", i));
    CheckForms();
    if (kind_.by_goods && target_.organisation == 0) CheckOthers(rows);
  }

 private:
  Text TypeText() const { return std::to_string(target_.type); }

  void CheckRow(Json& row, const Text& place) {
    CheckFixed(row, "FClassTypeID", target_.type, place);
    CheckFixed(row, "FSchemeID", 0, place);
    CheckRange(row, place);
    CheckOrganisation(row, place);
    CheckGoods(row, place);
    CheckRate(row["FRebateRate"], *type_, place + ".FRebateRate", findings_);
    const Text line = (row.contains("FOrgID") ? "organisation " + row["FOrgID"].dump() : Text("all")) +
                      (kind_.by_goods && row.contains("FItemID") ? " and goods " + row["FItemID"].dump() : Text());
    if (row.contains("FAmtRangeID") && !seen_.insert({line, row["FAmtRangeID"].dump()}).second) {
      findings_.Refuse(place, "a second rate of " + line + " in the range");
    }
    CheckSelected(row, place);
  }

  void CheckFixed(Json& row, const char* key, Long due, const Text& place) {
    if (row.contains(key) && IntegerOf(row[key]) != due) {
      findings_.Refuse(place + "." + key, "it is due as " + std::to_string(due) + ", not " + row[key].dump());
    }
    row[key] = due;
  }

  void CheckRange(Json& row, const Text& place) {
    const char* key = row.contains("FAmtRangeID") ? "FAmtRangeID" : "FIndex";
    if (!row.contains(key)) return findings_.Refuse(place, "one of FIndex and FAmtRangeID is due");
    const Long wanted = IntegerOf(row[key]);
    const bool by_id = row.contains("FAmtRangeID");
    const auto is_it = [&](const AmountRange& range) { return (by_id ? range.id : range.position) == wanted; };
    const auto found = std::find_if(ranges_.begin(), ranges_.end(), is_it);
    if (found == ranges_.end()) {
      return findings_.Refuse(
          place + "." + key,
          "type " + TypeText() + (by_id ? " has no range " : " has no range at position ") + std::to_string(wanted));
    }
    if (std::find_if(found + 1, ranges_.end(), is_it) != ranges_.end()) {
      return findings_.Refuse(place + "." + key, "type " + TypeText() + " has several ranges at position " +
                                                     std::to_string(wanted) + "; name one as FAmtRangeID");
    }
    if (row.contains("FIndex") && IntegerOf(row["FIndex"]) != found->position) {
      findings_.Refuse(place + ".FIndex", "range " + std::to_string(found->id) + " stands at position " +
                                              std::to_string(found->position) + ", not " + row["FIndex"].dump());
    }
    row["FAmtRangeID"] = found->id;
    row["FIndex"] = found->position;
  }

  void CheckOrganisation(Json& row, const Text& place) {
    if (target_.rest) {
      if (row.contains("FOrgID")) findings_.Refuse(place + ".FOrgID", "the rows are for all that isn't selected");
      return;
    }
    if (!row.contains("FOrgID") && target_.organisation > 0) row["FOrgID"] = target_.organisation;
    if (!Names(row, "FOrgID")) {
      if (!kind_.by_goods) return findings_.Refuse(place + ".FOrgID", "it is due: the organisation whose rate it is");
      row["FOrgID"] = 0;
      return;
    }
    const std::optional<Long> id = entities_.CheckItem(row["FOrgID"], kind_.organisation_class, place + ".FOrgID");
    if (id && target_.organisation > 0 && *id != target_.organisation) {
      findings_.Refuse(place + ".FOrgID", "the rates of organisation " + std::to_string(target_.organisation) +
                                              " are replaced, not those of " + std::to_string(*id));
    }
  }

  void CheckGoods(Json& row, const Text& place) {
    if (!kind_.by_goods) {
      if (Names(row, "FItemID")) findings_.Refuse(place + ".FItemID", "type " + TypeText() + " holds no goods");
      return;
    }
    if (!Names(row, "FItemID")) return findings_.Refuse(place + ".FItemID", "it is due: the goods item");
    std::vector<Long> goods;
    if (const auto id = entities_.CheckItem(row["FItemID"], kind_.entity_class, place + ".FItemID")) goods = {*id};
    if (row.contains("FUnitID")) entities_.CheckUnit(row["FUnitID"], goods, place + ".FUnitID");
  }

  // A rate of what the grid doesn't hold is stored, and never seen.
  void CheckSelected(const Json& row, const Text& place) {
    const char* key = kind_.by_goods ? "FItemID" : "FOrgID";
    if (target_.rest || !Names(row, key) || !row[key].is_number()) return;
    Text query =
        "select FItemID from t_ItemSelect where FClassTypeID=" + TypeText() + " and FItemID=" + row[key].dump();
    if (kind_.by_goods && row.contains("FOrgID")) query += " and FOrgID=" + row["FOrgID"].dump();
    if (account_.QueryNumber(query)) return;
    findings_.Tell(place + "." + key, std::string(KindOf(kind_.entity_class)) + " " + row[key].dump() +
                                          " isn't selected: the grid doesn't show it");
  }

  Text Scope() const {
    Text scope = " where FClassTypeID=" + TypeText();
    if (target_.organisation > 0 && !target_.rest) scope += " and FOrgID=" + std::to_string(target_.organisation);
    return scope;
  }

  // The operations delete by type and organisation, whatever scheme a rate belongs to.
  void CheckForms() {
    const RecordsetRef forms = account_.Query("select distinct FSchemeID from t_FL_RebateRule" + Scope() +
                                              " and FSchemeID>0 order by FSchemeID");
    for (; !forms->Eof(); forms->MoveNext()) {
      const Long id = ToLong(forms->FieldValue("FSchemeID"));
      const std::optional<SchemeHead> form = FindScheme(account_, id);
      findings_.Refuse("rows", "the rates of " + (form ? SchemeText(*form) : "scheme " + std::to_string(id)) +
                                   " would go; `rebate form save` changes them");
    }
  }

  void CheckOthers(const Json& rows) {
    const RecordsetRef stored =
        account_.Query("select distinct FOrgID from t_FL_RebateRule" + Scope() + " and FRebateRate<>0 order by FOrgID");
    for (; !stored->Eof(); stored->MoveNext()) {
      const Variant organisation = stored->FieldValue("FOrgID");
      if (organisation.IsNull() || EqualsNumber(organisation, 0)) continue;
      const auto named = [&](const Json& row) { return row["FOrgID"] == ToLong(organisation); };
      if (std::any_of(rows.begin(), rows.end(), named)) continue;
      findings_.Refuse("rows", "the rates of organisation " + ToText(organisation) +
                                   " would go; name the one to change with --org, or all of them in the file");
    }
  }

  Account& account_;
  const RateTarget& target_;
  Findings& findings_;
  EntityCheck entities_;
  GridKind kind_;
  Ref<Dictionary> type_;
  std::vector<AmountRange> ranges_;
  std::set<std::pair<Text, Text>> seen_;
};

}  // namespace

void CheckRates(Account& account, const RateTarget& target, Json& rows, Findings& findings) {
  RatesCheck(account, target, findings).Run(rows);
}

}  // namespace rebate
