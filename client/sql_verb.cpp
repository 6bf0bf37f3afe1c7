#include <CLI/CLI.hpp>
#include <iterator>
#include <memory>

#include "client/progress.h"
#include "client/result_output.h"
#include "client/tool.h"
#include "model/account_script.h"
#include "platform/automation/conversion.h"
#include "platform/automation/error.h"
#include "platform/database/connect.h"

namespace rebate {
namespace {

struct SqlOptions {
  Text dsn;
  std::optional<Text> text;
  bool json = false;
};

// The batch stands whole or not at all.
RecordsetRef RunBatch(Connection& connection, std::string_view batch) {
  connection.BeginWork();
  try {
    RecordsetRef rows = connection.Execute(batch);
    connection.CommitWork();
    return rows;
  } catch (...) {
    connection.RollbackWork();
    throw;
  }
}

// Rows alone stand on standard output where a program reads it.
void PrintMessages(Connection& connection, const SqlOptions& options, Tool& tool) {
  for (const Text& message : connection.TakeMessages()) (options.json ? tool.err : tool.out) << message << '\n';
}

void ShowBatch(Connection& connection, std::string_view batch, const SqlOptions& options, Tool& tool) {
  RecordsetRef rows;
  try {
    rows = RunBatch(connection, batch);
  } catch (...) {
    PrintMessages(connection, options, tool);
    throw;
  }
  PrintMessages(connection, options, tool);
  if (!rows) return;
  if (options.json) {
    PrintJsonRows(*rows, tool.out);
  } else {
    PrintTable(*rows, tool.out, tool.width);
  }
}

std::size_t RunsOf(const std::vector<ScriptBatch>& batches) {
  std::size_t runs = 0;
  for (const ScriptBatch& batch : batches) runs += batch.times;
  return runs;
}

void RunSql(const SqlOptions& options, Tool& tool) {
  const ConnectionRef connection = Connect(DataSource::Parse(options.dsn));
  const Text text = options.text ? *options.text : Text(std::istreambuf_iterator<char>(tool.in), {});
  const std::vector<ScriptBatch> batches = Batches(text);
  Progress progress(tool.err, tool.progress && tool.width == 0, "batch", RunsOf(batches));
  std::size_t number = 0;
  for (const ScriptBatch& batch : batches) {
    ++number;
    try {
      for (std::size_t run = 0; run < batch.times; ++run) {
        ShowBatch(*connection, batch.text, options, tool);
        progress.Step();
      }
    } catch (const Error& error) {
      tool.out.flush();
      const Text place = batches.size() > 1 ? "batch " + std::to_string(number) + ": " : Text();
      throw Error(error.number, error.source, place + error.description);
    }
  }
}

}  // namespace

void AddSqlVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<SqlOptions>();
  CLI::App* verb = app.add_subcommand("sql", "Run Transact-SQL, batch by batch; each batch stands or falls by itself");
  verb->add_option("DSN", options->dsn, "The account: a file such as shop.db, or Key=Value;… text")->required();
  verb->add_option("TEXT", options->text,
                   "The batches, a line GO or GO n (times) behind each; standard input where left out");
  verb->add_flag("--json", options->json, "Print each row as one JSON object");
  verb->footer(
      "Prints what each batch says and its first row set, and stops at the first batch that is refused.\n"
      "Example: rebate sql shop.db \"select FItemID, FName from t_Supplier\"");
  verb->callback([options, &tool] { RunSql(*options, tool); });
}

}  // namespace rebate
