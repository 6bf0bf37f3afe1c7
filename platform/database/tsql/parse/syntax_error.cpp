#include "platform/database/tsql/parse/syntax_error.h"

#include <algorithm>
#include <array>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/values/ascii.h"
#include "platform/values/text.h"

namespace rebate::tsql {
namespace {

// Sorted.
// clang-format off
constexpr std::string_view kReserved[] = {
    "add", "all", "alter", "and", "any", "as", "asc", "authorization", "backup", "begin", "between", "break", "browse",
    "bulk", "by", "cascade", "case", "check", "checkpoint", "close", "clustered", "coalesce", "collate", "column",
    "commit", "compute", "constraint", "contains", "containstable", "continue", "convert", "create", "cross",
    "current", "current_date", "current_time", "current_timestamp", "current_user", "cursor", "database", "dbcc",
    "deallocate", "declare", "default", "delete", "deny", "desc", "disk", "distinct", "distributed", "double", "drop",
    "dump", "else", "end", "errlvl", "escape", "except", "exec", "execute", "exists", "exit", "external", "fetch",
    "file", "fillfactor", "for", "foreign", "freetext", "freetexttable", "from", "full", "function", "goto", "grant",
    "group", "having", "holdlock", "identity", "identity_insert", "identitycol", "if", "in", "index", "inner",
    "insert", "intersect", "into", "is", "join", "key", "kill", "left", "like", "lineno", "load", "merge", "national",
    "nocheck", "nonclustered", "not", "null", "nullif", "of", "off", "offsets", "on", "open", "opendatasource",
    "openquery", "openrowset", "openxml", "option", "or", "order", "outer", "over", "percent", "pivot", "plan",
    "precision", "primary", "print", "proc", "procedure", "public", "raiserror", "read", "readtext", "reconfigure",
    "references", "replication", "restore", "restrict", "return", "revert", "revoke", "right", "rollback", "rowcount",
    "rowguidcol", "rule", "save", "schema", "securityaudit", "select", "session_user", "set", "setuser", "shutdown",
    "some", "statistics", "system_user", "table", "tablesample", "textsize", "then", "to", "top", "tran",
    "transaction", "trigger", "truncate", "try_convert", "tsequal", "union", "unique", "unpivot", "update",
    "updatetext", "use", "user", "values", "varying", "view", "waitfor", "when", "where", "while", "with", "writetext"};
// clang-format on
static_assert(std::is_sorted(std::begin(kReserved), std::end(kReserved)));

constexpr std::size_t kLongestReserved = 17;
constexpr std::size_t kLongestQuoted = 128;  // of a text repeated in an error

}  // namespace

void ThrowSyntax(std::string_view description) {
  throw Error(database_error::kStatement, "Transact-SQL", Text(description));
}

void ThrowNear(std::string_view text, bool keyword) {
  ThrowSyntax((keyword ? "Incorrect syntax near the keyword '" : "Incorrect syntax near '") +
              Text(FirstBytes(text, kLongestQuoted)) + "'.");
}

void ThrowUnclosed(std::string_view text) {
  ThrowSyntax("Unclosed quotation mark after the character string '" + Text(FirstBytes(text, kLongestQuoted)) + "'.");
}

void ThrowUnsupported(std::string_view name) {
  ThrowSyntax("'" + AsciiUpper(name) + "' is not supported by an embedded account.");
}

bool IsReserved(std::string_view word) {
  if (word.size() > kLongestReserved) return false;
  std::array<char, kLongestReserved> lower;
  std::transform(word.begin(), word.end(), lower.begin(), [](char c) { return AsciiLower(c); });
  return std::binary_search(std::begin(kReserved), std::end(kReserved), std::string_view(lower.data(), word.size()));
}

}  // namespace rebate::tsql
