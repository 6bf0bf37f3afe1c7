#include <thread>

#include "platform/automation/conversion.h"
#include "tests/com/com_kit.h"
#include "tests/scheme_kit.h"

namespace rebate::com {
namespace {

using CanUnload = HRESULT(STDAPICALLTYPE*)();

CanUnload OfLibrary() {
  const HMODULE library = GetModuleHandleW(REBATE_LIBRARY_FILE);
  return reinterpret_cast<CanUnload>(reinterpret_cast<void*>(GetProcAddress(library, "DllCanUnloadNow")));
}

TEST(Threads, EachHaveAnApartmentWithInstancesOfTheirOwn) {
  TestAccount account;
  AddMasterData(account);
  std::vector<std::thread> threads;
  std::atomic<int> done = 0;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&, i] {
      const Apartment apartment;
      const Client manager = Client::Of("BaseInfoMgr");
      const Text name = "scheme " + std::to_string(i);
      for (int n = 0; n < 20; ++n) {
        const Variant bands = List({Row({{"FLower", 0}, {"FUpper", 100}})});
        const Variant rows = List({Row({{"FItemID", 71},
                                        {"FOrgID", 3},
                                        {"FRebateCount", 1},
                                        {"FRebateRate", 2},
                                        {"FUnitID", 0},
                                        {"FCheckItemID", 0}})});
        const Variant saved = manager.Call(
            "SaveSchemeData", {account.dsn(), 0, name + " " + std::to_string(n), 2041, 1, "3", bands, rows, ""});
        if (saved == Variant(true)) ++done;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(done, 80);
  EXPECT_EQ(account.Rows("select count(*) from t_FL_SchemeList"), "80");
}

TEST(Threads, LetTheLibraryGoWithTheirLastObject) {
  const ComRef<IDispatch> first = Created("TALMRebateRuleMgr.BaseInfoMgr");
  const CanUnload can_unload = OfLibrary();
  ASSERT_NE(can_unload, nullptr);
  EXPECT_EQ(can_unload(), S_FALSE);
  const Client list = Client::Of("Vector");
  list.Call("Add", {first ? Variant(1) : Variant(2)});
  EXPECT_EQ(can_unload(), S_FALSE);
}

TEST(Threads, FindNothingInUseBehindTheLastObject) {
  CanUnload can_unload = nullptr;
  {
    const Client list = Client::Of("Vector");
    can_unload = OfLibrary();
  }
  EXPECT_EQ(can_unload(), S_OK);
  CoFreeUnusedLibraries();
  EXPECT_NE(GetModuleHandleW(REBATE_LIBRARY_FILE), nullptr);  // threads that used it may end later
  EXPECT_TRUE(Created("TALMRebateRuleMgr.Dictionary"));
}

}  // namespace
}  // namespace rebate::com
