#include <CLI/CLI.hpp>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/findings.h"
#include "client/first_rows.h"
#include "client/json_file.h"
#include "client/request_check.h"
#include "client/row_tables.h"
#include "client/save_files.h"
#include "client/save_many.h"
#include "client/scheme_store.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "platform/files/files.h"

namespace rebate {
namespace {

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

void PrintSuccess(const StoredScheme& outcome, const std::optional<SchemeHead>& replaced, Tool& tool) {
  tool.out << "Stored " << outcome.name;
  if (outcome.id) tool.out << " as scheme " << *outcome.id;
  if (replaced) tool.out << " in the place of scheme " << replaced->id;
  if (outcome.disabled) tool.out << (replaced && !replaced->enabled ? ", disabled as that was" : ", disabled");
  tool.out << ".\n";
}

// The answer, and behind it under which id the scheme now stands.
Json AnswerOf(const Ref<Dictionary>& answer, const std::optional<Long>& id) {
  Json json = ToJson(answer);
  if (id) json["SchemeID"] = *id;
  return json;
}

}  // namespace

void SaveRequestFile(const SaveOptions& options, Tool& tool) {
  Account account(options.dsn);
  const CheckedScheme scheme = CheckRequest(account, ReadJsonFile(options.file));
  if (ReportProblems(options.file, scheme.problems, tool)) return;
  if (IsRefused(options.file, scheme.findings, options.strict, tool)) return;
  MakeFirstRows(account, tool);
  const StoredScheme outcome = StoreRequest(account, scheme);
  if (options.json) tool.out << JsonLine(AnswerOf(outcome.answer, outcome.id)) << '\n';
  if (!outcome.stored) {
    PrintRefusal(*outcome.answer, tool);
    tool.status = 1;
  } else if (!options.json) {
    PrintSuccess(outcome, scheme.replaced, tool);
  }
}

namespace {

void Save(const SaveOptions& options, Tool& tool) {
  if (options.file == "-") return SaveLines(options, Text(std::istreambuf_iterator<char>(tool.in), {}), tool);
  const files::Kind kind = files::KindOf(options.file);
  if (kind == files::Kind::Directory) return SaveDirectory(options, tool);
  // What is no file can be read once alone.
  if (kind == files::Kind::File) {
    const Text text = files::ReadWhole(options.file).value_or("");
    if (IsManySchemes(options.file, text)) return SaveLines(options, text, tool);
  }
  SaveRequestFile(options, tool);
}

}  // namespace

void AddSaveVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<SaveOptions>();
  CLI::App* verb =
      app.add_subcommand("save", "Save the scheme of a request file, or several, unless it overlaps with another one");
  verb->add_option(
          "FILE", options->file,
          "The request, one JSON object (see examples/), a file of\nJSON Lines, a directory of files, or - for "
          "standard input")
      ->required();
  verb->add_flag("--strict", options->strict, "Refuse what is only odd, too");
  verb->add_flag("--all-or-nothing", options->all_or_nothing, "Of several schemes, store all or none");
  AddKeysFlag(*verb, RequestKeys());
  AddAccountOptions(*verb, *options);
  verb->footer(
      "A refusal for overlap lists the overlapping entries. FRebateType in the request picks the rebate type,\n"
      "FSchemeID the stored scheme that is replaced, under a new id; it stays disabled where it was. Organisations,\n"
      "goods and units may be named by their numbers. What `rebate show ID --json` prints, save takes.\n"
      "\n"
      "Several schemes come as JSON Lines, one object a line, or as the .json files of a directory, in the order of "
      "their\nnames; forms may stand among them. `rebate export schemes` writes both. Each is stored for itself, in "
      "turn; a table\ntells what became of each, standard error why, and the status is 1 where one was refused.\n"
      "With --all-or-nothing they are one unit of work: no other user sees any of them before all are stored, and "
      "where\none is refused, or the tool is ended half way, the account is as it was. Meanwhile others can't "
      "write.\n"
      "\n"
      "Example: rebate save examples/supplier_total.json --dsn shop.db\n"
      "         rebate save schemes.jsonl --all-or-nothing --dsn shop.db");
  verb->callback([options, &tool] { Save(*options, tool); });
}

}  // namespace rebate
