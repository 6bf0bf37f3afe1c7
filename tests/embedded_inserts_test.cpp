#include <random>

#include "tests/embedded_kit.h"
#include "tests/error_of.h"

// Inserts of many texts, run together, against the same texts one by one.
namespace rebate {
namespace {

class EmbeddedInserts : public EmbeddedTest {
 protected:
  static constexpr const char* kTables =
      "create table t_a (FID int identity(1,1) not null primary key, a int not null, b nvarchar(8), c decimal(9,2))\r\n"
      "create unique index UQ on t_a (a)\r\n"
      "create table t_b (n int identity(10,5), a int, d datetime, check (a < 900))";

  EmbeddedInserts() : singly_(CreateEmbedded(other_folder_.File("account.db"))) {
    for (const ConnectionRef& connection : {account_, singly_}) connection->Execute(kTables);
  }

  // A text that inserts a row into one of the tables; one of a hundred is refused.
  Text Draw() {
    const Text a = std::to_string(++drawn_);
    const auto refused = random_() % 300;
    switch (random_() % 4) {
      case 0:
        return "insert into t_a (a,b,c) values (" +
               (refused == 0   ? "1"
                : refused == 1 ? "null"
                               : a) +
               ",'" + (refused == 2 ? "too long a text" : "x''y") + "'," + (refused == 3 ? "1e300" : "-1.50") + ")";
      case 1:
        return Text("insert into t_b (a,d) values (") + (refused == 0 ? "999" : "-7") + ",'" +
               (refused == 1 ? "no date" : "2026-02-28") + "')";
      case 2:
        return Text("insert into #t (a,b) values (") + a + "," + (refused == 0 ? "99999999999" : "N'促销'") + ")";
      default:
        return random_() % 8 != 0 ? "insert into #t (a) values (0)"
                                  : "update t_b set a = a + 1 where n = (select max(n) from t_b)";
    }
  }

  Text StateOf(Connection& connection) {
    Text state = RowsOn(connection, "select @@identity, @@rowcount");
    for (const char* table : {"t_a", "t_b", "#t"}) {
      state += '\n' + RowsOn(connection, Text("select * from ") + table + " order by 1");
    }
    return state;
  }

  ScratchFolder other_folder_;
  ConnectionRef singly_;
  std::mt19937 random_{20261123};
  int drawn_ = 0;
};

TEST_F(EmbeddedInserts, LeaveWhatTheyLeaveOneByOne) {
  int refusals = 0;
  for (int round = 0; round < 60; ++round) {
    std::vector<Text> texts(random_() % 300);
    for (Text& text : texts) text = Draw();
    for (const ConnectionRef& connection : {account_, singly_}) {
      connection->BeginWork();
      connection->Execute("select * into #t from t_a where a = -1");
    }
    std::size_t together = 0, one_by_one = 0;
    const Error error = ErrorOf([&] { account_->ExecuteEach(texts, together); });
    const Error alone = ErrorOf([&] { singly_->Connection::ExecuteEach(texts, one_by_one); });
    ASSERT_EQ(error.description, alone.description);
    ASSERT_EQ(error.number, alone.number);
    ASSERT_EQ(together, one_by_one);
    ASSERT_EQ(StateOf(*account_), StateOf(*singly_)) << "round " << round;
    refusals += error.number != 0;
    for (const ConnectionRef& connection : {account_, singly_}) {
      connection->Execute("drop table #t");
      error.number != 0 && round % 2 == 0 ? connection->RollbackWork() : connection->CommitWork();
    }
  }
  EXPECT_GT(refusals, 10);
  EXPECT_LT(refusals, 50);
}

TEST_F(EmbeddedInserts, OfOneLongBatchLeaveWhatTheyLeaveOneByOne) {
  for (const bool refused : {false, true}) {
    Text batch = "begin tran delete from t_a\r\n";
    for (int i = 0; i < 150; ++i) {
      const Text a = std::to_string(refused && i == 140 ? 3 : i);
      batch += "insert into t_a (a,c) values (" + a + "," + a + ".5)\r\n";
      batch += "insert into t_b (a) values (" + a + ")\r\n";
    }
    account_->BeginWork();
    const Error error = Refusal(batch + "commit tran");
    EXPECT_EQ(error.number, refused ? database_error::kConstraint : 0) << error.description;
    EXPECT_EQ(Rows("select count(*), max(a), sum(c) from t_a"), refused ? "140,139,9800" : "150,149,11250");
    EXPECT_EQ(Rows("select count(*), max(n) from t_b"), refused ? "290,1455" : "150,755");
    refused ? account_->RollbackWork() : account_->CommitWork();
  }
}

}  // namespace
}  // namespace rebate
