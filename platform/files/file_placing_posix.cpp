#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "platform/files/file_placing.h"
#include "platform/files/files.h"

namespace rebate::files {

std::error_code Replace(const Text& from, const Text& to) {
  if (std::rename(from.c_str(), to.c_str()) == 0) return {};
  return {errno, std::generic_category()};
}

void SyncFolderOf(const Text& path) {
  const std::filesystem::path folder = ToPath(path).parent_path();
  const int file = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (file < 0) return;
  fsync(file);
  close(file);
}

}  // namespace rebate::files
