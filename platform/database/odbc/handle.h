#pragma once

#ifdef _WIN32
// The types that <sql.h> takes for granted there.
#include <windef.h>
#endif
#include <sql.h>
#include <sqlext.h>

#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/values/text.h"

namespace rebate::odbc {

// An ODBC handle of one kind (SQL_HANDLE_ENV, _DBC or _STMT), freed with its owner.
template <SQLSMALLINT kKind>
class Handle {
 public:
  Handle() = default;
  // Raises where the driver manager gives none.
  explicit Handle(SQLHANDLE parent) {
    if (!SQL_SUCCEEDED(SQLAllocHandle(kKind, parent, &handle_))) {
      throw Error(database_error::kConnection, "ODBC", "The ODBC driver manager gives no handle.");
    }
  }
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Handle() {
    if (handle_ != nullptr) SQLFreeHandle(kKind, handle_);
  }

  SQLHANDLE get() const { return handle_; }

 private:
  SQLHANDLE handle_ = nullptr;
};

using Environment = Handle<SQL_HANDLE_ENV>;
using Session = Handle<SQL_HANDLE_DBC>;
using Statement = Handle<SQL_HANDLE_STMT>;

// An environment in which the driver manager speaks version 3. Raises what a handle raises.
Environment OpenEnvironment();

// One message about the last act on a handle.
struct Diagnostic {
  Text state;         // five characters
  SQLINTEGER native;  // the server's own number, where it has one
  Text message;       // the server's own words, without the names of the driver's components before them
};

std::vector<Diagnostic> Diagnostics(SQLSMALLINT kind, SQLHANDLE handle);

// What a message is about, by its state or, where that says nothing, by the number that a SQL Server gives it.
enum class Matter { Statement, Constraint, Timeout, Conflict, Lost, Login, Database };
Matter MatterOf(const Diagnostic& diagnostic);

// What the loser of two units of work is told behind the server's own words.
inline constexpr std::string_view kMayTryAgain =
    "Another user worked on the same data at the same time, so this work was undone as a whole. Please try again.";

// What a server or its driver raises.
struct ServerError : Error {
  // What it means to the work on the connection.
  enum class Effect { StatementRefused, UnitUndone, ConnectionLost };

  ServerError(Long number_in, const Text& description_in, Effect effect_in)
      : Error(number_in, "ODBC", description_in), effect(effect_in) {}

  Effect effect;
};

// The error that the messages amount to, with all of their texts, a line each. A transaction that the server itself
// gave up, since another one stood against it, bears the number of a lost connection: what it held is gone.
ServerError ToError(const std::vector<Diagnostic>& diagnostics);

// Reads a text of which only the length tells whether it fitted: `read` fills the buffer and gives the length that the
// text has, in units, where it is known. What is longer than a length can tell is cut off.
template <typename Read>
Text ReadGrowing(Read read) {
  constexpr std::size_t kShort = 256;
  constexpr std::size_t kLongest = 16000;
  std::u16string buffer(kShort, u'\0');
  const SQLSMALLINT length = read(buffer);
  if (length < 0 || static_cast<std::size_t>(length) >= kShort) {
    buffer.assign(kLongest, u'\0');
    read(buffer);
  }
  buffer.back() = u'\0';
  return FromWide(buffer.c_str());
}

// Text at the driver manager's border.
inline const char16_t* FromSql(const SQLWCHAR* text) {
  return reinterpret_cast<const char16_t*>(text);
}
inline SQLWCHAR* ToSql(const std::u16string& text) {
  return reinterpret_cast<SQLWCHAR*>(const_cast<char16_t*>(text.data()));
}
static_assert(sizeof(SQLWCHAR) == sizeof(char16_t));

}  // namespace rebate::odbc
