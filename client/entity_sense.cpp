#include "client/entity_sense.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/id_lists.h"
#include "model/item_class.h"
#include "model/rebate_class.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"

namespace rebate {
namespace {

Text TextOf(const Json& value) {
  return value.is_string() ? value.get<Text>() : value.dump();
}

}  // namespace

std::optional<Long> EntityCheck::Look(std::string_view text, Long item_class, const Text& place) {
  const Text kind(KindOf(item_class));
  const std::optional<Long> id = entities_.IdOf(item_class, text);
  const Entity* entity = id ? entities_.Find(item_class, *id) : nullptr;
  if (!entity) {
    findings_.Refuse(place, "there is no " + kind + " " + Text(text));
    return std::nullopt;
  }
  if (entity->is_deleted) findings_.Tell(place, kind + " " + Text(text) + " is out of use");
  if (!entity->is_item) {
    findings_.Tell(place, kind + " " + Text(text) + " has no row in t_Item: lists don't name it, and schemes for all " +
                              kind + "s pass it by");
  }
  return id;
}

std::optional<Long> EntityCheck::CheckItem(Json& item, Long item_class, const Text& place) {
  const std::optional<Long> id = Look(TextOf(item), item_class, place);
  if (id) item = *id;
  return id;
}

std::vector<Long> EntityCheck::CheckList(Json& list, Long item_class, const Text& place) {
  std::vector<Long> ids;
  Text plain;
  for (const Text& part : ListParts(TextOf(list))) {
    const std::optional<Long> id = Look(part, item_class, place);
    if (!id) continue;
    if (std::find(ids.begin(), ids.end(), *id) != ids.end()) findings_.Refuse(place, part + " stands there twice");
    ids.push_back(*id);
    plain += (plain.empty() ? "" : ",") + std::to_string(*id);
  }
  if (list.is_string()) list = plain;
  return ids;
}

void EntityCheck::CheckUnit(Json& unit, const std::vector<Long>& goods, const Text& place) {
  const Text text = TextOf(unit);
  const std::optional<Long> id = entities_.UnitOf(text);
  if (id == 0) return;
  if (!id || !entities_.HasUnit(*id)) return findings_.Refuse(place, "there is no unit " + text);
  unit = *id;
  for (const Long item : goods) {
    if (entities_.IsUnitOf(item, *id)) continue;
    findings_.Refuse(place, "goods item " + std::to_string(item) + " isn't counted in unit " + text);
  }
}

std::vector<Long> OrganisationClasses(const Dictionary& type) {
  switch (ToLong(type.Value("FRebateClass"))) {
    case rebate_class::kPurchases:
      return {item_class::kSuppliers};
    case rebate_class::kSales:
      return {item_class::kCustomers};
    default:
      return {item_class::kEmployees, item_class::kCustomers};
  }
}

Long EntityNamed(Account& account, Long item_class, std::string_view text) {
  Entities entities(account);
  const std::optional<Long> id = entities.IdOf(item_class, text);
  if (id && entities.Find(item_class, *id)) return *id;
  throw Error(error_number::kInvalidCall, "rebate", "There is no " + Text(KindOf(item_class)) + " " + Text(text));
}

Long IntegerOf(const Json& value) {
  return ToLong(FromJson(value, ""));
}

}  // namespace rebate
