#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/code_words.h"
#include "client/command_line.h"
#include "client/rebate_classes.h"
#include "client/row_tables.h"
#include "client/tool.h"
#include "platform/containers/vector.h"

namespace rebate {
namespace {

struct TypesOptions : AccountOptions {
  std::optional<Long> rebate_class;
};

void PrintTypes(const TypesOptions& options, Tool& tool) {
  Account account(options.dsn);
  auto types = New<Vector>();
  for (const Long rebate_class : ClassesToShow(options.rebate_class))
    AddAll(TypesOfClass(account, rebate_class), *types);
  if (options.json) {
    tool.out << JsonLine(WithNumericIds(ToJson(types))) << '\n';
    return;
  }
  if (types->Size() == 0) {
    tool.out << "The account offers no rebate type of the class.\n";
    return;
  }
  const std::vector<RowColumn> columns = {{"Class", "FRebateClass", false, 1, RebateClassText},
                                          {"Type", "FRebateType", true},
                                          {"Ranges over", "FRangeItemClass", false, 2, ItemClassText},
                                          {"Rates in", "Unit"},
                                          {"Name", "FTypeName"}};
  for (Long i = 1; i <= types->Size(); ++i) {
    const auto type = ObjectAs<Dictionary>(types->Item(i));
    type->SetValue("Unit", RateUnit(*type));
  }
  RowTable(columns, *types).Print(tool.out, tool.width);
  tool.out << '(' << types->Size() << (types->Size() == 1 ? " type)\n" : " types)\n");
}

}  // namespace

void AddTypesVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<TypesOptions>();
  CLI::App* verb = app.add_subcommand("types", "List the rebate types that the account offers");
  AddAccountOptions(*verb, *options);
  verb->add_option("--class", options->rebate_class, "Only this rebate class: 24 suppliers, 32 customers, 40 salesmen")
      ->transform(RebateClassWord());
  verb->footer(
      "What a type ranges over: 1 customers or 8 suppliers alone, 4 organisations and goods.\n"
      "Example: rebate types --dsn shop.db --class 24");
  verb->callback([options, &tool] { PrintTypes(*options, tool); });
}

}  // namespace rebate
