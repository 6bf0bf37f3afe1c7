#pragma once

#include <optional>
#include <vector>

#include "client/account_findings.h"
#include "platform/database/connection.h"

namespace rebate {

// The limits and rates with more digits than were meant: an amount that was ever a float is right to 15 digits, and
// what stands behind them is the float's own.
std::vector<Finding> FindStrayDigits(Connection& connection);
// Rounds them to the digits that were meant.
void MendStrayDigits(Connection& connection);

// The amount of 15 digits that was meant by a longer one; nothing where the text, a decimal, has no more.
std::optional<Text> DigitsMeant(std::string_view amount);

}  // namespace rebate
