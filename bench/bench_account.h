#pragma once

#include <sqlite3.h>

#include <filesystem>
#include <memory>
#include <string_view>

#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "platform/database/connection.h"

namespace rebate::bench {

// A fresh embedded account with the component's tables and rebate types, gone when the benchmark ends.
class BenchAccount {
 public:
  BenchAccount();
  ~BenchAccount();
  BenchAccount(const BenchAccount&) = delete;
  BenchAccount& operator=(const BenchAccount&) = delete;

  Text dsn() const { return "Data Source=" + path_.string(); }
  const std::filesystem::path& path() const { return path_; }
  ConnectionRef Connect() const;

 private:
  std::filesystem::path folder_;
  std::filesystem::path path_;
};

// The account's file opened with SQLite alone, as a program without a front end would: what the figures are held
// against. It has the same settings and a plain byte-wise collation under the name that the account's tables use.
class PlainDatabase {
 public:
  explicit PlainDatabase(const std::filesystem::path& path);

  void Run(const char* sql);
  sqlite3* get() const { return database_.get(); }

 private:
  struct Close {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
  };
  std::unique_ptr<sqlite3, Close> database_;
};

// A prepared statement.
class PlainStatement {
 public:
  PlainStatement(const PlainDatabase& database, std::string_view sql);

  // Binds the values from the first parameter on, runs the statement once and makes it ready again.
  template <typename... Values>
  void Run(Values... values) {
    int place = 0;
    (Bind(++place, values), ...);
    Step();
    Reset();
  }
  bool Step();
  void Reset();
  sqlite3_stmt* get() const { return statement_.get(); }

 private:
  void Bind(int place, long long value);
  void Bind(int place, int value) { Bind(place, static_cast<long long>(value)); }
  void Bind(int place, double value);
  void Bind(int place, const char* value);

  struct Finalize {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
  };
  std::unique_ptr<sqlite3_stmt, Finalize> statement_;
};

// A Dictionary out of keys and values.
Ref<Dictionary> Row(std::initializer_list<std::pair<const char*, Variant>> entries);

// Ends the benchmark program where a step that must succeed didn't: a figure of a failure is no figure.
void Require(bool done, const char* what);

}  // namespace rebate::bench
