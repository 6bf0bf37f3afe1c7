#include "tests/faults/operations.h"

#include <sqlite3.h>

#include <fstream>
#include <map>
#include <stdexcept>

#include "platform/database/embedded/functions.h"
#include "platform/database/embedded/sqlite_handles.h"
#include "platform/values/ascii.h"
#include "tests/faults/faulty_disk.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

void Do(std::vector<Text> arguments) {
  const Outcome done = RunRebate(std::move(arguments));
  if (done.status != 0) throw std::runtime_error("The account can't be prepared: " + done.err);
}

DatabaseHandle OpenSoundly(const Text& path) {
  sqlite3* raw = nullptr;
  const int result = sqlite3_open_v2(path.c_str(), &raw, SQLITE_OPEN_READWRITE, SoundDisk());
  DatabaseHandle database(raw);
  if (result != SQLITE_OK) throw std::runtime_error("The account can't be opened");
  RegisterFunctions(raw);
  return database;
}

// Each row on a line, its fields behind bars.
void AddRows(sqlite3* database, const Text& table, Text& text) {
  const StatementHandle rows = Prepare(database, "SELECT * FROM \"" + table + "\"", "");
  const int columns = sqlite3_column_count(rows.get());
  text += table + "\n";
  int result = sqlite3_step(rows.get());
  for (; result == SQLITE_ROW; result = sqlite3_step(rows.get())) {
    for (int i = 0; i < columns; ++i) {
      if (std::string_view(sqlite3_column_name(rows.get(), i)) == "FModifyDate") continue;
      const bool null = sqlite3_column_type(rows.get(), i) == SQLITE_NULL;
      text.append("|").append(null ? "NULL" : ColumnText(rows.get(), i));
    }
    text += "\n";
  }
  if (result != SQLITE_DONE) throw SqliteError(database, result, table);
}

}  // namespace

bool Operation::IsFailure(const Json& answer) const {
  if (!fails) return false;
  if (*fails == "error") return answer.contains("error");
  if (!answer.contains("result")) return false;
  const Json& result = answer["result"];
  if (!fails->is_object()) return result == *fails || (fails_late && result == *fails_late);
  // A scheme that overlaps is refused for a reason.
  if (result.contains("Err") && !result["Err"].get<Text>().starts_with("错误号")) return false;
  for (const auto& [key, value] : fails->items()) {
    if (!result.is_object() || !result.contains(key) || result[key] != value) return false;
  }
  return true;
}

std::vector<Operation> AllOperations() {
  std::ifstream lines(REBATE_SOURCE_DIR "/tests/faults/operations.jsonl");
  std::vector<Operation> operations;
  std::map<Text, int> seen;
  for (Text line; std::getline(lines, line);) {
    const Json json = ParseJson(line);
    Operation operation;
    operation.request = {{"op", json["op"]}, {"args", json["args"]}};
    if (json.contains("fails")) operation.fails = json["fails"];
    if (json.contains("fails_late")) operation.fails_late = json["fails_late"];
    operation.completes = json.contains("completes");
    operation.warm =
        json.contains("warm") ? json["warm"].get<std::vector<Json>>() : std::vector<Json>(1, operation.request);
    const Text name = json["op"].get<Text>();
    const int times = ++seen[name];
    operation.name = Replace(name, ".", "_") + (times == 1 ? "" : std::to_string(times));
    operations.push_back(std::move(operation));
  }
  return operations;
}

void MakeFaultAccount(const Text& path) {
  Do({"init", path, "--sample"});
  const auto on_account = [&](std::vector<Text> arguments) {
    arguments.insert(arguments.end(), {"--dsn", "Data Source=" + path + ";AppUser=1001"});
    Do(std::move(arguments));
  };
  on_account({"save", Example("supplier_goods")});
  on_account({"save", Example("supplier_total")});
  on_account({"form", "save", Example("form")});
  on_account({"disable", "2"});
  on_account({"save", Example("supplier_total")});
  on_account({"ranges", "2040", "--set", Example("ranges")});
  on_account({"select", "2040", "803", "804"});
  on_account({"rates", "2040", "--set", Example("rates")});
}

Text RowsOfAccount(const Text& path) {
  const DatabaseHandle database = OpenSoundly(path);
  Text text;
  RowQuery tables(database.get(), path,
                  "SELECT name FROM sqlite_master WHERE type='table' AND name NOT LIKE 'sqlite%'");
  while (tables.Next()) AddRows(database.get(), tables.TextAt(0), text);
  return text;
}

}  // namespace rebate
