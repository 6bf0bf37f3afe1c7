#ifdef REBATE_HAS_ODBC

// Saving a scheme into an account on a server, a PostgreSQL of the benchmark's own on the loopback address, against the
// same save into an embedded account. Besides the times it counts the requests whose answers the save waits for: on a
// real network each costs a journey.

#include "bench/bench_account.h"
#include "bench/comparison.h"
#include "bench/scheme_to_save.h"
#include "platform/database/odbc/odbc_account.h"
#include "platform/login/call_observer.h"
#include "platform/values/ascii.h"
#include "tests/postgres_account.h"
#include "tests/postgres_proxy.h"
#include "tests/postgres_server.h"

namespace rebate::bench {
namespace {

// Counts the calls' texts that write rows of their own.
class InsertCount : public CallObserver {
 public:
  InsertCount() { SetCallObserver(this); }
  ~InsertCount() override { SetCallObserver(nullptr); }
  int value() const { return value_; }

  void Opening(std::string_view) override {}
  void VotingAbort() override {}
  void VotingComplete() override {}
  void Connecting() override {}
  void Executing(std::string_view text) override {
    value_ += EqualsIgnoreCase(text.substr(0, 6), "insert") && ContainsIgnoreCase(text, "values (") ? 1 : 0;
  }
  void Refused(const Error&) override {}
  void CallingComponent(std::string_view, std::string_view) override {}

 private:
  int value_ = 0;
};

void SaveSchemeOnServer(benchmark::State& state) {
  const std::unique_ptr<PostgresServer> server = PostgresServer::Start();
  if (!server) return state.SkipWithError("PostgreSQL and its ODBC driver aren't installed");
  PostgresProxy proxy(server->port());
  const ConnectionRef stored = OpenOdbc(server->ConnectionText());
  MakePostgresAccount(*stored, true);
  const BenchAccount embedded;
  PlainDatabase database(embedded.path());
  const auto clear = [&] {
    for (const char* table : {"SchemeList", "RebateRange", "AllOrgs", "AllItems", "RebateRule"}) {
      const Text text = Text("DELETE FROM t_FL_") + table;
      stored->Execute(text);
      database.Run(text.c_str());
    }
  };

  const Text dsn = server->ConnectionThrough(proxy.port());
  SchemeToSave scheme(static_cast<int>(state.range(0)));
  int inserts = 0;
  {
    const InsertCount count;
    // The program doesn't end here, which would leave the server running.
    if (!scheme.Save(dsn)) return state.SkipWithError("The save on the server failed");
    inserts = count.value();
  }
  clear();
  int round_trips = 0;
  Comparison comparison(state);
  for (auto _ : state) {
    bool saved = false, saved_here = false;
    proxy.TakeRoundTrips();
    comparison.Work([&] { saved = scheme.Save(dsn); });
    round_trips = proxy.TakeRoundTrips();
    comparison.Floor([&] { saved_here = scheme.Save(embedded.dsn()); });
    if (!saved || !saved_here) {
      state.SkipWithError("A save failed");
      break;
    }
    clear();
  }
  state.counters["round_trips"] = round_trips;
  state.counters["inserts_per_round_trip"] = static_cast<double>(inserts) / round_trips;
}

BENCHMARK(SaveSchemeOnServer)->Arg(10)->Arg(100)->Arg(1000)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
}  // namespace rebate::bench

#endif
