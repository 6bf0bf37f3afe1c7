#pragma once

#include <utility>
#include <vector>

#include "calls/json_text.h"
#include "platform/values/types.h"

namespace rebate {

struct Tool;

// A row of the account, by its table and the columns that tell it from others.
struct FoundRow {
  Text table;
  std::vector<std::pair<Text, Text>> key;

  friend bool operator==(const FoundRow&, const FoundRow&) = default;
};

// One thing that is wrong in an account.
struct Finding {
  Text check;  // the kind, one word
  Text what;   // a sentence
  std::vector<FoundRow> rows;
  bool mendable = false;  // it has one right answer

  friend bool operator==(const Finding&, const Finding&) = default;
};

// The kind of a finding about damage of the account's own file.
inline constexpr char kFileDamage[] = "file";

// The findings that have one right answer; none in an account whose file is damaged, to which nothing should be
// written.
std::vector<Finding> MendableOf(const std::vector<Finding>& findings);

// Prints the findings, kind by kind, each with its rows, of which long lists are cut.
void PrintFindings(const std::vector<Finding>& findings, Tool& tool);

// Each finding with all of its rows: {"check":…,"what":…,"mendable":…,"rows":[{"table":…,"FID":…},…]}.
Json FindingsJson(const std::vector<Finding>& findings);

}  // namespace rebate
