#include <gtest/gtest.h>

#include <random>

#include "client/overlap_check.h"
#include "platform/database/connect.h"
#include "tests/scheme_kit.h"

namespace rebate {
namespace {

// Suppliers 1 to 4 and customers 3 to 6, whose ids meet, and an item class without items.
void AddItems(const TestAccount& account) {
  for (const char* table : {"t_Item", "t_ItemClass"}) account.Execute(Text("delete from ") + table);
  account.Execute(
      "insert into t_ItemClass values (1,'c'), (8,'s'), (9,'e') insert into t_Item (FItemClassID,FItemID) values "
      "(8,1), (8,2), (8,3), (8,4), (1,3), (1,4), (1,5), (1,6)");
}

SchemeRequest RandomRequest(std::mt19937& random, bool by_goods) {
  const auto up_to = [&](int most) { return static_cast<Long>(random() % static_cast<unsigned>(most + 1)); };
  SchemeRequest request;
  if (!by_goods) {
    request.type = 2040;
    request.range_item_class = 8;
  }
  const Long rows = 1 + up_to(1);
  for (Long row = 1; row <= rows; ++row) {
    by_goods ? request.GridRow({71 + up_to(2), 71 + up_to(4)}) : request.GridRow({});
  }
  constexpr Long kClasses[] = {8, 8, 1, 9};
  for (Long i = up_to(2); i >= 0; --i) {
    const Long item_class = kClasses[up_to(3)];
    request.Organisation(up_to(rows), item_class, up_to(4) == 0 ? 0 : 1 + up_to(5) + (by_goods ? 0 : up_to(6)));
  }
  return request;
}

// What a save says of the later scheme while the earlier one is there, the look through the account says when both are.
TEST(OverlapCheck, SaysWhatASaveWouldSay) {
  const TestAccount account;
  AddItems(account);
  const ConnectionRef connection = Connect(DataSource::Parse(account.dsn()));
  std::mt19937 random(20260102);
  int refused = 0;
  constexpr int kRounds = 90;
  for (int round = 0; round < kRounds; ++round) {
    for (const char* table : {"t_FL_SchemeList", "t_FL_AllOrgs", "t_FL_AllItems"}) {
      account.Execute(Text("delete from ") + table);
    }
    const bool by_goods = round % 3 != 0;
    ASSERT_TRUE(RandomRequest(random, by_goods).Saves(account));
    SchemeRequest later = RandomRequest(random, by_goods);
    const bool is_free = later.Saves(account);
    if (!is_free) {
      account.Execute("update t_FL_SchemeList set FEnable=0");
      ASSERT_TRUE(later.Saves(account));
      EXPECT_TRUE(FindOverlaps(*connection).empty()) << "a disabled scheme was found";
      account.Execute("update t_FL_SchemeList set FEnable=1");
      ++refused;
    }
    EXPECT_EQ(FindOverlaps(*connection).empty(), is_free)
        << account.Rows("select FSchemeID,FRowID,FItemClassID,FItemID from t_FL_AllOrgs") << "\ngoods\n"
        << account.Rows("select FSchemeID,FRowID,FItemID from t_FL_AllItems");
  }
  EXPECT_GT(refused, kRounds / 5);
  EXPECT_LT(refused, kRounds * 4 / 5);
}

}  // namespace
}  // namespace rebate
