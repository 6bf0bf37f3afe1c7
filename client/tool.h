#pragma once

#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>

#include "platform/values/types.h"

namespace CLI {
class App;
}

namespace rebate {

// What the tool reads from and writes to, and how it ends.
struct Tool {
  std::istream& in;
  std::ostream& out;
  std::ostream& err;
  std::size_t width = 0;      // columns of the terminal that `out` is, 0 where it is none
  std::size_t height = 0;     // its lines, 0 where it is none
  std::size_t err_width = 0;  // likewise of `err`
  bool progress = false;      // whether `err` is a terminal, on which progress may be shown
  bool asks = false;          // whether `in` and `out` are a terminal, on which a question can be asked
  // Reads a line with editing and history, nothing at the end of input; without it, lines are read from `in`.
  std::function<std::optional<Text>(const Text& prompt)> read_line = {};
  // Shows a long text page by page; false where there is nothing to show it with.
  std::function<bool(const Text& text)> page = {};
  int status = 0;  // 1 once something was refused or failed, 3 where the answer to a question is no
};

// Runs the command line and gives the exit status: 0 done, 1 refused or failed with the reason on `err` (also where
// what was to be printed can't be written), 2 wrong usage, 3 where the answer to a question is no.
int RunTool(int argc, const char* const* argv, Tool& tool);

// Each adds one verb. A verb raises where it fails; `app` and `tool` outlive the run.
void AddInitVerb(CLI::App& app, Tool& tool);
void AddSqlVerb(CLI::App& app, Tool& tool);
void AddImportVerb(CLI::App& app, Tool& tool);
void AddExportVerb(CLI::App& app, Tool& tool);
void AddTypesVerb(CLI::App& app, Tool& tool);
void AddSaveVerb(CLI::App& app, Tool& tool);
void AddShowVerb(CLI::App& app, Tool& tool);
void AddEditVerb(CLI::App& app, Tool& tool);
void AddListVerb(CLI::App& app, Tool& tool);
void AddEnableVerb(CLI::App& app, Tool& tool);
void AddDisableVerb(CLI::App& app, Tool& tool);
void AddForbiddenVerb(CLI::App& app, Tool& tool);
void AddRestoreVerb(CLI::App& app, Tool& tool);
void AddDeleteVerb(CLI::App& app, Tool& tool);
void AddRangesVerb(CLI::App& app, Tool& tool);
void AddItemsVerb(CLI::App& app, Tool& tool);
void AddSelectVerb(CLI::App& app, Tool& tool);
void AddRatesVerb(CLI::App& app, Tool& tool);
void AddFormVerb(CLI::App& app, Tool& tool);
void AddNameTakenVerb(CLI::App& app, Tool& tool);
void AddCheckVerb(CLI::App& app, Tool& tool);
void AddCallVerb(CLI::App& app, Tool& tool);

}  // namespace rebate
