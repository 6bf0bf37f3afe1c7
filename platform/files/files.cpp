#include "platform/files/files.h"

#include <fstream>
#include <iterator>

namespace rebate::files {

namespace fs = std::filesystem;

Kind KindOf(const Text& path) {
  std::error_code ignored;
  switch (fs::status(ToPath(path), ignored).type()) {
    case fs::file_type::none:
    case fs::file_type::not_found:
      return Kind::Missing;
    case fs::file_type::regular:
      return Kind::File;
    case fs::file_type::directory:
      return Kind::Directory;
    default:
      return Kind::Other;
  }
}

bool IsTaken(const Text& path) {
  std::error_code ignored;
  return fs::exists(fs::symlink_status(ToPath(path), ignored));
}

void Remove(const Text& path) {
  std::error_code ignored;
  fs::remove(ToPath(path), ignored);
}

std::optional<Text> ReadWhole(const Text& path) {
  std::ifstream file(ToPath(path), std::ios::binary);
  if (!file || KindOf(path) == Kind::Directory) return std::nullopt;
  return Text(std::istreambuf_iterator<char>(file), {});
}

}  // namespace rebate::files
