#pragma once

#include <vector>

#include "platform/values/types.h"

namespace rebate {

struct Tool;

// What was found in a file's value, each finding with its place in front, such as
// `AllOrgsData[2].FItemID: there is no supplier 899`, rows counted from 1.
class Findings {
 public:
  // What can't be right: nothing is stored.
  void Refuse(const Text& place, const Text& what) { refusals_.push_back(place + ": " + what); }
  // What is only odd: it is told, and stored unless the user is strict.
  void Tell(const Text& place, const Text& what) { oddities_.push_back(place + ": " + what); }

  const std::vector<Text>& refusals() const { return refusals_; }
  const std::vector<Text>& oddities() const { return oddities_; }

 private:
  std::vector<Text> refusals_;
  std::vector<Text> oddities_;
};

// Prints the findings in a file, a line each, and makes the tool end with status 1 where the file is refused: for what
// can't be right, and for what is odd where `strict`. Gives whether it is.
bool IsRefused(const Text& path, const Findings& findings, bool strict, Tool& tool);

// The place of a row in a list, such as `AllOrgsData[2]`; `index` counts from 0.
Text PlaceOf(const Text& list, std::size_t index);

}  // namespace rebate
