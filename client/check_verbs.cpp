#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_text.h"
#include "client/account.h"
#include "client/entity_sense.h"
#include "client/rebate_classes.h"
#include "client/tool.h"
#include "model/item_class.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

constexpr Long kLastItemMode = 5;
constexpr int kAnswerIsNo = 3;

struct NameOptions : AccountOptions {
  Text name;
  Long except = 0;
};

struct CoverOptions : AccountOptions {
  Long type = 0;
  Long mode = 0;
  std::optional<Text> item;
  std::optional<Text> organisation;
  Long except = 0;
};

void CheckName(const NameOptions& options, Tool& tool) {
  Account account(options.dsn);
  const bool taken = ToBoolean(account.Call("ExistsSchemeName", {options.except, options.name}));
  if (account.refusal()) account.ThrowFailure({});
  if (!taken) tool.status = kAnswerIsNo;
  if (options.json) {
    tool.out << JsonLine({{"taken", taken}}) << '\n';
  } else {
    tool.out << (taken ? "Yes, another scheme bears the name " : "No, no other scheme bears the name ") << options.name
             << ".\n";
  }
}

// Modes by goods need an item, modes by total an organisation, which then is what the rules are searched for.
void CheckSubject(const CoverOptions& options) {
  const bool by_item = options.mode <= kLastItemMode;
  if (!(by_item ? options.item : options.organisation)) throw CLI::RequiredError(by_item ? "--item" : "--org");
}

void CheckCover(const CoverOptions& options, Tool& tool) {
  CheckSubject(options);
  Account account(options.dsn);
  const bool by_item = options.mode <= kLastItemMode;
  const Long organisation_class = OrganisationClasses(*TypeRow(account, options.type)).front();
  const Long organisation = options.organisation ? EntityNamed(account, organisation_class, *options.organisation) : 0;
  const Text subject = std::to_string(by_item ? EntityNamed(account, item_class::kGoods, *options.item) : organisation);
  const bool covered =
      ToBoolean(account.Call("CheckSchemeData", {options.except, options.type, options.mode, organisation, subject}));
  if (account.refusal()) account.ThrowFailure({});
  if (!covered) tool.status = kAnswerIsNo;
  if (options.json) {
    tool.out << JsonLine({{"covered", covered}}) << '\n';
    return;
  }
  tool.out << (covered ? "Yes, a rule of another scheme covers " : "No rule of another scheme covers ")
           << (by_item ? "item " : "organisation ") << subject << ".\n";
}

}  // namespace

void AddNameTakenVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<NameOptions>();
  CLI::App* verb = app.add_subcommand("name-taken", "Tell whether a scheme bears a name");
  verb->add_option("NAME", options->name, "The name")->required();
  verb->add_option("--except", options->except, "A scheme that may bear it");
  AddAccountOptions(*verb, *options);
  verb->footer(
      "The exit status is 0 for yes and 3 for no.\nExample: rebate name-taken 年度返利 --except 3 --dsn shop.db");
  verb->callback([options, &tool] { CheckName(*options, tool); });
}

void AddCheckVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<CoverOptions>();
  CLI::App* verb = app.add_subcommand("check", "Tell whether a rule of another scheme covers an item or organisation");
  verb->add_option("TYPE", options->type, "The rebate type, such as 2041")->required();
  verb->add_option("MODE", options->mode, "The form's mode: 1 to 5 by goods, 6 and 7 by an organisation's total")
      ->required()
      ->check(CLI::Range(1, 7));
  verb->add_option("--item", options->item, "The goods item, by id or number, for modes 1 to 5");
  verb->add_option("--org", options->organisation,
                   "The organisation, by id or number; for modes 1 to 5 it may be left out");
  verb->add_option("--except", options->except, "A scheme whose rules don't count");
  AddAccountOptions(*verb, *options);
  verb->footer(
      "The exit status is 0 for yes and 3 for no.\nExample: rebate check 2041 1 --item 401 --org 801 --dsn shop.db");
  verb->callback([options, &tool] { CheckCover(*options, tool); });
}

}  // namespace rebate
