#include "bench/stored_schemes.h"

#include <map>
#include <memory>

namespace rebate::bench {
namespace {

std::unique_ptr<BenchAccount> AccountOfSchemes(int schemes, int organisations) {
  auto account = std::make_unique<BenchAccount>();
  PlainDatabase database(account->path());
  database.Run("BEGIN");
  database.Run("INSERT INTO t_User (FUserID,FName) VALUES (1,'Administrator')");
  PlainStatement item(database, "INSERT INTO t_Item (FItemClassID,FItemID,FNumber,FName) VALUES (8,?,?,?)");
  for (int i = 1; i <= 10000; ++i) {
    item.Run(i, ("S" + std::to_string(i)).c_str(), ("Supplier number " + std::to_string(i)).c_str());
  }
  PlainStatement head(database,
                      "INSERT INTO t_FL_SchemeList (FSchemeNo,FSchemeName,FRebateType,FModifyDate,FCheckerID,FNote,"
                      "FEnable) VALUES ('0',?,2040,?,1,'A note of some length',1)");
  PlainStatement organisation(
      database, "INSERT INTO t_FL_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName) VALUES (?,1,8,?,'shown')");
  for (int i = 0; i < schemes; ++i) {
    const Text date = "2026-01-" + std::to_string(10 + i % 20) + " 08:00:00.000";
    head.Run(("Scheme number " + std::to_string(i)).c_str(), date.c_str());
    const long long id = sqlite3_last_insert_rowid(database.get());
    for (int k = 0; k < organisations; ++k) organisation.Run(id, (i * organisations + k) % 10000 + 1);
  }
  database.Run("COMMIT");
  return account;
}

}  // namespace

const BenchAccount& StoredSchemes(int schemes, int organisations) {
  static std::map<std::pair<int, int>, std::unique_ptr<BenchAccount>> accounts;
  std::unique_ptr<BenchAccount>& account = accounts[{schemes, organisations}];
  if (!account) account = AccountOfSchemes(schemes, organisations);
  return *account;
}

}  // namespace rebate::bench
