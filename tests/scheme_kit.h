#pragma once

#include "service/base_info_mgr.h"
#include "tests/test_account.h"

namespace rebate {

// The request of a save in the making. Unless told otherwise it is a new scheme of goods type 2041 with one band.
struct SchemeRequest {
  Long type = 2041;
  Long range_item_class = 4;
  Long replaces = 0;
  Text name = "scheme";
  Text note = "note";
  Ref<Vector> ranges = List({Row({{"FLowerLimit", "0"}, {"FUpperLimit", "100"}})});
  Ref<Vector> organisations = List({});
  Ref<Vector> grid_rows = List({});

  // `row_id` 0 puts the organisation into every grid row, `item` 0 stands for its whole class.
  SchemeRequest& Organisation(Long row_id, Long item_class, Long item) {
    organisations->Add(
        Row({{"FRowID", row_id}, {"FItemClassID", item_class}, {"FItemID", item}, {"FShowName", "org"}}));
    return *this;
  }
  // A grid row with these goods and one rate.
  SchemeRequest& GridRow(std::initializer_list<Long> goods, const Variant& rate = "5") {
    const Long row_id = grid_rows->Size() + 1;
    Ref<Vector> items = List({});
    for (const Long item : goods) {
      items->Add(Row({{"FRowID", row_id}, {"FItemID", item}, {"FUnitID", 0}, {"FShowName", "goods"}}));
    }
    const Variant rates = List({Row({{"FRowID", row_id}, {"FRebateRate", rate}, {"FIndex", 1}})});
    grid_rows->Add(Row({{"FItemIDs", items}, {"FRebateRates", rates}, {"FZH", 0}}));
    return *this;
  }

  Ref<Dictionary> Save(const TestAccount& account) { return Save(account.dsn()); }
  Ref<Dictionary> Save(const Text& dsn) {
    Ref<Dictionary> type_row = Row({{"FRebateType", type}, {"FRangeItemClass", range_item_class}});
    Ref<Dictionary> head = Row({{"FSchemeID", replaces}, {"FSchemeName", name}, {"FNote", note}});
    return BaseInfoMgr().SaveOneSchemeData(dsn, type_row, head, ranges, organisations, grid_rows);
  }
  bool Saves(const TestAccount& account) { return Save(account)->Value("OK") == Variant(true); }
};

// Item classes, suppliers 3 and 7 (class 8), customers 17 and 18 (class 1), goods 71 and 72 (class 4) and user 1001.
// Employees (class 3) have ids of theirs.
inline void AddMasterData(const TestAccount& account) {
  account.Execute(R"(
    insert into t_ItemClass (FItemClassID,FName) values (1,'客户'), (4,'商品'), (8,'供应商')
    insert into t_Item (FItemClassID,FItemID,FNumber,FName) values
      (8,3,'S03','Third'), (8,7,'S07','Seventh'), (1,17,'C17','Alpha'), (1,18,'C18','Beta'), (4,71,'G71','Soap'),
      (4,72,'G72','Tea'), (3,3,'E03','Li'), (3,7,'E07','Wu'), (3,17,'E17','Xu'), (3,71,'E71','Yu')
    insert into t_ICItem (FItemID,FNumber,FName,FModel,FDeleted) values (71,'G71','Soap','big',0), (72,'G72','Tea','',0)
    insert into t_Supplier (FItemID,FNumber,FName,FDeleted,FRightUserID) values
      (3,'S03','Third',0,'12,'), (7,'S07','Seventh',0,'123,')
    insert into t_Organization (FItemID,FNumber,FName,FDeleted,FRightUserID) values
      (17,'C17','Alpha',0,'12'), (18,'C18','Beta',0,'')
    insert into t_User (FUserID,FName) values (1001,'Wang'))");
}

}  // namespace rebate
