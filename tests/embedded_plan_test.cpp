#include <random>

#include "platform/database/embedded/functions.h"
#include "platform/database/embedded/session.h"
#include "platform/database/tsql/parse/parser.h"
#include "platform/database/tsql/print/command.h"
#include "tests/embedded_kit.h"

namespace rebate {
namespace {

// Asks SQLite how it would run what a statement is printed as.
class EmbeddedPlan : public EmbeddedTest {
 protected:
  EmbeddedPlan() {
    MakeSchema();
    sqlite3* database = nullptr;
    sqlite3_open(path_.c_str(), &database);
    RegisterFunctions(database);
    sqlite3_exec(database, "ATTACH ':memory:' AS tempdb", nullptr, nullptr, nullptr);
    session_ = std::make_unique<Session>(DatabaseHandle(database), path_, std::chrono::milliseconds(1000));
  }
  ~EmbeddedPlan() override { session_ = nullptr; }

  template <typename Node, typename Make>
  tsql::Command MakeFirst(std::string_view text, const Make& make) {
    ReadTemplate(text, template_);
    batch_ = tsql::Parse(text);
    tsql::BindContext context{session_->catalog(), template_.literals, variables_};
    return make(context, std::get<Node>(batch_.statements.front()->node));
  }
  tsql::Command MakeSelect(std::string_view text) {
    return MakeFirst<tsql::SelectStatement>(text,
                                            [](auto& context, const auto& node) { return MakeQuery(context, node); });
  }

  // The lines of the plan.
  std::vector<Text> Plan(const tsql::Command& command) {
    const StatementHandle query = Prepare(session_->database(), "EXPLAIN QUERY PLAN " + command.sql.text, path_);
    std::vector<Text> lines;
    while (sqlite3_step(query.get()) == SQLITE_ROW) lines.emplace_back(ColumnText(query.get(), 3));
    return lines;
  }
  static bool Has(const std::vector<Text>& plan, std::string_view beginning) {
    return std::any_of(plan.begin(), plan.end(), [&](const Text& line) { return line.starts_with(beginning); });
  }
  static Text Joined(const std::vector<Text>& plan) {
    Text text;
    for (const Text& line : plan) text += line + '\n';
    return text;
  }

  std::unique_ptr<Session> session_;
  tsql::BatchTemplate template_;
  tsql::Batch batch_;
  tsql::VariableTypes variables_;
};

constexpr const char* kOverlap =
    "SELECT FSchemeName,FItemID,FItemNumber,FItemName,FOrgIDNew,FOrgNumber,FOrgName, \r\n"
    "(CASE WHEN FOrgID=0 THEN '全部' + ISNULL(FItemClassName,'')  ELSE '' END )AS FOrgRemark\r\nFROM (\r\n"
    "    SELECT l.FSchemeName,v.FItemIDNew AS FOrgIDNew,j.FOrgNumber,j.FOrgName,v.FItemID AS FOrgID,\r\n"
    "    i.FItemID,j.FNumber AS FItemNumber,j.FName AS FItemName ,c.FName AS FItemClassName\r\n    FROM \r\n"
    "    (SELECT FSchemeID,FSchemeNo, FSchemeName FROM t_FL_SchemeList WHERE FRebateType =2041 AND FSchemeID <>7 AND "
    "FEnable =1) l \r\n"
    "    LEFT JOIN VW_FL_SchemeOrg v ON l.FSchemeID =v.FSchemeID \r\n"
    "    LEFT JOIN t_FL_AllItems i ON l.FSchemeID =i.FSchemeID \r\n"
    "    LEFT JOIN t_ItemClass  c ON v.FItemClassID =c.FItemClassID \r\n"
    "    INNER JOIN #TMP_OrgJoinItem j ON j.FOrgID=v.FItemIDNew AND j.FItemID=i.FItemID \r\n"
    "    GROUP BY l.FSchemeName,v.FItemIDNew,v.FItemID,i.FItemID,j.FOrgNumber,j.FOrgName,j.FNumber,j.FName,c.FName\r\n"
    ") X\r\nORDER BY FSchemeName,FOrgName,FItemNumber";

// What is asked for finds the organisations, they find their schemes, these their goods, and what is left of each is
// joined.
TEST_F(EmbeddedPlan, OverlapQueryStartsFromTheRequest) {
  tsql::Batch make = tsql::Parse(
      "create table #TMP_OrgJoinItem (FOrgID int, FItemClassID int, FItemID int, FOrgNumber nvarchar(255), FOrgName "
      "nvarchar(255), FNumber nvarchar(255), FName nvarchar(255))");
  const auto& create = std::get<tsql::CreateTable>(make.statements.front()->node);
  tsql::BindContext context{session_->catalog(), {}, variables_};
  session_->catalog().Create(DraftTable(context, create.elements, create.table, nullptr));
  const std::vector<Text> plan = Plan(MakeSelect(kOverlap));
  for (const char* line :
       {"SEARCH o USING INDEX t_FL_AllOrgs.IX_FL_AllOrgs_Item",
        "SEARCH o_2 USING INDEX t_FL_AllOrgs.IX_FL_AllOrgs_Item", "SEARCH t_fl_schemelist USING INTEGER PRIMARY KEY",
        "SEARCH i_3 USING INDEX t_FL_AllItems.IX_FL_AllItems_Scheme", "SCAN _of_v",
        "SEARCH _of_l USING AUTOMATIC COVERING INDEX", "SEARCH _of_i USING AUTOMATIC COVERING INDEX",
        "SEARCH j USING AUTOMATIC COVERING INDEX (FOrgID=? AND FItemID=?)"}) {
    EXPECT_TRUE(Has(plan, line)) << line << "\nis not in\n" << Joined(plan);
  }
}

TEST_F(EmbeddedPlan, KeysAndIndexesServeTheStatements) {
  struct {
    const char* text;
    const char* line;
  } cases[] = {
      {"select l.*,u.FName AS FCheckerName from t_FL_SchemeList l left join t_User u on l.FCheckerID =u.FUserID where "
       "FSchemeID=7",
       "SEARCH l USING INTEGER PRIMARY KEY"},
      {"select FSchemeName from t_FL_SchemeList where FID='7'", "SEARCH t_fl_schemelist USING INTEGER PRIMARY KEY"},
      {"select FID from t_FL_RebateRange where FClassTypeID=2040 and FSchemeID='7'",
       "SEARCH t_fl_rebaterange USING COVERING INDEX t_FL_RebateRange.IX_FL_RebateRange_Type (FClassTypeID=? AND "
       "FSchemeID=?)"},
      {"select o.*,ISNULL(i.FNumber,'') as FNumber from t_FL_AllOrgs o left join t_Item i on i.FItemClassID "
       "=o.FItemClassID and i.FItemID =o.FItemID where FSchemeID=7 order by o.FRowID,i.FNumber",
       "SEARCH o USING INDEX t_FL_AllOrgs.IX_FL_AllOrgs_Scheme (FSchemeID=?)"},
      {"select distinct FSchemeID from VW_FL_SchemeOrg where FSchemeID in (1,2)",
       "SEARCH o USING COVERING INDEX t_FL_AllOrgs.IX_FL_AllOrgs_Scheme (FSchemeID=?)"},
      {"SELECT TOP 1 1  FROM t_FL_SchemeList WHERE FSchemeName ='a name' AND FSchemeID <>7",
       "SEARCH t_fl_schemelist USING COVERING INDEX t_FL_SchemeList.IX_FL_SchemeList_Name (FSchemeName=?)"},
      {"select a.FSchemeID from t_FL_SchemeList a where a.FEnable=1 and a.FSchemeID in (SELECT DISTINCT FSchemeID FROM "
       "VW_FL_SchemeOrg Where (1=1) And FNumber >= 'S01' And FNumber <= 'S01')",
       "SEARCH a USING INTEGER PRIMARY KEY"},
      {"SELECT DISTINCT FSchemeID FROM VW_FL_SchemeOrg Where FSchemeID in (select FSchemeID from VW_FL_SchemeOrg where "
       "FNumber >= 'S01' And FNumber <= 'S01')",
       "SEARCH i_3 USING INDEX t_Item.IX_Item_Number (FNumber>? AND FNumber<?)"},
      {"select a.FSchemeID,o.FItemID from t_FL_SchemeList a left join (SELECT DISTINCT FSchemeID, FItemClassID, "
       "FItemID "
       "FROM t_FL_AllOrgs) o on a.FSchemeID=o.FSchemeID where a.FEnable=0",
       "SEARCH t_fl_allorgs USING COVERING INDEX t_FL_AllOrgs.IX_FL_AllOrgs_Scheme (FSchemeID=?) LEFT-JOIN"},
      {"select l.FSchemeName from t_FL_SchemeList l inner join (select FRebateType from t_FL_SchemeList where "
       "FSchemeID "
       "=7) e on l.FRebateType=e.FRebateType where l.FEnable=1 and l.FSchemeID<>7",
       "SEARCH l USING INDEX t_FL_SchemeList.IX_FL_SchemeList_Type (FEnable=? AND FRebateType=?)"},
  };
  for (const auto& one : cases) {
    const std::vector<Text> plan = Plan(MakeSelect(one.text));
    EXPECT_TRUE(Has(plan, one.line)) << one.text << '\n' << Joined(plan);
  }
  const auto update = MakeFirst<tsql::Update>(
      "update l set l.FEnable =0 from t_FL_SchemeList l inner join (select FRebateType from t_FL_SchemeList where "
      "FSchemeID =7) e on l.FRebateType=e.FRebateType where l.FEnable =1 and l.FSchemeID<>7",
      [](auto& context, const auto& node) { return MakeUpdate(context, node); });
  EXPECT_FALSE(Has(Plan(update), "SCAN")) << Joined(Plan(update));
}

// What an index changes in a statement's plan, it doesn't change in its answer: doubles and Nulls count as before.
TEST_F(EmbeddedPlan, IndexesChangeNoAnswer) {
  const char* queries[] = {
      "select k.a,o.a,o.b,o.n from k left join (select distinct a,b,n from t) o on k.a=o.a order by k.a,o.b,o.n",
      "select k.a,o.b,o.n from k inner join (select distinct a,b,n from t) o on k.a=o.a and o.b>1 order by k.a,o.b,o.n",
      "select k.a from k where k.a in (select distinct a from v where n>='B' and n<='b ') and k.b=1 order by k.a",
      "select k.a from k where k.a in (select distinct a from v where n>='a' and n<='C') and k.b=1 order by k.a",
      "select k.a,k.b,j.c from k left join v on k.a=v.a left join t on t.a=k.a and t.b=v.b inner join #j j on j.b=v.b "
      "and "
      "j.n=t.n order by k.a,k.b,j.c",
      "select k.b,v.n,j.c from k left join v on k.a=v.a left join t on t.a=k.a inner join #j j on j.b=v.b and j.n=t.n "
      "group by k.b,v.n,j.c order by k.b,v.n,j.c",
      "select v.b,count(*),max(t.b) from k left join v on k.a=v.a left join t on t.a=k.a left join u on u.b=v.b "
      "inner "
      "join "
      "#j j on j.b=v.b group by v.b order by v.b",
      "select k.a from k where exists (select 1 from (select t.b from t where t.a=k.a) x inner join #j j on j.b=x.b) "
      "order by k.a",
      "select k.a,o.c from k left join (select distinct t.a,t.b,t.n as c from t) o on k.a=o.a where k.b in (select "
      "distinct b from #j) order by k.a,o.b,o.c",
  };
  Run("create table k (a int not null, b int) create table t (a int, b int, n nvarchar(20)) create table u (b int) "
      "create table #j (b int, n nvarchar(20), c int) insert into u values (1), (1), (2)");
  Run("create view v as select a,b,n from t where b<>0 union all select t.a,u.b,t.n from t inner join u on u.b>t.b "
      "where "
      "t.b=0");
  std::mt19937 random(20260103);
  const auto one_of = [&](std::initializer_list<const char*> values) {
    return values.begin()[random() % values.size()];
  };
  for (int i = 0; i < 12; ++i)
    Run("insert into k values (" + std::to_string(i) + ',' + one_of({"0", "1", "null"}) + ')');
  for (int i = 0; i < 80; ++i) {
    Run(Text("insert into t values (") + one_of({"0", "1", "2", "3", "11", "null"}) + ',' +
        one_of({"0", "1", "2", "null"}) + ',' + one_of({"'a'", "'B'", "'b'", "'b '", "'Ｂ'", "'c'", "'马'", "null"}) +
        ')');
  }
  for (int i = 0; i < 9; ++i) {
    Run(Text("insert into #j values (") + one_of({"1", "2", "3", "null"}) + ',' +
        one_of({"'b'", "'A'", "'c'", "null"}) + ',' + std::to_string(i / 2) + ')');
  }
  std::vector<Text> before;
  for (const char* query : queries) before.push_back(Rows(query));
  Run("create unique index IK on k (a) create index IT on t (a,b,n) create index IB on t (b,n) create index INB on t "
      "(n,b) create index IU on u (b)");
  for (std::size_t i = 0; i < before.size(); ++i) {
    EXPECT_EQ(Rows(queries[i]), before[i]) << queries[i];
    EXPECT_GT(before[i].size(), 4u) << queries[i];
  }
}

// A top leaves the sorting to the engine.
TEST_F(EmbeddedPlan, RowsSortTheSameByWhomeverTheyAreSorted) {
  const char* texts[] = {"'B10'", "'b2'",    "'B2 '",   "N'Ｂ2'", "'a-1'", "'a.1'", "'a1'",         "''",
                         "null",  "N'促销'", "N'阿胶'", "'z'",    "'9'",   "'10'",  "'abcdefgh10'", "'abcdefgh9'"};
  const char* dates[] = {"null", "'1899-12-29 18:00'", "'1899-12-29 06:00'", "'1899-12-30 06:00'", "'2026-02-28'"};
  std::mt19937 random(3);
  for (const bool plain : {false, true}) {  // where all texts are plain, they sort by their beginnings first
    Run("create table t_o (id int not null primary key, t nvarchar(20), d datetime, n int, f bit)");
    for (int id = 1; id <= 300; ++id) {
      const Text text = plain ? "'" + std::to_string(random() % 100) + " x'" : texts[random() % std::size(texts)];
      Run("insert into t_o values (" + std::to_string(id) + "," + text + "," + dates[random() % std::size(dates)] +
          "," + (random() % 5 == 0 ? "null" : std::to_string(static_cast<int>(random() % 7) - 3)) + "," +
          std::to_string(random() % 2) + ")");
    }
    for (const char* order : {"t,id", "t desc,n,id desc", "d,f desc,t,id", "n desc,d desc,id", "2,4,1"}) {
      const Text rest = Text(" id,t,d,n,f from t_o order by ") + order;
      EXPECT_EQ(Rows("select" + rest), Rows("select top 1000" + rest)) << order;
    }
    Run("drop table t_o");
  }
}

}  // namespace
}  // namespace rebate
