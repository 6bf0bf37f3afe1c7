// Calls through the shared library, request and answer as JSON, against the same calls in C++, late-bound through the
// class objects.

#include <benchmark/benchmark.h>

#include <cstring>

#include "abi/rebate.h"
#include "bench/stored_schemes.h"
#include "platform/automation/class_objects.h"
#include "platform/automation/conversion.h"
#include "service/component_classes.h"

namespace rebate::bench {
namespace {

// The first argument, where there is one, is the data source, which is put in.
void CallByName(benchmark::State& state, const Text& member, std::vector<Variant> arguments,
                const BenchAccount& account) {
  RegisterComponent();
  const ObjectRef manager = CreateObject("TALMRebateRuleMgr.BaseInfoMgr");
  if (!arguments.empty()) arguments[0] = account.dsn();
  for (auto _ : state) {
    const Variant result = manager->Invoke(member, arguments);
    Require(!result.IsEmpty(), "the call");
  }
}

void CallByLibrary(benchmark::State& state, const Text& member, const Text& args, const BenchAccount& account) {
  rebate_session session = 0;
  Require(rebate_open(account.dsn().c_str(), 0, &session) == nullptr, "opening a session");
  const Text request = R"({"op":"BaseInfoMgr.)" + member + R"(","args":)" + args + "}";
  for (auto _ : state) {
    char* const answer = rebate_call(session, request.c_str());
    Require(std::strstr(answer, "\"result\":") != nullptr, answer);
    rebate_free(answer);
  }
  rebate_close(session);
}

const BenchAccount& FewSchemes() {
  return StoredSchemes(10, 3);
}

void NothingInCpp(benchmark::State& state) {
  CallByName(state, "TransMode", {}, FewSchemes());
}
void NothingByLibrary(benchmark::State& state) {
  CallByLibrary(state, "TransMode", "{}", FewSchemes());
}

void CheckInCpp(benchmark::State& state) {
  CallByName(state, "CheckEnableScheme", {"", 3, true, ""}, FewSchemes());
}
void CheckByLibrary(benchmark::State& state) {
  CallByLibrary(state, "CheckEnableScheme", R"({"lSchemeID":3,"Enabled":true,"msg":""})", FewSchemes());
}

void RangesInCpp(benchmark::State& state) {
  CallByName(state, "GetRebateRange", {"", 2040}, FewSchemes());
}
void RangesByLibrary(benchmark::State& state) {
  CallByLibrary(state, "GetRebateRange", R"({"lType":2040})", FewSchemes());
}

void ListInCpp(benchmark::State& state) {
  CallByName(state, "LoadSchemeListData", {"", Row({{"RebateClassType", 24}})},
             StoredSchemes(static_cast<int>(state.range(0)), 3));
}
void ListByLibrary(benchmark::State& state) {
  CallByLibrary(state, "LoadSchemeListData", R"({"dct":{"RebateClassType":24}})",
                StoredSchemes(static_cast<int>(state.range(0)), 3));
}

BENCHMARK(NothingInCpp)->UseRealTime();
BENCHMARK(NothingByLibrary)->UseRealTime();
BENCHMARK(CheckInCpp)->UseRealTime();
BENCHMARK(CheckByLibrary)->UseRealTime();
BENCHMARK(RangesInCpp)->UseRealTime();
BENCHMARK(RangesByLibrary)->UseRealTime();
BENCHMARK(ListInCpp)->Arg(10)->Arg(1000)->UseRealTime();
BENCHMARK(ListByLibrary)->Arg(10)->Arg(1000)->UseRealTime();

}  // namespace
}  // namespace rebate::bench
