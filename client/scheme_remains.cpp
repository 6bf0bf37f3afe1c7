#include "client/scheme_remains.h"

#include "client/account.h"
#include "client/scheme_lookup.h"

namespace rebate {

void RemoveRemains(Account& account, const std::vector<Long>& ids, const std::vector<Text>& also) {
  std::vector<Text> statements;
  for (const char* table : {"t_FL_RebateRange", "t_FL_RebateRule", "t_ItemSelect"}) {
    statements.push_back("delete from " + Text(table) + " where FSchemeID in (" + IdList(ids) +
                         ") and FSchemeID not in (select FSchemeID from t_FL_SchemeList)");
  }
  statements.push_back(
      "delete from t_FL_AllItems where FSchemeID is null and FRuleTableID not in (select FID from t_FL_RebateRule)");
  statements.insert(statements.end(), also.begin(), also.end());
  account.Change(statements);
}

}  // namespace rebate
