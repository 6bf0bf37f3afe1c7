#include <gtest/gtest.h>

#include "platform/automation/conversion.h"
#include "tests/scheme_kit.h"

namespace rebate {
namespace {

constexpr Long kNoScheme = 0;

// The overlapping rows, the named fields of each joined with '|'; "stored" where there is no overlap.
Text Overlap(const Ref<Dictionary>& answer, std::initializer_list<const char*> fields) {
  if (answer->Value("OK") == Variant(true)) return "stored";
  EXPECT_EQ(answer->Value("Err"), Variant("存在重复方案信息"));
  const Ref<Vector> rows = ObjectAs<Vector>(answer->Value("Repeat"));
  Text text;
  for (Long i = 1; i <= rows->Size(); ++i) {
    if (i > 1) text += "\n";
    for (const char* field : fields) text += ToText(ObjectAs<Dictionary>(rows->Item(i))->Value(field)) + "|";
  }
  return text;
}

SchemeRequest ByOrganisation() {
  SchemeRequest request;
  request.type = 2040;
  request.range_item_class = 8;
  return request;
}

struct ConflictCase {
  const char* what;
  SchemeRequest stored;
  SchemeRequest request;
  Text rows;  // FOrgIDNew|FItemID or FOrgRemark|, a line each
};

std::vector<ConflictCase> Cases() {
  return {
      {"a whole class stored, one of it requested", ByOrganisation().Organisation(1, 8, 0),
       ByOrganisation().Organisation(1, 8, 7), "7|全部供应商|"},
      {"two of a class stored, the whole class requested", ByOrganisation().Organisation(1, 8, 3).Organisation(1, 8, 7),
       ByOrganisation().Organisation(1, 8, 0), "7||\n3||"},
      {"a whole class on both sides", ByOrganisation().Organisation(1, 8, 0),
       ByOrganisation().Organisation(0, 8, 0).GridRow({}).GridRow({}), "7|全部供应商|\n3|全部供应商|"},
      {"held by name and through the class", ByOrganisation().Organisation(1, 8, 0).Organisation(1, 8, 7),
       ByOrganisation().Organisation(1, 8, 7), "7|全部供应商|\n7||"},
      {"other organisations", ByOrganisation().Organisation(1, 8, 3), ByOrganisation().Organisation(1, 8, 7), "stored"},
      {"the entry that is no item", ByOrganisation().Organisation(1, 8, -1), ByOrganisation().Organisation(1, 8, -1),
       "-1||"},
      {"an organisation that the account doesn't know", ByOrganisation().Organisation(1, 8, 99),
       ByOrganisation().Organisation(1, 8, 99), "99||"},
      {"the same id under another class", ByOrganisation().Organisation(1, 1, 7),
       ByOrganisation().Organisation(1, 8, 7), "7||"},
      {"goods play no part by organisation", ByOrganisation().Organisation(1, 8, 7).GridRow({71}),
       ByOrganisation().Organisation(1, 8, 7).GridRow({72}), "7||"},
      {"no organisations", ByOrganisation().Organisation(1, 8, 0), ByOrganisation(), "stored"},
      {"one organisation, other goods", SchemeRequest().Organisation(1, 8, 7).GridRow({71}),
       SchemeRequest().Organisation(1, 8, 7).GridRow({72}), "stored"},
      {"other organisations, the same goods", SchemeRequest().Organisation(1, 8, 3).GridRow({71}),
       SchemeRequest().Organisation(1, 8, 7).GridRow({71}), "stored"},
      {"an organisation of a row without the goods", SchemeRequest().Organisation(1, 8, 7).GridRow({72}),
       SchemeRequest().Organisation(1, 8, 7).Organisation(2, 8, 3).GridRow({71}).GridRow({72}), "stored"},
      {"an organisation of every row", SchemeRequest().Organisation(1, 8, 7).GridRow({72}),
       SchemeRequest().Organisation(0, 8, 7).Organisation(2, 8, 3).GridRow({71}).GridRow({72}), "7|72|"},
      {"a request without goods", SchemeRequest().Organisation(1, 8, 7).GridRow({71}),
       SchemeRequest().Organisation(1, 8, 7).GridRow({}), "stored"},
      {"goods 0 match goods 0 alone", SchemeRequest().Organisation(1, 8, 7).GridRow({0, 71}),
       SchemeRequest().Organisation(1, 8, 7).GridRow({0}), "7|0|"},
  };
}

TEST(SchemeConflict, FindsWhatCoversTheSameGround) {
  for (ConflictCase& one : Cases()) {
    SCOPED_TRACE(one.what);
    const TestAccount account;
    AddMasterData(account);
    ASSERT_TRUE(one.stored.Saves(account));
    const Text before = account.Everything();
    const bool by_goods = one.request.range_item_class == 4;
    EXPECT_EQ(Overlap(one.request.Save(account), {"FOrgIDNew", by_goods ? "FItemID" : "FOrgRemark"}), one.rows);
    if (one.rows != "stored") {
      EXPECT_EQ(account.Everything(), before);
    }
  }
}

TEST(SchemeConflict, LooksAtEnabledSchemesOfTheTypeOtherThanTheReplacedOne) {
  for (const bool by_goods : {false, true}) {
    const auto make = [&] {
      SchemeRequest request = by_goods ? SchemeRequest() : ByOrganisation();
      return request.Organisation(1, 8, 7).GridRow({71});
    };
    const TestAccount account;
    AddMasterData(account);
    SchemeRequest first = make();
    ASSERT_TRUE(first.Saves(account));
    const Long stored = std::stoi(account.Rows("select FSchemeID from t_FL_SchemeList"));
    const auto refused_as_overlap = [&](Long replaces, Long type) {
      SchemeRequest request = make();
      request.replaces = replaces;
      request.type = type;
      Trace trace;
      trace.RefuseStatement(12);  // the one behind the check, so that nothing is stored
      return request.Save(account)->Has("Repeat");
    };
    EXPECT_TRUE(refused_as_overlap(kNoScheme, first.type));
    EXPECT_FALSE(refused_as_overlap(stored, first.type));
    EXPECT_FALSE(refused_as_overlap(kNoScheme, 2039));
    for (const char* state : {"0", "null"}) {
      account.Execute("update t_FL_SchemeList set FEnable=" + Text(state));
      EXPECT_FALSE(refused_as_overlap(kNoScheme, first.type)) << state;
    }
  }
}

TEST(SchemeConflict, NamesTheOverlapInFullAndInOrder) {
  const TestAccount account;
  AddMasterData(account);
  SchemeRequest stored;
  stored.name = "stored";
  ASSERT_TRUE(stored.Organisation(0, 8, 0).GridRow({72, 71}).Saves(account));
  SchemeRequest request;
  EXPECT_EQ(Overlap(request.Organisation(1, 8, 7).GridRow({72, 71}).Save(account),
                    {"FSchemeName", "FItemID", "FItemNumber", "FItemName", "FOrgIDNew", "FOrgNumber", "FOrgName",
                     "FOrgRemark"}),
            "stored|71|G71|Soap|7|S07|Seventh|全部供应商|\nstored|72|G72|Tea|7|S07|Seventh|全部供应商|");
}

TEST(SchemeConflict, CastsTheAbortVoteAgainAndLeavesNoTables) {
  const TestAccount account;
  AddMasterData(account);
  ASSERT_TRUE(ByOrganisation().Organisation(1, 8, 7).Saves(account));
  Trace trace;
  SchemeRequest request = ByOrganisation().Organisation(1, 8, 7);
  EXPECT_FALSE(request.Saves(account));
  const std::vector<Text> events = trace.Take();
  EXPECT_EQ(events.back(), "abort");
  EXPECT_TRUE(events[events.size() - 2].starts_with("DROP TABLE #TMP_AllOrgs"));
}

}  // namespace
}  // namespace rebate
