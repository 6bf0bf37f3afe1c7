// An installed tree: what programs are built against, and the examples that are.

#include "tests/abi_kit.h"
#include "tests/shell.h"

#ifdef __SANITIZE_ADDRESS__
#define REBATE_SKIP_PLAIN_HOST() GTEST_SKIP() << "the sanitizers want to be in the program, too"
#else
#define REBATE_SKIP_PLAIN_HOST() static_cast<void>(0)
#endif

namespace rebate {
namespace {

class Installed : public ToolTest {
 protected:
  Installed() : prefix_(account_.File("prefix")) {
    EXPECT_TRUE(Runs("cmake --install " REBATE_BUILD_DIR " --prefix '" + prefix_ + "'"));
    library_path_ = "LD_LIBRARY_PATH='" + prefix_ + "/" REBATE_LIBDIR "' ";
  }

  Text prefix_;
  Text library_path_;
};

TEST_F(Installed, ProgramFindsItAsPackage) {
  REBATE_SKIP_PLAIN_HOST();
  const Text build = account_.File("build");
  const Text configure = "cmake -S '" + prefix_ + "/share/doc/rebate/examples/cpp' -B '" + build +
                         "' -DCMAKE_CXX_COMPILER=" REBATE_CXX " -DCMAKE_PREFIX_PATH='" + prefix_ + "'";
  EXPECT_EQ(Shell(configure + " >/dev/null && cmake --build '" + build + "' >/dev/null"), "");
  // By the path that the build wrote down for the library.
  const Text printed = Shell("'" + build + "/types' '" + dsn_ + "'");
  EXPECT_TRUE(printed.starts_with("{\"op\":\"BaseInfoMgr.LoadRebateTypeData\",\"result\":[")) << printed;
  EXPECT_TRUE(Holds(Shell("'" + build + "/types' nowhere.db"), "The account nowhere.db does not exist"));
}

TEST_F(Installed, ProgramFindsItByPkgConfig) {
  REBATE_SKIP_PLAIN_HOST();
  if (!Runs("pkg-config --version")) GTEST_SKIP() << "no pkg-config";
  const Text flags =
      "$(PKG_CONFIG_PATH='" + prefix_ + "/" REBATE_LIBDIR "/pkgconfig' pkg-config --cflags --libs rebate)";
  const Text program = account_.File("calls");
  // pkg-config quotes its answer for a shell.
  EXPECT_EQ(
      Shell("eval " REBATE_CC " -o '" + program + "' '" + prefix_ + "/share/doc/rebate/examples/c/calls.c' " + flags),
      "");
  EXPECT_EQ(Shell("echo '{\"op\":\"BaseInfoMgr.TransMode\"}' | " + library_path_ + "'" + program + "' '" + dsn_ + "'"),
            "{\"op\":\"BaseInfoMgr.TransMode\",\"result\":2}\n");
}

TEST_F(Installed, VersionsAgree) {
  const Text version = Shell("'" + prefix_ + "/bin/rebate' --version | head -n 1");
  EXPECT_EQ(version, "rebate " REBATE_VERSION "\n");
}

}  // namespace
}  // namespace rebate
