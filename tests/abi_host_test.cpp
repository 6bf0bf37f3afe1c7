// Other programs with the shared library: what it shows them, and the examples.

#include "tests/abi_kit.h"
#include "tests/shell.h"

namespace rebate {
namespace {

class AbiHost : public ToolTest {
 protected:
  // What an example prints for a fresh sample account.
  Text Example(const Text& command) const { return Shell(command + " " REBATE_LIBRARY " '" + dsn_ + "'"); }

  // What the larger examples print: types, a scheme that is saved, one that is refused, a search by a Chinese name.
  static void ExpectSchemes(const Text& printed) {
    EXPECT_TRUE(printed.starts_with("type 2040 按供应商采购总金额返采购额的X%\n")) << printed;
    EXPECT_TRUE(
        printed.ends_with("saved supplier_goods.json\n"
                          "refused: 存在重复方案信息 supplier_goods_overlap.json\n"
                          "overlaps 洗护商品采购返利 上海东方贸易有限公司 柔顺洗发露\n"
                          "overlaps 洗护商品采购返利 上海东方贸易有限公司 薄荷牙膏\n"
                          "scheme 1 洗护商品采购返利 启用\n"
                          "error 438 Object doesn't support this property or method: Rebate (rebate call, 438)\n"))
        << printed;
  }
};

TEST_F(AbiHost, SeesTheFunctionsOfTheHeaderAlone) {
  EXPECT_EQ(Shell("nm -D --defined-only " REBATE_LIBRARY " | grep -v ' A ' | sed 's/.* //'"),
            "rebate_abi@@REBATE_1\nrebate_call@@REBATE_1\nrebate_close@@REBATE_1\nrebate_free@@REBATE_1\n"
            "rebate_open@@REBATE_1\n");
  EXPECT_EQ(rebate_abi(), REBATE_ABI);
}

TEST_F(AbiHost, OutOfMemoryIsAnswered) {
  EXPECT_EQ(Shell(REBATE_STARVED " '" + dsn_ + "'"), "");
}

TEST_F(AbiHost, InC) {
  const Text request = R"({"op":"BaseInfoMgr.TransMode"})";
  EXPECT_EQ(Shell("echo '" + request + "' | " REBATE_C_EXAMPLE " '" + dsn_ + "'"),
            R"({"op":"BaseInfoMgr.TransMode","result":2})"
            "\n");
  EXPECT_TRUE(Holds(Shell(REBATE_C_EXAMPLE " nowhere.db"), "The account nowhere.db does not exist"));
}

#ifdef __SANITIZE_ADDRESS__
#define REBATE_SKIP_FOREIGN_HOST() GTEST_SKIP() << "the sanitizers want to be the first library of a process"
#else
#define REBATE_SKIP_FOREIGN_HOST() static_cast<void>(0)
#endif

TEST_F(AbiHost, InPython) {
  REBATE_SKIP_FOREIGN_HOST();
  if (!Runs("python3 -c 'import ctypes'")) GTEST_SKIP() << "no python3";
  ExpectSchemes(Example("PYTHONDONTWRITEBYTECODE=1 python3 " REBATE_SOURCE_DIR "/examples/python/schemes.py"));
}

TEST_F(AbiHost, InNode) {
  REBATE_SKIP_FOREIGN_HOST();
  const Text node = "NODE_PATH=" REBATE_SOURCE_DIR "/build/node/node_modules node ";
  if (!Runs(node + "-e \"require('koffi')\"")) GTEST_SKIP() << "no node, or no koffi (scripts/install-koffi)";
  ExpectSchemes(Example(node + REBATE_SOURCE_DIR "/examples/node/schemes.mjs"));
}

}  // namespace
}  // namespace rebate
