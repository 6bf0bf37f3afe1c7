#include <aclapi.h>
#include <fcntl.h>
#include <io.h>
#include <process.h>
#include <share.h>
#include <sys/stat.h>
#include <windows.h>

#include <algorithm>
#include <cerrno>
#include <memory>

#include "platform/files/files.h"
#include "platform/values/text.h"

namespace rebate::files {
namespace {

std::wstring Wide(const Text& text) {
  const std::u16string wide = ToWide(text);
  return {wide.begin(), wide.end()};
}

Text Narrow(std::wstring_view wide) {
  return FromWide(std::u16string(wide.begin(), wide.end()));
}

// A handle of the system, closed with its owner.
struct CloseHandleOf {
  void operator()(HANDLE handle) const { CloseHandle(handle); }
};
using OwnedHandle = std::unique_ptr<void, CloseHandleOf>;

// Null where the file can't be opened so; nobody else is kept from it meanwhile.
OwnedHandle Open(const Text& path, DWORD access) {
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE handle =
      CreateFileW(Wide(path).c_str(), access, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  return OwnedHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

bool IsWellKnown(PSID who, WELL_KNOWN_SID_TYPE kind) {
  return IsWellKnownSid(who, kind) != FALSE;
}

bool GrantsToMany(ACL* list) {
  if (list == nullptr) return true;  // no list at all: everybody may do anything
  for (DWORD at = 0; at < list->AceCount; ++at) {
    void* entry = nullptr;
    if (GetAce(list, at, &entry) == FALSE) return true;
    auto* const allowed = static_cast<ACCESS_ALLOWED_ACE*>(entry);
    const bool counts =
        allowed->Header.AceType == ACCESS_ALLOWED_ACE_TYPE && (allowed->Header.AceFlags & INHERIT_ONLY_ACE) == 0;
    if (!counts || (allowed->Mask & (FILE_READ_DATA | FILE_WRITE_DATA | GENERIC_ALL | GENERIC_READ)) == 0) continue;
    PSID who = &allowed->SidStart;
    for (const WELL_KNOWN_SID_TYPE many :
         {WinWorldSid, WinAuthenticatedUserSid, WinBuiltinUsersSid, WinBuiltinGuestsSid, WinInteractiveSid}) {
      if (IsWellKnown(who, many)) return true;
    }
  }
  return false;
}

// Whether a group to which every user belongs may read or write the file.
bool IsShared(HANDLE file) {
  ACL* list = nullptr;
  PSECURITY_DESCRIPTOR owner = nullptr;
  if (GetSecurityInfo(file, SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list, nullptr, &owner) !=
      ERROR_SUCCESS) {
    return true;
  }
  const bool shared = GrantsToMany(list);
  LocalFree(owner);
  return shared;
}

}  // namespace

std::filesystem::path ToPath(const Text& path) {
  return Wide(path);
}

Text FromPath(const std::filesystem::path& path) {
  return Narrow(path.native());
}

bool CanBeChanged(const Text& path) {
  const DWORD marks = GetFileAttributesW(Wide(path).c_str());
  if (marks == INVALID_FILE_ATTRIBUTES || (marks & FILE_ATTRIBUTE_READONLY) != 0) return false;
  return Open(path, GENERIC_READ | GENERIC_WRITE) != nullptr;
}

std::error_code CreateNew(const Text& path) {
  int file = -1;
  const errno_t error = _wsopen_s(&file, Wide(path).c_str(), _O_CREAT | _O_EXCL | _O_RDWR | _O_BINARY | _O_NOINHERIT,
                                  _SH_DENYNO, _S_IREAD | _S_IWRITE);
  if (error != 0) return {error, std::generic_category()};
  _close(file);
  return {};
}

std::error_code MoveToFreeName(const Text& from, const Text& to) {
  if (_wrename(Wide(from).c_str(), Wide(to).c_str()) == 0) return {};
  // The library's own number for a name that is taken isn't the same everywhere.
  return {IsTaken(to) ? EEXIST : errno, std::generic_category()};
}

std::optional<Identity> IdentityOf(const Text& path) {
  const OwnedHandle file = Open(path, 0);
  BY_HANDLE_FILE_INFORMATION found;
  if (!file || GetFileInformationByHandle(file.get(), &found) == FALSE) return std::nullopt;
  const std::uint64_t high = found.nFileIndexHigh;
  return Identity(found.dwVolumeSerialNumber, high << 32 | found.nFileIndexLow);
}

Text NameOfThisProcess(const Text& path) {
  return path + '-' + std::to_string(_getpid());
}

PrivateFile ReadPrivate(const Text& path, std::size_t most) {
  const OwnedHandle file = Open(path, GENERIC_READ | READ_CONTROL);
  if (!file) return {PrivateFile::State::Unreadable, {}};
  if (KindOf(path) != Kind::File) return {PrivateFile::State::NoFile, {}};
  if (IsShared(file.get())) return {PrivateFile::State::Shared, {}};
  Text start(most, '\0');
  DWORD size = 0;
  if (ReadFile(file.get(), start.data(), static_cast<DWORD>(most), &size, nullptr) == FALSE) size = 0;
  start.resize(size);
  return {PrivateFile::State::Read, std::move(start)};
}

Text CommandToMakePrivate(const Text& path) {
  return "`icacls \"" + path + "\" /inheritance:r /grant:r \"%USERNAME%:F\"` does it,";
}

std::optional<Text> EnvironmentVariable(const Text& name) {
  const wchar_t* const value = _wgetenv(Wide(name).c_str());
  if (value == nullptr) return std::nullopt;
  return Narrow(value);
}

}  // namespace rebate::files
