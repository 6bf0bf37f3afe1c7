#pragma once

#include <iosfwd>

#include "calls/json_text.h"

namespace rebate {

class Account;

// A stored form in the shape in which FormProblems wants it. Its mode is 0 and its organisations are empty where the
// account doesn't know them. Raises the reason where there is no such form.
Json LoadForm(Account& account, Long id);

// Prints a form as LoadForm gives it, whether it is enabled and what its rates are counted in, in readable sections.
// `width` as in Table::Print.
void PrintForm(const Json& form, bool enabled, const Text& unit, std::ostream& out, std::size_t width);

}  // namespace rebate
