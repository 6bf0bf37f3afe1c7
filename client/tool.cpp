#include "client/tool.h"

#include <CLI/CLI.hpp>
#include <ostream>

#include "platform/automation/error.h"
#include "platform/login_standins/login_standins.h"
#include "service/component_classes.h"

namespace rebate {
namespace {

constexpr int kRefused = 1;
constexpr int kWrongUsage = 2;

Text Version() {
  const ComponentLibrary& component = TheComponent();
  return "rebate " + std::to_string(component.major_version) + "." + std::to_string(component.minor_version);
}

}  // namespace

int RunTool(int argc, const char* const* argv, Tool& tool) {
  CLI::App app("Rebate schemes of an account: make an account, query it, keep its schemes and rate grids", "rebate");
  app.set_version_flag("--version", Version());
  app.require_subcommand(1);
  app.footer("`rebate VERB --help` tells more about a verb. Try: rebate init shop.db --sample");
  AddInitVerb(app, tool);
  AddSqlVerb(app, tool);
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
  AddCallVerb(app, tool);
  try {
    RegisterLoginStandIns();
    RegisterComponent();
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error, tool.out, tool.err) == 0 ? 0 : kWrongUsage;
  } catch (const std::exception& error) {
    tool.err << "rebate: " << error.what() << std::endl;
    return kRefused;
  }
  tool.out.flush();
  return tool.status;
}

}  // namespace rebate
