#ifdef REBATE_HAS_ODBC

#include <gtest/gtest.h>

#include "calls/call_trace.h"
#include "platform/automation/conversion.h"
#include "platform/database/odbc/odbc_account.h"
#include "platform/login/joint_work.h"
#include "tests/error_of.h"
#include "tests/postgres_account.h"
#include "tests/postgres_proxy.h"
#include "tests/postgres_server.h"
#include "tests/scheme_kit.h"

namespace rebate {
namespace {

// The trace of a call without what differs between two accounts: their names, and the servers' words.
Json TraceOf(const std::function<void()>& call) {
  CallTrace trace;
  {
    const TracedThread traced(&trace);
    call();
  }
  Json entries = trace.entries();
  for (Json& entry : entries) {
    for (const char* own : {"open", "failure", "error"}) {
      if (entry.contains(own)) entry[own] = true;
    }
  }
  return entries;
}

// Operations on an account on a server, beside the same on an embedded one.
class OdbcPostgresSave : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    server_ = PostgresServer::Start();
    if (server_) MakePostgresAccount(*OpenOdbc(server_->ConnectionText()), true);
  }
  static void TearDownTestSuite() { server_ = nullptr; }
  void SetUp() override {
    if (!server_) GTEST_SKIP() << "PostgreSQL and its ODBC driver aren't installed";
    proxy_.emplace(server_->port());
    dsn_ = server_->ConnectionThrough(proxy_->port()) + ";AppUser=1001";
    stored_ = OpenOdbc(server_->ConnectionText());
    Clear();
  }

  // Numbers start anew: on this server those of an undone row are gone.
  void Clear() const {
    stored_->Execute(
        "truncate t_FL_SchemeList, t_FL_RebateRange, t_FL_RebateRule, t_FL_AllOrgs, t_FL_AllItems, t_ItemSelect "
        "restart identity");
  }

  Long Rows(const Text& table) const {
    return ToLong(stored_->Execute("select count(*) from " + table)->FieldValue(std::size_t{0}));
  }

  static std::unique_ptr<PostgresServer> server_;
  std::optional<PostgresProxy> proxy_;
  Text dsn_;
  ConnectionRef stored_;  // past the proxy
  TestAccount embedded_;
};

std::unique_ptr<PostgresServer> OdbcPostgresSave::server_;

SchemeRequest SchemeOf(Long goods) {
  SchemeRequest request;
  request.Organisation(0, 8, 3);
  for (Long i = 1; i <= goods; ++i) request.GridRow({1000 + i});
  return request;
}

Ref<Dictionary> Inner(const SchemeRequest& request, Long row, const char* list) {
  return ObjectAs<Dictionary>(
      ObjectAs<Vector>(ObjectAs<Dictionary>(request.grid_rows->Item(row))->Value(list))->Item(1));
}

std::size_t CountInserts(const Json& trace) {
  return static_cast<std::size_t>(std::count_if(trace.begin(), trace.end(), [](const Json& entry) {
    return entry.value("execute", "").starts_with("INSERT") &&
           entry["execute"].get<Text>().find("VALUES") != Text::npos;
  }));
}

TEST_F(OdbcPostgresSave, ASaveAsksOnceForAHundredInserts) {
  constexpr Long kGoods = 1000;
  constexpr std::size_t kOtherTexts = 30;  // of the save, and of the driver for what it doesn't know of the tables yet
  SchemeRequest request = SchemeOf(kGoods);
  Ref<Dictionary> answer;
  const Json there = TraceOf([&] { answer = request.Save(dsn_); });
  const auto round_trips = static_cast<std::size_t>(proxy_->TakeRoundTrips());
  EXPECT_EQ(ToText(answer->GetValue("Err", "")), "");
  const std::size_t inserts = CountInserts(there);
  EXPECT_EQ(inserts, 5u * kGoods + 2);
  EXPECT_LE(round_trips, inserts / 100 + kOtherTexts);
  EXPECT_GE(round_trips, inserts / 250) << "they are counted";
  EXPECT_TRUE(there == TraceOf([&] { EXPECT_TRUE(request.Saves(embedded_)); })) << "the traces differ";
  for (const char* table : {"t_FL_AllOrgs", "t_FL_AllItems", "t_FL_RebateRule"}) EXPECT_EQ(Rows(table), kGoods);
}

TEST_F(OdbcPostgresSave, ARefusedInsertEndsASaveAsItDoesAlone) {
  const struct {
    const char* list;
    const char* key;
    Text value;
  } kFaults[] = {{"FItemIDs", "FItemID", "99999999999"},
                 {"FItemIDs", "FShowName", Text(4001, 'x')},
                 {"FRebateRates", "FRebateRate", "1e30"}};
  constexpr Long kGoods = 230;
  for (const auto& fault : kFaults) {
    for (const Long row : {1, 120, kGoods}) {
      Clear();
      SchemeRequest request = SchemeOf(kGoods);
      Inner(request, row, fault.list)->SetValue(fault.key, fault.value);
      Text answer;
      const Json there = TraceOf([&] { answer = ToText(request.Save(dsn_)->GetValue("Err", "")); });
      EXPECT_TRUE(there == TraceOf([&] { request.Save(embedded_); })) << fault.key << " in row " << row;
      for (const char* table : {"t_FL_SchemeList", "t_FL_AllOrgs", "t_FL_AllItems"}) EXPECT_EQ(Rows(table), 0);

      // The refused text by itself.
      const ConnectionRef alone = OpenOdbc(dsn_);
      alone->Execute("SELECT * INTO #TMP_AllItems FROM t_FL_AllItems WHERE FID =-1");
      const auto refused =
          std::find_if(there.begin(), there.end(), [](const Json& entry) { return entry.contains("error"); });
      ASSERT_NE(refused, there.end());
      const Error error = ErrorOf([&] { alone->Execute((*refused)["execute"].get<Text>()); });
      EXPECT_EQ(answer, "错误号：" + std::to_string(error.number) + "," + error.description);
    }
  }
  EXPECT_EQ(ToText(SchemeOf(3).Save(dsn_)->GetValue("Err", "")), "") << "the next call finds nothing of it";
}

TEST_F(OdbcPostgresSave, OtherOperationsKeepTheirAnswersAndTraces) {
  constexpr Long kGoodsType = 2041;
  const auto selects = [](const Text& dsn, const Variant& last) {
    Ref<Dictionary> selection = New<Dictionary>();
    for (Long i = 1; i <= 150; ++i) selection->SetValue(std::to_string(i), i);
    selection->SetValue("151", last);
    return BaseInfoMgr().SaveSelectedItem(dsn, selection, kGoodsType, 0, 0);
  };
  for (const Variant& last : {Variant(7), Variant("99999999999"), Variant(New<Dictionary>())}) {
    bool there = false, here = true;
    const Json trace = TraceOf([&] { there = selects(dsn_, last); });
    EXPECT_EQ(trace, TraceOf([&] { here = selects(embedded_.dsn(), last); }));
    EXPECT_EQ(there, here);
  }
  EXPECT_EQ(Rows("t_ItemSelect"), 151) << "those of the first";

  // A mistake of the form's own behind ranges, of which one is refused or none.
  for (const char* upper : {"100", "1e30"}) {
    Clear();
    const auto saves = [&](const Text& dsn) {
      const Ref<Vector> ranges = List({Row({{"FLower", "0"}, {"FUpper", upper}}), Variant("no range")});
      return BaseInfoMgr().SaveSchemeData(dsn, 0, "form", kGoodsType, 1, "", ranges, List({Row({})}), "");
    };
    const Json trace = TraceOf([&] { EXPECT_FALSE(saves(dsn_)); });
    EXPECT_EQ(trace, TraceOf([&] { EXPECT_FALSE(saves(embedded_.dsn())); }));
  }

  proxy_->TakeRoundTrips();
  const Variant batch = Variant::Array(std::vector<Variant>(20, "insert into t_ItemSelect (FItemID) values (1)"));
  BaseInfoMgr().UpdateBatch(dsn_, batch);
  EXPECT_GE(proxy_->TakeRoundTrips(), 20) << "each by itself";
}

TEST_F(OdbcPostgresSave, JoinedSavesStandOrFallTogether) {
  for (const bool refused : {false, true}) {
    Clear();
    JointWork work(dsn_);
    EXPECT_EQ(ToText(SchemeOf(3).Save(dsn_)->GetValue("Err", "")), "");
    SchemeRequest second = SchemeOf(3);
    second.type = 2042;
    if (refused) Inner(second, 3, "FRebateRates")->SetValue("FRebateRate", "1e30");
    EXPECT_EQ(second.Save(dsn_)->Value("OK") == Variant(true), !refused);
    EXPECT_EQ(work.IsUndone(), refused);
    EXPECT_EQ(ErrorOf([&] { work.Commit(); }).number != 0, refused);
    EXPECT_EQ(Rows("t_FL_RebateRule"), refused ? 0 : 6);
  }
}

TEST_F(OdbcPostgresSave, AConnectionThatIsLostUnderJoinedInsertsLeavesNothing) {
  const std::vector<Text> inserts(5, "insert into t_ItemSelect (FItemID) values (1)");
  const auto begin = [&] {
    stored_->BeginWork();
    stored_->Execute("delete from t_ItemSelect");
  };
  std::size_t done = 0;
  begin();
  server_->Kill();
  server_->Restart();
  EXPECT_EQ(ErrorOf([&] { stored_->ExecuteEach(inserts, done); }).number, database_error::kConnection);
  EXPECT_EQ(ErrorOf([&] { stored_->CommitWork(); }).number, database_error::kConnection);
  EXPECT_EQ(Rows("t_ItemSelect"), 0);
  begin();
  stored_->ExecuteEach(inserts, done);
  EXPECT_EQ(Rows("t_ItemSelect"), 5);
  stored_->CommitWork();
}

}  // namespace
}  // namespace rebate

#endif
