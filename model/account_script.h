#pragma once

#include <string_view>
#include <vector>

// The Transact-SQL scripts that come with the component.
namespace rebate {

// Makes every table, view, key and index of an account, and the rows that every account has: its rebate types and item
// classes.
std::string_view AccountSchema();

// Fills an account that was just made with a small shop's suppliers, customers, employees, goods, units and users.
std::string_view AccountSample();

// The batches of a script, in order: what stands between lines that hold the word GO alone, in any case, blanks around
// it allowed. Batches of white space alone are left out. They point into `script`.
std::vector<std::string_view> Batches(std::string_view script);

}  // namespace rebate
