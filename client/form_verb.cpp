#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/findings.h"
#include "client/first_rows.h"
#include "client/form_file.h"
#include "client/form_view.h"
#include "client/json_file.h"
#include "client/rebate_classes.h"
#include "client/save_files.h"
#include "client/scheme_lookup.h"
#include "client/scheme_store.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

struct FormShowOptions : AccountOptions {
  Long id = 0;
};

void TellStored(const SaveOptions& options, const Text& name, const std::optional<Long>& id,
                const std::optional<SchemeHead>& replaced, Tool& tool) {
  if (options.json) {
    Json answer = {{"saved", true}, {"SchemeID", id ? Json(*id) : Json()}};
    if (replaced) answer["replaced"] = replaced->id;
    tool.out << JsonLine(answer) << '\n';
    return;
  }
  tool.out << "Stored " << name;
  if (id) tool.out << " as scheme " << *id;
  if (replaced) {
    tool.out << " in the place of scheme " << replaced->id << (replaced->enabled ? ", enabled" : ", disabled")
             << " as that was";
  }
  tool.out << ".\n";
}

}  // namespace

void SaveFormFile(const SaveOptions& options, Tool& tool) {
  const Json form = ReadJsonFile(options.file);
  // What no account is needed for goes before what is wrong with the account.
  if (ReportProblems(options.file, FormProblems(form), tool)) return;
  Account account(options.dsn);
  const CheckedScheme scheme = CheckFormRequest(account, form);
  if (IsRefused(options.file, scheme.findings, options.strict, tool)) return;
  MakeFirstRows(account, tool);
  const StoredScheme outcome = StoreForm(account, scheme);
  TellStored(options, outcome.name, outcome.id, scheme.replaced, tool);
}

namespace {

void ShowForm(const FormShowOptions& options, Tool& tool) {
  Account account(options.dsn);
  const Json form = LoadForm(account, options.id);
  if (options.json) {
    tool.out << JsonLine(form) << '\n';
  } else {
    PrintForm(form, FindSchemes(account, {options.id}).front().enabled,
              RateUnitOf(account, ToLong(FromJson(form["lRebateType"], "lRebateType"))), tool.out, tool.width);
  }
}

void AddSave(CLI::App& form, Tool& tool) {
  auto options = std::make_shared<SaveOptions>();
  CLI::App* verb = form.add_subcommand("save", "Save the form of a file in the place of the scheme that it names");
  verb->add_option("FILE", options->file, "The form, one JSON object; see examples/form.json")->required();
  verb->add_flag("--strict", options->strict, "Refuse what is only odd, too");
  AddKeysFlag(*verb, FormKeys());
  AddAccountOptions(*verb, *options);
  verb->footer(
      "A form is saved under a new id; one that takes the place of another is enabled or disabled as that was. It is "
      "refused where another scheme bears its name; whether another scheme's "
      "rule\n"
      "covers its items is not looked at: `rebate check` tells.\n"
      "Example: rebate form save examples/form.json --dsn shop.db");
  verb->callback([options, &tool] { SaveFormFile(*options, tool); });
}

void AddShow(CLI::App& form, Tool& tool) {
  auto options = std::make_shared<FormShowOptions>();
  CLI::App* verb = form.add_subcommand("show", "Show a scheme that was saved as a form");
  verb->add_option("ID", options->id, "The scheme's id, as `rebate list --status all` gives it")->required();
  AddAccountOptions(*verb, *options);
  verb->footer("What it prints with --json, `rebate form save` takes.\nExample: rebate form show 3 --dsn shop.db");
  verb->callback([options, &tool] { ShowForm(*options, tool); });
}

}  // namespace

void AddFormVerb(CLI::App& app, Tool& tool) {
  CLI::App* form = app.add_subcommand("form", "Save and show schemes as a form holds them");
  form->require_subcommand(1);
  form->footer("Example: rebate form show 3 --dsn shop.db");
  AddSave(*form, tool);
  AddShow(*form, tool);
}

}  // namespace rebate
