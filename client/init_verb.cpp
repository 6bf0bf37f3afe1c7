#include <CLI/CLI.hpp>
#include <memory>

#include "client/account_words.h"
#include "client/progress.h"
#include "client/tool.h"
#include "model/account_script.h"
#include "platform/database/connect.h"
#include "platform/database/connection_text.h"

namespace rebate {
namespace {

struct InitOptions {
  AccountWords account;
  bool sample = false;
  bool json = false;
};

std::vector<ScriptBatch> BatchesOf(const InitOptions& options, bool embedded) {
  std::vector<ScriptBatch> batches = AccountBatches(embedded);
  if (options.sample) {
    for (const ScriptBatch& batch : Batches(AccountSample())) batches.push_back(batch);
  }
  return batches;
}

// The account stands whole or not at all.
void FillAccount(Connection& connection, const std::vector<ScriptBatch>& batches, Progress& progress) {
  connection.BeginWork();
  try {
    for (const ScriptBatch& batch : batches) {
      connection.Execute(batch.text);
      progress.Step();
    }
    connection.CommitWork();
  } catch (...) {
    connection.RollbackWork();
    throw;
  }
}

void Init(const InitOptions& options, Tool& tool) {
  const Text dsn = options.account.Split().first;
  const DataSource source = DataSource::Parse(dsn);
  const std::vector<ScriptBatch> batches = BatchesOf(options, source.embedded);
  const Text name = source.embedded ? source.path : WithoutSecrets(dsn);
  AccountSetup setup(source);
  {
    Progress progress(tool.err, tool.progress, "making " + name, batches.size());
    FillAccount(setup.connection(), batches, progress);
  }
  setup.Finish();
  if (options.json) {
    tool.out << "{\"sample\":" << (options.sample ? "true" : "false") << "}\n";
  } else {
    tool.out << "Made the account " << name
             << (options.sample ? " with sample data.\n"
                                : ".\nNext: its suppliers, customers and goods, by `rebate import`, "
                                  "whose --help shows how.\n");
  }
}

}  // namespace

void AddInitVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<InitOptions>();
  CLI::App* verb = app.add_subcommand("init", "Make an account: its tables and views, and the rebate types");
  options->account.AddTo(*verb, 0, "[DSN]",
                         "The account: a new file such as shop.db, or Key=Value;… text of an empty database");
  verb->add_flag("--sample", options->sample, "Fill in sample suppliers, customers, goods, units and users");
  verb->add_flag("--json", options->json, "Print JSON");
  verb->footer("Example: rebate init shop.db --sample");
  verb->callback([options, &tool] { Init(*options, tool); });
}

}  // namespace rebate
