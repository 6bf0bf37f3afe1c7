#include "client/sql_session.h"

#include <istream>
#include <ostream>
#include <utility>

#include "client/suggestion.h"
#include "client/tool.h"
#include "model/account_script.h"
#include "platform/automation/conversion.h"
#include "platform/automation/error.h"
#include "platform/files/files.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

constexpr const char* kHelp =
    "A line GO, or a ; at the end of a line, runs what was typed; GO 5 runs it five times.\n"
    ".tables         lists the tables and views\n"
    ".schema [NAME]  shows the columns of a table or view, or of all\n"
    ".mode MODE      prints rows as table, line (a line a column), csv or json\n"
    ".read FILE      runs a file\n"
    ".clear          forgets what was typed and not run\n"
    ".quit           ends\n";

constexpr const char* kTables =
    "select TABLE_NAME as Name, TABLE_TYPE as Type from INFORMATION_SCHEMA.TABLES order by TABLE_NAME";
constexpr const char* kColumns =
    "select TABLE_NAME as [Table], COLUMN_NAME as [Column], DATA_TYPE + case when CHARACTER_MAXIMUM_LENGTH is not null "
    "then '(' + cast(CHARACTER_MAXIMUM_LENGTH as varchar(10)) + ')' when DATA_TYPE = 'decimal' then '(' + "
    "cast(NUMERIC_PRECISION as varchar(10)) + ',' + cast(NUMERIC_SCALE as varchar(10)) + ')' else '' end as Type, "
    "IS_NULLABLE as Nulls from INFORMATION_SCHEMA.COLUMNS ";

const std::vector<Text> kCommands = {".tables", ".schema", ".mode", ".read", ".clear", ".quit", ".exit", ".help"};

bool IsGo(std::string_view line) {
  const std::string_view word = Trim(line);
  return word.size() >= 2 && EqualsIgnoreCase(word.substr(0, 2), "go") && (word.size() == 2 || word[2] == ' ');
}

class SqlSession {
 public:
  SqlSession(Connection& connection, SqlView view, Tool& tool) : connection_(connection), view_(view), tool_(tool) {}

  void Run() {
    while (!ended_) {
      const std::optional<Text> line = ReadLine(typed_.empty() ? "sql> " : "  -> ");
      if (!line) {
        tool_.out << '\n';
        return;
      }
      try {
        Take(*line);
      } catch (const std::exception& error) {
        typed_.clear();
        tool_.out.flush();
        tool_.err << error.what() << std::endl;
      }
    }
  }

 private:
  std::optional<Text> ReadLine(const Text& prompt) {
    tool_.out.flush();
    if (tool_.read_line) return tool_.read_line(prompt);
    tool_.out << prompt << std::flush;
    Text line;
    if (!std::getline(tool_.in, line)) return std::nullopt;
    if (line.ends_with('\r')) line.pop_back();
    return line;
  }

  void Take(const Text& line) {
    const std::string_view words = Trim(line);
    if (words.starts_with('.') && (typed_.empty() || words == ".clear" || words == ".quit")) {
      const std::size_t blank = words.find(' ');
      return Command(Text(words.substr(0, blank)),
                     blank == std::string_view::npos ? Text() : Text(Trim(words.substr(blank))));
    }
    if (typed_.empty() && words.empty()) return;
    typed_ += line + "\n";
    if (IsGo(line) || words.ends_with(';')) RunScript(std::exchange(typed_, {}));
  }

  void RunScript(const Text& script) {
    for (const ScriptBatch& batch : Batches(script)) ShowBatch(connection_, batch, view_, tool_);
  }

  void Command(const Text& name, const Text& argument) {
    if (name == ".help") {
      tool_.out << kHelp;
    } else if (name == ".quit" || name == ".exit") {
      ended_ = true;
    } else if (name == ".clear") {
      typed_.clear();
    } else if (name == ".tables") {
      RunScript(kTables);
    } else if (name == ".schema") {
      ShowColumns(argument);
    } else if (name == ".mode") {
      SetMode(argument);
    } else if (name == ".read") {
      ReadFile(argument);
    } else {
      const Text near = DidYouMean(name, kCommands);
      Refuse("There is no command " + name + (near.empty() ? "; .help lists them" : near));
    }
  }

  void ShowColumns(const Text& name) {
    if (name.empty()) return RunScript(Text(kColumns) + "order by TABLE_NAME, ORDINAL_POSITION");
    std::vector<Text> names;
    for (const RecordsetRef rows = connection_.Execute(kTables); !rows->Eof(); rows->MoveNext()) {
      names.push_back(ToText(rows->FieldValue("Name")));
    }
    for (const Text& table : names) {
      if (!EqualsIgnoreCase(table, name)) continue;
      return RunScript(Text(kColumns) + "where TABLE_NAME = '" + Replace(table, "'", "''") +
                       "' order by ORDINAL_POSITION");
    }
    const Text near = DidYouMean(name, names);
    Refuse("There is no table or view " + name + (near.empty() ? "; .tables lists them" : near));
  }

  void SetMode(const Text& mode) {
    if (mode == "table") {
      view_.form = RowForm::Table;
    } else if (mode == "line") {
      view_.form = RowForm::Line;
    } else if (mode == "csv") {
      view_.form = RowForm::Csv;
    } else if (mode == "json") {
      view_.form = RowForm::Json;
    } else {
      Refuse(".mode takes table, line, csv or json" + DidYouMean(mode, {"table", "line", "csv", "json"}));
    }
  }

  void ReadFile(const Text& path) {
    const std::optional<Text> script = files::ReadWhole(path);
    if (!script) Refuse("Can't read " + (path.empty() ? "a file without a name" : path));
    RunScript(*script);
  }

  [[noreturn]] static void Refuse(const Text& reason) { throw Error(error_number::kInvalidCall, "rebate sql", reason); }

  Connection& connection_;
  SqlView view_;
  Tool& tool_;
  Text typed_;
  bool ended_ = false;
};

}  // namespace

void RunSqlSession(Connection& connection, const Text& account, SqlView view, Tool& tool) {
  tool.out << "On " << account
           << ". GO or a ; at the end of a line runs what was typed; .help tells more, .quit ends.\n";
  SqlSession(connection, view, tool).Run();
}

}  // namespace rebate
