#include "platform/database/tsql/print/sql_text.h"

namespace rebate::tsql {

Text SqlString(std::string_view text) {
  Text sql = "'";
  for (const char c : text) {
    sql += c;
    if (c == '\'') sql += c;
  }
  return sql += '\'';
}

}  // namespace rebate::tsql
