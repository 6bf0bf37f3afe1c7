#pragma once

namespace rebate {

class Account;
struct Tool;

// Makes the rows without which an account that was just made lists nothing: where it has no user at all, user 1, and
// where it has no item classes, those of customers, employees, goods and suppliers. Tells on standard error what it
// made. An account that has some of its own is left alone. Raises where they can't be written.
void MakeFirstRows(Account& account, Tool& tool);

}  // namespace rebate
