#include "client/shape_check.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

#include "client/amount_text.h"
#include "client/id_lists.h"
#include "platform/values/ascii.h"
#include "platform/values/number_text.h"

namespace rebate {
namespace {

constexpr double kAmountLimit = 1e15;

bool IsId(const Json& value) {
  using Limits = std::numeric_limits<Long>;
  if (value.is_number_integer()) return value >= Limits::min() && value <= Limits::max();
  return value.is_string() && WholeNumber<Long>(Trim(value.get_ref<const Text&>())).has_value();
}

bool IsItem(const Json& value) {
  if (!value.is_string()) return IsId(value);
  return ListParts(value.get_ref<const Text&>()).size() == 1;
}

bool IsIdList(const Json& value) {
  if (!value.is_string()) return IsId(value);
  const std::vector<Text> ids = ListParts(value.get_ref<const Text&>());
  return std::all_of(ids.begin(), ids.end(), [](const Text& id) { return IsId(id); });
}

// What is wrong with an amount, empty where nothing is.
Text AmountProblem(const Json& value) {
  if (value.is_object()) {
    const bool known = value.contains("$") && (value["$"] == "currency" || value["$"] == "decimal");
    if (!known || !value.contains("value") || value["value"].is_object()) return "a number";
    return AmountProblem(value["value"]);
  }
  if (value.is_number_float()) {
    return std::abs(value.get<double>()) < kAmountLimit ? "" : "a number of at most 15 digits";
  }
  if (!value.is_number() && !value.is_string()) return "a number";
  const Text text = value.is_string() ? value.get<Text>() : value.dump();
  const std::optional<Text> plain = PlainAmount(text);
  if (plain) return IsHeldWhole(*plain) ? "" : "a number of at most 15 digits, ten of them behind the point";
  return text.find(',') == Text::npos ? "a number"
                                      : "a number, commas between thousands alone and a point for decimals";
}

Text Join(const Text& path, std::string_view key) {
  return path.empty() ? Text(key) : path + "." + Text(key);
}

}  // namespace

void ShapeCheck::CheckObject(const Json& object, std::span<const KeyRule> rules, const Text& path, bool open) {
  for (const KeyRule& rule : rules) {
    const Text place = Join(path, rule.key);
    if (const auto found = object.find(rule.key); found != object.end()) {
      CheckValue(*found, rule, place);
    } else if (rule.required) {
      Report(place + " is missing");
    }
  }
  if (open) return;
  for (const auto& [key, value] : object.items()) {
    const auto known = [&key = key](const KeyRule& rule) { return rule.key == key; };
    if (std::none_of(rules.begin(), rules.end(), known)) Report(Join(path, key) + " is unknown");
  }
}

void ShapeCheck::Report(Text problem) {
  problems_.push_back(std::move(problem));
}

void ShapeCheck::CheckValue(const Json& value, const KeyRule& rule, const Text& place) {
  switch (rule.shape) {
    case Shape::Id:
      if (!IsId(value)) Expect("an integer", value, place);
      break;
    case Shape::IdList:
      if (!IsIdList(value)) Expect("an integer, or a text of integers and commas", value, place);
      break;
    case Shape::Item:
      if (!IsItem(value)) Expect("an integer, or the text of a number", value, place);
      break;
    case Shape::ItemList:
      if (!value.is_string() && !IsId(value)) Expect("an integer, or a text of integers and commas", value, place);
      break;
    case Shape::Amount:
      if (const Text due = AmountProblem(value); !due.empty()) Expect(due, value, place);
      break;
    case Shape::Text:
      if (!value.is_string()) Expect("a text", value, place);
      break;
    case Shape::Flag:
      if (!value.is_boolean()) Expect("true or false", value, place);
      break;
    case Shape::Row:
      CheckRow(value, rule, place);
      break;
    case Shape::Rows:
      CheckRows(value, rule, place);
      break;
    case Shape::Points:
      CheckPoints(value, place);
      break;
    case Shape::Anything:
      break;
  }
}

void ShapeCheck::CheckRow(const Json& value, const KeyRule& rule, const Text& place) {
  if (!value.is_object()) return Expect("an object", value, place);
  CheckObject(value, rule.keys, place, rule.open);
}

void ShapeCheck::CheckRows(const Json& value, const KeyRule& rule, const Text& place) {
  if (rule.nulls == KeyRule::ListAndRows && value.is_null()) return;
  if (!value.is_array()) return Expect("an array", value, place);
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (rule.nulls != KeyRule::None && value[i].is_null()) continue;
    CheckRow(value[i], rule, place + "[" + std::to_string(i + 1) + "]");
  }
}

// The item ids are the keys; the values don't matter.
void ShapeCheck::CheckPoints(const Json& value, const Text& place) {
  if (value.is_null()) return;
  if (!value.is_object()) return Expect("an object", value, place);
  for (const auto& [key, unused] : value.items()) {
    if (!IsId(key)) Report(Join(place, key) + ": the keys are item ids");
  }
}

void ShapeCheck::Expect(std::string_view what, const Json& value, const Text& place) {
  constexpr std::size_t kShown = 60;
  const Text shown = JsonLine(value);
  Report(place + " is due as " + Text(what) + ", not " + (shown.size() > kShown ? value.type_name() : shown));
}

}  // namespace rebate
