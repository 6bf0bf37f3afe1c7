#pragma once

#include <string_view>

#include "platform/database/odbc/handle.h"
#include "platform/database/row_set.h"

namespace rebate::odbc {

// Refuses texts whose characters would arrive as others.
//
// A driver with plain texts alone (ANSI) gets them from the driver manager in the process's locale; and a SQL Server
// reads plain literals in the code page of the database. Both put something else in the place of a character that they
// lack, and say nothing.
class CharacterCheck {
 public:
  // Finds out what the driver of the connected session can carry.
  explicit CharacterCheck(const Session& session);

  // The code page in which the server reads plain literals, 0 where it isn't known.
  void SetServerCodePage(int code_page);

  // Each raises where a character was or would be changed on its way.
  void Sending(std::string_view text) const;
  void Received(const RowSet& rows) const;

 private:
  void RefuseMangled(std::string_view text) const;

  SQLHANDLE session_;
  bool carries_all_;
  Text locale_charset_;
  Text server_charset_;  // empty where any text arrives whole
};

}  // namespace rebate::odbc
