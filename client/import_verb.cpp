#include <CLI/CLI.hpp>
#include <iterator>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_text.h"
#include "client/account.h"
#include "client/command_line.h"
#include "client/master_kind_word.h"
#include "client/master_writer.h"
#include "client/tool.h"
#include "platform/database/connect.h"
#include "platform/files/files.h"

namespace rebate {
namespace {

struct ImportOptions : AccountOptions {
  Text kind;
  Text file;
  Text encoding;
  bool check = false;
};

Encoding EncodingOf(const Text& word) {
  if (word.empty()) return Encoding::Any;
  return word == "utf-8" ? Encoding::Utf8 : Encoding::Gb18030;
}

Text ReadInput(const Text& path, Tool& tool) {
  if (path == "-") return Text(std::istreambuf_iterator<char>(tool.in), {});
  std::optional<Text> bytes = files::ReadWhole(path);
  if (!bytes) throw Error(error_number::kInvalidCall, "rebate", "Can't read " + path);
  return std::move(*bytes);
}

MasterFile ReadFile(const ImportOptions& options, const MasterKind& kind, FileProblems& problems, Tool& tool) {
  Text text = ReadInput(options.file, tool);
  try {
    text = DecodeFile(std::move(text), EncodingOf(options.encoding));
  } catch (const Error& error) {
    throw Error(error.number, error.source, options.file + ": " + error.description);
  }
  return ReadMasterFile(text, kind, problems);
}

void TellOutcome(const ImportOptions& options, const MasterKind& kind, const MasterPlan& plan, Tool& tool) {
  if (options.json) {
    tool.out << JsonLine({{"inserted", plan.inserted},
                          {"updated", plan.updated},
                          {"unchanged", plan.unchanged},
                          {"check", options.check}})
             << '\n';
    return;
  }
  tool.out << (options.check ? "Would import " : "Imported ") << kind.word << ": " << plan.inserted << " new, "
           << plan.updated << " changed, " << plan.unchanged << " as they were.\n";
}

// Plans and writes as one unit of work; one that only checks writes nothing and locks nobody out.
MasterPlan Carry(Connection& connection, const ImportOptions& options, const MasterKind& kind, MasterFile file,
                 FileProblems& problems, Tool& tool) {
  connection.BeginWork();
  try {
    if (!options.check) connection.Execute(WriterStatement(kind));
    MasterPlan plan = PlanImport(connection, kind, std::move(file), problems);
    if (options.check || !problems.empty()) {
      connection.RollbackWork();
      return plan;
    }
    Progress progress(tool.err, tool.progress, "importing " + Text(kind.word), plan.changes.size());
    WriteMaster(connection, kind, plan, progress);
    connection.CommitWork();
    return plan;
  } catch (...) {
    connection.RollbackWork();
    throw;
  }
}

void Import(const ImportOptions& options, Tool& tool) {
  const MasterKind& kind = *FindMasterKind(options.kind);
  const ConnectionRef connection = ConnectToMasterData(options.dsn);
  FileProblems problems;
  MasterFile file = ReadFile(options, kind, problems, tool);
  MasterPlan plan;
  if (!file.columns.empty()) plan = Carry(*connection, options, kind, std::move(file), problems, tool);
  if (problems.empty()) return TellOutcome(options, kind, plan, tool);
  problems.Print(options.file, tool);
  tool.err << "Nothing was imported.\n";
  tool.status = 1;
}

Text Footer() {
  Text text = "The first line holds the columns' titles, in any order, in English or Chinese:\n";
  for (const MasterKind& kind : MasterKinds()) text += "  " + TitlesText(kind) + "\n";
  return text +
         "Rows are found by number (users by id, else by name): those that are there are updated, in the columns that "
         "the\nfile has, others are inserted, under the next free id where the file gives none. An empty cell is Null, "
         "\"\" an\nempty text. UTF-8 and GB18030 are told apart. All or nothing: one bad line, and the account stays "
         "as it was.\n"
         "Example: rebate import goods goods.csv --check --dsn shop.db\n"
         "         rebate export goods --dsn old.db | rebate import goods - --dsn new.db";
}

}  // namespace

void AddImportVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<ImportOptions>();
  CLI::App* verb =
      app.add_subcommand("import", "Store suppliers, customers, goods, units, users or employees of a CSV file");
  AddMasterKind(*verb, options->kind, {{"schemes", "schemes are stored by `rebate save`"}});
  verb->add_option("FILE", options->file, "The CSV file; - is standard input")->required();
  verb->add_option("--encoding", options->encoding, "utf-8 or gb18030, where the file's isn't to be found out")
      ->check(OneOf({{"utf-8", "utf-8"}, {"gb18030", "gb18030"}}));
  verb->add_flag("--check", options->check, "Tell what would be done, and change nothing");
  AddAccountOptions(*verb, *options);
  verb->footer(Footer());
  verb->callback([options, &tool] { Import(*options, tool); });
}

}  // namespace rebate
