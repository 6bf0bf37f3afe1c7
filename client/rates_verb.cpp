#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/grid_files.h"
#include "client/json_file.h"
#include "client/rate_grid.h"
#include "client/rate_ranges.h"
#include "client/row_tables.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"

namespace rebate {
namespace {

struct RatesOptions : AccountOptions {
  Long type = 0;
  std::optional<Text> file;
  Long organisation = 0;
  std::optional<Long> user;
};

Long UserOf(const RatesOptions& options, const Account& account) {
  return options.user.value_or(account.app_user());
}

// A line an entity; its rates stand under their ranges.
Table GridOf(const Vector& ranges, const Vector& rules) {
  const bool goods = rules.Size() > 0 && ObjectAs<Dictionary>(rules.Item(1))->Has("FModel");
  std::vector<Table::Column> labels = {{"ID", true}, {"Number"}, {"Name"}};
  if (goods) labels.push_back({"Model"});
  RateGrid grid(std::move(labels));
  for (Long i = 1; i <= ranges.Size(); ++i) {
    const auto range = ObjectAs<Dictionary>(ranges.Item(i));
    grid.AddRange(CellText(*range, "FID"),
                  RangeHeading(CellText(*range, "FLowerLimit"), CellText(*range, "FUpperLimit")));
  }
  for (Long i = 1; i <= rules.Size(); ++i) {
    const auto rule = ObjectAs<Dictionary>(rules.Item(i));
    std::vector<Text> line = {CellText(*rule, "FItemID"), CellText(*rule, "FNumber"), CellText(*rule, "FName")};
    if (goods) line.push_back(CellText(*rule, "FModel"));
    grid.BeginLine(std::move(line));
    if (const Text rate = CellText(*rule, "FRebateRate"); !rate.empty()) grid.Put(CellText(*rule, "FAmtRangeID"), rate);
  }
  return grid.ToTable();
}

void PrintRates(const RatesOptions& options, Tool& tool) {
  Account account(options.dsn);
  const Variant found = account.Call("GetRebateRule", {options.type, options.organisation, UserOf(options, account)});
  if (account.refusal()) account.ThrowFailure({});
  auto rules = ObjectAs<Vector>(found);
  if (!rules) rules = New<Vector>();
  if (options.json) {
    tool.out << JsonLine(ToJson(rules)) << '\n';
  } else {
    GridOf(*RangesOfType(account, options.type), *rules).Print(tool.out, tool.width);
  }
}

// A rule as it is stored: of this type, of the organisation given, and in the range at its position, where it doesn't
// say otherwise.
Json Completed(Json row, Account& account, const RatesOptions& options, bool rest) {
  if (!row.contains("FClassTypeID")) row["FClassTypeID"] = options.type;
  if (!rest && !row.contains("FOrgID") && options.organisation > 0) row["FOrgID"] = options.organisation;
  if (!row.contains("FAmtRangeID") && row.contains("FIndex")) {
    row["FAmtRangeID"] = RangeAt(account, options.type, ToLong(FromJson(row["FIndex"], "FIndex")));
  }
  return row;
}

void SetRates(const RatesOptions& options, Tool& tool) {
  const Json file = ReadJsonFile(*options.file);
  if (ReportProblems(*options.file, RateFileProblems(file), tool)) return;
  const bool rest = file.is_object() && file.value("rest", false);
  Account account(options.dsn);
  Json rows = Json::array();
  for (const Json& row : file.is_object() ? file["rows"] : file) {
    rows.push_back(Completed(row, account, options, rest));
  }
  const Variant rules = FromJson(rows, "rows");
  const Variant saved =
      rest ? account.Call("SaveAllRule", {options.type, rules})
           : account.Call("SaveRebateRule", {options.type, rules, options.organisation, UserOf(options, account)});
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
  verb->add_option("--set", options->file, "A file of rates, such as examples/rates.json");
  verb->add_option("--org", options->organisation, "In a grid of goods: the organisation whose goods they are");
  verb->add_option("--user", options->user, "The user whose data rights apply; the data source's where left out");
  AddAccountOptions(*verb, *options);
  verb->footer(
      "Rates of ranges that are gone stand under `?`. A file is an array of rows whose keys are the columns of a "
      "rule;\n"
      "one without FAmtRangeID gets the range at the position FIndex. {\"rows\":[…],\"rest\":true} stores the rows "
      "for\n"
      "every organisation that isn't selected. Either way the former rates go.\n"
      "Example: rebate rates 2040 --set examples/rates.json --dsn shop.db");
  verb->callback([options, &tool] { options->file ? SetRates(*options, tool) : PrintRates(*options, tool); });
}

}  // namespace rebate
