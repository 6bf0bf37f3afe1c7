#include "client/code_words.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <span>

#include "client/row_tables.h"
#include "platform/containers/dictionary.h"
#include "platform/values/number_text.h"

namespace rebate {
namespace {

struct Word {
  std::string_view code;
  std::string_view word;
};

constexpr Word kRebateClasses[] = {{"24", "suppliers"}, {"32", "customers"}, {"40", "salesmen"}};
constexpr Word kItemClasses[] = {{"1", "customers"}, {"4", "goods"}, {"8", "suppliers"}};

constexpr std::string_view kIds[] = {"FSchemeID", "FRebateType",  "FRebateClass", "FRangeItemClass",
                                     "FItemID",   "FItemClassID", "FIndex"};

Text WithWord(const Text& code, std::span<const Word> words) {
  const auto found = std::find_if(words.begin(), words.end(), [&](const Word& word) { return word.code == code; });
  return found == words.end() ? code : code + " " + Text(found->word);
}

bool IsTrue(const Text& cell) {
  return cell == "1" || cell == "-1" || cell == "True";
}

}  // namespace

Text RebateClassText(const Text& code) {
  return WithWord(code, kRebateClasses);
}

Text ItemClassText(const Text& code) {
  return WithWord(code, kItemClasses);
}

Text RateUnit(const Dictionary& type) {
  if (!type.Has("FIsPercent")) return {};
  if (IsTrue(CellText(type, "FIsPercent"))) return "%";
  if (CellText(type, "FRebateTarget") == "2") return "units of goods";
  return CellText(type, "FRebateKeyWord") == "FPrice" ? "元 a unit" : "元";
}

Text WithUnit(const Text& title, const Text& unit) {
  return unit.empty() ? title : title + " (" + unit + ")";
}

Json WithNumericIds(Json value) {
  if (value.is_array()) {
    for (Json& element : value) element = WithNumericIds(std::move(element));
    return value;
  }
  if (!value.is_object()) return value;
  for (auto& [key, element] : value.items()) {
    const bool is_id = std::find(std::begin(kIds), std::end(kIds), key) != std::end(kIds);
    if (is_id && element.is_string()) {
      if (const auto id = WholeNumber<Long>(element.get_ref<const Text&>())) element = *id;
    } else if (element.is_structured()) {
      element = WithNumericIds(std::move(element));
    }
  }
  return value;
}

}  // namespace rebate
