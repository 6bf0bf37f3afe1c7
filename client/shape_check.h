#pragma once

#include <iosfwd>
#include <span>
#include <vector>

#include "calls/json_text.h"

namespace CLI {
class App;
}

namespace rebate {

// What may stand under a key. An id is an integer and an amount a number, or a text that reads as one; an item is an id
// or the number that the item bears, such as S001; a list holds several with commas or blanks between them.
enum class Shape { Id, IdList, Item, ItemList, Amount, Text, Flag, Row, Rows, Points, Anything };

// A key of an object, and what stands under it.
struct KeyRule {
  std::string_view key;
  Shape shape;
  std::string_view about;  // what it says, for people
  bool required = true;
  std::span<const KeyRule> keys = {};             // of a Row, or of each of Rows
  enum { None, Rows, ListAndRows } nulls = None;  // where Rows admits null
  bool open = false;                              // whether a Row may hold further keys
};

constexpr bool kOptional = false;

// Collects what is wrong with the shape of a value, each problem with its place, such as
// `AllGridRows[2].FItemIDs[1].FItemID is missing`, rows counted from 1.
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
};

// A value whose shape is right, as the component's operations read it as it is meant: amounts without commas, ids as
// integers, lists with a comma between their ids.
Json PlainObject(const Json& object, std::span<const KeyRule> rules);
Json PlainValue(const Json& value, const KeyRule& rule);

// Prints what may stand under each key, rows' keys below theirs.
void PrintKeys(std::span<const KeyRule> rules, std::ostream& out);
// Adds --keys to a verb, which prints them and does nothing else.
void AddKeysFlag(CLI::App& verb, std::span<const KeyRule> rules);

}  // namespace rebate
