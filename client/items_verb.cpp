#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/entity_sense.h"
#include "client/grid_kind.h"
#include "client/id_lists.h"
#include "client/json_file.h"
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
  std::vector<Text> lists;
  std::optional<Text> file;
  bool none = false;
  Text organisation;
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

// What a file of entities names: ids, numbers, or rows as `rebate items --json` gives them, the selected ones of which
// count.
std::vector<Text> NamedIn(const Text& path) {
  const Json file = ReadJsonFile(path);
  const auto wrong = [&](const Text& place) {
    throw Error(error_number::kInvalidCall, "rebate",
                path + ": " + place + " is due as an id, a number or a row with FItemID");
  };
  if (!file.is_array()) throw Error(error_number::kInvalidCall, "rebate", path + ": the file is due as an array");
  std::vector<Text> names;
  for (std::size_t i = 0; i < file.size(); ++i) {
    const bool is_row = file[i].is_object() && file[i].contains("FItemID");
    if (is_row && file[i].contains("Selected") && file[i]["Selected"] == "no") continue;
    const Json& item = is_row ? file[i]["FItemID"] : file[i];
    if (!item.is_string() && !item.is_number_integer()) wrong(PlaceOf("items", i));
    names.push_back(item.is_string() ? item.get<Text>() : item.dump());
  }
  return names;
}

// Each entity's id once. Raises where the account has no such entity.
std::vector<Long> IdsOf(Account& account, Long item_class, const std::vector<Text>& names) {
  std::vector<Long> ids;
  for (const Text& name : names) {
    const Long id = EntityNamed(account, item_class, name);
    if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
  }
  return ids;
}

void Select(const SelectOptions& options, Tool& tool) {
  if (options.lists.empty() && !options.none && !options.file) throw CLI::RequiredError("ID, --set or --none");
  std::vector<Text> names;
  if (options.file) names = NamedIn(*options.file);
  for (const Text& list : options.lists) {
    for (const Text& name : ListParts(list)) names.push_back(name);
  }
  Account account(options.dsn);
  const GridKind kind = GridKindOf(options.type);
  const std::vector<Long> ids = IdsOf(account, kind.entity_class, names);
  const auto entities = New<Dictionary>();
  for (const Long id : ids) entities->SetValue(std::to_string(entities->Count() + 1), id);
  const Long organisation =
      options.organisation.empty() ? 0 : EntityNamed(account, kind.organisation_class, options.organisation);
  const Long user = options.user.value_or(account.app_user());
  if (!ToBoolean(account.Call("SaveSelectedItem", {entities, options.type, user, organisation}))) {
    account.ThrowFailure("The selection can't be stored");
  }
  if (options.json) {
    tool.out << JsonLine({{"selected", ids}}) << '\n';
  } else {
    tool.out << "The selection of type " << options.type << " now is";
    for (const Long id : ids) tool.out << ' ' << id;
    tool.out << (ids.empty() ? " empty.\n" : ".\n");
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
  CLI::Option* ids =
      verb->add_option("ID", options->lists, "The ids or numbers of all entities that it is to hold, such as S001");
  CLI::Option* set = verb->add_option("--set", options->file, "A file of them, such as `rebate items --json` prints");
  set->excludes(ids);
  verb->add_flag("--none", options->none, "Hold none")->excludes(ids)->excludes(set);
  verb->add_option("--org", options->organisation,
                   "In a grid of goods: the organisation whose goods they are, by id or number");
  verb->add_option("--user", options->user, "The user whose data rights apply; the data source's where left out");
  AddAccountOptions(*verb, *options);
  verb->footer(
      "An organisation that is selected for its total leaves the grid of goods, with its rates there.\n"
      "Example: rebate select 2040 S001 S002 --dsn shop.db");
  verb->callback([options, &tool] { Select(*options, tool); });
}

}  // namespace rebate
