#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/grid_files.h"
#include "client/json_file.h"
#include "client/rate_ranges.h"
#include "client/row_tables.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"

namespace rebate {
namespace {

struct RangesOptions : AccountOptions {
  Long type = 0;
  std::optional<Text> file;
  Long scheme = 0;
};

void PrintRanges(const RangesOptions& options, Tool& tool) {
  Account account(options.dsn);
  const Ref<Vector> ranges = RangesOfType(account, options.type);
  if (options.json) {
    tool.out << JsonLine(ToJson(ranges)) << '\n';
    return;
  }
  RowTable({{"FID", "FID", true}, {"From", "FLowerLimit", true}, {"To", "FUpperLimit", true}}, *ranges)
      .Print(tool.out, tool.width);
}

// A range that leaves its position out takes the one at which it stands.
Variant WithPositions(Json ranges) {
  Long position = 0;
  for (Json& range : ranges) {
    ++position;
    if (!range.contains("FIndex")) range["FIndex"] = position;
  }
  return FromJson(ranges, "");
}

void SetRanges(const RangesOptions& options, Tool& tool) {
  const Json ranges = ReadJsonFile(*options.file);
  if (ReportProblems(*options.file, RangeFileProblems(ranges), tool)) return;
  Account account(options.dsn);
  const Variant saved = account.Call("SaveRebateRange", {options.type, WithPositions(ranges), options.scheme});
  if (!ToBoolean(saved)) account.ThrowFailure("The ranges can't be stored");
  if (options.json) {
    tool.out << JsonLine({{"ranges", ranges.size()}}) << '\n';
  } else {
    tool.out << "Type " << options.type << " now has " << ranges.size() << (ranges.size() == 1 ? " range" : " ranges");
    if (options.scheme != 0) tool.out << " under scheme " << options.scheme;
    tool.out << ".\n";
  }
}

}  // namespace

void AddRangesVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<RangesOptions>();
  CLI::App* verb = app.add_subcommand("ranges", "List the amount ranges of a rebate type, or replace them");
  verb->add_option("TYPE", options->type, "The rebate type, such as 2040")->required();
  CLI::Option* set = verb->add_option("--set", options->file, "A file of ranges, [{\"FLower\":0,\"FUpper\":100},…]");
  verb->add_option("--scheme", options->scheme, "With --set: the scheme whose ranges are replaced")->needs(set);
  AddAccountOptions(*verb, *options);
  verb->footer(
      "Rates follow their ranges when these are replaced; a rate whose range goes is set to 0.\n"
      "Example: rebate ranges 2040 --set examples/ranges.json --dsn shop.db");
  verb->callback([options, &tool] { options->file ? SetRanges(*options, tool) : PrintRanges(*options, tool); });
}

}  // namespace rebate
