// The Transact-SQL front end alone: a cached statement against the prepared SQLite statement under it, and a text that
// has to be parsed.

#include <benchmark/benchmark.h>

#include "bench/bench_account.h"

namespace rebate::bench {
namespace {

void CachedInsert(benchmark::State& state) {
  const BenchAccount account;
  const ConnectionRef connection = account.Connect();
  connection->BeginWork();
  int i = 0;
  for (auto _ : state) {
    ++i;
    connection->Execute("INSERT INTO t_FL_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName)\r\nVALUES (1," +
                        std::to_string(i) + ",8,7,'organisation')");
  }
  connection->RollbackWork();
  state.SetItemsProcessed(state.iterations());
}

void PreparedInsert(benchmark::State& state) {
  const BenchAccount account;
  PlainDatabase database(account.path());
  PlainStatement insert(
      database, "INSERT INTO t_FL_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName) VALUES (?,?,?,?,?)");
  database.Run("BEGIN IMMEDIATE");
  int i = 0;
  for (auto _ : state) insert.Run(1, ++i, 8, 7, "organisation");
  database.Run("ROLLBACK");
  state.SetItemsProcessed(state.iterations());
}

void CachedAmounts(benchmark::State& state) {
  const BenchAccount account;
  const ConnectionRef connection = account.Connect();
  connection->BeginWork();
  int i = 0;
  for (auto _ : state) {
    ++i;
    connection->Execute("INSERT INTO t_FL_RebateRange (FLowerLimit,FUpperLimit,FIndex,FSchemeID)\r\nVALUES (" +
                        std::to_string(i) + ".25," + std::to_string(i + 100) + ",1,3)");
  }
  connection->RollbackWork();
  state.SetItemsProcessed(state.iterations());
}

void PreparedAmounts(benchmark::State& state) {
  const BenchAccount account;
  PlainDatabase database(account.path());
  PlainStatement insert(database,
                        "INSERT INTO t_FL_RebateRange (FLowerLimit,FUpperLimit,FIndex,FSchemeID) VALUES (?,?,?,?)");
  database.Run("BEGIN IMMEDIATE");
  int i = 0;
  for (auto _ : state) {
    ++i;
    insert.Run(i + 0.25, i + 100, 1, 3);
  }
  database.Run("ROLLBACK");
  state.SetItemsProcessed(state.iterations());
}

void CachedSelect(benchmark::State& state) {
  const BenchAccount account;
  const ConnectionRef connection = account.Connect();
  connection->BeginWork();
  int i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(connection->Execute("select FTypeName from t_FL_SchemeMode where FRebateType=" +
                                                 std::to_string(2040 + ++i % 7)));
  }
  state.SetItemsProcessed(state.iterations());
}

void PreparedSelect(benchmark::State& state) {
  const BenchAccount account;
  const PlainDatabase database(account.path());
  PlainStatement select(database, "select FTypeName from t_FL_SchemeMode where FRebateType=?");
  sqlite3_exec(database.get(), "BEGIN", nullptr, nullptr, nullptr);
  int i = 0;
  for (auto _ : state) {
    sqlite3_bind_int(select.get(), 1, 2040 + ++i % 7);
    select.Step();
    benchmark::DoNotOptimize(sqlite3_column_text(select.get(), 0));
    select.Reset();
  }
  state.SetItemsProcessed(state.iterations());
}

// A new alias makes a new template, so that nothing cached fits.
void ParsedSelect(benchmark::State& state) {
  const BenchAccount account;
  const ConnectionRef connection = account.Connect();
  connection->BeginWork();
  int i = 0;
  for (auto _ : state) {
    connection->Execute("select FTypeName as Name" + std::to_string(++i) +
                        " from t_FL_SchemeMode where FRebateType=2040");
  }
  state.SetItemsProcessed(state.iterations());
}

BENCHMARK(CachedInsert);
BENCHMARK(PreparedInsert);
BENCHMARK(CachedAmounts);
BENCHMARK(PreparedAmounts);
BENCHMARK(CachedSelect);
BENCHMARK(PreparedSelect);
BENCHMARK(ParsedSelect);

}  // namespace
}  // namespace rebate::bench
