#include <sys/stat.h>

#include <fstream>
#include <thread>

#include "tests/embedded_kit.h"

namespace rebate {
namespace {

using namespace std::chrono_literals;

class EmbeddedTransaction : public EmbeddedTest {
 protected:
  EmbeddedTransaction() { Run("create table t_t (FID int primary key)"); }
  Text Count() { return Rows("select count(*) from t_t"); }
};

TEST_F(EmbeddedTransaction, UnitOfWorkStandsOrFallsWhole) {
  account_->BeginWork();
  Run("insert into t_t values (1)");
  EXPECT_NE(Refusal("insert into t_t values (2) insert into t_t values (1)").number, 0);
  EXPECT_EQ(Count(), "2") << "what ran before the refused statement stays until the vote";
  account_->RollbackWork();
  EXPECT_EQ(Count(), "0");
  account_->BeginWork();
  Run("insert into t_t values (3)");
  account_->CommitWork();
  account_->RollbackWork();
  EXPECT_EQ(Count(), "1");
  account_->BeginWork();
  Run("insert into t_t values (4)");
  account_->BeginWork();
  account_->CommitWork();
  EXPECT_EQ(Count(), "1") << "a unit that was open is undone by the next";
}

TEST_F(EmbeddedTransaction, TransactionsInTextsNest) {
  account_->BeginWork();
  EXPECT_EQ(Rows("select @@trancount"), "1");
  Run("begin tran insert into t_t values (1) begin tran insert into t_t values (2) commit tran commit tran");
  EXPECT_EQ(Refusal("commit tran").description,
            "The COMMIT TRANSACTION request has no corresponding BEGIN TRANSACTION.");
  Run("begin tran insert into t_t values (3) rollback tran insert into t_t values (4)");
  account_->CommitWork();
  EXPECT_EQ(Rows("select FID from t_t"), "4") << "rollback tran undoes the unit so far and leaves it open";

  Run("begin tran insert into t_t values (5)");
  EXPECT_EQ(RowsOn(*OpenEmbedded(path_), "select count(*) from t_t"), "1");
  Run("commit tran");
  EXPECT_EQ(RowsOn(*OpenEmbedded(path_), "select count(*) from t_t"), "2");
  Run("begin tran delete from t_t rollback tran");
  EXPECT_EQ(Count(), "2");
  EXPECT_EQ(Refusal("rollback tran").number, database_error::kStatement);
}

TEST_F(EmbeddedTransaction, WriterWaitsForTheOtherAndGivesUpInTime) {
  const ConnectionRef other = OpenEmbedded(path_, 50ms);
  account_->BeginWork();
  Run("if 1 = 1 select 1");
  const Error error = RefusalOn(*other, "insert into t_t values (1)");
  EXPECT_EQ(error.number, database_error::kTimeout);
  EXPECT_EQ(error.description, "Lock request time out period exceeded: another process is writing to " + path_ + ".");
  EXPECT_EQ(RowsOn(*other, "select count(*) from t_t"), "0") << "readers don't wait";
  account_->CommitWork();
  EXPECT_EQ(RefusalOn(*other, "insert into t_t values (1)").number, 0);
}

TEST_F(EmbeddedTransaction, CheckAndWriteOfOneUnitAreNotSplit) {
  constexpr int kRounds = 40;
  const auto work = [this] {
    const ConnectionRef connection = OpenEmbedded(path_);
    for (int i = 0; i < kRounds; ++i) {
      connection->BeginWork();
      connection->Execute("declare @n int select @n = isnull(max(FID), 0) + 1 from t_t insert into t_t values (@n)");
      connection->CommitWork();
    }
  };
  std::thread other(work);
  work();
  other.join();
  EXPECT_EQ(Rows("select count(*), max(FID) from t_t"), "80,80");
}

TEST_F(EmbeddedTransaction, ReaderThatWritesLateIsRefusedWhereItsViewIsOld) {
  const ConnectionRef other = OpenEmbedded(path_, 50ms);
  other->BeginWork();
  EXPECT_EQ(RowsOn(*other, "select count(*) from t_t"), "0");
  Run("insert into t_t values (1)");
  EXPECT_EQ(RowsOn(*other, "select count(*) from t_t"), "0");
  EXPECT_EQ(RefusalOn(*other, "insert into t_t values (2)").number, database_error::kTimeout);
  other->RollbackWork();
  EXPECT_EQ(RefusalOn(*other, "insert into t_t values (2)").number, 0);
}

class EmbeddedOpening : public EmbeddedTest {
 protected:
  static Error OpenRefusal(const Text& path, bool create = false) {
    try {
      if (create) {
        CreateEmbedded(path);
      } else {
        OpenEmbedded(path);
      }
    } catch (const Error& error) {
      return error;
    }
    return Error(0, "", "");
  }
  Text Path(const char* name) const { return (directory_ / name).string(); }
};

TEST_F(EmbeddedOpening, RefusesWhatIsNoAccount) {
  std::ofstream(Path("text")) << Text(5000, 'x');
  std::ofstream(Path("empty"));
  std::filesystem::copy_file(path_, Path("sealed"));
  chmod(Path("sealed").c_str(), 0444);
  struct {
    const char* name;
    const char* says;
  } cases[] = {{"missing", "does not exist; `rebate init"},
               {".", "is a directory"},
               {"text", "is no database"},
               {"empty", "is no account"},
               {"sealed", "can't be written"}};
  for (const auto& one : cases) {
    const Error error = OpenRefusal(Path(one.name));
    EXPECT_EQ(error.number, database_error::kConnection) << one.name;
    EXPECT_NE(error.description.find(one.says), Text::npos) << error.description;
    EXPECT_NE(error.description.find(Path(one.name)), Text::npos) << error.description;
  }
  EXPECT_FALSE(std::filesystem::exists(Path("missing")));
}

TEST_F(EmbeddedOpening, CreatesOnlyWhereNothingStands) {
  std::ofstream(Path("taken")) << "mine";
  EXPECT_EQ(OpenRefusal(Path("taken"), true).number, database_error::kConnection);
  EXPECT_EQ(std::filesystem::file_size(Path("taken")), 4u);
  EXPECT_EQ(OpenRefusal(Path("no/such/directory"), true).number, database_error::kConnection);
  EXPECT_EQ(OpenRefusal(path_, true).number, database_error::kConnection);
}

}  // namespace
}  // namespace rebate
