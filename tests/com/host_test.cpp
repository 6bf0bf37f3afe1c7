#include <map>

#include "com/values.h"
#include "platform/automation/dispatch.h"
#include "tests/com/com_kit.h"
#include "tests/scheme_kit.h"

// What belongs to the host: its classes, registered with the system, and its cache, under the desktop window.
namespace rebate::com {
namespace {

// What the host's objects were asked, in order.
std::vector<Text> asked;

class HostObject : public Object {
 public:
  Variant GetItem(Text& key, Long&) {
    asked.push_back("GetItem " + key);
    return key == "IsOuterLogin" ? Variant(0) : Variant();
  }
  Variant GetProperty(Text& name, Long& process) {
    asked.push_back("GetProperty " + name);
    return process == static_cast<Long>(GetCurrentProcessId()) ? "of the host" : "of another";
  }
  bool NeedAutorized(const Variant& properties) {
    asked.push_back("NeedAutorized " + ToText(properties));
    return true;
  }
  Text GetAuthItemClassList() {
    asked.push_back("GetAuthItemClassList");
    return "8,1";
  }
  ObjectRef CreateInstance(Text& program_id, const Variant& context) {
    asked.push_back("CreateInstance " + program_id + (context.IsEmpty() ? "" : " with a context"));
    return New<HostObject>();
  }
  const MemberTable& Members() const override {
    using dispatch::Method;
    static const MemberTable members{
        Method("GetItem", &HostObject::GetItem, {"key", "process"}),
        Method("GetProperty", &HostObject::GetProperty, {"name", "process"}),
        Method("NeedAutorized", &HostObject::NeedAutorized, {"properties"}),
        Method("GetAuthItemClassList", &HostObject::GetAuthItemClassList, {}),
        Method("CreateInstance", &HostObject::CreateInstance, {"program_id", "[context]"}),
    };
    return members;
  }
};

class HostCache : public Object {
 public:
  bool LookUp(Text& key) { return entries.contains(key); }
  Variant Item(Text& key) { return entries[key]; }
  void SetItem(Text& key, const Variant& value) { entries[key] = value; }
  const MemberTable& Members() const override {
    static const MemberTable members{dispatch::Method("LookUp", &HostCache::LookUp, {"key"}),
                                     dispatch::Property("", &HostCache::Item, {"key"}),
                                     dispatch::PropertyPut("", &HostCache::SetItem, {"key", "value"})};
    return members;
  }
  std::map<Text, Variant> entries;
};

// Makes host objects for whoever creates the class.
class HostFactory final : public IClassFactory {
 public:
  virtual ~HostFactory() = default;
  STDMETHODIMP QueryInterface(REFIID, void** found) override {
    *found = this;
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }
  STDMETHODIMP CreateInstance(IUnknown*, REFIID id, void** object) override {
    return ClientSide(New<HostObject>())->QueryInterface(id, object);
  }
  STDMETHODIMP LockServer(BOOL) override { return S_OK; }
};

// A class of the host's while it lives: its program identifier in the registry, its factory with the system.
class HostClass {
 public:
  HostClass(const wchar_t* program_id, BYTE number) : key_(std::wstring(L"Software\\Classes\\") + program_id) {
    const CLSID id{0x7B2F4D10, 0x55AA, 0x4C6E, {0x90, 0x11, 0x22, 0x33, 0x44, 0x55, 0x66, number}};
    wchar_t text[40];
    StringFromGUID2(id, text, 40);
    RegSetKeyValueW(HKEY_LOCAL_MACHINE, (key_ + L"\\CLSID").c_str(), nullptr, REG_SZ, text,
                    static_cast<DWORD>((wcslen(text) + 1) * sizeof(wchar_t)));
    static HostFactory factory;
    EXPECT_EQ(CoRegisterClassObject(id, &factory, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &cookie_), S_OK);
  }
  ~HostClass() {
    CoRevokeClassObject(cookie_);
    RegDeleteTreeW(HKEY_LOCAL_MACHINE, key_.c_str());
  }
  HostClass(const HostClass&) = delete;
  HostClass& operator=(const HostClass&) = delete;

 private:
  std::wstring key_;
  DWORD cookie_ = 0;
};

TEST(Host, IsAskedForRightsAndKeepsTheAnswers) {
  const HostClass facade(L"TALMtsCacheService.CacheFacade", 1);
  const HostClass properties(L"TALPropsMgr.ShareProps", 2);
  const HostClass security(L"TALEBSBase.SecurityInfo", 3);
  const HostClass rights(L"TALEBCGLView.GLData", 4);
  const HostClass creator(L"TALGlobal.Creator", 5);
  const Ref<HostCache> cache = New<HostCache>();
  const ComRef<IDispatch> place = ClientSide(cache);
  const std::string property = std::to_string(GetCurrentProcessId());
  ASSERT_TRUE(SetPropA(GetDesktopWindow(), property.c_str(), place.get()));

  TestAccount account;
  AddMasterData(account);
  const Client manager = Client::Of("BaseInfoMgr");
  manager.Call("SaveSelectedItem", {account.dsn(), Row({{"1", 3}}), 2040, 1001});
  manager.Call("GetItemInfo", {2040, 1, account.dsn(), 1001});
  EXPECT_EQ(asked, (std::vector<Text>{"CreateInstance TALEBSBase.SecurityInfo", "GetItem IsOuterLogin",
                                      "GetProperty PropsString", "GetProperty PropsString", "NeedAutorized of the host",
                                      "GetAuthItemClassList"}));
  EXPECT_EQ(cache->entries["NeedAuthrize"], Variant(true));
  EXPECT_EQ(cache->entries["AuthrizeItemClassList"], Variant("8,1"));

  // What the cache says counts from now on, and the cache was borrowed: nobody holds it but its owner.
  asked.clear();
  cache->entries["NeedAuthrize"] = false;
  manager.Call("GetItemInfo", {2040, 1, account.dsn(), 1001});
  EXPECT_TRUE(asked.empty());
  RemovePropA(GetDesktopWindow(), property.c_str());
  place->AddRef();
  EXPECT_EQ(place->Release(), 1U);
}

}  // namespace
}  // namespace rebate::com
