#include "client/scheme_sense.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "client/account.h"
#include "client/entity_sense.h"
#include "client/range_sense.h"
#include "client/rebate_classes.h"
#include "model/item_class.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

// One request under examination.
class SchemeCheck {
 public:
  SchemeCheck(Account& account, Json& request, Findings& findings)
      : account_(account), request_(request), findings_(findings), entities_(account, findings) {}

  std::optional<SchemeHead> Run() {
    const std::optional<SchemeHead> replaced = CheckHead();
    CheckRanges(request_["AllRangesData"], "AllRangesData", "FLowerLimit", "FUpperLimit", findings_);
    if (!FindType()) return replaced;
    if (replaced && replaced->rebate_type != IntegerOf(TypeCode())) {
      findings_.Tell("SchemeMainData.FSchemeID",
                     SchemeText(*replaced) + " is of type " + std::to_string(replaced->rebate_type));
    }
    CheckOrganisations();
    CheckGridRows();
    return replaced;
  }

 private:
  const Json& TypeCode() const {
    return request_.contains("SchemeConst") ? request_["SchemeConst"]["FRebateType"] : request_["FRebateType"];
  }

  bool FindType() {
    const bool whole = request_.contains("SchemeConst");
    const Text place = whole ? "SchemeConst.FRebateType" : "FRebateType";
    type_ = FindTypeRow(account_, IntegerOf(TypeCode()));
    if (!type_) {
      findings_.Refuse(place, "the account offers no rebate type " + TypeCode().dump() + "; `rebate types` lists them");
      return false;
    }
    const Long range_class = ToLong(type_->Value("FRangeItemClass"));
    by_goods_ = range_class == item_class::kGoods;
    if (whole && IntegerOf(request_["SchemeConst"]["FRangeItemClass"]) != range_class) {
      findings_.Refuse("SchemeConst.FRangeItemClass", "the type ranges over " + std::to_string(range_class));
    }
    return true;
  }

  std::optional<SchemeHead> CheckHead() {
    const Json& head = request_["SchemeMainData"];
    const Long id = head.contains("FSchemeID") ? IntegerOf(head["FSchemeID"]) : 0;
    const Text name = head["FSchemeName"].get<Text>();
    if (TrimWhite(name).empty()) findings_.Refuse("SchemeMainData.FSchemeName", "the name is empty");
    if (ToBoolean(account_.Call("ExistsSchemeName", {id, name}))) {
      findings_.Tell("SchemeMainData.FSchemeName", "another scheme bears the name, too");
    }
    if (id == 0) return std::nullopt;
    const Text place = "SchemeMainData.FSchemeID";
    std::optional<SchemeHead> replaced = FindScheme(account_, id);
    if (!replaced) {
      findings_.Refuse(place, "there is no scheme " + std::to_string(id) + " to replace; 0 stores a new one");
    } else if (replaced->is_form) {
      findings_.Refuse(place, SchemeText(*replaced) + " was saved as a form; `rebate form save` replaces it");
    }
    return replaced;
  }

  void CheckOrganisations() {
    Json& organisations = request_["AllOrgsData"];
    if (organisations.empty()) findings_.Refuse("AllOrgsData", "there is no organisation");
    for (std::size_t i = 0; i < organisations.size(); ++i) {
      CheckOrganisation(organisations[i], PlaceOf("AllOrgsData", i));
      CheckPoints(organisations[i], i == 0, PlaceOf("AllOrgsData", i) + ".CheckPoints");
    }
  }

  void CheckOrganisation(Json& organisation, const Text& place) {
    const Long row = IntegerOf(organisation["FRowID"]);
    const auto rows = static_cast<Long>(request_["AllGridRows"].size());
    if (row < 0 || row > rows || rows == 0) {
      findings_.Refuse(place + ".FRowID", rows == 0 ? "there is no grid row, so that nothing would be stored of it"
                                                    : "there is no grid row " + std::to_string(row));
    }
    const Long item_class = IntegerOf(organisation["FItemClassID"]);
    const std::vector<Long> classes = OrganisationClasses(*type_);
    if (std::find(classes.begin(), classes.end(), item_class) == classes.end()) {
      findings_.Refuse(place + ".FItemClassID", "organisations of type " + TypeCode().dump() + " are of class " +
                                                    std::to_string(classes.front()) + ", not " +
                                                    std::to_string(item_class));
      return;
    }
    Json& item = organisation["FItemID"];
    if (item != item_class::kWholeClass && item != item_class::kAbnormalAccounts &&
        !entities_.CheckItem(item, item_class, place + ".FItemID")) {
      return;
    }
    CheckOnce(row, item_class, IntegerOf(item), place);
  }

  void CheckPoints(const Json& organisation, bool is_first, const Text& place) {
    if (!organisation.contains("CheckPoints") || organisation["CheckPoints"].empty()) return;
    if (is_first && organisation["FRowID"] == 0) return;
    findings_.Refuse(place, "they are stored of the first organisation alone, and where its FRowID is 0");
  }

  // An organisation of every row (0) stands in each single one, too.
  void CheckOnce(Long row, Long item_class, Long item, const Text& place) {
    const auto clashes = [&](Long other, Long of_item) {
      return std::any_of(organisations_.begin(), organisations_.end(), [&](const auto& seen) {
        return seen.item_class == item_class && seen.item == of_item &&
               (seen.row == other || seen.row == 0 || other == 0);
      });
    };
    if (clashes(row, item)) {
      findings_.Refuse(place + ".FItemID", "organisation " + std::to_string(item) + " stands in the row twice");
    } else if (item != item_class::kWholeClass && clashes(row, item_class::kWholeClass)) {
      findings_.Tell(place + ".FItemID", "the whole class stands in the row already");
    }
    organisations_.push_back({row, item_class, item});
  }

  void CheckGridRows() {
    Json& rows = request_["AllGridRows"];
    if (rows.empty()) findings_.Refuse("AllGridRows", "there is no grid row");
    for (std::size_t i = 0; i < rows.size(); ++i) {
      const Text place = PlaceOf("AllGridRows", i);
      const Long number = static_cast<Long>(i) + 1;
      if (rows[i].is_null()) {
        findings_.Tell(place, "the row is empty");
        continue;
      }
      if (!HasOrganisation(number)) findings_.Refuse(place, "no organisation stands in the row");
      CheckGoods(rows[i], number, place);
      CheckCheckItems(rows[i], number, place);
      CheckRates(rows[i], number, place);
    }
  }

  bool HasOrganisation(Long row) const {
    if (request_["AllOrgsData"].empty()) return true;
    return std::any_of(request_["AllOrgsData"].begin(), request_["AllOrgsData"].end(), [&](const Json& organisation) {
      const Long stands = IntegerOf(organisation["FRowID"]);
      return stands == 0 || stands == row;
    });
  }

  // The rows of a list in a grid row, each with its place, its FRowID compared with the row's position.
  template <typename Visit>
  void EachIn(Json& grid_row, const char* list, Long number, const Text& place, Visit visit) {
    if (!grid_row.contains(list) || grid_row[list].is_null()) return;
    for (std::size_t i = 0; i < grid_row[list].size(); ++i) {
      Json& row = grid_row[list][i];
      if (row.is_null()) continue;
      const Text at = PlaceOf(place + "." + list, i);
      if (IntegerOf(row["FRowID"]) != number) {
        findings_.Refuse(at + ".FRowID", "the grid row stands at position " + std::to_string(number) + ", not " +
                                             std::to_string(IntegerOf(row["FRowID"])));
      }
      visit(row, at);
    }
  }

  void CheckGoods(Json& grid_row, Long number, const Text& place) {
    bool any = false;
    std::set<Long> seen;
    EachIn(grid_row, "FItemIDs", number, place, [&](Json& goods, const Text& at) {
      any = true;
      if (!by_goods_) {
        if (!std::exchange(told_goods_, true))
          findings_.Refuse(at, "type " + TypeCode().dump() + " goes by organisations alone, without goods");
        return;
      }
      const std::optional<Long> id = entities_.CheckItem(goods["FItemID"], item_class::kGoods, at + ".FItemID");
      if (!id) return;
      entities_.CheckUnit(goods["FUnitID"], {*id}, at + ".FUnitID");
      if (!seen.insert(*id).second) {
        findings_.Refuse(at + ".FItemID", "goods item " + std::to_string(*id) + " stands in the row twice");
      } else if (const auto [other, is_new] = row_of_goods_.try_emplace(*id, number); !is_new) {
        findings_.Tell(at + ".FItemID", "goods item " + std::to_string(*id) + " stands in row " +
                                            std::to_string(other->second) + ", too");
      }
    });
    if (by_goods_ && !any) findings_.Refuse(place + ".FItemIDs", "there are no goods in the row");
  }

  void CheckCheckItems(Json& grid_row, Long number, const Text& place) {
    EachIn(grid_row, "FCheckItems", number, place, [&](Json& item, const Text& at) {
      const Long item_class = IntegerOf(item["FItemClassID"]);
      if (entities_.entities().HasClass(item_class)) {
        entities_.CheckItem(item["FItemID"], item_class, at + ".FItemID");
      } else {
        findings_.Refuse(at + ".FItemClassID", "there is no item class " + std::to_string(item_class));
      }
    });
  }

  void CheckRates(Json& grid_row, Long number, const Text& place) {
    RateCoverage coverage(request_["AllRangesData"].size(), findings_);
    EachIn(grid_row, "FRebateRates", number, place, [&](Json& rate, const Text& at) {
      CheckRate(rate["FRebateRate"], *type_, at + ".FRebateRate", findings_);
      coverage.Add("the row", IntegerOf(rate["FIndex"]), at + ".FIndex");
    });
    coverage.TellGaps("the row", place + ".FRebateRates");
  }

  struct Standing {
    Long row;
    Long item_class;
    Long item;
  };

  Account& account_;
  Json& request_;
  Findings& findings_;
  EntityCheck entities_;
  Ref<Dictionary> type_;
  bool by_goods_ = false;
  bool told_goods_ = false;
  std::vector<Standing> organisations_;
  std::map<Long, Long> row_of_goods_;
};

}  // namespace

std::optional<SchemeHead> CheckScheme(Account& account, Json& request, Findings& findings) {
  return SchemeCheck(account, request, findings).Run();
}

}  // namespace rebate
