#include "client/tool.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <functional>
#include <ostream>

#include "client/command_line.h"
#include "client/completion.h"
#include "client/keeping_verbs.h"
#include "platform/automation/error.h"
#include "platform/database/connect.h"
#include "platform/login_standins/login_standins.h"
#include "platform/values/text_order.h"
#include "service/component_classes.h"

namespace rebate {
namespace {

constexpr int kRefused = 1;
constexpr int kWrongUsage = 2;

Text Version() {
  const ComponentLibrary& component = TheComponent();
  Text text = "rebate " + std::to_string(component.major_version) + "." + std::to_string(component.minor_version);
  for (const Text& store : StoreVersions()) text += "\n" + store;
  if (const Text order = OrderVersion(); !order.empty()) text += "\n" + order;
  return text;
}

void AddVerbs(CLI::App& app, Tool& tool) {
  AddInitVerb(app, tool);
  AddSqlVerb(app, tool);
  AddImportVerb(app, tool);
  AddExportVerb(app, tool);
  AddTypesVerb(app, tool);
  AddSaveVerb(app, tool);
  AddShowVerb(app, tool);
  AddEditVerb(app, tool);
  AddListVerb(app, tool);
  AddEnableVerb(app, tool);
  AddDisableVerb(app, tool);
  AddForbiddenVerb(app, tool);
  AddRestoreVerb(app, tool);
  AddDeleteVerb(app, tool);
  AddRangesVerb(app, tool);
  AddItemsVerb(app, tool);
  AddSelectVerb(app, tool);
  AddRatesVerb(app, tool);
  AddFormVerb(app, tool);
  AddNameTakenVerb(app, tool);
  AddCheckVerb(app, tool);
  AddBackupVerb(app, tool);
  AddVerifyVerb(app, tool);
  AddCopyVerb(app, tool);
  AddCallVerb(app, tool);
}

int TellWrongUsage(const Text& problem, Tool& tool) {
  tool.err << "rebate: " << problem << std::endl;
  return kWrongUsage;
}

// A mistyped verb or option is told with what was likely meant.
int TellParseError(const CLI::App& app, const CLI::ParseError& error, const std::vector<Text>& arguments, Tool& tool) {
  if (dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr) {
    if (const auto problem = OptionProblem(app, arguments)) return TellWrongUsage(*problem, tool);
  }
  return app.exit(error, tool.out, tool.err) == 0 ? 0 : kWrongUsage;
}

int RunVerb(const std::vector<Text>& arguments, Tool& tool) {
  CLI::App app("Rebate schemes of an account: make an account, query it, keep its schemes and rate grids", "rebate");
  app.set_version_flag("--version", std::function<std::string()>(Version));
  app.require_subcommand(1);
  // A path may begin with a slash on every system.
  app.allow_windows_style_options(false);
  app.footer(
      "`rebate VERB --help` tells more about a verb. Try: rebate init shop.db --sample\n"
      "Status: 0 done, 1 refused or failed, 2 wrong usage, 3 no, as the answer of name-taken and check.");
  AddVerbs(app, tool);
  try {
    RegisterLoginStandIns();
    RegisterComponent();
    if (!arguments.empty() && arguments[0] == kCompletionVerb) {
      PrintCompletions(app, {arguments.begin() + 1, arguments.end()}, tool);
      return 0;
    }
    if (const auto problem = VerbProblem(app, arguments)) return TellWrongUsage(*problem, tool);
    std::vector<Text> reversed(arguments.rbegin(), arguments.rend());
    app.parse(std::move(reversed));
  } catch (const CLI::ParseError& error) {
    return TellParseError(app, error, arguments, tool);
  } catch (const std::exception& error) {
    tool.err << "rebate: " << error.what() << std::endl;
    return kRefused;
  }
  return tool.status;
}

}  // namespace

int RunTool(int argc, const char* const* argv, Tool& tool) {
  const int status = RunVerb(VerbFirst(std::vector<Text>(argv + std::min(argc, 1), argv + argc)), tool);
  tool.out.flush();
  if (tool.out) return status;
  tool.err << "rebate: Can't write to standard output" << std::endl;
  return kRefused;
}

}  // namespace rebate
