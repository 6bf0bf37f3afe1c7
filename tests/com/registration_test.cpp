#include "com/registration.h"

#include <set>

#include "com/creatable_classes.h"
#include "platform/values/ascii.h"
#include "service/component_classes.h"
#include "tests/com/com_kit.h"

namespace rebate::com {
namespace {

constexpr const wchar_t* kClasses = L"Software\\Classes";

// The subkeys of a key, a level deep, in which one of the component's identifiers or names stands.
void AddOwn(HKEY root, const std::wstring& path, std::set<Text>& found) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
  wchar_t name[256];
  for (DWORD i = 0;; ++i) {
    DWORD length = 256;
    if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) break;
    const Text text = AsciiLower(Narrow({name, length}));
    bool own = text.starts_with("talmrebaterulemgr.") || text == AsciiLower(TheComponent().id);
    for (const ComponentClass& entry : TheComponent().classes) own |= text == AsciiLower(entry.interface_id);
    for (const CreatableClass& entry : CreatableClasses()) {
      wchar_t id[40];
      StringFromGUID2(entry.class_id, id, 40);
      own |= text == AsciiLower(Narrow(id));
    }
    if (own) found.insert(text);
  }
  RegCloseKey(key);
}

std::set<Text> OwnKeys(HKEY root) {
  std::set<Text> found;
  for (const wchar_t* below : {L"", L"\\CLSID", L"\\Interface", L"\\TypeLib"}) {
    AddOwn(root, std::wstring(kClasses) + below, found);
  }
  return found;
}

// Four classes with their names, two interfaces, the library.
constexpr std::size_t kKeys = 4 * 2 + 2 + 1;

class Registration : public ::testing::Test {
 protected:
  ~Registration() override { Register(Audience::Machine, REBATE_LIBRARY_FILE); }
};

TEST_F(Registration, LeavesNothingBehind) {
  EXPECT_EQ(OwnKeys(HKEY_LOCAL_MACHINE).size(), kKeys);
  Unregister(Audience::Machine);
  EXPECT_EQ(OwnKeys(HKEY_LOCAL_MACHINE), std::set<Text>());
  Unregister(Audience::Machine);  // nothing there any more
}

TEST_F(Registration, ServesTheUserAlone) {
  Unregister(Audience::Machine);
  Register(Audience::User, REBATE_LIBRARY_FILE);
  EXPECT_GE(OwnKeys(HKEY_CURRENT_USER).size(), 4U * 2);
  EXPECT_LT(OwnKeys(HKEY_LOCAL_MACHINE).size(), 4U);  // not every system keeps a type library for a user alone
  Unregister(Audience::User);
  EXPECT_EQ(OwnKeys(HKEY_CURRENT_USER), std::set<Text>());
  EXPECT_EQ(OwnKeys(HKEY_LOCAL_MACHINE), std::set<Text>());
}

TEST_F(Registration, OfAFileWithoutTypeLibraryIsTakenBack) {
  Unregister(Audience::Machine);
  EXPECT_THROW(Register(Audience::Machine, L"C:\\none.dll"), Error);
  EXPECT_EQ(OwnKeys(HKEY_LOCAL_MACHINE), std::set<Text>());
}

}  // namespace
}  // namespace rebate::com
