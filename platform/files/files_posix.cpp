#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>

#include "platform/files/files.h"

namespace rebate::files {
namespace {

std::error_code LastError() {
  return {errno, std::generic_category()};
}

}  // namespace

std::filesystem::path ToPath(const Text& path) {
  return path;
}

Text FromPath(const std::filesystem::path& path) {
  return path.string();
}

bool CanBeChanged(const Text& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return false;
  // The bits are looked at, too, for a user to whom they mean nothing.
  return (status.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) != 0 && access(path.c_str(), R_OK | W_OK) == 0;
}

std::error_code CreateNew(const Text& path) {
  const int file = open(path.c_str(), O_CREAT | O_EXCL | O_RDWR | O_CLOEXEC, 0600);
  if (file < 0) return LastError();
  close(file);
  return {};
}

std::error_code MoveToFreeName(const Text& from, const Text& to) {
  if (link(from.c_str(), to.c_str()) == 0) {
    unlink(from.c_str());
    return {};
  }
  if (errno == EEXIST) return LastError();
  // Some file systems know no second names.
  if (renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return {};
  return LastError();
}

std::optional<Identity> IdentityOf(const Text& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0) return std::nullopt;
  return Identity(status.st_dev, status.st_ino);
}

Text NameOfThisProcess(const Text& path) {
  return path + '-' + std::to_string(getpid());
}

PrivateFile ReadPrivate(const Text& path, std::size_t most) {
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) return {PrivateFile::State::Unreadable, {}};
  struct stat status {};
  const bool regular = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
  const bool shared = (status.st_mode & (S_IRWXG | S_IRWXO)) != 0;
  Text start(regular && !shared ? most : 0, '\0');
  const ssize_t size = read(file, start.data(), start.size());
  close(file);
  if (!regular) return {PrivateFile::State::NoFile, {}};
  if (shared) return {PrivateFile::State::Shared, {}};
  start.resize(static_cast<std::size_t>(std::max<ssize_t>(size, 0)));
  return {PrivateFile::State::Read, std::move(start)};
}

Text CommandToMakePrivate(const Text&) {
  return "chmod 600 it";
}

std::optional<Text> EnvironmentVariable(const Text& name) {
  const char* const value = std::getenv(name.c_str());
  if (value == nullptr) return std::nullopt;
  return value;
}

}  // namespace rebate::files
