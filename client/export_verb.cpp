#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_text.h"
#include "client/account.h"
#include "client/csv_reader.h"
#include "client/export_schemes.h"
#include "client/master_kind_word.h"
#include "client/master_rows.h"
#include "client/output_file.h"
#include "client/tool.h"
#include "platform/automation/error.h"

namespace rebate {
namespace {

constexpr const char* kSchemes = "schemes";

struct ExportOptions : AccountOptions {
  Text kind;
  Text file;
  bool mark = false;
  bool as_new = false;
};

// The rows of the kind's table as of one moment, units by their names; tells what is left out.
std::vector<StoredRow> ReadRows(const ExportOptions& options, const MasterKind& kind, Tool& tool) {
  const ConnectionRef connection = ConnectToMasterData(options.dsn);
  connection->BeginWork();
  std::vector<StoredRow> rows = ReadStoredRows(*connection, kind);
  for (std::size_t i = 0; i < kind.columns.size(); ++i) {
    if (kind.columns[i].role != MasterColumn::Role::Units) continue;
    const UnitNames names(*connection);
    for (StoredRow& row : rows) {
      row.cells[i] = row.cells[i]->empty() ? MasterCell() : MasterCell(names.NamesOf(*row.cells[i]));
    }
  }
  connection->RollbackWork();
  const auto lone = std::erase_if(rows, [](const StoredRow& row) { return !row.in_table; });
  if (lone > 0) {
    tool.err << "Left out: " << lone << " of t_Item's " << kind.word << ", which " << kind.table << " lacks.\n";
  }
  return rows;
}

void PrintCsv(const MasterKind& kind, const std::vector<StoredRow>& rows, std::ostream& out) {
  out << kIdTitle;
  for (const MasterColumn& column : kind.columns) out << ',' << column.title;
  out << '\n';
  for (const StoredRow& row : rows) {
    out << row.id;
    for (const MasterCell& cell : row.cells) out << ',' << CsvText(cell);
    out << '\n';
  }
}

void PrintJson(const MasterKind& kind, const std::vector<StoredRow>& rows, std::ostream& out) {
  for (const StoredRow& row : rows) {
    Json line = {{Text(kIdTitle), row.id}};
    for (std::size_t i = 0; i < row.cells.size(); ++i) {
      line[Text(kind.columns[i].title)] = row.cells[i] ? Json(*row.cells[i]) : Json();
    }
    out << JsonLine(line) << '\n';
  }
}

void ExportMaster(const ExportOptions& options, Tool& tool) {
  const MasterKind& kind = *FindMasterKind(options.kind);
  const std::vector<StoredRow> rows = ReadRows(options, kind, tool);
  if (options.file.empty()) {
    if (options.json) return PrintJson(kind, rows, tool.out);
    if (options.mark) tool.out << "\xEF\xBB\xBF";
    return PrintCsv(kind, rows, tool.out);
  }
  OutputFile file(options.file);
  if (options.mark) file.stream() << "\xEF\xBB\xBF";
  PrintCsv(kind, rows, file.stream());
  file.Finish();
  if (options.json) {
    tool.out << JsonLine({{"exported", rows.size()}, {"file", options.file}}) << '\n';
  } else {
    tool.out << "Exported " << rows.size() << ' ' << kind.word << " to " << options.file << ".\n";
  }
}

}  // namespace

namespace {

void Export(const ExportOptions& options, Tool& tool) {
  if (options.kind != kSchemes) {
    if (options.as_new) throw CLI::ValidationError("--new", "only schemes take the place of others");
    return ExportMaster(options, tool);
  }
  if (options.mark) throw CLI::ValidationError("--bom", "schemes are JSON, which begins with none");
  SchemeExport schemes;
  schemes.dsn = options.dsn;
  schemes.json = options.json;
  schemes.target = options.file;
  schemes.as_new = options.as_new;
  ExportSchemes(schemes, tool);
}

}  // namespace

void AddExportVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<ExportOptions>();
  CLI::App* verb = app.add_subcommand(
      "export", "Write suppliers, customers, goods, units, users or employees as CSV, schemes as JSON");
  AddMasterKind(*verb, options->kind, {{kSchemes, ""}});
  verb->add_option(
      "FILE", options->file,
      "Where to; standard output where left out. Schemes go\nto a file each where it is a directory or ends "
      "with /");
  verb->add_flag("--bom", options->mark, "Begin CSV with a byte order mark, by which spreadsheets know UTF-8");
  verb->add_flag("--new", options->as_new, "Schemes as new ones, for another account: without the ids of their own");
  AddAccountOptions(*verb, *options);
  verb->footer(
      "Writes what `rebate import` takes, in UTF-8, by id, and schemes as `rebate save` takes them, JSON Lines or a\n"
      "directory of files, disabled ones first. A file is replaced when all of it is written, and not before. With\n"
      "--json, rows on standard output are JSON objects.\n"
      "A scheme names itself as the one whose place it takes when it is saved; with --new it is stored beside the\n"
      "others. Saved as a new one, a form is disabled, as every new form is.\n"
      "Example: rebate export goods goods.csv --dsn shop.db\n"
      "         rebate export schemes --new --dsn old.db | rebate save - --all-or-nothing --dsn new.db");
  verb->callback([options, &tool] { Export(*options, tool); });
}

}  // namespace rebate
