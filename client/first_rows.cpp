#include "client/first_rows.h"

#include <ostream>

#include "client/account.h"
#include "client/tool.h"

namespace rebate {
namespace {

constexpr Long kFirstUser = 1;

bool IsEmpty(const Account& account, std::string_view table) {
  return account.QueryNumber("select count(*) from " + Text(table)) == 0;
}

}  // namespace

// Both statements ask again: another process may make the rows at the same time.
void MakeFirstRows(Account& account, Tool& tool) {
  if (account.app_user() == kFirstUser && IsEmpty(account, "t_User")) {
    account.Change(
        {"if not exists (select 1 from t_User) insert into t_User (FUserID, FName) values (1, N'Administrator')"});
    tool.err << "The account had no user: made user 1, Administrator.\n";
  }
  if (IsEmpty(account, "t_ItemClass")) {
    account.Change(
        {"if not exists (select 1 from t_ItemClass) insert into t_ItemClass (FItemClassID, FName) values "
         "(1, N'客户'), (3, N'职员'), (4, N'商品'), (8, N'供应商')"});
  }
}

void CheckUser(Account& account, const Text& place, Findings& findings) {
  const Text user = std::to_string(account.app_user());
  if (account.QueryNumber("select FUserID from t_User where FUserID=" + user)) return;
  // The first save makes the first user.
  if (account.app_user() == kFirstUser && IsEmpty(account, "t_User")) return;
  findings.Tell(place, "t_User holds no user " + user +
                           ", as whom you are logged in: `rebate list` leaves out what such a user stores");
}

}  // namespace rebate
