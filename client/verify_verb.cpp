#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "client/account.h"
#include "client/account_check.h"
#include "client/confirm.h"
#include "client/keeping_verbs.h"
#include "client/tool.h"
#include "platform/database/connect.h"

namespace rebate {
namespace {

struct VerifyOptions : AccountOptions {
  bool fix = false;
  bool yes = false;
};

// A statement that changes nothing, and has the unit of work write from its start: what is found is what is mended.
constexpr char kWriteFromTheStart[] = "update t_FL_SchemeList set FEnable = FEnable where 1 = 0";

std::vector<Finding> Check(Connection& connection, Tool& tool) {
  Progress progress(tool.err, tool.progress, "checking", CheckSteps());
  return CheckAccount(connection, progress);
}

std::vector<Finding> Look(Connection& connection, Tool& tool) {
  connection.BeginWork();
  try {
    std::vector<Finding> findings = Check(connection, tool);
    connection.RollbackWork();
    return findings;
  } catch (...) {
    connection.RollbackWork();
    throw;
  }
}

struct Outcome {
  std::vector<Finding> mended;
  std::vector<Finding> left;
};

// `agreed` are the findings that the user had seen when asked; nothing where nobody was.
Outcome Mend(Connection& connection, const std::optional<std::vector<Finding>>& agreed, Tool& tool) {
  Outcome outcome;
  connection.BeginWork();
  try {
    connection.Execute(kWriteFromTheStart);
    outcome.left = Check(connection, tool);
    outcome.mended = MendableOf(outcome.left);
    if (agreed && outcome.mended != *agreed) {
      throw Error(error_number::kInvalidCall, "rebate",
                  "Nothing was mended: the account has changed since it was looked through. Please try again");
    }
    if (!outcome.mended.empty()) {
      MendAccount(connection);
      outcome.left = Check(connection, tool);
    }
    connection.CommitWork();
    return outcome;
  } catch (...) {
    connection.RollbackWork();
    throw;
  }
}

Text Things(std::size_t count) {
  return std::to_string(count) + (count == 1 ? " thing is" : " things are");
}

void Tell(const VerifyOptions& options, const Outcome& outcome, Tool& tool) {
  if (!outcome.left.empty()) tool.status = 1;
  if (options.json) {
    Json told = {{"findings", FindingsJson(outcome.left)}};
    if (options.fix) told["mended"] = FindingsJson(outcome.mended);
    tool.out << JsonLine(told) << '\n';
    return;
  }
  if (!outcome.mended.empty()) tool.out << "Mended " << outcome.mended.size() << ".\n";
  PrintFindings(outcome.left, tool);
  if (outcome.left.empty()) {
    tool.out << (outcome.mended.empty() ? "Nothing is wrong.\n" : "Nothing is wrong any more.\n");
    return;
  }
  const std::size_t mendable = MendableOf(outcome.left).size();
  tool.out << Things(outcome.left.size()) << (outcome.mended.empty() ? "" : " still") << " wrong";
  if (mendable > 0) tool.out << "; `rebate verify --fix` mends " << mendable;
  tool.out << ".\n";
}

void Verify(const VerifyOptions& options, Tool& tool) {
  const ConnectionRef connection = Connect(DataSource::Parse(options.dsn));
  if (!options.fix) return Tell(options, {{}, Look(*connection, tool)}, tool);
  std::optional<std::vector<Finding>> agreed;
  if (!options.yes) {
    // Nobody is kept waiting for the answer.
    const std::vector<Finding> findings = Look(*connection, tool);
    agreed = MendableOf(findings);
    if (agreed->empty()) return Tell(options, {{}, findings}, tool);
    if (tool.asks) PrintFindings(*agreed, tool);
    Confirm("This can be mended (" + std::to_string(agreed->size()) +
                "): what nothing refers to any more is removed, "
                "what stands there twice stays once, amounts get the digits that were meant, and rates the position of "
                "their range.\nMend?",
            tool);
  }
  Tell(options, Mend(*connection, agreed, tool), tool);
}

}  // namespace

void AddVerifyVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<VerifyOptions>();
  CLI::App* verb = app.add_subcommand("verify", "Tell what is wrong in an account, row by row, and mend it");
  verb->add_flag("--fix", options->fix, "Mend what has one right answer, as one unit of work");
  verb->add_flag("--yes,-y", options->yes, "Mend without a question");
  AddAccountOptions(*verb, *options);
  verb->footer(
      "Status: 0 nothing is wrong, 1 something is, also behind --fix. It sees all rows, whatever the user's rights.\n"
      "Examples: rebate verify --dsn shop.db\n"
      "          rebate verify --fix --yes --dsn shop.db\n"
      "          rebate verify --json --dsn shop.db");
  verb->callback([options, &tool] { Verify(*options, tool); });
}

}  // namespace rebate
