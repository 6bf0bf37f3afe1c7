#include <algorithm>
#include <limits>
#include <nlohmann/json.hpp>

#include "client/amount_text.h"
#include "client/id_lists.h"
#include "client/shape_check.h"
#include "platform/values/ascii.h"
#include "platform/values/number_text.h"

namespace rebate {
namespace {

// An id that stands in a text as an integer, anything else as it is.
Json PlainId(const Json& value) {
  if (!value.is_string()) return value;
  const std::string_view text = Trim(value.get_ref<const Text&>());
  if (const std::optional<Long> id = WholeNumber<Long>(text)) return *id;
  return Text(text);
}

Json PlainList(const Json& value) {
  if (!value.is_string()) return value;
  Text list;
  for (const Text& part : ListParts(value.get_ref<const Text&>())) list += (list.empty() ? "" : ",") + part;
  return list;
}

// An integer that 32 bits don't hold travels as a text.
Json PlainNumber(const Json& value) {
  if (value.is_string()) return PlainAmount(value.get_ref<const Text&>()).value();
  if (value.is_number_integer() &&
      (value < std::numeric_limits<Long>::min() || value > std::numeric_limits<Long>::max())) {
    return value.dump();
  }
  if (!value.is_object()) return value;
  Json plain = value;
  plain["value"] = PlainNumber(value["value"]);
  return plain;
}

}  // namespace

Json PlainObject(const Json& object, std::span<const KeyRule> rules) {
  Json plain = object;
  for (auto& [key, value] : plain.items()) {
    const auto rule = std::find_if(rules.begin(), rules.end(), [&key = key](const KeyRule& r) { return r.key == key; });
    if (rule != rules.end()) value = PlainValue(value, *rule);
  }
  return plain;
}

Json PlainValue(const Json& value, const KeyRule& rule) {
  switch (rule.shape) {
    case Shape::Id:
    case Shape::Item:
      return PlainId(value);
    case Shape::IdList:
    case Shape::ItemList:
      return PlainList(value);
    case Shape::Amount:
      return PlainNumber(value);
    case Shape::Row:
      return PlainObject(value, rule.keys);
    case Shape::Rows: {
      Json rows = value;
      if (!rows.is_array()) return rows;
      for (Json& row : rows) {
        if (row.is_object()) row = PlainObject(row, rule.keys);
      }
      return rows;
    }
    default:
      return value;
  }
}

}  // namespace rebate
