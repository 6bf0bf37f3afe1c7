#pragma once

#include "client/findings.h"

namespace rebate {

class Account;
struct Tool;

// Makes the rows without which an account that was just made lists nothing: where it has no user at all, user 1, and
// where it has no item classes, those of customers, employees, goods and suppliers. Tells on standard error what it
// made. An account that has some of its own is left alone. Raises where they can't be written.
void MakeFirstRows(Account& account, Tool& tool);

// Tells, in the place given, if nobody stands for the logged-in user: lists leave out what such a user stored.
void CheckUser(Account& account, const Text& place, Findings& findings);

}  // namespace rebate
