#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_text.h"
#include "client/account.h"
#include "client/command_line.h"
#include "client/scheme_lookup.h"
#include "client/scheme_rows.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/database/recordset.h"

namespace rebate {
namespace {

struct ForbiddenOptions : AccountOptions {
  Long rebate_class = 0;
};

struct RestoreOptions : AccountOptions {
  std::vector<Text> lists;
};

void ListForbidden(const ForbiddenOptions& options, Tool& tool) {
  Account account(options.dsn);
  const auto rows = ObjectAs<Recordset>(account.Call("GetForbidSchemeList", {options.rebate_class}));
  if (!rows && account.refusal()) account.ThrowFailure({});
  const Ref<Vector> schemes = rows ? FoldOrganisations(*rows) : New<Vector>();
  NameFormOrganisations(account, *schemes);
  PrintSchemes(*schemes, options.json, tool);
  TellUnlisted(account, tool);
}

void Restore(const RestoreOptions& options, Tool& tool) {
  Account account(options.dsn);
  const std::vector<Long> ids = SchemeIds(options.lists);
  Json restored = Json::array();
  Text sentences;
  for (const SchemeHead& scheme : FindSchemes(account, ids)) {
    if (!scheme.enabled) restored.push_back(scheme.id);
    sentences += (scheme.enabled ? "Already enabled: " : "Restored ") + SchemeText(scheme) + ".\n";
  }
  if (!ToBoolean(account.Call("UnForbidSchemeList", {IdList(ids)}))) {
    account.ThrowFailure("The schemes can't be restored");
  }
  tool.out << (options.json ? JsonLine({{"restored", restored}}) + "\n" : sentences);
}

}  // namespace

void AddForbiddenVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<ForbiddenOptions>();
  CLI::App* verb = app.add_subcommand("forbidden", "List the disabled schemes of a rebate class");
  verb->add_option("CLASS", options->rebate_class, "The rebate class: 24 suppliers, 32 customers, 40 salesmen")
      ->required()
      ->transform(RebateClassWord());
  AddAccountOptions(*verb, *options);
  verb->footer("Example: rebate forbidden 24 --dsn shop.db");
  verb->callback([options, &tool] { ListForbidden(*options, tool); });
}

void AddRestoreVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<RestoreOptions>();
  CLI::App* verb = app.add_subcommand("restore", "Enable forbidden schemes, all others left alone");
  AddSchemeIds(*verb, options->lists);
  AddAccountOptions(*verb, *options);
  verb->footer("Where one of the schemes isn't there, none is enabled.\nExample: rebate restore 2 3 --dsn shop.db");
  verb->callback([options, &tool] { Restore(*options, tool); });
}

}  // namespace rebate
