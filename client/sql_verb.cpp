#include <CLI/CLI.hpp>
#include <algorithm>
#include <iterator>
#include <memory>

#include "client/account_words.h"
#include "client/command_line.h"
#include "client/progress.h"
#include "client/sql_session.h"
#include "client/tool.h"
#include "model/account_script.h"
#include "platform/automation/error.h"
#include "platform/database/connect.h"
#include "platform/database/connection_text.h"
#include "platform/files/files.h"

namespace rebate {
namespace {

struct SqlOptions {
  AccountWords words;
  std::optional<Text> file;
  bool json = false;
  bool csv = false;
  bool line = false;
};

RowForm FormOf(const SqlOptions& options) {
  if (options.json) return RowForm::Json;
  if (options.csv) return RowForm::Csv;
  return options.line ? RowForm::Line : RowForm::Table;
}

std::size_t RunsOf(const std::vector<ScriptBatch>& batches) {
  std::size_t runs = 0;
  for (const ScriptBatch& batch : batches) runs += batch.times;
  return runs;
}

// `name` is that of the script, empty where it has none.
void RunScript(Connection& connection, const Text& script, const Text& name, const SqlView& view, Tool& tool) {
  const std::vector<ScriptBatch> batches = Batches(script);
  Progress progress(tool.err, tool.progress && tool.width == 0, "batch", RunsOf(batches));
  std::size_t number = 0;
  for (const ScriptBatch& batch : batches) {
    ++number;
    try {
      for (std::size_t run = 0; run < batch.times; ++run) {
        ShowBatch(connection, {batch.text, 1}, view, tool);
        progress.Step();
      }
    } catch (const Error& error) {
      tool.out.flush();
      const Text place = batches.size() > 1 ? "batch " + std::to_string(number) + ": " : Text();
      throw Error(error.number, error.source, (name.empty() ? "" : name + ": ") + place + error.description);
    }
  }
}

Text ReadScript(const Text& path) {
  const std::optional<Text> script = files::ReadWhole(path);
  if (!script) throw Error(error_number::kInvalidCall, "rebate", "Can't read " + path);
  return *script;
}

void RunSql(const SqlOptions& options, Tool& tool) {
  const auto [dsn, words] = options.words.Split();
  if (!words.empty() && options.file) throw CLI::ValidationError("--file", "TEXT or a file is run, not both");
  const Text script = options.file ? ReadScript(*options.file) : words.empty() ? Text() : words[0];
  const DataSource source = DataSource::Parse(dsn);
  const ConnectionRef connection = Connect(source);
  const SqlView view{FormOf(options), tool.width > 0 || tool.asks};
  if (options.file || !words.empty()) {
    RunScript(*connection, script, options.file.value_or(""), view, tool);
  } else if (tool.asks) {
    RunSqlSession(*connection, source.embedded ? source.path : WithoutSecrets(dsn), view, tool);
  } else {
    RunScript(*connection, Text(std::istreambuf_iterator<char>(tool.in), {}), {}, view, tool);
  }
}

}  // namespace

void AddSqlVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<SqlOptions>();
  CLI::App* verb = app.add_subcommand("sql", "Run Transact-SQL, batch by batch; each batch stands or falls by itself");
  options->words.AddTo(*verb, 1, "[DSN] [TEXT]",
                       "The account, where neither --dsn nor REBATE_DSN names it, and the batches, a line GO or GO n "
                       "(times) behind each; standard input where left out. Where REBATE_DSN is set, one word with "
                       "blanks in it is TEXT");
  verb->add_option("--file,-f", options->file, "Run this file");
  CLI::Option* json = verb->add_flag("--json", options->json, "Print each row as one JSON object");
  CLI::Option* csv = verb->add_flag("--csv", options->csv, "Print rows as CSV")->excludes(json);
  verb->add_flag("--line", options->line, "Print rows down the page, a line a column")->excludes(json)->excludes(csv);
  verb->footer(
      "On a terminal without TEXT: a prompt, where a line GO or a ; at a line's end runs what was typed and .help "
      "tells\n"
      "more. A terminal is shown all row sets, messages and row counts, long ones through $PAGER; elsewhere what each\n"
      "batch says and its first row set are printed. Stops at the first batch of a script that is refused.\n"
      "Example: rebate sql shop.db \"select FItemID, FName from t_Supplier\"");
  verb->callback([options, &tool] { RunSql(*options, tool); });
}

}  // namespace rebate
