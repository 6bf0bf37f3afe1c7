#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_text.h"
#include "client/account_copy.h"
#include "client/keeping_verbs.h"
#include "client/progress.h"
#include "client/table.h"
#include "client/tool.h"
#include "model/account_script.h"
#include "platform/database/connect.h"
#include "platform/database/connection_text.h"
#include "platform/files/files.h"

namespace rebate {
namespace {

struct CopyOptions {
  Text from;
  Text to;
  bool json = false;
};

struct CopyOutcome {
  std::vector<AccountCopy::Copied> copied;
  std::vector<Text> left;
};

Text NameOf(const Text& dsn) {
  const DataSource source = DataSource::Parse(dsn);
  return source.embedded ? source.path : WithoutSecrets(dsn);
}

// A connection whose unit of work is undone where it wasn't done.
class Unit {
 public:
  explicit Unit(Connection& connection) : connection_(connection) { connection_.BeginWork(); }
  Unit(const Unit&) = delete;
  Unit& operator=(const Unit&) = delete;
  ~Unit() { connection_.RollbackWork(); }

 private:
  Connection& connection_;
};

// An embedded account is read as it stands at its first statement. A server needs to be told to keep what is read from
// changing, which a unit of work that writes does.
void HoldStill(Connection& source, bool embedded) {
  if (!embedded) source.Execute("update t_FL_SchemeList set FEnable = FEnable where 1 = 0");
}

CopyOutcome CopyRows(Connection& source, bool source_is_embedded, Connection& target, const CopyOptions& options,
                     Tool& tool) {
  if (!HasAccountTables(source)) {
    throw Error(error_number::kInvalidCall, "rebate",
                "The source is no account: it has no schemes. Nothing was copied");
  }
  const bool has_tables = HasAccountTables(target);
  const std::vector<Text> numbered = has_tables ? NumberedTables(target) : NumberedTables();
  const bool tells_numbers = TellsLastNumbers(source);
  const Unit reading(source);
  HoldStill(source, source_is_embedded);
  const Unit writing(target);
  if (!has_tables) {
    const bool embedded = DataSource::Parse(options.to).embedded;
    for (const ScriptBatch& batch : AccountBatches(embedded)) target.Execute(batch.text);
  }
  // The unit of work writes from its start: nobody fills the target between the look at it and the copy.
  target.Execute("update t_FL_SchemeMode set FIndex = FIndex where 1 = 0");
  AccountCopy copy(source, target, numbered, tells_numbers);
  copy.CheckTarget();
  Progress progress(tool.err, tool.progress, "copying " + NameOf(options.from) + ", per cent", 100);
  CopyOutcome outcome;
  outcome.copied = copy.Run([&](int percent) { progress.To(static_cast<std::size_t>(percent)); });
  outcome.left = OtherTables(source);
  target.CommitWork();
  return outcome;
}

CopyOutcome RunCopy(const CopyOptions& options, Tool& tool) {
  const DataSource from = DataSource::Parse(options.from);
  const DataSource to = DataSource::Parse(options.to);
  const ConnectionRef source = Connect(from);
  if (!to.embedded || files::IsTaken(to.path)) {
    return CopyRows(*source, from.embedded, *Connect(to), options, tool);
  }
  AccountSetup setup(to);
  CopyOutcome outcome = CopyRows(*source, from.embedded, setup.connection(), options, tool);
  setup.Finish();
  return outcome;
}

void Tell(const CopyOptions& options, const CopyOutcome& outcome, Tool& tool) {
  if (options.json) {
    Json tables = Json::object();
    for (const auto& [table, rows] : outcome.copied) tables[table] = rows;
    tool.out << JsonLine({{"tables", tables}, {"notCopied", outcome.left}}) << '\n';
    return;
  }
  Table table({{"Table"}, {"Rows", true}});
  for (const auto& [name, rows] : outcome.copied) table.Add({name, std::to_string(rows)});
  table.Print(tool.out, tool.width);
  tool.out << "Copied " << NameOf(options.from) << " to " << NameOf(options.to)
           << "; all rows were read again and are the same.\n";
  if (outcome.left.empty()) return;
  tool.err << "note: not copied, being no tables or views of an account:";
  for (const Text& name : outcome.left) tool.err << ' ' << name;
  tool.err << '\n';
}

void Copy(const CopyOptions& options, Tool& tool) {
  Tell(options, RunCopy(options, tool), tool);
}

}  // namespace

void AddCopyVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<CopyOptions>();
  CLI::App* verb = app.add_subcommand("copy", "Copy a whole account to another data source, all ids kept");
  verb->add_option("FROM", options->from, "The account: a file such as shop.db, or Key=Value;… text")
      ->required()
      ->type_name("");
  verb->add_option("TO", options->to, "A new file, an empty database or an account without rows of its own")
      ->required()
      ->type_name("");
  verb->add_flag("--json", options->json, "Print JSON");
  verb->footer(
      "One unit of work: the target holds all of it, compared row by row, or what it held. Tables and views that\n"
      "aren't an account's stay behind and are named; `rebate backup` takes them along, from file to file.\n"
      "Examples: rebate copy shop.db 'Driver=FreeTDS;Server=…;Database=shop;UID=rebate;PasswordFile=…'\n"
      "          rebate copy 'DSN=shop;UID=rebate;PasswordEnv=SHOP_PASSWORD' shop.db");
  verb->callback([options, &tool] { Copy(*options, tool); });
}

}  // namespace rebate
