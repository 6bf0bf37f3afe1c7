#include <windows.h>

#include <cstdio>
#include <cstdlib>

#include "com/foreign_object.h"
#include "com/wide_text.h"
#include "platform/automation/error.h"
#include "platform/automation/variant.h"

// Makes the same calls over and over, as a late-bound client in this process, and prints what memory the process has of
// its own before and behind them: rebate_com_leak ACCOUNT CALLS. Ends with 1 where it has grown by more than a tenth.
namespace {

using rebate::Ref;
using rebate::Variant;
using rebate::com::ForeignObject;

Ref<ForeignObject> Create(const wchar_t* program_id) {
  CLSID id{};
  rebate::com::ComRef<IDispatch> object;
  if (FAILED(CLSIDFromProgID(program_id, &id)) ||
      FAILED(CoCreateInstance(id, nullptr, CLSCTX_INPROC_SERVER, __uuidof(IDispatch),
                              reinterpret_cast<void**>(object.Receive())))) {
    throw rebate::Error(429, "", "The component isn't registered");
  }
  return rebate::New<ForeignObject>(std::move(object));
}

Variant Call(const Ref<ForeignObject>& object, std::string_view member, std::vector<Variant> arguments) {
  return object->Invoke(member, arguments);
}

// Four calls: containers in and out, a by-ref text, an error.
void Round(const Ref<ForeignObject>& manager, const Variant& dsn) {
  const Ref<ForeignObject> filter = Create(L"TALMRebateRuleMgr.Dictionary");
  Variant entry[] = {"RebateClassType", 24};
  filter->Put("Value", entry);
  Call(manager, "LoadSchemeListData", {dsn, filter});
  Call(manager, "CheckEnableScheme", {dsn, 1, true, "a text that is longer than fits into a value"});
  Call(manager, "LoadRebateTypeData", {dsn, 24});
  try {
    Call(manager, "UpdateBatch", {dsn, "no array"});
  } catch (const rebate::Error&) {
    // Its texts are part of what must not leak.
  }
}

// The committed memory that no other process shares.
unsigned long long PrivateBytes() {
  unsigned long long bytes = 0;
  MEMORY_BASIC_INFORMATION region{};
  const char* at = nullptr;
  while (VirtualQuery(at, &region, sizeof region) == sizeof region) {
    if (region.State == MEM_COMMIT && region.Type == MEM_PRIVATE) bytes += region.RegionSize;
    at = static_cast<const char*>(region.BaseAddress) + region.RegionSize;
  }
  return bytes;
}

int Run(const char* account, long calls) {
  const Ref<ForeignObject> manager = Create(L"TALMRebateRuleMgr.BaseInfoMgr");
  const Variant dsn("Data Source=" + std::string(account) + ";AppUser=1001");
  for (int i = 0; i < 500; ++i) Round(manager, dsn);
  const unsigned long long before = PrivateBytes();
  for (long i = 0; i < calls / 4; ++i) Round(manager, dsn);
  const unsigned long long after = PrivateBytes();
  std::printf("private bytes before %llu, after %ld calls %llu\n", before, calls, after);
  return before > 0 && after <= before + before / 10 ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) return 2;
  CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  int status = 1;
  try {
    status = Run(argv[1], std::strtol(argv[2], nullptr, 10));
  } catch (const rebate::Error& error) {
    std::fprintf(stderr, "%s\n", error.description.c_str());
  }
  CoUninitialize();
  return status;
}
