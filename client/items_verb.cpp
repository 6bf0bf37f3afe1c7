#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/row_tables.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"

namespace rebate {
namespace {

struct ItemsOptions : AccountOptions {
  Long type = 0;
  bool selected = false;
  bool unselected = false;
  std::optional<Long> user;
};

struct SelectOptions : AccountOptions {
  Long type = 0;
  std::vector<Long> ids;
  bool none = false;
  Long organisation = 0;
  std::optional<Long> user;
};

// Appends the entities of a type that are selected, or those that aren't.
void AddEntities(Account& account, const ItemsOptions& options, bool selected, Vector& to) {
  const Long user = options.user.value_or(account.app_user());
  const auto entities = ObjectAs<Vector>(account.Call("GetItemInfo", {options.type, selected ? 1 : 0, user}));
  if (!entities && account.refusal()) account.ThrowFailure({});
  for (Long i = 1; entities && i <= entities->Size(); ++i) {
    const auto entity = ObjectAs<Dictionary>(entities->Item(i));
    entity->SetValue("Selected", selected ? "yes" : "no");
    to.Add(entity);
  }
}

void PrintItems(const ItemsOptions& options, Tool& tool) {
  Account account(options.dsn);
  const auto entities = New<Vector>();
  if (!options.unselected) AddEntities(account, options, true, *entities);
  if (!options.selected) AddEntities(account, options, false, *entities);
  if (options.json) {
    tool.out << JsonLine(ToJson(entities)) << '\n';
    return;
  }
  std::vector<RowColumn> columns = {{"ID", "FItemID", true}, {"Number", "FNumber"}, {"Name", "FName"}};
  if (entities->Size() > 0 && ObjectAs<Dictionary>(entities->Item(1))->Has("FModel")) {
    columns.push_back({"Model", "FModel"});
  }
  columns.push_back({"Selected", "Selected"});
  RowTable(columns, *entities).Print(tool.out, tool.width);
}

void Select(const SelectOptions& options, Tool& tool) {
  if (options.ids.empty() && !options.none) throw CLI::RequiredError("ID or --none");
  Account account(options.dsn);
  const auto entities = New<Dictionary>();
  for (const Long id : options.ids) entities->SetValue(std::to_string(entities->Count() + 1), id);
  const Long user = options.user.value_or(account.app_user());
  if (!ToBoolean(account.Call("SaveSelectedItem", {entities, options.type, user, options.organisation}))) {
    account.ThrowFailure("The selection can't be stored");
  }
  if (options.json) {
    tool.out << JsonLine({{"selected", options.ids}}) << '\n';
  } else {
    tool.out << "The selection of type " << options.type << " now is";
    for (const Long id : options.ids) tool.out << ' ' << id;
    tool.out << (options.ids.empty() ? " empty.\n" : ".\n");
  }
}

}  // namespace

void AddItemsVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<ItemsOptions>();
  CLI::App* verb = app.add_subcommand("items", "List the entities of a rate grid, selected or not");
  verb->add_option("TYPE", options->type, "The rebate type: 2040, 2041, 3020, 3021, 4020 or 4021")->required();
  CLI::Option* selected = verb->add_flag("--selected", options->selected, "Only those that the grid holds");
  verb->add_flag("--unselected", options->unselected, "Only those that it doesn't hold")->excludes(selected);
  verb->add_option("--user", options->user, "The user whose data rights apply; the data source's where left out");
  AddAccountOptions(*verb, *options);
  verb->footer("Example: rebate items 2040 --unselected --dsn shop.db");
  verb->callback([options, &tool] { PrintItems(*options, tool); });
}

void AddSelectVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<SelectOptions>();
  CLI::App* verb = app.add_subcommand("select", "Replace the entities that a rate grid holds");
  verb->add_option("TYPE", options->type, "The rebate type: 2040, 2041, 3020, 3021, 4020 or 4021")->required();
  CLI::Option* ids = verb->add_option("ID", options->ids, "The ids of all entities that it is to hold");
  verb->add_flag("--none", options->none, "Hold none")->excludes(ids);
  verb->add_option("--org", options->organisation, "In a grid of goods: the organisation whose goods they are");
  verb->add_option("--user", options->user, "The user whose data rights apply; the data source's where left out");
  AddAccountOptions(*verb, *options);
  verb->footer(
      "An organisation that is selected for its total leaves the grid of goods, with its rates there.\n"
      "Example: rebate select 2040 801 802 --dsn shop.db");
  verb->callback([options, &tool] { Select(*options, tool); });
}

}  // namespace rebate
