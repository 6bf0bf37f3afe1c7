#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/entity_sense.h"
#include "client/findings.h"
#include "client/grid_files.h"
#include "client/grid_kind.h"
#include "client/json_file.h"
#include "client/rate_grid.h"
#include "client/rate_ranges.h"
#include "client/rate_rows.h"
#include "client/rate_sense.h"
#include "client/rebate_classes.h"
#include "client/row_tables.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"

namespace rebate {
namespace {

struct RatesOptions : AccountOptions {
  Long type = 0;
  std::optional<Text> file;
  Text organisation;
  std::optional<Long> user;
  bool strict = false;
};

Long UserOf(const RatesOptions& options, const Account& account) {
  return options.user.value_or(account.app_user());
}

Long OrganisationOf(Account& account, const RatesOptions& options) {
  if (options.organisation.empty()) return 0;
  return EntityNamed(account, GridKindOf(options.type).organisation_class, options.organisation);
}

// A line an entity; its rates stand under their ranges. Rates in ranges of forms are left out.
Table GridOf(Account& account, Long type, const Vector& rules) {
  const bool goods = rules.Size() > 0 && ObjectAs<Dictionary>(rules.Item(1))->Has("FModel");
  std::vector<Table::Column> labels = {{"ID", true}, {"Number"}, {"Name"}};
  if (goods) labels.push_back({"Model"});
  RateGrid grid(std::move(labels));
  for (const AmountRange& range : RangesOfType(account, type)) {
    grid.AddRange(std::to_string(range.id), RangeHeading(range.lower, range.upper));
  }
  const std::set<Text> of_forms = RangesOfForms(account, type);
  for (Long i = 1; i <= rules.Size(); ++i) {
    const auto rule = ObjectAs<Dictionary>(rules.Item(i));
    std::vector<Text> line = {CellText(*rule, "FItemID"), CellText(*rule, "FNumber"), CellText(*rule, "FName")};
    if (goods) line.push_back(CellText(*rule, "FModel"));
    grid.BeginLine(std::move(line));
    const Text range = CellText(*rule, "FAmtRangeID");
    const Text rate = CellText(*rule, "FRebateRate");
    if (!rate.empty() && !of_forms.contains(range)) grid.Put(range, rate);
  }
  return grid.ToTable();
}

void PrintRates(const RatesOptions& options, Tool& tool) {
  Account account(options.dsn);
  const Long organisation = OrganisationOf(account, options);
  const Long user = UserOf(options, account);
  if (options.json) {
    Long lost = 0;
    const Json rows = StoredRates(account, options.type, organisation, user, lost);
    tool.out << JsonLine(rows) << '\n';
    if (lost > 0) tool.err << "Left out, their range being gone: " << lost << (lost == 1 ? " rate.\n" : " rates.\n");
    return;
  }
  const Variant found = account.Call("GetRebateRule", {options.type, organisation, user});
  if (account.refusal()) account.ThrowFailure({});
  auto rules = ObjectAs<Vector>(found);
  if (!rules) rules = New<Vector>();
  const Text unit = RateUnitOf(account, options.type);
  if (!unit.empty()) tool.out << "Rates in " << unit << "\n\n";
  GridOf(account, options.type, *rules).Print(tool.out, tool.width);
}

void SetRates(const RatesOptions& options, Tool& tool) {
  Json file = ReadJsonFile(*options.file);
  if (ReportProblems(*options.file, RateFileProblems(file), tool)) return;
  if (file.is_array()) file = {{"rows", file}};
  file = PlainObject(file, RateFileKeys());
  const bool rest = file.value("rest", false);
  Account account(options.dsn);
  const Long organisation = OrganisationOf(account, options);
  Findings findings;
  CheckRates(account, {options.type, organisation, rest}, file["rows"], findings);
  if (IsRefused(*options.file, findings, options.strict, tool)) return;
  const Json& rows = file["rows"];
  const Variant rules = FromJson(rows, "rows");
  const Variant saved =
      rest ? account.Call("SaveAllRule", {options.type, rules})
           : account.Call("SaveRebateRule", {options.type, rules, organisation, UserOf(options, account)});
  if (!ToBoolean(saved)) account.ThrowFailure("The rates can't be stored");
  if (options.json) {
    tool.out << JsonLine({{"rows", rows.size()}, {"rest", rest}}) << '\n';
    return;
  }
  tool.out << "Stored " << rows.size() << (rows.size() == 1 ? " rate" : " rates") << " of type " << options.type
           << (rest ? " for each organisation that isn't selected" : "") << ".\n";
}

}  // namespace

void AddRatesVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<RatesOptions>();
  CLI::App* verb = app.add_subcommand("rates", "Show the rate grid of a rebate type, or replace its rates");
  verb->add_option("TYPE", options->type, "The rebate type: 2040, 2041, 3020, 3021, 4020 or 4021")->required();
  CLI::Option* set = verb->add_option("--set", options->file, "A file of rates, such as examples/rates.json");
  verb->add_flag("--strict", options->strict, "With --set: refuse what is only odd, too")->needs(set);
  AddKeysFlag(*verb, RateFileKeys());
  verb->add_option("--org", options->organisation,
                   "In a grid of goods: the organisation whose goods they are, by id or number");
  verb->add_option("--user", options->user, "The user whose data rights apply; the data source's where left out");
  AddAccountOptions(*verb, *options);
  verb->footer(
      "Rates of ranges that are gone stand under `?`. A file is an array of rows whose keys are the columns of a "
      "rule;\n"
      "one without FAmtRangeID gets the range at the position FIndex. {\"rows\":[…],\"rest\":true} stores the rows "
      "for\n"
      "every organisation that isn't selected. Either way the former rates go; a file that would take those of a form\n"
      "or of an organisation that it doesn't name is refused. What rates prints with --json, --set takes.\n"
      "Example: rebate rates 2040 --set examples/rates.json --dsn shop.db");
  verb->callback([options, &tool] { options->file ? SetRates(*options, tool) : PrintRates(*options, tool); });
}

}  // namespace rebate
