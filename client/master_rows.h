#pragma once

#include <map>
#include <optional>
#include <unordered_map>
#include <vector>

#include "client/master_kind.h"
#include "platform/database/connection.h"

namespace rebate {

// A value of a column: its text, nothing for Null. That of a flag is a number, that of units their ids with ; between.
using MasterCell = std::optional<Text>;

// A row of master data as the account holds it.
struct StoredRow {
  Long id = 0;
  std::vector<MasterCell> cells;  // by the kind's columns
  bool in_table = true;           // or in t_Item alone, whose values the cells then are
  bool has_item = false;
  bool item_agrees = false;  // the row in t_Item says the same
};

// All rows of a kind, by id. Raises where the account can't tell.
std::vector<StoredRow> ReadStoredRows(Connection& connection, const MasterKind& kind);

// A text as it counts where numbers are compared: without regard to case, width and blanks at the end.
Text NumberKey(const Text& number);

// The account's units, as a list in a file names them: by number, or as #ID where no number tells a unit from others.
class UnitNames {
 public:
  explicit UnitNames(Connection& connection);

  // A list of unit ids (`1;2`) as the units' names (`PCS;BOX`), and back. Nothing, and `unknown` what isn't there,
  // where a name belongs to no unit; the ids come in their order, each once.
  Text NamesOf(const Text& ids) const;
  std::optional<Text> IdsOf(const Text& names, Text& unknown) const;

 private:
  std::unordered_map<Long, Text> names_;
  std::unordered_map<Text, Long> ids_;
};

// A list as `1;2` of ids.
std::vector<Long> UnitIds(const Text& ids);

}  // namespace rebate
