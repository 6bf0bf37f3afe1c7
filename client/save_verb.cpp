#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/findings.h"
#include "client/first_rows.h"
#include "client/json_file.h"
#include "client/rebate_classes.h"
#include "client/request_check.h"
#include "client/row_tables.h"
#include "client/save_files.h"
#include "client/scheme_lookup.h"
#include "client/scheme_sense.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"

namespace rebate {
namespace {

struct RequestFile {
  Json request;
  std::optional<SchemeHead> replaced;
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

// A save enables what it stores; a scheme that takes the place of a disabled one stays disabled.
void KeepDisabled(Account& account, Long id) {
  if (ToBoolean(account.Call("EnableScheme", {id, false}))) return;
  account.ThrowFailure("Scheme " + std::to_string(id) + " is stored, but enabled: it can't be disabled");
}

void PrintSuccess(const Dictionary& head, const std::optional<Long>& id, const std::optional<SchemeHead>& replaced,
                  Tool& tool) {
  tool.out << "Stored " << CellText(head, "FSchemeName");
  if (id) tool.out << " as scheme " << *id;
  if (replaced) tool.out << " in the place of scheme " << replaced->id;
  if (replaced && !replaced->enabled) tool.out << ", disabled as that was";
  tool.out << ".\n";
}

// The answer, and behind it under which id the scheme now stands.
Json AnswerOf(const Ref<Dictionary>& answer, const std::optional<Long>& id) {
  Json json = ToJson(answer);
  if (id) json["SchemeID"] = *id;
  return json;
}

// The request of a file, plain and looked through, with the scheme that it replaces. Nothing where it is refused.
std::optional<RequestFile> ReadRequest(Account& account, const SaveOptions& options, Tool& tool) {
  RequestFile file;
  file.request = ReadJsonFile(options.file);
  if (ReportProblems(options.file, RequestProblems(file.request), tool)) return std::nullopt;
  file.request = PlainObject(file.request, RequestKeys());
  Findings findings;
  file.replaced = CheckScheme(account, file.request, findings);
  CheckUser(account, "AppUser", findings);
  if (IsRefused(options.file, findings, options.strict, tool)) return std::nullopt;
  return file;
}

}  // namespace

void SaveRequestFile(const SaveOptions& options, Tool& tool) {
  Account account(options.dsn);
  const std::optional<RequestFile> file = ReadRequest(account, options, tool);
  if (!file) return;
  MakeFirstRows(account, tool);
  const Ref<Dictionary> type = TypeRowOf(account, file->request);
  const Ref<Dictionary> head = HeadOf(file->request);
  std::vector<Variant> arguments = {type, head};
  for (const char* key : {"AllRangesData", "AllOrgsData", "AllGridRows"})
    arguments.push_back(FromJson(file->request[key], key));
  const auto answer = ObjectAs<Dictionary>(account.Call("SaveOneSchemeData", std::move(arguments)));
  if (!answer) account.ThrowFailure("The scheme can't be saved");
  const bool stored = ToBoolean(answer->Value("OK"));
  std::optional<Long> id;
  if (stored) id = NewestScheme(account, ToLong(type->Value("FRebateType")), CellText(*head, "FSchemeName"));
  if (id && file->replaced && !file->replaced->enabled) KeepDisabled(account, *id);
  if (options.json) tool.out << JsonLine(AnswerOf(answer, id)) << '\n';
  if (!stored) {
    PrintRefusal(*answer, tool);
    tool.status = 1;
  } else if (!options.json) {
    PrintSuccess(*head, id, file->replaced, tool);
  }
}

void AddSaveVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<SaveOptions>();
  CLI::App* verb = app.add_subcommand("save", "Save the scheme of a request file, unless it overlaps with another one");
  verb->add_option("FILE", options->file, "The request, one JSON object; see examples/")->required();
  verb->add_flag("--strict", options->strict, "Refuse what is only odd, too");
  AddKeysFlag(*verb, RequestKeys());
  AddAccountOptions(*verb, *options);
  verb->footer(
      "A refusal for overlap lists the overlapping entries. FRebateType in the request picks the rebate type,\n"
      "FSchemeID the stored scheme that is replaced, under a new id; it stays disabled where it was. Organisations,\n"
      "goods and units may be named by their numbers. What `rebate show ID --json` prints, save takes.\n"
      "Example: rebate save examples/supplier_total.json --dsn shop.db");
  verb->callback([options, &tool] { SaveRequestFile(*options, tool); });
}

}  // namespace rebate
