// What asks for few of the schemes of a growing account, beside the same on one of 1,000.

#include <benchmark/benchmark.h>

#include "bench/comparison.h"
#include "bench/stored_schemes.h"
#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"

namespace rebate::bench {
namespace {

// `call(manager, account, shape)` on the account of the benchmark's size, beside that on 1,000 schemes.
template <typename Call>
void CompareSizes(benchmark::State& state, const Call& call) {
  const StoredShape shape = GrowingShape(static_cast<int>(state.range(0)));
  const StoredShape small_shape = GrowingShape(1000);
  const BenchAccount& account = StoredSchemes(shape);
  const BenchAccount& small_account = StoredSchemes(small_shape);
  BaseInfoMgr manager;
  call(manager, account, shape);
  call(manager, small_account, small_shape);
  Comparison comparison(state);
  for (auto _ : state) {
    comparison.Work([&] { call(manager, account, shape); });
    comparison.Floor([&] { call(manager, small_account, small_shape); });
  }
}

void RequireList(BaseInfoMgr& manager, const BenchAccount& account, Ref<Dictionary> filter, int schemes) {
  filter->SetValue("RebateClassType", 24);
  const Ref<Vector> list = manager.LoadSchemeListData(account.dsn(), filter);
  Require(list && list->Size() == schemes, "the list of a few");
}

void ListById(benchmark::State& state) {
  CompareSizes(state, [](BaseInfoMgr& manager, const BenchAccount& account, const StoredShape&) {
    RequireList(manager, account, Row({{"SchemeID", 4}}), 1);
  });
}

// By the number of one supplier.
void ListByNumber(benchmark::State& state) {
  CompareSizes(state, [](BaseInfoMgr& manager, const BenchAccount& account, const StoredShape& shape) {
    const Text number = SupplierNumber(SupplierOf(shape, 4, 0));
    RequireList(manager, account, Row({{"BegTxt", number}, {"EndTxt", number}}), 20);
  });
}

// The disabled schemes.
void ListByStatus(benchmark::State& state) {
  CompareSizes(state, [](BaseInfoMgr& manager, const BenchAccount& account, const StoredShape& shape) {
    RequireList(manager, account, Row({{"Status", 0}}), shape.disabled);
  });
}

void SchemeNameFree(benchmark::State& state) {
  CompareSizes(state, [](BaseInfoMgr& manager, const BenchAccount& account, const StoredShape&) {
    Require(!manager.ExistsSchemeName(account.dsn(), 0, "A free name"), "asking for a free name");
  });
}

void SchemeNameTaken(benchmark::State& state) {
  CompareSizes(state, [](BaseInfoMgr& manager, const BenchAccount& account, const StoredShape& shape) {
    Require(manager.ExistsSchemeName(account.dsn(), 0, SchemeName(shape.schemes)), "asking for a name that is taken");
  });
}

// Of a disabled scheme, all others of its type but 19 being enabled.
void CheckEnable(benchmark::State& state) {
  CompareSizes(state, [](BaseInfoMgr& manager, const BenchAccount& account, const StoredShape&) {
    Text question;
    Require(manager.CheckEnableScheme(account.dsn(), 1, true, question) && !question.empty(), "the enabling check");
  });
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->UseManualTime();
}

BENCHMARK(ListById)->Apply(Sizes);
BENCHMARK(ListByNumber)->Apply(Sizes);
BENCHMARK(ListByStatus)->Apply(Sizes);
BENCHMARK(SchemeNameFree)->Apply(Sizes);
BENCHMARK(SchemeNameTaken)->Apply(Sizes);
BENCHMARK(CheckEnable)->Apply(Sizes);

}  // namespace
}  // namespace rebate::bench
