#include "com/registration.h"

#include <oleauto.h>

#include "com/com_ref.h"
#include "com/creatable_classes.h"
#include "com/errors.h"
#include "com/wide_text.h"
#include "service/component_classes.h"

// The system has these; not every compiler's headers tell of them.
STDAPI RegisterTypeLibForUser(ITypeLib* library, OLECHAR* path, OLECHAR* help_folder);
STDAPI UnRegisterTypeLibForUser(REFGUID id, WORD major, WORD minor, LCID language, SYSKIND system);

namespace rebate::com {
namespace {

constexpr SYSKIND kSystem = sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32;

// A key of the registry that is closed with it.
class Key {
 public:
  Key() = default;
  Key(const Key&) = delete;
  Key& operator=(const Key&) = delete;
  ~Key() {
    if (key_ != nullptr) RegCloseKey(key_);
  }
  HKEY get() const { return key_; }
  HKEY* Receive() { return &key_; }

 private:
  HKEY key_ = nullptr;
};

void CheckResult(HRESULT result) {
  if (FAILED(result)) throw Error(result, "", "The registry can't be changed: " + SystemText(result));
}

void Check(LSTATUS status) {
  CheckResult(HRESULT_FROM_WIN32(static_cast<DWORD>(status)));
}

std::wstring GuidText(REFGUID id) {
  wchar_t text[40];
  StringFromGUID2(id, text, 40);
  return text;
}

std::wstring ClassPath(const std::wstring& below) {
  return L"Software\\Classes\\" + below;
}

HKEY RootOf(Audience audience) {
  return audience == Audience::Machine ? HKEY_LOCAL_MACHINE : HKEY_CURRENT_USER;
}

void Write(Audience audience, const std::wstring& path, const std::wstring& value, const wchar_t* name = nullptr) {
  Key key;
  Check(RegCreateKeyExW(RootOf(audience), ClassPath(path).c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, key.Receive(),
                        nullptr));
  Check(RegSetValueExW(key.get(), name, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                       static_cast<DWORD>((value.size() + 1) * sizeof(wchar_t))));
}

void Remove(Audience audience, const std::wstring& path) {
  const LSTATUS status = RegDeleteTreeW(RootOf(audience), ClassPath(path).c_str());
  if (status != ERROR_FILE_NOT_FOUND) Check(status);
}

// Whether the key stands in the registry of either width.
bool IsInEitherView(Audience audience, const std::wstring& path) {
  for (const REGSAM view : {KEY_WOW64_32KEY, KEY_WOW64_64KEY}) {
    Key key;
    if (RegOpenKeyExW(RootOf(audience), ClassPath(path).c_str(), 0, KEY_READ | view, key.Receive()) == ERROR_SUCCESS)
      return true;
  }
  return false;
}

std::wstring ClassKey(const CreatableClass& entry) {
  return L"CLSID\\" + GuidText(entry.class_id);
}

void WriteClass(Audience audience, const CreatableClass& entry, const std::wstring& path) {
  const ComponentLibrary& library = TheComponent();
  const std::wstring program_id = Wide(entry.program_id());
  const std::wstring key = ClassKey(entry);
  Write(audience, program_id, program_id);
  Write(audience, program_id + L"\\CLSID", GuidText(entry.class_id));
  Write(audience, key, program_id);
  Write(audience, key + L"\\ProgID", program_id);
  Write(audience, key + L"\\Programmable", L"");
  Write(audience, key + L"\\InprocServer32", path);
  Write(audience, key + L"\\InprocServer32", L"Apartment", L"ThreadingModel");
  if (!entry.in_type_library) return;
  Write(audience, key + L"\\TypeLib", Wide(library.id));
  Write(audience, key + L"\\VERSION",
        std::to_wstring(library.major_version) + L"." + std::to_wstring(library.minor_version));
}

void WriteTypeLibrary(Audience audience, const std::wstring& path) {
  ComRef<ITypeLib> library;
  CheckResult(LoadTypeLibEx(path.c_str(), REGKIND_NONE, library.Receive()));
  std::wstring file = path;
  CheckResult(audience == Audience::Machine ? RegisterTypeLib(library.get(), file.data(), nullptr)
                                            : RegisterTypeLibForUser(library.get(), file.data(), nullptr));
}

void RemoveTypeLibrary(Audience audience) {
  const ComponentLibrary& library = TheComponent();
  GUID id{};
  CheckResult(CLSIDFromString(Wide(library.id).c_str(), &id));
  const auto major = static_cast<WORD>(library.major_version);
  const auto minor = static_cast<WORD>(library.minor_version);
  OwnBstr registered;
  if (FAILED(QueryPathOfRegTypeLib(id, major, minor, LOCALE_NEUTRAL, registered.Receive()))) return;
  const HRESULT result = audience == Audience::Machine
                             ? UnRegisterTypeLib(id, major, minor, LOCALE_NEUTRAL, kSystem)
                             : UnRegisterTypeLibForUser(id, major, minor, LOCALE_NEUTRAL, kSystem);
  // It may be there for the other audience.
  if (result != TYPE_E_REGISTRYACCESS) CheckResult(result);
}

}  // namespace

void Register(Audience audience, const std::wstring& path) {
  try {
    for (const CreatableClass& entry : CreatableClasses()) WriteClass(audience, entry, path);
    WriteTypeLibrary(audience, path);
  } catch (...) {
    const Error error = CurrentError();
    try {
      Unregister(audience);
    } catch (const Error&) {
      // The first failure is the one to tell.
    }
    throw error;
  }
}

void Unregister(Audience audience) {
  for (const CreatableClass& entry : CreatableClasses()) {
    Remove(audience, ClassKey(entry));
    // Both widths share the names.
    if (!IsInEitherView(audience, ClassKey(entry))) Remove(audience, Wide(entry.program_id()));
  }
  RemoveTypeLibrary(audience);
}

}  // namespace rebate::com
