#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/form_view.h"
#include "client/rebate_classes.h"
#include "client/scheme_lookup.h"
#include "client/scheme_view.h"
#include "client/stored_request.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"

namespace rebate {
namespace {

struct ShowOptions : AccountOptions {
  Long id = 0;
};

void ShowForm(Account& account, const ShowOptions& options, bool enabled, Tool& tool) {
  const Json form = LoadForm(account, options.id);
  if (options.json) {
    tool.out << JsonLine(form) << '\n';
  } else {
    PrintForm(form, enabled, RateUnitOf(account, ToLong(FromJson(form["lRebateType"], "lRebateType"))), tool.out,
              tool.width);
  }
}

void Show(const ShowOptions& options, Tool& tool) {
  Account account(options.dsn);
  const std::optional<SchemeHead> head = FindScheme(account, options.id);
  if (head && head->is_form) return ShowForm(account, options, head->enabled, tool);
  const auto scheme = New<Dictionary>();
  if (!ToBoolean(account.Call("LoadSchemeRowData", {options.id, scheme}))) {
    const Text name = "Scheme " + std::to_string(options.id);
    account.ThrowFailure(name + (scheme->Has("SchemeMain") ? " can't be read whole" : " does not exist"));
  }
  if (options.json) {
    tool.out << JsonLine(StoredRequest(account, *head, *scheme)) << '\n';
  } else {
    PrintScheme(*scheme, tool.out, tool.width);
  }
}

}  // namespace

void AddShowVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<ShowOptions>();
  CLI::App* verb = app.add_subcommand("show", "Show one scheme with its ranges, organisations, goods and rates");
  verb->add_option("ID", options->id, "The scheme's id, as `rebate list` gives it")->required();
  AddAccountOptions(*verb, *options);
  verb->footer(
      "What it prints with --json, `rebate save` takes, or `rebate form save` for a form.\n"
      "Example: rebate show 1 --dsn shop.db");
  verb->callback([options, &tool] { Show(*options, tool); });
}

}  // namespace rebate
