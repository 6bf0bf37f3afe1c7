#include <random>

#include "platform/database/embedded/functions.h"
#include "platform/database/embedded/session.h"
#include "platform/database/tsql/parse/parser.h"
#include "platform/database/tsql/print/command.h"
#include "tests/embedded_kit.h"

namespace rebate {
namespace {

constexpr std::string_view kTooDeep =
    "Some part of your SQL statement is nested too deeply. Rewrite the query or break it up into smaller queries.";

// Whether the engine below speaks in a message, or the account shrugs its shoulders.
bool IsForeign(std::string_view message) {
  for (const std::string_view words : {"parser stack",
                                       "too many",
                                       "near \"",
                                       "Expression tree",
                                       "no such",
                                       "ambiguous column",
                                       "SQL logic",
                                       "misuse",
                                       "syntax error",
                                       "t_calc",
                                       "_query",
                                       "carry the statement out",
                                       "datatype mismatch",
                                       "unrecognized token",
                                       "wrong number",
                                       "row value",
                                       "damaged",
                                       "integer overflow",
                                       "LIKE or GLOB",
                                       "not unique",
                                       "string or blob"}) {
    if (message.find(words) != std::string_view::npos) return true;
  }
  return message.empty();
}

Text Repeated(int count, const std::function<Text(int)>& part, std::string_view separator = "") {
  Text text;
  for (int i = 0; i < count; ++i) {
    if (i > 0) text += separator;
    text += part(i);
  }
  return text;
}

// `innermost` in so many of what `around` makes.
Text Nested(int levels, Text innermost, const std::function<Text(const Text&, int)>& around) {
  for (int i = 0; i < levels; ++i) innermost = around(innermost, i);
  return innermost;
}

constexpr const char* kTable =
    "create table t_t (FID int primary key, FInt int, FBig bigint, FRate decimal(28,10), FMoney money, FReal float, "
    "FText nvarchar(50), FCode varchar(20), FDate datetime, FDay date, FFlag bit)";
constexpr const char* kRows =
    "insert into t_t values (1, 7, 5000000000, 12.5, 3.1415, 0.25, N'苹果', 'S03', '2024-02-29 13:05:06', "
    "'2024-02-29', "
    "1), (2, -3, null, 0.1, null, 1e10, 'Alpha ', '12', null, null, 0), (3, null, 0, null, 0, null, null, null, "
    "'1999-12-31', '1999-12-31', null)";

// ---- statements drawn at random ----

// Texts of Transact-SQL, with the nodes that their trees have.
class Drawn {
 public:
  explicit Drawn(std::mt19937& random) : random_(random) {}

  Text Number(int depth) {
    ++nodes_;
    if (depth == 0) return Any({"FInt", "FBig", "FRate", "FMoney", "FReal", "FID", "FFlag", "3", "0.25", "-7", "1e2"});
    const int d = depth - 1;
    switch (Draw(14)) {
      case 0:
      case 1:
        return '(' + Number(d) + Any({"+", "-", "*", "/"}) + Number(d) + ')';
      case 2:
        return "case when " + Condition(d) + " then " + Number(d) + " else " + Number(d) + " end";
      case 3:
        return "case " + Number(d) + " when " + Number(d) + " then " + Number(d) + " when " + Number(d) + " then " +
               Number(d) + " end";
      case 4:
        return "coalesce(" + Number(d) + ',' + Number(d) + ',' + Number(d) + ')';
      case 5:
        return "nullif(" + Number(d) + ',' + Number(d) + ')';
      case 6:
        return "isnull(" + Number(d) + ',' + Number(d) + ')';
      case 7:
        return "cast(" + Number(d) + Any({" as decimal(20,4))", " as int)", " as money)", " as float)", " as bigint)"});
      case 8:
        return Any({"abs(", "sign(", "floor(", "ceiling("}) + Number(d) + ')';
      case 9:
        return "round(" + Number(d) + ",1)";
      case 10:
        return "len(" + String(d) + ')';
      case 11:
        return "datediff(day," + Date(d) + ',' + Date(d) + ')';
      case 12:
        return "-(" + Number(d) + ')';
      default:
        return "iif(" + Condition(d) + ',' + Number(d) + ',' + Number(d) + ')';
    }
  }

  Text String(int depth) {
    ++nodes_;
    if (depth == 0) return Any({"FText", "FCode", "'abc'", "N'苹果'", "'12'", "''"});
    const int d = depth - 1;
    switch (Draw(8)) {
      case 0:
        return '(' + String(d) + '+' + String(d) + ')';
      case 1:
        return "case when " + Condition(d) + " then " + String(d) + " else " + String(d) + " end";
      case 2:
        return "case " + String(d) + " when " + String(d) + " then " + String(d) + " else " + String(d) + " end";
      case 3:
        return "isnull(" + String(d) + ',' + String(d) + ')';
      case 4:
        return "nullif(" + String(d) + ',' + String(d) + ')';
      case 5:
        return "cast(" + (Draw(2) == 0 ? Number(d) : Date(d)) + " as varchar(40))";
      case 6:
        return "replace(" + String(d) + ',' + String(d) + ',' + String(d) + ')';
      default:
        return "left(" + String(d) + ",3)";
    }
  }

  Text Date(int depth) {
    ++nodes_;
    if (depth == 0) return Any({"FDate", "FDay", "cast('2020-05-06' as datetime)"});
    const int d = depth - 1;
    switch (Draw(4)) {
      case 0:
        return "dateadd(month,2," + Date(d) + ')';
      case 1:
        return "case when " + Condition(d) + " then " + Date(d) + " else " + Date(d) + " end";
      case 2:
        return "coalesce(" + Date(d) + ',' + Date(d) + ')';
      default:
        return "cast(" + Date(d) + " as " + Any({"date)", "datetime)", "datetime2)"});
    }
  }

  Text Condition(int depth) {
    ++nodes_;
    if (depth == 0) return Any({"FInt=7", "FText='alpha'", "FRate>0.1", "FDate is null", "FCode like 'S%'"});
    const int d = depth - 1;
    switch (Draw(10)) {
      case 0:
        return '(' + Condition(d) + " and " + Condition(d) + ')';
      case 1:
        return '(' + Condition(d) + " or " + Condition(d) + ')';
      case 2:
        return "not (" + Condition(d) + ')';
      case 3:
        return Number(d) + Any({"=", "<>", "<", ">="}) + Number(d);
      case 4:
        return String(d) + Any({"=", "<>", "<", ">="}) + String(d);
      case 5:
        return Date(d) + Any({"=", ">"}) + Date(d);
      case 6:
        return Number(d) + " in (" + Number(d) + ',' + Number(d) + ",5)";
      case 7:
        return String(d) + Any({" like ", " not like "}) + String(d);
      case 8:
        return Number(d) + " between " + Number(d) + " and " + Number(d);
      default:
        return (Draw(2) == 0 ? Number(d) : String(d)) + Any({" is null", " is not null"});
    }
  }

  Text Value(int depth) {
    switch (Draw(3)) {
      case 0:
        return Number(depth);
      case 1:
        return String(depth);
      default:
        return Date(depth);
    }
  }

  std::size_t TakeNodes() { return std::exchange(nodes_, 0); }

 private:
  std::size_t Draw(std::size_t count) { return random_() % count; }
  Text Any(std::initializer_list<const char*> texts) { return texts.begin()[Draw(texts.size())]; }

  std::mt19937& random_;
  std::size_t nodes_ = 0;
};

class StatementSize : public EmbeddedTest {
 protected:
  StatementSize() {
    Run(kTable);
    Run(kRows);
  }
  ~StatementSize() override { session_ = nullptr; }

  // What the select is printed as.
  Text Printed(std::string_view text) {
    if (!session_) {
      sqlite3* database = nullptr;
      sqlite3_open(path_.c_str(), &database);
      RegisterFunctions(database);
      sqlite3_exec(database, "ATTACH ':memory:' AS tempdb", nullptr, nullptr, nullptr);
      session_ = std::make_unique<Session>(DatabaseHandle(database), path_, std::chrono::milliseconds(1000));
    }
    tsql::BatchTemplate literals;
    ReadTemplate(text, literals);
    const tsql::Batch batch = tsql::Parse(text);
    const tsql::VariableTypes variables;
    tsql::BindContext context{session_->catalog(), literals.literals, variables};
    return MakeQuery(context, std::get<tsql::SelectStatement>(batch.statements.front()->node)).sql.text;
  }

  // The rows, or the words of the refusal.
  Text Answer(std::string_view text) {
    try {
      return Rows(text);
    } catch (const Error& error) {
      EXPECT_FALSE(IsForeign(error.description)) << error.description << '\n' << text;
      return "refused: " + error.description;
    }
  }

 private:
  std::unique_ptr<Session> session_;
};

TEST_F(StatementSize, PrintedTextGrowsWithTheTree) {
  constexpr std::size_t kMostOfNode = 120;
  std::mt19937 random(1);
  Drawn drawn(random);
  for (int i = 0; i < 600; ++i) {
    const int depth = 1 + i % 6;
    Text text = "select " + drawn.Value(depth) + " from t_t where " + drawn.Condition(depth);
    if (i % 3 == 0) text += " order by " + drawn.Value(depth);
    const std::size_t nodes = drawn.TakeNodes();
    try {
      EXPECT_LT(Printed(text).size(), 100 + kMostOfNode * nodes) << text;
    } catch (const Error& error) {
      EXPECT_FALSE(IsForeign(error.description)) << error.description << '\n' << text;
    }
    EXPECT_FALSE(Answer(text).ends_with(kTooDeep)) << text;
  }
}

// A deep expression is calculated outside of the engine, a flat one by it: both mean the same. Only which operands are
// looked at once a condition is decided isn't promised: one may meet an error that the other doesn't.
TEST_F(StatementSize, DepthChangesNoAnswer) {
  std::mt19937 random(2);
  Drawn drawn(random);
  int answered = 0;
  const auto expect_same = [&](const Text& flat, const Text& deep) {
    const Text left = Answer(flat);
    const Text right = Answer(deep);
    if (left.starts_with("refused") || right.starts_with("refused")) return;
    ++answered;
    EXPECT_EQ(left, right) << flat;
  };
  for (int i = 0; i < 600; ++i) {
    const Text value = drawn.Value(1 + i % 4);
    const Text condition = drawn.Condition(1 + i % 4);
    const Text deep = Nested(12, value, [](const Text& inner, int) { return "case when 1=1 then " + inner + " end"; });
    const Text deep_condition =
        Nested(4, condition, [](const Text& inner, int) { return "case when " + inner + " then 1 else 0 end=1"; });
    for (const char* row : {" where FID=1", " where FID=2", " where FID=3"}) {
      expect_same("select " + value + " from t_t" + row, "select " + deep + " from t_t" + row);
      expect_same("select FID from t_t" + Text(row) + " and " + condition,
                  "select FID from t_t" + Text(row) + " and " + deep_condition);
    }
  }
  EXPECT_GT(answered, 1800) << "too few of the statements have an answer";
}

// ---- large statements ----

struct Bomb {
  const char* what;
  Text text;
  Text rows;
};

class LargeStatements : public StatementSize {
 protected:
  void Check(const std::vector<Bomb>& bombs) {
    for (const Bomb& bomb : bombs) EXPECT_EQ(Answer(bomb.text), bomb.rows) << bomb.what;
  }
};

TEST_F(LargeStatements, CasesNest) {
  std::vector<Bomb> bombs;
  for (const int levels : {14, 60}) {
    const auto in_operand = [](const Text& inner, int i) {
      return "case " + inner + " when " + std::to_string(i + 1) + " then " + std::to_string(i + 2) + " else 0 end";
    };
    const auto in_then = [](const Text& inner, int) { return "case FID when 1 then " + inner + " else 0 end"; };
    const auto in_else = [](const Text& inner, int) { return "case FID when 99 then 0 else " + inner + " end"; };
    const auto in_mixed = [](const Text& inner, int i) {
      return "case " + inner + " when '" + std::to_string(i + 1) + "' then " + std::to_string(i + 2) + ".0 end";
    };
    const auto in_when = [](const Text& inner, int) { return "case FID when " + inner + " then 1 else 0 end"; };
    const Text from = " from t_t where FID=1";
    bombs.push_back({"operand", "select " + Nested(levels, "FID", in_operand) + from, std::to_string(levels + 1)});
    bombs.push_back({"then", "select " + Nested(levels, "FInt", in_then) + from, "7"});
    bombs.push_back({"else", "select " + Nested(levels, "FInt", in_else) + from, "7"});
    bombs.push_back({"when", "select " + Nested(levels, "FID", in_when) + from, "1"});
    bombs.push_back({"mixed types",
                     "select cast(" + Nested(levels, "cast(FID as decimal(9,2))", in_mixed) + " as int)" + from,
                     std::to_string(levels + 1)});
    bombs.push_back({"over a query",
                     "select " + Nested(levels, "(select max(FID) from t_t where FID=1)", in_operand) + from,
                     std::to_string(levels + 1)});
  }
  Check(bombs);
}

TEST_F(LargeStatements, ChainsAreLong) {
  const auto same = [](const char* text) { return [text](int) { return Text(text); }; };
  const auto mixed = [](int i) { return Text(i % 2 == 0 ? "3*2" : "FID*2"); };
  const auto alternate = [](int i) { return std::to_string(i + 1) + (i % 2 == 0 ? "-" : "+"); };
  const auto numbered = [](int i) { return "FID=" + std::to_string(i); };
  const auto different = [](int i) { return "FID<>" + std::to_string(i + 2); };
  const Text one = " from t_t where FID=1";
  Check({{"int", "select " + Repeated(1000, same("FID"), "+") + one, "1000"},
         {"decimal", "select " + Repeated(1000, same("0.1"), "+"), "100"},
         {"decimal column", "select " + Repeated(1000, same("FRate"), "+") + one, "12500"},
         {"float", "select " + Repeated(1000, same("FReal"), "+") + one, "250"},
         {"products in sums", "select " + Repeated(400, mixed, "+") + one, "1600"},
         {"mixed", "select " + Repeated(900, alternate) + "0" + one, "-450"},
         {"overflow", "select " + Repeated(1000, same("2147484"), "+"),
          "refused: Arithmetic overflow error converting expression to data type int."},
         {"300 texts", "select len(" + Repeated(300, same("'ab'"), "+") + ")", "600"},
         {"300 columns", "select len(" + Repeated(300, same("FCode"), "+") + ")" + one, "900"},
         {"1000 texts", "select len(" + Repeated(1000, same("FText"), "+") + ")" + one, "2000"},
         {"1000 more than fit", "select len(" + Repeated(1000, same("'abcdefghi'"), "+") + ")", "8000"},
         {"or", "select FID from t_t where " + Repeated(1000, numbered, " or "), "1;2;3"},
         {"and", "select FID from t_t where " + Repeated(1000, different, " and "), "1"},
         {"coalesce", "select coalesce(" + Repeated(400, same("null"), ",") + ",FID)" + one, "1"},
         {"branches",
          "select case FID " +
              Repeated(500,
                       [](int i) { return "when " + std::to_string(500 - i) + " then " + std::to_string(i) + " "; }) +
              "end" + one,
          "499"},
         {"items", "select top 1 " + Repeated(1000, same("FID"), ",") + one, Repeated(1000, same("1"), ",")}});
  Check(
      {{"assigned",
        "declare @s nvarchar(max) set @s='' set @s=" + Repeated(500, same("@s+'a'"), "+") + " select len(@s)", "500"}});
}

TEST_F(LargeStatements, UnionsAreLong) {
  std::vector<Bomb> bombs;
  for (const int count : {500, 1000}) {
    const auto select = [](int i) { return "select " + std::to_string(i % 700) + " as a"; };
    const auto total = [&](const Text& unions) { return "select count(*),sum(a) from (" + unions + ") x"; };
    const int distinct = std::min(count, 700);
    int sum = 0;
    for (int i = 0; i < count; ++i) sum += i % 700;
    bombs.push_back(
        {"all", total(Repeated(count, select, " union all ")), std::to_string(count) + ',' + std::to_string(sum)});
    bombs.push_back({"distinct", total(Repeated(count, select, " union ")),
                     std::to_string(distinct) + ',' + std::to_string(distinct * (distinct - 1) / 2)});
    bombs.push_back(
        {"of tables",
         "select count(*) from (" +
             Repeated(
                 count, [](int) { return Text("select FText,FRate from t_t where FID=1"); }, " union all ") +
             ") x",
         std::to_string(count)});
    bombs.push_back({"inserted",
                     "delete from t_t insert into t_t (FID) " +
                         Repeated(
                             count, [](int i) { return "select " + std::to_string(i); }, " union all ") +
                         " select count(*) from t_t",
                     std::to_string(count)});
  }
  Check(bombs);
}

TEST_F(LargeStatements, QueriesNest) {
  std::vector<Bomb> bombs;
  for (const int levels : {16, 64}) {
    const Text n = std::to_string(levels);
    bombs.push_back({"derived",
                     Nested(levels, "select FID,FInt from t_t where FID=1",
                            [](const Text& inner, int i) {
                              return "select FID,FInt+1 as FInt from (" + inner + ") x" + std::to_string(i);
                            }),
                     "1," + std::to_string(7 + levels)});
    bombs.push_back({"grouped",
                     Nested(levels, "select FID,FInt from t_t where FID=1",
                            [](const Text& inner, int) {
                              return "select FID,max(FInt) as FInt from (" + inner + ") x group by FID";
                            }),
                     "1,7"});
    bombs.push_back({"in",
                     Nested(levels, "select FID from t_t where FID=2",
                            [](const Text& inner, int) { return "select FID from t_t where FID in (" + inner + ")"; }),
                     "2"});
    bombs.push_back({"scalar",
                     "select " + Nested(levels, "2",
                                        [](const Text& inner, int) {
                                          return "(select max(FID) from t_t where FID<=" + inner + ")";
                                        }),
                     "2"});
    bombs.push_back({"scalar without tables",
                     "select " + Nested(levels, "1", [](const Text& inner, int) { return "(select 1+" + inner + ")"; }),
                     std::to_string(levels + 1)});
    bombs.push_back(
        {"not in",
         Nested(levels, "select FID from t_t where FID=2",
                [](const Text& inner, int) { return "select FID from t_t where FID not in (" + inner + ")"; }),
         levels % 2 == 0 ? "2" : "1;3"});
    bombs.push_back(
        {"unions",
         Nested(levels, "select 1 as a",
                [](const Text& inner, int) { return "select a from (" + inner + " union all select 2) x"; }),
         "1" + Repeated(levels, [](int) { return Text(";2"); })});
  }
  Check(bombs);
}

// What a query inside knows of those around it keeps it where it stands: so deep an account can't always go.
TEST_F(LargeStatements, CorrelatedQueriesNestOrAreRefused) {
  int deepest = 0;
  for (int levels = 1; levels <= 64; ++levels) {
    const Text exists = Nested(levels, "FID=1", [&](const Text& inner, int i) {
      const Text name = 'x' + std::to_string(levels - i);
      const Text around =
          i + 1 == levels ? Text() : 'x' + std::to_string(levels - i - 1) + ".FID=" + name + ".FID and ";
      return (i + 1 == levels ? "select " + name + ".FID from t_t " : "exists(select 1 from t_t ") + name + " where " +
             around + (i == 0 ? name + '.' + inner : inner) + (i + 1 == levels ? "" : ")");
    });
    const Text answer = Answer(exists);
    if (answer == "1") deepest = levels;
    EXPECT_TRUE(answer == "1" || answer == "refused: " + Text(kTooDeep)) << levels << ": " << answer;
  }
  EXPECT_GE(deepest, 8);
}

TEST_F(LargeStatements, ExpressionsAreDeep) {
  const Text one = " from t_t where FID=1";
  std::vector<Bomb> bombs;
  for (const int levels : {30, 90}) {
    const auto bracket = [](const Text& inner, int) { return '(' + inner + ')'; };
    const auto sum = [](const Text& inner, int) { return "(1+" + inner + ')'; };
    const auto replace = [](const Text& inner, int i) {
      return "replace(" + inner + ",'" + std::to_string(i) + "x','" + std::to_string(i + 1) + "x')";
    };
    const auto isnull = [](const Text& inner, int) { return "isnull(" + inner + ",0)"; };
    const auto both = [](const Text& inner, int i) {
      return '(' + inner + (i % 2 == 0 ? " and FID=1)" : " or FID=2)");
    };
    const auto both_right = [](const Text& inner, int i) {
      return Text(i % 2 == 0 ? "(FID=1 and " : "(FID=2 or ") + inner + ')';
    };
    const auto with_query = [](const Text& inner, int i) {
      return Text(i % 2 == 0 ? "(FID=1 and " : "(FID in (select 2) or ") + inner + ')';
    };
    const auto negate = [](const Text& inner, int) { return "not (" + inner + ')'; };
    const auto iif = [](const Text& inner, int) { return "iif(" + inner + "=1,1,2)"; };
    const auto minus = [](const Text& inner, int) { return "-(" + inner + ')'; };
    bombs.push_back({"brackets", "select " + Nested(levels, "FID", bracket) + one, "1"});
    bombs.push_back({"sums", "select " + Nested(levels, "FID", sum) + one, std::to_string(levels + 1)});
    bombs.push_back({"replace", "select " + Nested(levels, "'0x'", replace), std::to_string(levels) + "x"});
    bombs.push_back({"isnull", "select " + Nested(levels, "FInt", isnull) + one, "7"});
    bombs.push_back({"and or", "select FID from t_t where " + Nested(levels, "FID=1", both), "1;2"});
    bombs.push_back({"and or to the right",
                     "select FID from t_t where " + Nested(levels, "FID=1", both_right) + " order by FID", "1;2"});
    bombs.push_back({"around queries",
                     "select FID from t_t where " + Nested(levels, "FID=1", with_query) + " order by FID", "1;2"});
    bombs.push_back({"not", "select FID from t_t where " + Nested(levels, "FID=1", negate), "1"});
    bombs.push_back({"iif", "select " + Nested(levels, "FID", iif) + one, "1"});
    bombs.push_back({"minus", "select " + Nested(levels, "FID", minus) + one, "1"});
    bombs.push_back(
        {"joined",
         "select count(*) from t_t a join t_t b on " +
             Nested(levels, "a.FID=b.FID", [](const Text& inner, int) { return "(a.FBig=b.FBig or " + inner + ')'; }),
         "3"});
    bombs.push_back({"updated",
                     "update t_t set FInt=" + Nested(levels, "7", isnull) + " where " +
                         Nested(levels, "FID=1", both_right) + " select FInt from t_t",
                     "7;7;NULL"});
    bombs.push_back(
        {"assigned", "declare @i int set @i=" + Nested(levels, "1", sum) + " select @i", std::to_string(levels + 1)});
    bombs.push_back(
        {"asked",
         "if " + Nested(levels, "1=1", [](const Text& inner, int) { return "(1=2 or " + inner + ')'; }) + " select 1",
         "1"});
  }
  Check(bombs);
}

TEST_F(LargeStatements, JoinsAreMany) {
  const auto join = [](int i) {
    const Text name = 'x' + std::to_string(i);
    return " join t_t " + name + " on " + name + ".FID=x.FID";
  };
  const auto left = [&](int i) { return " left" + join(i); };
  Check({{"inner", "select x.FID from t_t x" + Repeated(40, join), "1;2;3"},
         {"left", "select x.FID from t_t x" + Repeated(40, left), "1;2;3"}});
  const Text answer = Answer("select x.FID from t_t x" + Repeated(100, join));
  EXPECT_TRUE(answer == "1;2;3" || answer == "refused: " + Text(kTooDeep)) << answer;
}

TEST_F(LargeStatements, ViewsNest) {
  Run("create view v_0 as select FID,FInt from t_t");
  const auto view = [](int i) { return "v_" + std::to_string(i); };
  for (int i = 1; i <= 32; ++i) {
    Run("create view " + view(i) + " as select FID,FInt+1 as FInt from " + view(i - 1) + " where FID<3");
    if (i == 32) break;
    EXPECT_EQ(Answer("select FInt from " + view(i) + " where FID=1"), std::to_string(7 + i));
  }
  EXPECT_EQ(Answer("select FInt from v_32"), "refused: Maximum view nesting level exceeded (limit 32).");
}

TEST_F(LargeStatements, ListsAreLong) {
  const Text ids = Repeated(
      100000, [](int i) { return std::to_string(2 * i + 1); }, ",");
  const Text texts = Repeated(
      20000, [](int i) { return "'S0" + std::to_string(i) + '\''; }, ",");
  const Text decimals = Repeated(
      20000, [](int i) { return std::to_string(i) + ".50"; }, ",");
  Check({{"in", "select FID from t_t where FID in (" + ids + ")", "1;3"},
         {"not in", "select FID from t_t where FID not in (" + ids + ")", "2"},
         {"texts", "select FID from t_t where FCode in (" + texts + ")", "1"},
         {"decimals", "select FID from t_t where FRate in (" + decimals + ")", "1"},
         {"case", "select case when FID in (" + ids + ") then 'odd' else 'even' end from t_t", "odd;even;odd"},
         {"delete", "delete from t_t where FID in (" + ids + ") select FID from t_t", "2"}});
}

TEST_F(LargeStatements, RowsAreMany) {
  Run("delete from t_t");
  Run("insert into t_t (FID,FRate,FText) values " +
      Repeated(
          1000, [](int i) { return '(' + std::to_string(i) + ',' + std::to_string(i) + ".10,'r')"; }, ","));
  EXPECT_EQ(Answer("select count(*),sum(FRate) from t_t"), "1000,499600");
}

TEST_F(LargeStatements, CommonTablesAreUsedOften) {
  const Text one = "with c as (select FID from t_t where FID<3) ";
  Check({{"joined",
          one + "select x.FID from c x" +
              Repeated(30,
                       [](int i) {
                         const Text name = 'x' + std::to_string(i);
                         return " join c " + name + " on " + name + ".FID=x.FID";
                       }),
          "1;2"},
         {"in unions",
          one + "select count(*) from (" +
              Repeated(
                  300, [](int) { return Text("select FID from c"); }, " union all ") +
              ") x",
          "600"},
         {"doubled",
          "with c0 as (select FID from t_t where FID=1)" +
              Repeated(8,
                       [](int i) {
                         const Text before = 'c' + std::to_string(i);
                         return ",c" + std::to_string(i + 1) + " as (select a.FID from " + before + " a join " +
                                before + " b on a.FID=b.FID)";
                       }) +
              " select FID from c8",
          "1"},
         {"a chain",
          "with c0 as (select FID from t_t where FID=1)" +
              Repeated(60,
                       [](int i) {
                         return ",c" + std::to_string(i + 1) + " as (select FID+1 as FID from c" + std::to_string(i) +
                                ")";
                       }) +
              " select FID from c60",
          "61"}});
}

}  // namespace
}  // namespace rebate
