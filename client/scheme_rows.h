#pragma once

#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"

namespace rebate {

class Account;
class Recordset;
struct Tool;

// The schemes that match a request for LoadSchemeListData. Raises the reason where they can't be listed.
Ref<Vector> MatchingSchemes(Account& account, const Ref<Dictionary>& request);

// The rows of forbidden schemes, one a scheme and organisation and those of a scheme together, as one row a scheme in
// the shape in which MatchingSchemes gives it. The cursor is moved.
Ref<Vector> FoldOrganisations(Recordset& rows);

// Names the organisations of forms, which lists leave out: those that the form's rules are for.
void NameFormOrganisations(Account& account, Vector& schemes);

// Tells on standard error how many schemes no list shows, since no user stands for the one who stored them.
void TellUnlisted(Account& account, Tool& tool);

// Prints schemes as MatchingSchemes gives them: a table, or JSON.
void PrintSchemes(const Vector& schemes, bool json, Tool& tool);

}  // namespace rebate
