#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_text.h"
#include "client/account.h"
#include "client/confirm.h"
#include "client/row_tables.h"
#include "client/scheme_lookup.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

struct StateOptions : AccountOptions {
  Long id = 0;
  bool enable = false;
  bool yes = false;
};

struct Check {
  bool to_change;
  Text message;  // a question to the user where `to_change`, else why there is nothing to change
};

Check CheckChange(Account& account, const StateOptions& options) {
  std::vector<Variant> arguments = {options.id, options.enable, ""};
  const bool to_change = ToBoolean(account.CallByRef("CheckEnableScheme", arguments));
  if (account.refusal()) account.ThrowFailure({});
  return {to_change, Replace(ToText(arguments[2]), "\r\n", "\n")};
}

// The enabled schemes of the same type, all of which go when the scheme is enabled.
std::vector<SchemeHead> EnabledSiblings(Account& account, Long id) {
  const Text key = std::to_string(id);
  const RecordsetRef rows = account.Query(
      "select s.FSchemeID, s.FSchemeName from t_FL_SchemeList s inner join t_FL_SchemeList e on "
      "e.FRebateType=s.FRebateType where s.FEnable=1 and e.FSchemeID=" +
      key + " and s.FSchemeID<>" + key + " order by s.FSchemeID");
  std::vector<SchemeHead> siblings;
  for (; !rows->Eof(); rows->MoveNext()) {
    SchemeHead sibling;
    sibling.id = ToLong(rows->FieldValue("FSchemeID"));
    sibling.name = CellText(rows->FieldValue("FSchemeName"));
    siblings.push_back(std::move(sibling));
  }
  return siblings;
}

// The system's question names one of them.
Text QuestionOf(const Text& message, const std::vector<SchemeHead>& siblings) {
  if (siblings.size() < 2) return message;
  Text question = message + "\n" + std::to_string(siblings.size()) + " schemes are disabled then:";
  for (const SchemeHead& sibling : siblings) question += "\n  " + SchemeText(sibling);
  return question + "\nGo on?";
}

void Tell(const StateOptions& options, bool changed, const std::vector<SchemeHead>& disabled, Tool& tool) {
  const Text state = options.enable ? "enabled" : "disabled";
  if (options.json) {
    Json ids = Json::array();
    for (const SchemeHead& sibling : disabled) ids.push_back(sibling.id);
    tool.out << JsonLine({{"SchemeID", options.id}, {state, true}, {"changed", changed}, {"siblingsDisabled", ids}})
             << '\n';
    return;
  }
  tool.out << "Scheme " << options.id << " is " << (changed ? "now " : "already ") << state << ".\n";
  for (const SchemeHead& sibling : disabled) tool.out << "Disabled " << SchemeText(sibling) << ".\n";
}

void ChangeState(const StateOptions& options, Tool& tool) {
  Account account(options.dsn);
  const Check check = CheckChange(account, options);
  if (!check.to_change) {
    if (!check.message.empty()) throw Error(error_number::kInvalidCall, "rebate", check.message);
    Tell(options, false, {}, tool);
    return;
  }
  std::vector<SchemeHead> siblings;
  if (!check.message.empty()) {
    siblings = EnabledSiblings(account, options.id);
    if (!options.yes) Confirm(QuestionOf(check.message, siblings), tool);
  }
  if (!ToBoolean(account.Call("EnableScheme", {options.id, options.enable}))) {
    account.ThrowFailure("Scheme " + std::to_string(options.id) + " can't be changed");
  }
  Tell(options, true, siblings, tool);
}

void AddStateVerb(CLI::App& app, Tool& tool, bool enable, const char* name, const char* what, const char* footer) {
  auto options = std::make_shared<StateOptions>();
  options->enable = enable;
  CLI::App* verb = app.add_subcommand(name, what);
  verb->add_option("ID", options->id, "The scheme's id, as `rebate list --status all` gives it")->required();
  verb->add_flag("--yes,-y", options->yes, "Go on without a question");
  AddAccountOptions(*verb, *options);
  verb->footer(footer);
  verb->callback([options, &tool] { ChangeState(*options, tool); });
}

}  // namespace

void AddEnableVerb(CLI::App& app, Tool& tool) {
  AddStateVerb(app, tool, true, "enable", "Enable a scheme and disable every other one of its type",
               "Asks before it disables another scheme; where nobody can be asked, it refuses without --yes.\n"
               "Example: rebate enable 2 --dsn shop.db");
}

void AddDisableVerb(CLI::App& app, Tool& tool) {
  AddStateVerb(app, tool, false, "disable", "Disable a scheme; `rebate forbidden` lists the disabled ones",
               "Example: rebate disable 2 --dsn shop.db");
}

}  // namespace rebate
