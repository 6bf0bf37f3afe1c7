#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <vector>

#include "calls/json_text.h"
#include "platform/values/types.h"

namespace rebate {

// A call on the account that MakeFaultAccount makes.
struct Operation {
  Text name;                  // its member, with a number behind it where an earlier one has the same
  Json request;               // {"op":…,"args":{…}}
  std::optional<Json> fails;  // its answer where it fails, or "error"; an object stands for all that hold its members
  std::optional<Json> fails_late;  // likewise, where its result stands before its last statement
  bool completes = false;          // whether a failure casts the complete vote, so that work may stand behind it
  std::vector<Json> warm;  // the calls that come before it on a warm connection: itself, where nothing else is named

  // Whether the answer is that of a failure.
  bool IsFailure(const Json& answer) const;
};

// All operations of the component, in one way or more each.
std::vector<Operation> AllOperations();

// Makes a sample account with two schemes, a form and its disabled sibling, and a rate grid.
void MakeFaultAccount(const Text& path);

// The rows of all tables of an account's file, times of change left out.
Text RowsOfAccount(const Text& path);

}  // namespace rebate
