#include "platform/files/files.h"

#include <gtest/gtest.h>
#ifdef _WIN32
#include <windows.h>
// Behind <windows.h>, which it stands on.
#include <sddl.h>
#endif

#include <fstream>

#include "tests/scratch_folder.h"

namespace rebate {
namespace {

// Lets the file be read by its owner alone, or by everybody.
void LetRead(const Text& path, bool everybody) {
#ifdef _WIN32
  const wchar_t* const rights = everybody ? L"D:P(A;;FA;;;OW)(A;;FR;;;WD)" : L"D:P(A;;FA;;;OW)";
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorW(rights, SDDL_REVISION_1, &descriptor, nullptr));
  EXPECT_TRUE(SetFileSecurityW(files::ToPath(path).c_str(), DACL_SECURITY_INFORMATION, descriptor));
  LocalFree(descriptor);
#else
  std::filesystem::permissions(files::ToPath(path), std::filesystem::perms(everybody ? 0644 : 0600));
#endif
}

class FilesTest : public testing::Test {
 protected:
  Text Written(const Text& name, const Text& content) const {
    const Text path = folder_.File(name);
    std::ofstream(files::ToPath(path), std::ios::binary) << content;
    return path;
  }

  ScratchFolder folder_;
};

TEST_F(FilesTest, NamesMayBeOfAnyCharacters) {
  for (const char* name : {"plain", "返利 账套.db", "é\U0001F600"}) {
    const Text path = Written(name, "text\n");
    EXPECT_EQ(files::FromPath(files::ToPath(path)), path);
    EXPECT_EQ(files::ReadWhole(path), "text\n") << name;
    EXPECT_EQ(files::KindOf(path), files::Kind::File) << name;
    files::Remove(path);
    EXPECT_FALSE(files::IsTaken(path)) << name;
  }
  EXPECT_EQ(files::ReadWhole(files::FromPath(folder_.path())), std::nullopt);
  EXPECT_EQ(files::KindOf(files::FromPath(folder_.path())), files::Kind::Directory);
  EXPECT_EQ(files::KindOf("\xFF\xFE"), files::Kind::Missing);
}

TEST_F(FilesTest, ANewFileTakesNoNameThatIsTaken) {
  const Text taken = Written("占用", "mine");
  const Text fresh = folder_.File("新");
  EXPECT_EQ(files::CreateNew(taken), std::errc::file_exists);
  EXPECT_EQ(files::CreateNew(folder_.File("没有/新")), std::errc::no_such_file_or_directory);
  EXPECT_EQ(files::CreateNew(fresh), std::error_code());
  EXPECT_EQ(files::MoveToFreeName(fresh, taken), std::errc::file_exists);
  EXPECT_EQ(files::ReadWhole(taken), "mine");
  EXPECT_EQ(files::MoveToFreeName(taken, folder_.File("后来")), std::error_code());
  EXPECT_EQ(files::ReadWhole(folder_.File("后来")), "mine");
  EXPECT_FALSE(files::IsTaken(taken));
}

TEST_F(FilesTest, IdentityFollowsTheFileAndNotTheName) {
  const Text path = Written("a", "");
  const auto first = files::IdentityOf(path);
  ASSERT_TRUE(first);
  EXPECT_EQ(files::IdentityOf(path), first);
  EXPECT_NE(files::IdentityOf(Written("b", "")), first);
  std::filesystem::rename(files::ToPath(folder_.File("b")), files::ToPath(path));
  EXPECT_NE(files::IdentityOf(path), first);
  EXPECT_EQ(files::IdentityOf(folder_.File("missing")), std::nullopt);
}

TEST_F(FilesTest, OnlyAnOwnersFileIsPrivate) {
  using State = files::PrivateFile::State;
  const Text path = Written("口令", "secret");
  LetRead(path, false);
  EXPECT_EQ(files::ReadPrivate(path, 100).state, State::Read);
  EXPECT_EQ(files::ReadPrivate(path, 100).start, "secret");
  EXPECT_EQ(files::ReadPrivate(path, 3).start, "sec");
  LetRead(path, true);
  EXPECT_EQ(files::ReadPrivate(path, 100).state, State::Shared);
  EXPECT_EQ(files::ReadPrivate(path, 100).start, "");
  EXPECT_EQ(files::ReadPrivate(files::FromPath(folder_.path()), 100).state, State::NoFile);
  EXPECT_EQ(files::ReadPrivate(folder_.File("missing"), 100).state, State::Unreadable);
}

}  // namespace
}  // namespace rebate
