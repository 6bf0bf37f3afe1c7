#include "client/request_check.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <span>

#include "platform/automation/conversion.h"

namespace rebate {
namespace {

constexpr std::size_t kMostProblems = 10;

enum class Shape { Id, Amount, Text, Row, Rows, Points, Anything };

// A key of an object, and what stands under it.
struct KeyRule {
  std::string_view key;
  Shape shape;
  bool required = true;
  std::span<const KeyRule> keys = {};             // of a Row, or of each of Rows
  enum { None, Rows, ListAndRows } nulls = None;  // where Rows admits null
  bool open = false;                              // whether a Row may hold further keys
};

constexpr bool kOptional = false;

constexpr KeyRule kTypeRow[] = {{"FRebateType", Shape::Id}, {"FRangeItemClass", Shape::Id}};
constexpr KeyRule kHead[] = {{"FSchemeID", Shape::Id, kOptional},
                             {"FSchemeName", Shape::Text},
                             {"FNote", Shape::Text, kOptional},
                             {"FCheckerID", Shape::Anything, kOptional}};
constexpr KeyRule kRange[] = {{"FLowerLimit", Shape::Amount}, {"FUpperLimit", Shape::Amount}};
constexpr KeyRule kOrganisation[] = {{"FRowID", Shape::Id},
                                     {"FItemClassID", Shape::Id},
                                     {"FItemID", Shape::Id},
                                     {"FShowName", Shape::Text},
                                     {"CheckPoints", Shape::Points, kOptional}};
constexpr KeyRule kGoods[] = {
    {"FRowID", Shape::Id}, {"FItemID", Shape::Id}, {"FUnitID", Shape::Id}, {"FShowName", Shape::Text}};
constexpr KeyRule kCheckItem[] = {{"FRowID", Shape::Id}, {"FItemClassID", Shape::Id}, {"FItemID", Shape::Id}};
constexpr KeyRule kRate[] = {{"FRowID", Shape::Id}, {"FRebateRate", Shape::Amount}, {"FIndex", Shape::Id}};
constexpr KeyRule kGridRow[] = {{"FItemIDs", Shape::Rows, kOptional, kGoods, KeyRule::ListAndRows},
                                {"FCheckItems", Shape::Rows, kOptional, kCheckItem, KeyRule::ListAndRows},
                                {"FRebateRates", Shape::Rows, kOptional, kRate, KeyRule::ListAndRows},
                                {"FZH", Shape::Id, kOptional}};
constexpr KeyRule kRequest[] = {{"FRebateType", Shape::Id, kOptional},
                                {"SchemeConst", Shape::Row, kOptional, kTypeRow, KeyRule::None, true},
                                {"SchemeMainData", Shape::Row, true, kHead},
                                {"AllRangesData", Shape::Rows, true, kRange},
                                {"AllOrgsData", Shape::Rows, true, kOrganisation},
                                {"AllGridRows", Shape::Rows, true, kGridRow, KeyRule::Rows}};

bool IsId(const Json& value) {
  using Limits = std::numeric_limits<Long>;
  if (value.is_number_integer()) return value >= Limits::min() && value <= Limits::max();
  if (!value.is_string()) return false;
  const auto number = ParseNumber(value.get_ref<const Text&>());
  return number && std::trunc(*number) == *number && std::abs(*number) <= Limits::max();
}

bool IsAmount(const Json& value) {
  if (value.is_number()) return true;
  if (value.is_string()) return ParseNumber(value.get_ref<const Text&>()).has_value();
  if (!value.is_object() || !value.contains("$")) return false;
  return value["$"] == "currency" || value["$"] == "decimal";
}

class Checker {
 public:
  std::vector<Text> problems;

  void CheckObject(const Json& object, std::span<const KeyRule> rules, const Text& path, bool open) {
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

  void Report(Text problem) {
    if (problems.size() < kMostProblems) problems.push_back(std::move(problem));
  }

 private:
  static Text Join(const Text& path, std::string_view key) { return path.empty() ? Text(key) : path + "." + Text(key); }

  void CheckValue(const Json& value, const KeyRule& rule, const Text& place) {
    switch (rule.shape) {
      case Shape::Id:
        if (!IsId(value)) Expect("an integer", value, place);
        break;
      case Shape::Amount:
        if (!IsAmount(value)) Expect("a number", value, place);
        break;
      case Shape::Text:
        if (!value.is_string()) Expect("a text", value, place);
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

  void CheckRow(const Json& value, const KeyRule& rule, const Text& place) {
    if (!value.is_object()) return Expect("an object", value, place);
    CheckObject(value, rule.keys, place, rule.open);
  }

  void CheckRows(const Json& value, const KeyRule& rule, const Text& place) {
    if (rule.nulls == KeyRule::ListAndRows && value.is_null()) return;
    if (!value.is_array()) return Expect("an array", value, place);
    for (std::size_t i = 0; i < value.size(); ++i) {
      if (rule.nulls != KeyRule::None && value[i].is_null()) continue;
      CheckRow(value[i], rule, place + "[" + std::to_string(i + 1) + "]");
    }
  }

  // The item ids are the keys; the values don't matter.
  void CheckPoints(const Json& value, const Text& place) {
    if (value.is_null()) return;
    if (!value.is_object()) return Expect("an object", value, place);
    for (const auto& [key, unused] : value.items()) {
      if (!IsId(key)) Report(Join(place, key) + ": the keys are item ids");
    }
  }

  void Expect(std::string_view what, const Json& value, const Text& place) {
    constexpr std::size_t kShown = 60;
    const Text shown = JsonLine(value);
    Report(place + " is due as " + Text(what) + ", not " + (shown.size() > kShown ? value.type_name() : shown));
  }
};

}  // namespace

std::vector<Text> RequestProblems(const Json& request) {
  Checker checker;
  if (!request.is_object()) {
    checker.Report("A request is one object");
    return checker.problems;
  }
  if (request.contains("SchemeConst") == request.contains("FRebateType")) {
    checker.Report("One of SchemeConst and FRebateType is due");
  }
  checker.CheckObject(request, kRequest, {}, false);
  return checker.problems;
}

}  // namespace rebate
