#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/values/types.h"

// Files by paths in UTF-8, on every system.
namespace rebate::files {

// The path as the system's own; what isn't well-formed UTF-8 names nothing where the system wants UTF-16.
std::filesystem::path ToPath(const Text& path);
// The path in UTF-8.
Text FromPath(const std::filesystem::path& path);

// What stands at the path, links followed; what can't be looked at is missing.
enum class Kind { Missing, File, Directory, Other };
Kind KindOf(const Text& path);
// Whether the name is taken, be it by a link that leads nowhere.
bool IsTaken(const Text& path);
// Whether this user may read and write the file. A file that the system marks as one that nobody may write can't be
// changed, not even by users to whom the mark means nothing.
bool CanBeChanged(const Text& path);
// Removes the file; nothing where it can't be.
void Remove(const Text& path);

// Makes an empty file where nothing has its name; gives the error else. Its rights are its owner's alone, on Windows
// those of its folder.
std::error_code CreateNew(const Text& path);
// Gives a file its name where nothing has that name; gives the error else, std::errc::file_exists where it is taken.
std::error_code MoveToFreeName(const Text& from, const Text& to);

// Two numbers which no other file on this machine bears while the file is there; nothing where there is none.
using Identity = std::pair<std::uint64_t, std::uint64_t>;
std::optional<Identity> IdentityOf(const Text& path);

// `path` with an ending that no other running process uses.
Text NameOfThisProcess(const Text& path);

// The content of a file, whole; nothing where it can't be read or is no file.
std::optional<Text> ReadWhole(const Text& path);

// A file whose content is for its owner's eyes.
struct PrivateFile {
  enum class State { Unreadable, NoFile, Shared, Read };
  State state;
  Text start;  // what was read of it
};
// Reads up to `most` bytes from the start of the file. Shared is one that others than its owner and the system may
// reach.
PrivateFile ReadPrivate(const Text& path, std::size_t most);
// How an owner keeps a shared file to himself: a command, with `path` in it where the command needs one.
Text CommandToMakePrivate(const Text& path);

// The value of an environment variable; nothing where it isn't set.
std::optional<Text> EnvironmentVariable(const Text& name);

}  // namespace rebate::files
