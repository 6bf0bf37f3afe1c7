#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/json_file.h"
#include "client/rebate_classes.h"
#include "client/request_check.h"
#include "client/row_tables.h"
#include "client/scheme_lookup.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"

namespace rebate {
namespace {

struct SaveOptions : AccountOptions {
  Text file;
};

Ref<Dictionary> TypeRowOf(Account& account, const Json& request) {
  if (request.contains("SchemeConst")) return ObjectAs<Dictionary>(FromJson(request["SchemeConst"], "SchemeConst"));
  return TypeRow(account, ToLong(FromJson(request["FRebateType"], "FRebateType")));
}

// The head as it is asked for, with the note that the operation would otherwise store as a 0.
Ref<Dictionary> HeadOf(const Json& request) {
  auto head = ObjectAs<Dictionary>(FromJson(request["SchemeMainData"], "SchemeMainData"));
  if (!head->Has("FNote")) head->SetValue("FNote", "");
  return head;
}

void PrintRefusal(const Dictionary& answer, Tool& tool) {
  tool.err << CellText(answer, "Err") << '\n';
  const auto repeat = ObjectAs<Vector>(answer.GetValue("Repeat"));
  if (!repeat || repeat->Size() == 0) return;
  std::vector<RowColumn> columns = {
      {"Stored scheme", "FSchemeName"}, {"Number", "FOrgNumber"}, {"Organisation", "FOrgName"}};
  const auto first = ObjectAs<Dictionary>(repeat->Item(1));
  if (first->Has("FItemNumber")) {
    columns.push_back({"Goods number", "FItemNumber"});
    columns.push_back({"Goods", "FItemName"});
  }
  columns.push_back({"Held through", "FOrgRemark"});
  RowTable(columns, *repeat).Print(tool.err, tool.err_width);
}

void PrintSuccess(Account& account, const Dictionary& type, const Dictionary& head, Tool& tool) {
  const Text name = CellText(head, "FSchemeName");
  tool.out << "Stored " << name;
  if (const auto id = NewestScheme(account, ToLong(type.Value("FRebateType")), name)) tool.out << " as scheme " << *id;
  tool.out << ".\n";
}

void Save(const SaveOptions& options, Tool& tool) {
  const Json request = ReadJsonFile(options.file);
  if (ReportProblems(options.file, RequestProblems(request), tool)) return;
  Account account(options.dsn);
  const Ref<Dictionary> type = TypeRowOf(account, request);
  const Ref<Dictionary> head = HeadOf(request);
  std::vector<Variant> arguments = {type, head};
  for (const char* key : {"AllRangesData", "AllOrgsData", "AllGridRows"})
    arguments.push_back(FromJson(request[key], key));
  const auto answer = ObjectAs<Dictionary>(account.Call("SaveOneSchemeData", std::move(arguments)));
  if (!answer) account.ThrowFailure("The scheme can't be saved");
  if (options.json) tool.out << JsonLine(ToJson(answer)) << '\n';
  if (!ToBoolean(answer->Value("OK"))) {
    PrintRefusal(*answer, tool);
    tool.status = 1;
  } else if (!options.json) {
    PrintSuccess(account, *type, *head, tool);
  }
}

}  // namespace

void AddSaveVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<SaveOptions>();
  CLI::App* verb = app.add_subcommand("save", "Save the scheme of a request file, unless it overlaps with another one");
  verb->add_option("FILE", options->file, "The request, one JSON object; see examples/")->required();
  AddAccountOptions(*verb, *options);
  verb->footer(
      "A refusal for overlap lists the overlapping entries. FRebateType in the request picks the rebate type.\n"
      "Example: rebate save examples/supplier_total.json --dsn shop.db");
  verb->callback([options, &tool] { Save(*options, tool); });
}

}  // namespace rebate
