#include <filesystem>

#include "platform/values/ascii.h"
#include "platform/values/encoding.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

constexpr const char* kKinds[] = {"units", "users", "suppliers", "customers", "employees", "goods"};

class ClientImport : public ToolTest {
 protected:
  // All master data of an account.
  static Text MasterData(const Text& dsn) {
    Text all;
    for (const char* table : {"t_ItemClass", "t_User", "t_Supplier", "t_Organization", "t_Emp", "t_MeasureUnit",
                              "t_ICItem", "t_ItemUnit", "t_Item"}) {
      all += RunRebate({"sql", dsn, Text("select * from ") + table + " order by 1, 2", "--json"}).out;
    }
    return all;
  }
  Outcome Import(const Text& kind, const Text& content, std::vector<Text> more = {}) {
    more.insert(more.begin(), {"import", kind, File("import.csv", content)});
    return Run(more);
  }
  Text Query(const Text& text) { return RunRebate({"sql", dsn_, text, "--csv"}).out; }
};

TEST_F(ClientImport, WhatIsExportedComesBackUnchanged) {
  Sql("insert into t_Supplier (FItemID, FNumber, FName, FRightUserID, FDeleted) values (901, N'007', N'a\"b, \"\"c', "
      "null, 1), (902, N' x ', N'', N'', 0), (903, N'y''z', null, '12,', 0), (904, N'一', N'"
      "两行\r\n三\n\r', null, 0)\n"
      "insert into t_Item select 8, FItemID, FNumber, FName, FRightUserID from t_Supplier where FItemID > 900\n"
      "insert into t_MeasureUnit values (11, N'a;b', N'#'), (12, N' pcs', null), (13, null, N''), (14, N'#1', N'x')\n"
      "insert into t_ItemUnit values (401, 11), (401, 12), (401, 13), (402, 14)\n"
      "insert into t_User values (7, null), (1002002, N'Administrator')");
  const Text before = MasterData(dsn_);
  const Text fresh = account_.File("fresh.db");
  ASSERT_EQ(RunRebate({"init", fresh}).status, 0);
  for (const Text kind : kKinds) {
    const Text path = account_.File(kind + ".csv");
    ASSERT_EQ(Run({"export", kind, path, "--bom"}).status, 0);
    const Outcome again = Run({"import", kind, path, "--json"});
    EXPECT_TRUE(Holds(again.out, R"("inserted":0,"updated":0,)")) << kind << again.out << again.err;
    if (kind == "users") Sql("delete from t_User where FUserID > 32767");  // nobody could log in as a new one
    Run({"export", kind, path});
    const Outcome moved = RunRebate({"import", kind, path, "--dsn", fresh});
    EXPECT_EQ(moved.status, 0) << kind << moved.err;
  }
  Sql("insert into t_User values (1002002, N'Administrator')");
  EXPECT_EQ(MasterData(dsn_), before);
  Sql("delete from t_User where FUserID > 32767");
  EXPECT_EQ(MasterData(fresh), MasterData(dsn_));
}

TEST_F(ClientImport, RowsAreFoundByNumberAndKeptInStepWithTheirItems) {
  Sql("delete from t_Item where FItemID = 803\nupdate t_Item set FName = N'old' where FItemID = 804\n"
      "insert into t_Item values (8, 990, N'S990', N'lone', null)\ninsert into t_ItemUnit values (1000, 3), (1001, 3)");
  const Outcome done = Import("suppliers",
                              "名称,权限用户,代码\n新,1;1001,ｓ００１\n,,S002\n杭州清源饮品有限公司,\",1,1002,\",S003\n"
                              "青岛海岸食品有限公司,\",1,1001,1003,\",S004\n孤,,S990\n甲,1 ; 2,000\n,,\n乙,,T2\n");
  EXPECT_EQ(done.out, "Imported suppliers: 2 new, 5 changed, 0 as they were.\n") << done.err;
  EXPECT_EQ(Query("select FItemID, FNumber, FName, FDeleted, FRightUserID from t_Supplier where FItemID < 805 or "
                  "FItemID > 808 order by 1"),
            "FItemID,FNumber,FName,FDeleted,FRightUserID\n801,ｓ００１,新,0,\",1,1001,\"\n802,S002,,0,\n"
            "803,S003,杭州清源饮品有限公司,0,\",1,1002,\"\n804,S004,青岛海岸食品有限公司,0,\",1,1001,1003,\"\n"
            "990,S990,孤,0,\n991,000,甲,0,\",1,2,\"\n992,T2,乙,0,\n");
  const Text differing =
      "select count(*) from t_Supplier s full join t_Item i on i.FItemID = s.FItemID and i.FItemClassID = 8 where "
      "isnull(s.FNumber, '') + '|' + isnull(s.FName, '') + '|' + isnull(s.FRightUserID, '') <> isnull(i.FNumber, '') + "
      "'|' + isnull(i.FName, '') + '|' + isnull(i.FRightUserID, '') and (s.FItemID is not null or i.FItemClassID = 8)";
  EXPECT_TRUE(Holds(Query(differing), "\n0\n")) << Query(differing);
  const Outcome goods = Import("goods", "Number,Units,ID\nG001,BOX; DZ,\nN1,PCS,\nN2,PCS,1001\nG002,,402\n");
  EXPECT_EQ(goods.out, "Imported goods: 2 new, 2 changed, 0 as they were.\n") << goods.err;
  EXPECT_EQ(Query("select * from t_ItemUnit where FSrcItemId in (401, 402) or FSrcItemId > 500 order by 1, 2"),
            "FSrcItemId,FItemID\n401,2\n401,10\n1000,3\n1001,1\n1002,1\n");
  EXPECT_EQ(Import("users", "Name,ID\n审计,\n财务总监,1003\n采购主管,\n").out,
            "Imported users: 1 new, 1 changed, 1 as they were.\n");
  EXPECT_TRUE(Holds(Query("select * from t_User where FUserID > 1002"), "1003,财务总监\n1004,审计\n"));
}

TEST_F(ClientImport, EveryBadLineIsToldAndNothingStored) {
  const Text long_text(256, 'x');
  Sql("insert into t_Supplier (FItemID, FNumber) values (990, 'S001')");
  const struct {
    const char* kind;
    Text content;
    Text said;
  } cases[] = {
      {"suppliers", "", "line"},
      {"suppliers", "Name\nx\n", "there is no column Number, by which suppliers are found"},
      {"suppliers", "Number,Model,number\n", "line 1, column 2 (Model): suppliers have no such column; they have ID, "},
      {"suppliers", "Number,Model,number\n", "line 1, column 3 (number): the column is there twice"},
      {"suppliers", "Number;Name\n", "(Number;Name): suppliers have no such column"},
      {"suppliers", "Number,Name\nA\nB,b\nC,c,c\n", "line 2 has 1 cell where 2 are due\nX: line 4 has 3 cells"},
      {"suppliers", "Number,Name\r\n\r\nA,\"x\r\ny\"\r\nA,\r\n",
       "line 5, column 1 (Number): A stands in line 3 already"},
      {"suppliers", "Number,Name\nA,x\n\xEF\xBC\xA1 ,y\n", "line 3, column 1 (Number): \xEF\xBC\xA1 stands in line 2"},
      {"suppliers", "Number,Name\n\"\",x\n", "line 2, column 1 (Number): nothing stands there"},
      {"suppliers", "Number,Name\nA,\"b\nC,d\n", "line 2, character 3: the quotation mark isn't closed"},
      {"suppliers", "Number,Name\n商,\"b\"c\n", "line 2, character 6: a comma is due"},
      {"suppliers", "Number,Name\nA,b\"c\"\n", "line 2, character 4: a cell that holds a quotation mark"},
      {"suppliers", "Number,ID\nA,x\nB,0\nC,99999999999\n", "(ID): x is no id"},
      {"suppliers", "Number,Name\nA," + long_text + "\n", "(Name): the text has 256 characters, and may have 255"},
      {"suppliers", "Number,Deleted\nA,maybe\n", "(Deleted): maybe is neither 0 (no) nor 1 (yes)"},
      {"suppliers", "Number,Rights\nA,1;all\n", "(Rights): 1;all is no list of user ids"},
      {"suppliers", "Number,ID\nA,801\n", "in the account 801 is the id of supplier S001, not of A"},
      {"suppliers", "Number,ID\nS002,700\n", "S002 has another id than 700 in the account: 802"},
      {"suppliers", "Number\nS001\n", "several suppliers of the account are S001; an id tells which is meant"},
      {"suppliers", "Number,ID\nA,401\n", "401 is the id of another item, a goods item"},
      {"suppliers", "Number,ID\nA,1000\nB,1000\n", "line 3, column 1 (Number): supplier 1000 stands in line 2 already"},
      {"suppliers", "Number,ID\nS003,803\nS003,\n", "line 3, column 1 (Number): S003 stands in line 2 already"},
      {"suppliers", "Number,ID\nA,2147483647\nB,\n", "there are no 1 free ids behind 2147483647"},
      {"goods", "Number,Units\nG001,PCS;XX\n", "(Units): there is no unit XX; units are imported first"},
      {"users", "Name,ID\nx,40000\n", "an id is at most 32767, unlike 40000"},
      {"customers", Text("Number,Name\nA,x\0y\n", 18), "(Name): a character with the code 0"},
  };
  const Text before = MasterData(dsn_);
  for (const auto& one : cases) {
    const Outcome refused = Import(one.kind, one.content);
    const Text said = Replace(one.said, "X:", account_.File("import.csv") + ":");
    EXPECT_EQ(refused.status, 1) << one.said;
    EXPECT_TRUE(Holds(refused.err, said)) << one.said << "\n" << refused.err;
    EXPECT_TRUE(Holds(refused.err, "Nothing was imported.")) << refused.err;
  }
  Text many = "Number\n";
  for (int i = 0; i < 120; ++i) many += "S001\n";
  EXPECT_TRUE(Holds(Import("suppliers", many).err, "and 20 more problems\n"));
  Import("suppliers", "Number,Name\nS002,x\nS0099,y\n", {"--check"});
  EXPECT_EQ(MasterData(dsn_), before);
  EXPECT_EQ(Run({"import", "suplier", "x.csv"}).status, 2);
  EXPECT_EQ(RunRebate({"export", "suppliers", "--dsn", "Data Source=" + dsn_ + ";Rights=8"}).status, 1);
}

TEST_F(ClientImport, AFailureHalfWayUndoesAll) {
  Sql("drop table t_Item\ncreate table t_Item (FItemClassID int not null, FItemID int not null, FNumber nvarchar(3), "
      "FName nvarchar(255), FRightUserID nvarchar(255))");
  const Text before = MasterData(dsn_);
  const Outcome refused = Import("customers", "Number,Name\nC1,x\nC2345,y\n");
  EXPECT_EQ(refused.status, 1) << refused.out;
  EXPECT_TRUE(Holds(refused.err, "truncated")) << refused.err;
  EXPECT_EQ(MasterData(dsn_), before);
}

TEST_F(ClientImport, EncodingsAreToldApart) {
  try {
    FromGb18030("");
  } catch (const std::exception& error) {
    GTEST_SKIP() << error.what();
  }
  const Text wide = "\xB1\xE0\xBA\xC5,\xC3\xFB\xB3\xC6\nS001,\xC9\xCC\xC6\xB7\x95\x32\x82\x36\n";  // 编号,名称 / 商品𠀀
  const Text name = "select FName from t_Supplier where FItemID = 801";
  for (const std::vector<Text>& more : {std::vector<Text>{}, {"--encoding", "gb18030"}}) {
    Sql("update t_Supplier set FName = N'x' where FItemID = 801");
    const Outcome done = Import("suppliers", wide, more);
    EXPECT_EQ(done.status, 0) << done.err;
    EXPECT_EQ(Query(name), "FName\n商品𠀀\n");
  }
  const struct {
    Text content;
    std::vector<Text> more;
    const char* said;
  } cases[] = {{wide, {"--encoding", "utf-8"}, "what stands at line 1, character 1 is no UTF-8"},
               {"\xEF\xBB\xBF" + wide, {}, "line 1, character 1 is no UTF-8"},
               {wide + "A,\xC9\xCC\xFF\n", {}, "neither UTF-8 nor GB18030: what stands at line 3, character 4 is no"},
               {"Number,Name\nS001,商品\xE5\x95\n", {}, "the file is UTF-8, but what stands at line 2, character 8"},
               {wide + "A,\xC9\xCC\x81", {}, "line 3, character 4 is no GB18030"}};
  for (const auto& one : cases) {
    const Outcome refused = Import("suppliers", one.content, one.more);
    EXPECT_EQ(refused.status, 1) << one.said;
    EXPECT_TRUE(Holds(refused.err, one.said)) << refused.err;
  }
}

}  // namespace
}  // namespace rebate
