#include <filesystem>
#include <fstream>
#include <thread>

#include "platform/database/embedded/embedded_connection.h"
#include "platform/database/embedded/functions.h"
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
  EXPECT_NE(Refusal("select 1 / (FID - FID) as a into #new from t_t").number, 0);
  Run("create table #new (a int)");
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
  struct {
    bool unit;
    const char* text;
    const char* levels;  // @@trancount behind it
    const char* stands;  // what another connection sees then
    const char* left;    // what stands when the unit is undone
  } cases[] = {
      {false, "insert into t_t values (1)", "0", "1", "1"},
      {false, "begin tran insert into t_t values (1)", "1", "", "1"},
      {false, "begin tran begin tran insert into t_t values (1) commit tran", "1", "", "1"},
      {false, "begin tran begin tran insert into t_t values (1) commit commit", "0", "1", "1"},
      {false, "begin tran begin tran insert into t_t values (1) rollback insert into t_t values (2)", "0", "2", "2"},
      {true, "insert into t_t values (1)", "1", "", ""},
      {true, "begin tran begin tran insert into t_t values (1)", "3", "", ""},
      {true, "begin tran insert into t_t values (1) commit tran", "1", "", ""},
      {true, "insert into t_t values (1) commit tran insert into t_t values (2)", "1", "1", "1"},
      {true, "insert into t_t values (1) rollback tran insert into t_t values (2) commit tran", "1", "2", "2"},
      {true, "begin tran insert into t_t values (1) begin tran rollback insert into t_t values (2)", "1", "", ""}};
  const ConnectionRef other = OpenEmbedded(path_);
  for (const auto& one : cases) {
    if (one.unit) account_->BeginWork();
    Run(one.text);
    EXPECT_EQ(Rows("select @@trancount"), one.levels) << one.text;
    EXPECT_EQ(RowsOn(*other, "select FID from t_t"), one.stands) << one.text;
    if (one.unit) {
      account_->RollbackWork();
      EXPECT_EQ(Rows("select FID from t_t"), one.left) << one.text;
    }
    Run("if @@trancount > 0 rollback tran delete from t_t");
  }
  for (const char* verb : {"COMMIT", "ROLLBACK"}) {
    EXPECT_EQ(Refusal(Text(verb) + " tran").description,
              "The " + Text(verb) + " TRANSACTION request has no corresponding BEGIN TRANSACTION.");
  }
}

TEST_F(EmbeddedTransaction, IdentityInsertEndsWithItsUnitAndItsTable) {
  const char* numbered = "create table t_n (FID int identity(1,1) primary key, a int)";
  Run(numbered);
  Run("create table t_o (FID int identity(1,1) primary key)");
  const Text off =
      "Cannot insert explicit value for identity column in table 't_n' when IDENTITY_INSERT is set to OFF.";
  const char* give = "insert into t_n (FID, a) values (5, 1)";
  const auto set = [&] { Run("set identity_insert t_n on"); };
  EXPECT_EQ(Refusal(give).description, off);
  for (const bool stands : {false, true}) {
    account_->BeginWork();
    set();
    EXPECT_NE(Refusal("insert into t_n (a) values (1)").number, 0);
    EXPECT_EQ(
        Refusal("set identity_insert t_o on").description,
        "IDENTITY_INSERT is already ON for table 'account.dbo.t_n'. Cannot perform SET operation for table 't_o'.");
    Run(give);
    stands ? account_->CommitWork() : account_->RollbackWork();
    EXPECT_EQ(Refusal(give).description, off) << stands;
  }
  set();
  Run("drop table t_n");
  Run(numbered);
  EXPECT_EQ(Refusal(give).description, off);
  set();
  account_->BeginWork();
  EXPECT_EQ(Refusal(give).description, off) << "a call starts without what the connection was left with";
}

TEST_F(EmbeddedTransaction, WriterWaitsForTheOtherAndGivesUpInTime) {
  const ConnectionRef other = OpenEmbedded(path_, 50ms);
  // A text that may write is the writer from its first statement on, a long one too.
  Text long_text = "select 1 ";
  while (long_text.size() < 3000) long_text += "select FID from t_t where FID = 1 ";
  for (const Text& text :
       {Text("if 1 = 1 select 1"), Text("select 1 as a into #t_new"), long_text + "if 1 = 0 delete from t_t"}) {
    account_->BeginWork();
    Run(text);
    const Error error = RefusalOn(*other, "insert into t_t values (1)");
    EXPECT_EQ(error.number, database_error::kTimeout) << text;
    EXPECT_EQ(error.description, "Lock request time out period exceeded: another process is writing to " + path_ + ".");
    EXPECT_EQ(RowsOn(*other, "select count(*) from t_t"), "0") << "readers don't wait";
    account_->CommitWork();
  }
  EXPECT_EQ(RefusalOn(*other, "insert into t_t values (1)").number, 0);
}

// The test holds the engine's own handle, too, by which it breaks a transaction.
class EmbeddedTransactionLoss : public EmbeddedTransaction {
 protected:
  EmbeddedTransactionLoss() {
    sqlite3_open(path_.c_str(), &engine_);
    RegisterFunctions(engine_);
    sqlite3_exec(engine_, "ATTACH ':memory:' AS tempdb", nullptr, nullptr, nullptr);
    connection_ = New<EmbeddedConnection>(DatabaseHandle(engine_), path_, kLockWait);
    connection_->Execute("insert into t_t values (1)");
    connection_->BeginWork();
    connection_->Execute("insert into t_t values (2)");
  }
  Error CommitError() {
    try {
      connection_->CommitWork();
    } catch (const Error& error) {
      return error;
    }
    return Error(0, "", "");
  }
  void ExpectAllUndoneAndAllFree() {
    const ConnectionRef other = OpenEmbedded(path_, 50ms);
    EXPECT_EQ(RefusalOn(*other, "insert into t_t values (9)").number, 0);
    EXPECT_EQ(Rows("select FID from t_t order by FID"), "1;9");
    EXPECT_EQ(RefusalOn(*connection_, "insert into t_t values (10)").number, 0);
  }

  sqlite3* engine_ = nullptr;
  ConnectionRef connection_;
};

TEST_F(EmbeddedTransactionLoss, ALostUnitTakesNoMoreStatementsAndNoCommit) {
  connection_->Execute("insert into t_t select FID + 2 from t_t");
  sqlite3_progress_handler(
      engine_, 1, [](void*) { return 1; }, nullptr);
  EXPECT_NE(RefusalOn(*connection_, "insert into t_t select FID + 20 from t_t").number, 0);
  sqlite3_progress_handler(engine_, 0, nullptr, nullptr);
  EXPECT_EQ(RefusalOn(*connection_, "insert into t_t values (3)").description,
            "The transaction was undone by an earlier error and can take no more statements.");
  EXPECT_EQ(CommitError().description, "The transaction was undone by an earlier error and can't be committed.");
  ExpectAllUndoneAndAllFree();
}

TEST_F(EmbeddedTransactionLoss, AFailedCommitIsRolledBack) {
  connection_->RollbackWork();
  // A deferred key that is violated makes the commit fail, which leaves the engine's transaction open.
  sqlite3_exec(
      engine_,
      "PRAGMA foreign_keys=ON; CREATE TEMP TABLE parent (a PRIMARY KEY); CREATE TEMP TABLE child (a REFERENCES "
      "parent DEFERRABLE INITIALLY DEFERRED)",
      nullptr, nullptr, nullptr);
  for (const bool by_text : {true, false}) {
    connection_->BeginWork();
    connection_->Execute("insert into t_t values (2)");
    ASSERT_EQ(sqlite3_exec(engine_, "INSERT INTO child VALUES (1)", nullptr, nullptr, nullptr), SQLITE_OK);
    if (by_text) {
      EXPECT_NE(RefusalOn(*connection_, "commit tran").number, 0);
    }
    EXPECT_NE(CommitError().number, 0) << by_text;
  }
  ExpectAllUndoneAndAllFree();
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
  Text Path(const char* name) const { return folder_.File(name); }
  std::filesystem::path System(const char* name) const { return files::ToPath(Path(name)); }
};

TEST_F(EmbeddedOpening, RefusesWhatIsNoAccount) {
  std::ofstream(System("text")) << Text(5000, 'x');
  std::ofstream(System("empty"));
  std::filesystem::copy_file(files::ToPath(path_), System("sealed"));
  std::filesystem::permissions(System("sealed"), std::filesystem::perms(0444));
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
  EXPECT_FALSE(std::filesystem::exists(System("missing")));
}

TEST_F(EmbeddedOpening, TellsOfDamageInItsOwnWords) {
  MakeSchema();
  account_ = nullptr;
  const auto size = static_cast<std::streamoff>(std::filesystem::file_size(files::ToPath(path_)));
  struct {
    std::streamoff at;  // where the file is overwritten
    std::streamoff count;
  } damages[] = {{44, 4}, {100, 600}, {4096, size - 4096}, {size / 2, 1}};
  for (const auto& damage : damages) {
    const Text path = Path("damaged");
    std::filesystem::copy_file(files::ToPath(path_), files::ToPath(path));
    std::fstream file(files::ToPath(path), std::ios::in | std::ios::out | std::ios::binary);
    file.seekp(damage.at);
    file << Text(static_cast<std::size_t>(damage.count), '\x7e');
    file.close();
    Error error = OpenRefusal(path);
    if (error.number == 0)
      error = RefusalOn(*OpenEmbedded(path), "select * from t_FL_SchemeMode select * from vw_Unit");
    for (const char* foreign : {"malformed", "disk image", "schema", "file format", "no such", "account_views"}) {
      EXPECT_EQ(error.description.find(foreign), Text::npos) << damage.at << ": " << error.description;
    }
    if (error.number != 0) {
      EXPECT_NE(error.description.find("is damaged"), Text::npos) << damage.at << ": " << error.description;
    }
    std::filesystem::remove(files::ToPath(path));
  }
}

#ifndef _WIN32
TEST_F(EmbeddedOpening, FilesAreTheirOwnersAlone) {
  Run("create table t_t (a int)");
  for (const char* suffix : {"", "-wal", "-shm"}) {
    EXPECT_EQ(std::filesystem::status(files::ToPath(path_ + suffix)).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write)
        << suffix;
  }
}
#endif

TEST_F(EmbeddedOpening, AnAccountInTheMakingStandsNowhereBeforeItIsWhole) {
  {
    AccountInMaking making(Path("new"));
    making.connection().Execute("create table t_t (a int)");
    EXPECT_FALSE(std::filesystem::exists(System("new")));
  }
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(folder_.path()), {}), 3)
      << "the account and its two files";
  AccountInMaking making(Path("new"));
  making.connection().Execute("create table t_t (a int)");
  {
    AccountInMaking late(Path("late"));
    std::ofstream(System("late")) << "mine";
    EXPECT_THROW(late.Finish(), Error);
  }
  EXPECT_EQ(std::filesystem::file_size(System("late")), 4u);
  making.Finish();
  EXPECT_EQ(RowsOn(*OpenEmbedded(Path("new")), "select count(*) from t_t"), "0");
}

TEST_F(EmbeddedOpening, CreatesOnlyWhereNothingStands) {
  std::ofstream(System("taken")) << "mine";
  EXPECT_EQ(OpenRefusal(Path("taken"), true).number, database_error::kConnection);
  EXPECT_EQ(std::filesystem::file_size(System("taken")), 4u);
  EXPECT_EQ(OpenRefusal(Path("no/such/directory"), true).number, database_error::kConnection);
  EXPECT_EQ(OpenRefusal(path_, true).number, database_error::kConnection);
}

}  // namespace
}  // namespace rebate
