#include <CLI/CLI.hpp>
#include <algorithm>
#include <memory>
#include <nlohmann/json.hpp>

#include "client/account.h"
#include "client/account_check.h"
#include "client/confirm.h"
#include "client/keeping_verbs.h"
#include "client/progress.h"
#include "client/tool.h"
#include "platform/database/account_backup.h"
#include "platform/files/files.h"

namespace rebate {
namespace {

struct BackupOptions : AccountOptions {
  Text file;
  bool force = false;
};

// A copy of an account with findings is still its copy; one that is damaged is none.
std::vector<Finding> CheckCopy(const AccountBackup& backup, Tool& tool) {
  const ConnectionRef copy = backup.Open();
  Progress progress(tool.err, tool.progress, "checking the copy", CheckSteps());
  copy->BeginWork();
  std::vector<Finding> findings = CheckAccount(*copy, progress);
  copy->RollbackWork();
  const auto damage =
      std::find_if(findings.begin(), findings.end(), [](const Finding& f) { return f.check == kFileDamage; });
  if (damage != findings.end()) {
    throw Error(error_number::kInvalidCall, "rebate", "No backup was made, since " + damage->what);
  }
  return findings;
}

void TellFindings(const std::vector<Finding>& findings, Tool& tool) {
  if (findings.empty()) return;
  tool.err << "note: " << findings.size() << (findings.size() == 1 ? " thing is" : " things are")
           << " wrong in the account, and so in its copy; `rebate verify` tells "
           << (findings.size() == 1 ? "it" : "them") << ".\n";
}

void Backup(const BackupOptions& options, Tool& tool) {
  const DataSource source = DataSource::Parse(options.dsn);
  bool replace = options.force;
  if (source.embedded && !replace && files::IsTaken(options.file)) {
    Confirm("There is something at " + options.file + " already.\nReplace it?", tool);
    replace = true;
  }
  AccountBackup backup(source, options.file, replace);
  {
    Progress progress(tool.err, tool.progress, "copying " + source.path + ", per cent", 100);
    backup.Copy([&](int percent) { progress.To(static_cast<std::size_t>(percent)); });
  }
  if (backup.CanBeChecked()) {
    TellFindings(CheckCopy(backup, tool), tool);
  } else {
    tool.err << "note: an older version made the account; it was copied as it is, unchecked.\n";
  }
  backup.Finish();
  if (options.json) {
    tool.out << JsonLine({{"backup", options.file}}) << '\n';
  } else {
    tool.out << "Backed up " << source.path << " to " << options.file << ".\n";
  }
}

}  // namespace

void AddBackupVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<BackupOptions>();
  CLI::App* verb = app.add_subcommand("backup", "Copy an embedded account to a file while others work on it");
  verb->add_option("FILE", options->file, "The copy, a whole account")->required()->type_name("");
  verb->add_flag("--force,--yes,-y", options->force, "Replace a file that stands there");
  AddAccountOptions(*verb, *options);
  verb->footer(
      "The copy holds the account as it stood when the copying began. It is checked as `rebate verify` does, and\n"
      "only then gets its name. An account on a server is kept by the server's own backup.\n"
      "Examples: rebate backup shop-monday.db --dsn shop.db\n"
      "          rebate backup shop-latest.db --force --dsn shop.db");
  verb->callback([options, &tool] { Backup(*options, tool); });
}

}  // namespace rebate
