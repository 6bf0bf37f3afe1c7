#include "client/form_sense.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "client/account.h"
#include "client/entity_sense.h"
#include "client/range_sense.h"
#include "client/rebate_classes.h"
#include "model/item_class.h"
#include "model/rebate_type.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

constexpr Long kLastItemMode = 5;
constexpr Long kLastMode = 7;

// A value that stands there and isn't 0, which says none.
bool Names(const Json& row, const char* key) {
  return row.contains(key) && row[key] != "" && row[key] != 0 && row[key] != "0";
}

Text TextOf(const Json& row, const char* key) {
  if (!Names(row, key)) return {};
  return row[key].is_string() ? row[key].get<Text>() : row[key].dump();
}

// One form under examination.
class FormCheck {
 public:
  FormCheck(Account& account, Json& form, Findings& findings)
      : account_(account), form_(form), findings_(findings), entities_(account, findings) {}

  std::optional<SchemeHead> Run() {
    const std::optional<SchemeHead> replaced = CheckHead();
    CheckRanges(form_["vecRangeData"], "vecRangeData", "FLower", "FUpper", findings_);
    if (!CheckType()) return replaced;
    CheckOrganisations();
    RateCoverage coverage(form_["vecRangeData"].size(), findings_);
    for (std::size_t i = 0; i < Rows().size(); ++i) CheckRow(Rows()[i], PlaceOf("vecSchemeData", i), coverage);
    for (const auto& [line, place] : lines_) coverage.TellGaps(line, place);
    GroupRows();
    return replaced;
  }

 private:
  Json& Rows() { return form_["vecSchemeData"]; }
  const char* SubjectKey() const { return by_total_ ? "FOrgID" : "FItemID"; }

  std::optional<SchemeHead> CheckHead() {
    const Long id = form_.contains("SchemeID") ? IntegerOf(form_["SchemeID"]) : 0;
    CheckName(id);
    if (id == 0) return std::nullopt;
    std::optional<SchemeHead> replaced = FindScheme(account_, id);
    if (!replaced) {
      findings_.Refuse("SchemeID", "there is no form " + std::to_string(id) + " to replace; 0 stores a new one");
    } else if (!replaced->is_form) {
      findings_.Refuse("SchemeID", SchemeText(*replaced) + " was not saved as a form; `rebate save` replaces it");
    }
    return replaced;
  }

  // The operation finds the stored head by its name: one that is taken would let it write over the other scheme's
  // rates.
  void CheckName(Long id) {
    const Text name = form_["SchemeName"].get<Text>();
    if (TrimWhite(name).empty()) findings_.Refuse("SchemeName", "the name is empty");
    const bool taken = ToBoolean(account_.Call("ExistsSchemeName", {id, name}));
    if (account_.refusal()) account_.ThrowFailure({});
    if (taken) findings_.Refuse("SchemeName", "another scheme bears the name " + name);
  }

  bool CheckType() {
    const Long code = IntegerOf(form_["lRebateType"]);
    type_ = FindTypeRow(account_, code);
    if (!type_) {
      findings_.Refuse("lRebateType",
                       "the account offers no rebate type " + std::to_string(code) + "; `rebate types` lists them");
      return false;
    }
    by_total_ = rebate_type::IsFormTotal(code);
    const Long mode = IntegerOf(form_["lRebateMode"]);
    if (mode < 1 || mode > kLastMode || (mode > kLastItemMode) != by_total_) {
      findings_.Refuse("lRebateMode", "type " + std::to_string(code) +
                                          (by_total_ ? " goes by totals: mode 6 or 7" : " goes by goods: mode 1 to 5") +
                                          ", not " + std::to_string(mode));
    }
    organisation_class_ = OrganisationClasses(*type_).front();
    return true;
  }

  void CheckOrganisations() {
    if (!Names(form_, "sOrg")) return;
    if (by_total_) findings_.Tell("sOrg", "types by total take their organisations from the rows' FOrgID");
    entities_.CheckList(form_["sOrg"], organisation_class_, "sOrg");
    if (form_["sOrg"].is_number()) form_["sOrg"] = form_["sOrg"].dump();
  }

  void CheckRow(Json& row, const Text& place, RateCoverage& coverage) {
    const char* other = by_total_ ? "FItemID" : "FOrgID";
    if (Names(row, other)) {
      findings_.Refuse(place + "." + other, by_total_ ? "types by total hold no goods"
                                                      : "in types by goods sOrg names the organisations of all rows");
    }
    if (!Names(row, SubjectKey())) {
      findings_.Refuse(place + "." + SubjectKey(), "it is due in a type by " + Text(by_total_ ? "total" : "goods"));
      return;
    }
    std::vector<Long> goods;
    if (by_total_) {
      entities_.CheckItem(row["FOrgID"], organisation_class_, place + ".FOrgID");
    } else {
      goods = entities_.CheckList(row["FItemID"], item_class::kGoods, place + ".FItemID");
    }
    if (row.contains("FUnitID")) entities_.CheckUnit(row["FUnitID"], goods, place + ".FUnitID");
    CheckRate(row["FRebateRate"], *type_, place + ".FRebateRate", findings_);
    const Text line = LineOf(row);
    coverage.Add(line, IntegerOf(row["FRebateCount"]), place + ".FRebateCount");
    const auto known = [&](const auto& seen) { return seen.first == line; };
    if (std::none_of(lines_.begin(), lines_.end(), known)) lines_.emplace_back(line, place);
  }

  Text LineOf(const Json& row) const {
    Text line = (by_total_ ? "organisation " : "goods ") + TextOf(row, SubjectKey());
    if (Names(row, "FUnitID")) line += " in unit " + TextOf(row, "FUnitID");
    if (Names(row, "FCheckItemID")) line += " with check items " + TextOf(row, "FCheckItemID");
    return line;
  }

  // The operation takes a run of rows for one selection.
  void GroupRows() {
    std::vector<Text> order;
    const auto place = [&](const Json& row) {
      const Text subject = TextOf(row, SubjectKey());
      const auto found = std::find(order.begin(), order.end(), subject);
      if (found != order.end()) return found - order.begin();
      order.push_back(subject);
      return std::ssize(order) - 1;
    };
    std::vector<std::pair<std::ptrdiff_t, Json>> placed;
    for (const Json& row : Rows()) placed.emplace_back(place(row), row);
    std::stable_sort(placed.begin(), placed.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    for (std::size_t i = 0; i < placed.size(); ++i) Rows()[i] = placed[i].second;
  }

  Account& account_;
  Json& form_;
  Findings& findings_;
  EntityCheck entities_;
  Ref<Dictionary> type_;
  bool by_total_ = false;
  Long organisation_class_ = 0;
  std::vector<std::pair<Text, Text>> lines_;  // with the place of the first row of each
};

}  // namespace

std::optional<SchemeHead> CheckForm(Account& account, Json& form, Findings& findings) {
  return FormCheck(account, form, findings).Run();
}

}  // namespace rebate
