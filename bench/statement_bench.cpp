// The Transact-SQL front end alone: fresh texts of a known shape against the prepared SQLite statement under them, and
// texts of a new shape, which have to be parsed.

#include "bench/bench_account.h"
#include "bench/comparison.h"

namespace rebate::bench {
namespace {

constexpr int kTimes = 1000;  // a turn

// Sends so many texts against running the prepared statement as often, in a transaction that is undone.
template <typename TextOf, typename RunPlain>
void Send(benchmark::State& state, const char* plain_sql, const TextOf& text_of, const RunPlain& run_plain) {
  const BenchAccount account;
  const BenchAccount floor_account;
  const ConnectionRef connection = account.Connect();
  PlainDatabase database(floor_account.path());
  PlainStatement plain(database, plain_sql);
  int i = 0;
  std::vector<Text> texts(kTimes);
  Comparison comparison(state, kTimes);
  for (auto _ : state) {
    for (Text& text : texts) text = text_of(++i);
    connection->BeginWork();
    connection->Execute(text_of(++i));
    comparison.Work([&] {
      for (const Text& text : texts) benchmark::DoNotOptimize(connection->Execute(text));
    });
    connection->RollbackWork();
    database.Run("BEGIN IMMEDIATE");
    comparison.Floor([&] {
      for (int k = 0; k < kTimes; ++k) run_plain(plain, i + k);
    });
    database.Run("ROLLBACK");
  }
}

void KnownInsert(benchmark::State& state) {
  Send(
      state, "INSERT INTO t_FL_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName) VALUES (?,?,?,?,?)",
      [](int i) {
        return "INSERT INTO t_FL_AllOrgs (FSchemeID,FRowID,FItemClassID,FItemID,FShowName)\r\nVALUES (1," +
               std::to_string(i) + ",8,7,'organisation')";
      },
      [](PlainStatement& insert, int i) { insert.Run(1, i, 8, 7, "organisation"); });
}

void KnownAmounts(benchmark::State& state) {
  Send(
      state, "INSERT INTO t_FL_RebateRange (FLowerLimit,FUpperLimit,FIndex,FSchemeID) VALUES (?,?,?,?)",
      [](int i) {
        return "INSERT INTO t_FL_RebateRange (FLowerLimit,FUpperLimit,FIndex,FSchemeID)\r\nVALUES (" +
               std::to_string(i) + ".25," + std::to_string(i + 100) + ",1,3)";
      },
      [](PlainStatement& insert, int i) { insert.Run(i + 0.25, i + 100, 1, 3); });
}

void ReadName(PlainStatement& select, int type) {
  sqlite3_bind_int(select.get(), 1, type);
  Require(select.Step(), "the plain select");
  benchmark::DoNotOptimize(sqlite3_column_text(select.get(), 0));
  select.Reset();
}

void KnownSelect(benchmark::State& state) {
  Send(
      state, "select FTypeName from t_FL_SchemeMode where FRebateType=?",
      [](int i) { return "select FTypeName from t_FL_SchemeMode where FRebateType=" + std::to_string(2040 + i % 7); },
      [](PlainStatement& select, int i) { ReadName(select, 2040 + i % 7); });
}

// A new alias makes a new template, so that nothing cached fits.
void NewSelect(benchmark::State& state) {
  Send(
      state, "select FTypeName from t_FL_SchemeMode where FRebateType=?",
      [](int i) {
        return "select FTypeName as Name" + std::to_string(i) + " from t_FL_SchemeMode where FRebateType=2040";
      },
      [](PlainStatement& select, int) { ReadName(select, 2040); });
}

BENCHMARK(KnownInsert)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(KnownAmounts)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(KnownSelect)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(NewSelect)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
}  // namespace rebate::bench
