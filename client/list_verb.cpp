#include <CLI/CLI.hpp>
#include <memory>

#include "client/account.h"
#include "client/command_line.h"
#include "client/rebate_classes.h"
#include "client/scheme_rows.h"
#include "client/tool.h"
#include "platform/containers/dictionary.h"

namespace rebate {
namespace {

struct ListOptions : AccountOptions {
  Text from, to, name, note;
  std::optional<Long> id, type, rebate_class;
  Long status = 1;
};

// A filter as the operation takes it, which searches with `like`: its wildcards are to mean themselves.
Text Literally(const Text& wanted) {
  Text pattern;
  for (const char c : wanted) {
    if (c == '%' || c == '_' || c == '[') {
      pattern += Text("[") + c + "]";
    } else {
      pattern += c;
    }
  }
  return pattern;
}

Ref<Dictionary> RequestOf(const ListOptions& options, Long rebate_class) {
  auto request = New<Dictionary>();
  request->SetValue("BegTxt", options.from);
  request->SetValue("EndTxt", options.to);
  if (options.id) request->SetValue("SchemeID", *options.id);
  request->SetValue("SchemeName", Literally(options.name));
  request->SetValue("Note", Literally(options.note));
  if (options.type) request->SetValue("RebateType", *options.type);
  request->SetValue("Status", options.status);
  request->SetValue("RebateClassType", rebate_class);
  return request;
}

void List(const ListOptions& options, Tool& tool) {
  Account account(options.dsn);
  auto schemes = New<Vector>();
  if (options.type) TypeRow(account, *options.type);
  const bool may_be = options.id.value_or(1) > 0;  // the operation would leave an id of 0 out of account
  for (const Long rebate_class : ClassesToShow(options.rebate_class)) {
    if (may_be) AddAll(MatchingSchemes(account, RequestOf(options, rebate_class)), *schemes);
  }
  PrintSchemes(*schemes, options.json, tool);
  TellUnlisted(account, tool);
}

}  // namespace

void AddListVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<ListOptions>();
  CLI::App* verb = app.add_subcommand("list", "List the schemes that match all of the filters");
  AddAccountOptions(*verb, *options);
  verb->add_option("--from", options->from, "Schemes with an organisation whose number is not below this");
  verb->add_option("--to", options->to, "Schemes with an organisation whose number is not above this");
  verb->add_option("--id", options->id, "The scheme with this id");
  verb->add_option("--name", options->name, "Schemes whose name holds this");
  verb->add_option("--note", options->note, "Schemes whose note holds this");
  verb->add_option("--type", options->type, "Schemes of this rebate type, such as 2041");
  verb->add_option("--status", options->status, "enabled (the default), disabled or all")
      ->type_name("STATUS")
      ->transform(OneOf({{"enabled", "1"}, {"disabled", "0"}, {"all", "2"}}));
  verb->add_option("--class", options->rebate_class, "Only this rebate class: 24 suppliers, 32 customers, 40 salesmen")
      ->transform(RebateClassWord());
  verb->footer("Example: rebate list --dsn shop.db --status all --class 24 --name 年度");
  verb->callback([options, &tool] { List(*options, tool); });
}

}  // namespace rebate
