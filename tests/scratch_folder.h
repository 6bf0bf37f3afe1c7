#pragma once

#include <filesystem>
#include <random>
#include <stdexcept>

#include "platform/files/files.h"

namespace rebate {

// A folder of its own, which goes with its owner; its name isn't ASCII.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::random_device random;
    const Text name = "rebate-返利-" + std::to_string(random()) + "-" + std::to_string(random());
    path_ = std::filesystem::temp_directory_path() / files::ToPath(name);
    if (!std::filesystem::create_directory(path_)) throw std::runtime_error("no temporary folder");
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  ~ScratchFolder() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }

  const std::filesystem::path& path() const { return path_; }
  // The path of a file in it.
  Text File(const Text& name) const { return files::FromPath(path_ / files::ToPath(name)); }

 private:
  std::filesystem::path path_;
};

}  // namespace rebate
