#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>
#include <set>

#include "client/account.h"
#include "client/entity_sense.h"
#include "client/findings.h"
#include "client/grid_files.h"
#include "client/json_file.h"
#include "client/range_sense.h"
#include "client/rate_grid.h"
#include "client/rate_ranges.h"
#include "client/rebate_classes.h"
#include "client/scheme_lookup.h"
#include "client/stored_request.h"
#include "client/tool.h"

namespace rebate {
namespace {

struct RangesOptions : AccountOptions {
  Long type = 0;
  std::optional<Text> file;
  Long scheme = 0;
  bool strict = false;
};

void PrintRanges(const RangesOptions& options, Tool& tool) {
  Account account(options.dsn);
  const std::vector<AmountRange> ranges = RangesOfType(account, options.type, options.scheme);
  if (options.json) {
    Json list = Json::array();
    for (const AmountRange& range : ranges) {
      list.push_back(
          {{"FLower", AmountJson(range.lower)}, {"FUpper", AmountJson(range.upper)}, {"FIndex", range.position}});
    }
    tool.out << JsonLine(list) << '\n';
    return;
  }
  Table table({{"FID", true}, {"From", true}, {"To", true}});
  for (const AmountRange& range : ranges) table.Add({std::to_string(range.id), range.lower, range.upper});
  table.Print(tool.out, tool.width);
}

// A range that leaves its position out takes the one at which it stands.
Json WithPositions(Json ranges) {
  Long position = 0;
  for (Json& range : ranges) {
    ++position;
    if (!range.contains("FIndex")) range["FIndex"] = position;
  }
  return ranges;
}

void CheckPlace(Account& account, const RangesOptions& options) {
  TypeRow(account, options.type);
  if (options.scheme == 0) return;
  const std::optional<SchemeHead> scheme = FindScheme(account, options.scheme);
  if (scheme && scheme->is_form && scheme->rebate_type == options.type) return;
  throw Error(error_number::kInvalidCall, "rebate",
              "There is no form " + std::to_string(options.scheme) + " of type " + std::to_string(options.type));
}

void CheckPositions(const Json& ranges, Findings& findings) {
  std::set<Long> seen;
  for (std::size_t i = 0; i < ranges.size(); ++i) {
    const Long position = IntegerOf(ranges[i]["FIndex"]);
    const Text place = PlaceOf("ranges", i) + ".FIndex";
    if (position < 1) findings.Refuse(place, "positions are counted from 1");
    if (!seen.insert(position).second) findings.Refuse(place, "a second range at position " + std::to_string(position));
  }
}

void TellChange(const RangesOptions& options, std::size_t count, const RangeChange& change, Tool& tool) {
  if (options.json) {
    tool.out << JsonLine({{"ranges", count}, {"ratesMoved", change.moved.size()}, {"ratesLost", change.lost}}) << '\n';
    return;
  }
  tool.out << "Type " << options.type << " now has " << count << (count == 1 ? " range" : " ranges");
  if (options.scheme != 0) tool.out << " under scheme " << options.scheme;
  tool.out << ".\n";
  for (const auto& [from, to] : change.moved) {
    tool.out << "The rates of " << RangeHeading(from.lower, from.upper) << " now stand in "
             << RangeHeading(to.lower, to.upper) << ".\n";
  }
  if (change.lost > 0) {
    tool.out << change.lost
             << (change.lost == 1 ? " rate has lost its range and is" : " rates have lost their range and are")
             << " 0 now.\n";
  }
}

void SetRanges(const RangesOptions& options, Tool& tool) {
  Json ranges = ReadJsonFile(*options.file);
  if (ReportProblems(*options.file, RangeFileProblems(ranges), tool)) return;
  ranges = WithPositions(PlainValue(ranges, RangeFileKeys()[0]));
  Findings findings;
  CheckRanges(ranges, "ranges", "FLower", "FUpper", findings);
  CheckPositions(ranges, findings);
  if (IsRefused(*options.file, findings, options.strict, tool)) return;
  Account account(options.dsn);
  CheckPlace(account, options);
  TellChange(options, ranges.size(), ReplaceRanges(account, options.type, options.scheme, ranges), tool);
}

}  // namespace

void AddRangesVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<RangesOptions>();
  CLI::App* verb = app.add_subcommand("ranges", "List the amount ranges of a rebate type, or replace them");
  verb->add_option("TYPE", options->type, "The rebate type, such as 2040")->required();
  CLI::Option* set = verb->add_option("--set", options->file, "A file of ranges, [{\"FLower\":0,\"FUpper\":100},…]");
  verb->add_option("--scheme", options->scheme, "The form whose ranges they are; the rate grid's where left out");
  verb->add_flag("--strict", options->strict, "With --set: refuse what is only odd, too")->needs(set);
  AddKeysFlag(*verb, RangeFileKeys());
  AddAccountOptions(*verb, *options);
  verb->footer(
      "Rates follow their ranges when these are replaced: a rate stays with the range of the same limits. Where that\n"
      "goes, the new range at its position takes its rates, unless that is one that stays; else they are set to 0.\n"
      "What ranges prints with --json, --set takes.\n"
      "Example: rebate ranges 2040 --set examples/ranges.json --dsn shop.db");
  verb->callback([options, &tool] { options->file ? SetRanges(*options, tool) : PrintRanges(*options, tool); });
}

}  // namespace rebate
