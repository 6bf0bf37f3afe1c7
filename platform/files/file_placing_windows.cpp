#include <windows.h>

#include "platform/files/file_placing.h"
#include "platform/files/files.h"

namespace rebate::files {

std::error_code Replace(const Text& from, const Text& to) {
  constexpr DWORD kHow = MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH;
  if (MoveFileExW(ToPath(from).c_str(), ToPath(to).c_str(), kHow) != FALSE) return {};
  return {static_cast<int>(GetLastError()), std::system_category()};
}

// The system writes names through by itself.
void SyncFolderOf(const Text&) {}

}  // namespace rebate::files
