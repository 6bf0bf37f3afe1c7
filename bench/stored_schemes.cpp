#include "bench/stored_schemes.h"

#include <map>
#include <memory>

namespace rebate::bench {
namespace {

constexpr int kStanding = 20;

// A number of seven digits behind the text.
Text Numbered(std::string_view text, int number) {
  const Text digits = std::to_string(number);
  return Text(text) + Text(7 - digits.size(), '0') + digits;
}

// Runs a statement over the numbers i from 0 to `count` - 1.
class Numbers {
 public:
  explicit Numbers(PlainDatabase& database) : database_(database) {}

  template <typename... Values>
  void Run(int count, Text statement, Values... values) {
    if (count == 0) return;
    const Text numbers =
        "WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i+1 FROM n WHERE i+1<" + std::to_string(count) + ") ";
    PlainStatement(database_, numbers + statement + " FROM n").Run(values...);
  }

 private:
  PlainDatabase& database_;
};

void StoreItems(Numbers& numbers, const StoredShape& shape) {
  const Text item = "INSERT INTO t_Item (FItemClassID,FItemID,FNumber,FName) SELECT ";
  numbers.Run(shape.suppliers, item + "8,i+1,printf('S%07d',i+1),'Supplier number '||(i+1)");
  numbers.Run(shape.customers, item + "1,i+?1,printf('C%07d',i+1),'Customer number '||(i+1)", kFirstCustomer);
  numbers.Run(shape.customers, item + "3,i+?1,printf('E%07d',i+1),'Employee number '||(i+1)", kFirstEmployee);
}

void StoreHeads(Numbers& numbers, const StoredShape& shape) {
  numbers.Run(shape.schemes,
              "INSERT INTO t_FL_SchemeList (FSchemeNo,FSchemeName,FRebateType,FModifyDate,FCheckerID,FNote,FEnable) "
              "SELECT '0',printf('Scheme number %07d',i+1),?1,'2026-01-'||(10+i%20)||' 08:00:00.000',1,"
              "'A note of some length',CASE WHEN ?2>0 AND i%?2=0 THEN 0 ELSE 1 END",
              shape.goods > 0 ? 2041 : 2040, shape.disabled > 0 ? shape.schemes / shape.disabled : 0);
}

void StoreParts(Numbers& numbers, const StoredShape& shape) {
  const Text organisation =
      "INSERT INTO t_FL_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName) SELECT i/?1+1,1,";
  numbers.Run(shape.schemes * shape.organisations, organisation + "8,i%?2+1,'shown'", shape.organisations,
              shape.suppliers);
  if (shape.customers > 0) {
    numbers.Run(kStanding * shape.customers, organisation + "1,i%?1+?2,'shown'", shape.customers, kFirstCustomer);
    numbers.Run(kStanding, organisation + "3,0,'shown'", 1);
  }
  numbers.Run(shape.schemes * shape.goods,
              "INSERT INTO t_FL_AllItems (FSchemeID,FRowID,FItemID,FUnitID,FShowName) SELECT i/?1+1,1,i+?2,1,'shown'",
              shape.goods, kFirstGoods);
  numbers.Run(shape.schemes * shape.rates,
              "INSERT INTO t_FL_RebateRange (FLowerLimit,FUpperLimit,FIndex,FSchemeID) SELECT i%?1*100,i%?1*100+100,"
              "i%?1+1,i/?1+1",
              shape.rates);
  numbers.Run(shape.schemes * shape.rates,
              "INSERT INTO t_FL_RebateRule (FSchemeID,FRowID,FItemID,FOrgID,FRebateRate,FIndex) SELECT i/?1+1,1,'1',0,"
              "2.5,i%?1+1",
              shape.rates);
}

}  // namespace

Text SupplierNumber(int supplier) {
  return Numbered("S", supplier);
}

Text SchemeName(int scheme) {
  return Numbered("Scheme number ", scheme);
}

void StoreSchemes(const BenchAccount& account, const StoredShape& shape) {
  PlainDatabase database(account.path());
  database.Run("PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA cache_size=-1000000; BEGIN");
  database.Run("INSERT INTO t_User (FUserID,FName) VALUES (1,'Administrator')");
  Numbers numbers(database);
  StoreItems(numbers, shape);
  StoreHeads(numbers, shape);
  StoreParts(numbers, shape);
  database.Run("COMMIT; PRAGMA journal_mode=WAL");
}

const BenchAccount& StoredSchemes(const StoredShape& shape) {
  static std::map<StoredShape, std::unique_ptr<BenchAccount>> accounts;
  std::unique_ptr<BenchAccount>& account = accounts[shape];
  if (!account) {
    account = std::make_unique<BenchAccount>();
    StoreSchemes(*account, shape);
  }
  return *account;
}

const BenchAccount& StoredSchemes(int schemes, int organisations) {
  return StoredSchemes({.schemes = schemes, .organisations = organisations});
}

}  // namespace rebate::bench
