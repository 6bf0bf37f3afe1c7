#pragma once

#include <string_view>

#include "client/result_output.h"
#include "platform/database/connection.h"

namespace rebate {

struct ScriptBatch;
struct Tool;

// How batches are shown.
struct SqlView {
  RowForm form = RowForm::Table;
  bool whole = false;  // all row sets, messages and counts in their order; else the messages and the first row set
};

// Runs the batch, which stands whole or not at all, as often as it says, and shows what it gives. In the forms for
// programs what it says goes to `err`. Raises where it is refused, what came before being shown.
void ShowBatch(Connection& connection, const ScriptBatch& batch, const SqlView& view, Tool& tool);

// Prints a text, through the pager where it is longer than the terminal and there is one.
void PrintLong(const Text& text, Tool& tool);

}  // namespace rebate
