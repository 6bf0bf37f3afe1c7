#pragma once

#include <span>
#include <vector>

#include "calls/json_text.h"

namespace rebate {

// What may stand under a key. An id is an integer and an amount a number, or a text that reads as one; a list of ids is
// an id or a text of ids with commas between them.
enum class Shape { Id, IdList, Amount, Text, Row, Rows, Points, Anything };

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

// Collects what is wrong with the shape of a value, each problem with its place, such as
// `AllGridRows[2].FItemIDs[1].FItemID is missing`, rows counted from 1; behind ten, a line tells how many more there
// are.
class ShapeCheck {
 public:
  // Checks the keys of `object`, which stands at `path`, empty for the whole value; a key without a rule is a problem
  // unless `open`.
  void CheckObject(const Json& object, std::span<const KeyRule> rules, const Text& path, bool open = false);
  // Checks what stands at `place` by the rule, whatever the rule's own key.
  void CheckValue(const Json& value, const KeyRule& rule, const Text& place);
  void Report(Text problem);

  const std::vector<Text>& problems() const { return problems_; }

 private:
  void CheckRow(const Json& value, const KeyRule& rule, const Text& place);
  void CheckRows(const Json& value, const KeyRule& rule, const Text& place);
  void CheckPoints(const Json& value, const Text& place);
  void Expect(std::string_view what, const Json& value, const Text& place);

  std::vector<Text> problems_;
  std::size_t more_ = 0;
};

}  // namespace rebate
