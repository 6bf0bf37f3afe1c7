#include "bench/bench_account.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "model/account_script.h"
#include "platform/database/connect.h"

namespace rebate::bench {
namespace {

int CompareBytes(void*, int left_size, const void* left, int right_size, const void* right) {
  const int order = std::memcmp(left, right, static_cast<std::size_t>(std::min(left_size, right_size)));
  return order != 0 ? order : left_size - right_size;
}

}  // namespace

BenchAccount::BenchAccount() {
  static std::atomic<int> count = 0;
  folder_ = std::filesystem::temp_directory_path() /
            ("rebate-bench-" + std::to_string(getpid()) + "-" + std::to_string(++count));
  std::filesystem::create_directories(folder_);
  path_ = folder_ / "bench.db";
  const ConnectionRef connection = ConnectForSetup(DataSource::Parse(dsn()));
  for (const ScriptBatch& batch : AccountBatches(true)) connection->Execute(batch.text);
}

BenchAccount::~BenchAccount() {
  std::error_code ignored;
  std::filesystem::remove_all(folder_, ignored);
}

ConnectionRef BenchAccount::Connect() const {
  return rebate::Connect(DataSource::Parse(dsn()));
}

PlainDatabase::PlainDatabase(const std::filesystem::path& path) {
  sqlite3* database = nullptr;
  const int outcome = sqlite3_open_v2(path.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  database_.reset(database);
  Require(outcome == SQLITE_OK, "opening the account with SQLite");
  sqlite3_collation_needed(database, nullptr, [](void*, sqlite3* needing, int, const char* name) {
    sqlite3_create_collation(needing, name, SQLITE_UTF8, nullptr, CompareBytes);
  });
  Run("PRAGMA synchronous=FULL");
}

void PlainDatabase::Run(const char* sql) {
  char* message = nullptr;
  if (sqlite3_exec(database_.get(), sql, nullptr, nullptr, &message) != SQLITE_OK) Require(false, message);
}

PlainStatement::PlainStatement(const PlainDatabase& database, std::string_view sql) {
  sqlite3_stmt* statement = nullptr;
  if (sqlite3_prepare_v3(database.get(), sql.data(), static_cast<int>(sql.size()), SQLITE_PREPARE_PERSISTENT,
                         &statement, nullptr) != SQLITE_OK) {
    Require(false, sqlite3_errmsg(database.get()));
  }
  statement_.reset(statement);
}

bool PlainStatement::Step() {
  const int outcome = sqlite3_step(statement_.get());
  Require(outcome == SQLITE_ROW || outcome == SQLITE_DONE, "stepping a plain statement");
  return outcome == SQLITE_ROW;
}

void PlainStatement::Reset() {
  sqlite3_reset(statement_.get());
}

void PlainStatement::Bind(int place, long long value) {
  sqlite3_bind_int64(statement_.get(), place, value);
}

void PlainStatement::Bind(int place, double value) {
  sqlite3_bind_double(statement_.get(), place, value);
}

void PlainStatement::Bind(int place, const char* value) {
  sqlite3_bind_text(statement_.get(), place, value, -1, SQLITE_STATIC);
}

Ref<Dictionary> Row(std::initializer_list<std::pair<const char*, Variant>> entries) {
  Ref<Dictionary> row = New<Dictionary>();
  for (const auto& [key, value] : entries) row->SetValue(key, value);
  return row;
}

void Require(bool done, const char* what) {
  if (done) return;
  std::fprintf(stderr, "The benchmark can't go on: %s failed.\n", what);
  std::exit(1);
}

}  // namespace rebate::bench
