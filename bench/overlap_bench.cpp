// A save's overlap check, up to its answer: against accounts of growing size, each beside the same on one of 1,000
// schemes, and where many pairs meet, beside the best plan that SQLite takes for the same rows by hand.

#include "bench/comparison.h"
#include "bench/stored_schemes.h"
#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"

namespace rebate::bench {
namespace {

constexpr int kGridRows = 10;
constexpr int kUnknown = 500'000'000;

// A request of goods that goes through the check and is then refused by a name that its column doesn't take.
class Request {
 public:
  explicit Request(BaseInfoMgr& manager) : manager_(manager) {}

  Request& Organisation(int item_class, int item) {
    organisations_->Add(Row({{"FRowID", 0}, {"FItemClassID", item_class}, {"FItemID", item}, {"FShowName", "shown"}}));
    return *this;
  }
  Request& GridRow(const std::vector<int>& items) {
    const int row = static_cast<int>(grid_rows_->Size()) + 1;
    Ref<Vector> goods = New<Vector>();
    for (const int item : items) {
      goods->Add(Row({{"FRowID", row}, {"FItemID", item}, {"FUnitID", 1}, {"FShowName", "shown"}}));
    }
    grid_rows_->Add(Row({{"FItemIDs", goods}, {"FZH", 0}}));
    return *this;
  }
  Request& GridRows(int rows) {
    for (int i = 1; i <= rows; ++i) GridRow({kUnknown + i});
    return *this;
  }

  Ref<Dictionary> Save(const BenchAccount& account) {
    return manager_.SaveOneSchemeData(account.dsn(), type_, head_, none_, organisations_, grid_rows_);
  }
  // Saves the request as a scheme with a name that can be stored.
  void Store(const BenchAccount& account) {
    Ref<Dictionary> head = Row({{"FSchemeID", 0}, {"FSchemeName", "twin"}, {"FNote", ""}});
    const Ref<Dictionary> answer =
        manager_.SaveOneSchemeData(account.dsn(), type_, head, none_, organisations_, grid_rows_);
    Require(ToBoolean(answer->Value("OK")), "storing the twin");
  }
  // Saves a scheme that goes well and deletes it: from then on the connection knows the temporary tables, as that of a
  // host does which has saved before.
  void Acquaint(const BenchAccount& account) {
    Request(manager_).Organisation(8, kUnknown - 1).GridRows(1).Store(account);
    const RecordsetRef last = account.Connect()->Execute("SELECT MAX(FSchemeID) AS FSchemeID FROM t_FL_SchemeList");
    Require(manager_.DelSchemeData(account.dsn(), ToText(last->FieldValue("FSchemeID"))), "deleting a scheme");
  }
  // Goes through the check, which must find so many overlapping entries.
  void Check(const BenchAccount& account, int entries) {
    const Ref<Dictionary> answer = Save(account);
    if (entries == 0) {
      Require(!answer->Has("Repeat") && ToText(answer->Value("Err")).find("truncated") != Text::npos,
              "a check that finds nothing");
    } else {
      Require(answer->Has("Repeat") && ObjectAs<Vector>(answer->Value("Repeat"))->Size() == entries,
              "a check that finds entries");
    }
  }

 private:
  BaseInfoMgr& manager_;
  Ref<Dictionary> type_ = Row({{"FRebateType", 2041}, {"FRangeItemClass", 4}});
  Ref<Dictionary> head_ = Row({{"FSchemeID", 0}, {"FSchemeName", Text(5000, 'x')}, {"FNote", ""}});
  Ref<Vector> none_ = New<Vector>();
  Ref<Vector> organisations_ = New<Vector>();
  Ref<Vector> grid_rows_ = New<Vector>();
};

// The check of what `make(request, shape)` asks for, which finds so many entries, beside the same on 1,000 schemes.
template <typename Make>
void CompareSizes(benchmark::State& state, int entries, const Make& make) {
  const StoredShape shape = GrowingShape(static_cast<int>(state.range(0)));
  const StoredShape small_shape = GrowingShape(1000);
  const BenchAccount& account = StoredSchemes(shape);
  const BenchAccount& small_account = StoredSchemes(small_shape);
  BaseInfoMgr manager;
  Request request(manager);
  make(request, shape);
  Request small_request(manager);
  make(small_request, small_shape);
  request.Acquaint(account);
  small_request.Acquaint(small_account);
  Comparison comparison(state);
  for (auto _ : state) {
    comparison.Work([&] { request.Check(account, entries); });
    comparison.Floor([&] { small_request.Check(small_account, entries); });
  }
}

// No stored scheme holds the organisation.
void OverlapUnknown(benchmark::State& state) {
  CompareSizes(state, 0,
               [](Request& request, const StoredShape&) { request.Organisation(8, kUnknown).GridRows(kGridRows); });
}

// The organisation stands in 20 schemes, which have none of the goods.
void OverlapKnown(benchmark::State& state) {
  CompareSizes(state, 0, [](Request& request, const StoredShape& shape) {
    request.Organisation(8, SupplierOf(shape, 4, 0)).GridRows(kGridRows);
  });
}

// One of the 20 schemes has one of the goods.
void OverlapPair(benchmark::State& state) {
  CompareSizes(state, 1, [](Request& request, const StoredShape& shape) {
    request.Organisation(8, SupplierOf(shape, 4, 0)).GridRows(kGridRows - 1).GridRow({GoodsOf(shape, 4, 0)});
  });
}

// The request asks for the whole class of 100 customers, each of whom stands in 20 schemes.
void OverlapWholeClass(benchmark::State& state) {
  CompareSizes(state, 0, [](Request& request, const StoredShape&) { request.Organisation(1, 0).GridRows(kGridRows); });
}

// The request asks for an employee, whose whole class stands in 20 schemes.
void OverlapStoredWholeClass(benchmark::State& state) {
  CompareSizes(state, 0, [](Request& request, const StoredShape&) {
    request.Organisation(3, kFirstEmployee + 4).GridRows(kGridRows);
  });
}

// ---- the check by hand ----

// The same tables with the same rows, and the query in the form for which SQLite finds the best plan: of the pairs and
// of the stored organisations it first takes what is different, so that nothing is met twice.
class HandCheck {
 public:
  explicit HandCheck(const BenchAccount& account) : database_(account.path()) {
    database_.Run("PRAGMA temp_store=MEMORY; PRAGMA cache_size=-32000");
    database_.Run(
        "CREATE TEMP TABLE AllOrgs(FID INTEGER PRIMARY KEY,FSchemeID int,FRowID int,FItemClassID int,FItemID int,"
        "FShowName text);"
        "CREATE TEMP TABLE AllItems(FID INTEGER PRIMARY KEY,FSchemeID int,FRowID int,FItemID int,FUnitID int,"
        "FShowName text);"
        "CREATE TEMP TABLE Pairs(FOrgID int,FItemClassID int,FItemID int,FOrgNumber text,FOrgName text,FNumber text,"
        "FName text)");
    Prepare();
  }

  void Begin() { database_.Run("BEGIN IMMEDIATE"); }
  void Organisation(int row, int item_class, int item) { organisation_->Run(row, item_class, item); }
  void Goods(int row, int item) { goods_->Run(row, item); }
  // Gives the number of overlapping entries, and leaves the tables empty.
  int Finish() {
    expand_->Run();
    forget_->Run();
    pair_->Run();
    int entries = 0;
    for (; find_->Step(); ++entries) {
      for (int i = 0; i < sqlite3_column_count(find_->get()); ++i) sqlite3_column_text(find_->get(), i);
    }
    find_->Reset();
    for (const char* table : {"AllOrgs", "AllItems", "Pairs"}) {
      database_.Run((Text("DELETE FROM temp.") + table).c_str());
    }
    database_.Run("ROLLBACK");
    return entries;
  }

 private:
  void Prepare() {
    const auto make = [&](const char* sql) { return std::make_unique<PlainStatement>(database_, sql); };
    organisation_ =
        make("INSERT INTO temp.AllOrgs(FSchemeID,FRowID,FItemClassID,FItemID,FShowName) VALUES(0,?,?,?,'')");
    goods_ = make("INSERT INTO temp.AllItems(FSchemeID,FRowID,FItemID,FUnitID,FShowName) VALUES(0,?,?,1,'')");
    expand_ = make(
        "INSERT INTO temp.AllOrgs(FSchemeID,FRowID,FItemClassID,FItemID,FShowName) SELECT o.FSchemeID,o.FRowID,"
        "o.FItemClassID,i.FItemID,'' FROM temp.AllOrgs o JOIN t_Item i ON i.FItemClassID=o.FItemClassID WHERE "
        "o.FItemID=0");
    forget_ = make("DELETE FROM temp.AllOrgs WHERE FItemID=0");
    pair_ = make(
        "INSERT INTO temp.Pairs SELECT v.*,i1.FNumber,i1.FName,i2.FNumber,i2.FName FROM (SELECT o.FItemID AS "
        "FOrgID,o.FItemClassID,i.FItemID FROM temp.AllOrgs o LEFT JOIN temp.AllItems i ON o.FRowID=i.FRowID GROUP BY "
        "1,2,3) v LEFT "
        "JOIN t_Item i1 ON v.FOrgID=i1.FItemID AND v.FItemClassID=i1.FItemClassID LEFT JOIN t_Item i2 ON "
        "v.FItemID=i2.FItemID AND i2.FItemClassID=4");
    find_ = make(
        "WITH asked AS MATERIALIZED (SELECT DISTINCT FOrgID FROM temp.Pairs),"
        "met AS MATERIALIZED ("
        "SELECT DISTINCT o.FSchemeID,o.FItemClassID,o.FItemID,a.FOrgID FROM asked a CROSS JOIN t_FL_AllOrgs o "
        "WHERE o.FItemID=a.FOrgID AND o.FItemID<>0 UNION ALL "
        "SELECT DISTINCT o.FSchemeID,o.FItemClassID,o.FItemID,a.FOrgID FROM asked a CROSS JOIN t_Item i CROSS JOIN "
        "t_FL_AllOrgs o WHERE i.FItemID=a.FOrgID AND o.FItemID=0 AND o.FItemClassID=i.FItemClassID),"
        "goods AS MATERIALIZED ("
        "SELECT DISTINCT i.FSchemeID,i.FItemID FROM (SELECT DISTINCT FSchemeID FROM met) m CROSS JOIN t_FL_AllItems i "
        "ON i.FSchemeID=m.FSchemeID) "
        "SELECT DISTINCT l.FSchemeName,p.FItemID,p.FNumber,p.FName,m.FOrgID,p.FOrgNumber,p.FOrgName,"
        "CASE WHEN m.FItemID=0 THEN '全部'||ifnull(c.FName,'') ELSE '' END "
        "FROM temp.Pairs p CROSS JOIN met m ON m.FOrgID=p.FOrgID "
        "CROSS JOIN goods g ON g.FSchemeID=m.FSchemeID AND g.FItemID=p.FItemID "
        "CROSS JOIN t_FL_SchemeList l ON l.FSchemeID=m.FSchemeID AND l.FRebateType=2041 AND l.FEnable=1 "
        "LEFT JOIN t_ItemClass c ON c.FItemClassID=m.FItemClassID ORDER BY 1,7,3");
  }

  PlainDatabase database_;
  std::unique_ptr<PlainStatement> organisation_, goods_, expand_, forget_, pair_, find_;
};

// A request of 200 organisations that stand in all of 50 grid rows with three goods each, whose twin is stored: each of
// its 30,000 pairs is found.
void OverlapAllPairs(benchmark::State& state) {
  constexpr int kOrganisations = 200;
  constexpr int kRows = 50;
  constexpr int kGoods = 3;
  const BenchAccount account;
  StoreSchemes(account, GrowingShape(1000));
  BaseInfoMgr manager;
  Request request(manager);
  for (int k = 0; k < kOrganisations; ++k) request.Organisation(8, kUnknown + k);
  for (int i = 0; i < kRows; ++i) {
    const int first = kUnknown + i * kGoods;
    request.GridRow({first, first + 1, first + 2});
  }
  request.Store(account);
  HandCheck by_hand(account);
  Comparison comparison(state);
  for (auto _ : state) {
    comparison.Work([&] { request.Check(account, kOrganisations * kRows * kGoods); });
    comparison.Floor([&] {
      by_hand.Begin();
      for (int k = 0; k < kOrganisations; ++k) {
        for (int i = 1; i <= kRows; ++i) by_hand.Organisation(i, 8, kUnknown + k);
      }
      for (int i = 0; i < kRows * kGoods; ++i) by_hand.Goods(i / kGoods + 1, kUnknown + i);
      Require(by_hand.Finish() == kOrganisations * kRows * kGoods, "the check by hand");
    });
  }
}

// A request of the whole class of 20,000 suppliers in 50 grid rows, none of whose goods is stored.
void OverlapWholeClassGrid(benchmark::State& state) {
  constexpr int kSuppliers = 20'000;
  constexpr int kRows = 50;
  const BenchAccount account;
  StoreSchemes(account, {.schemes = 1000, .organisations = 2, .suppliers = kSuppliers, .goods = 3});
  BaseInfoMgr manager;
  Request request(manager);
  request.Organisation(8, 0).GridRows(kRows);
  HandCheck by_hand(account);
  Comparison comparison(state);
  for (auto _ : state) {
    comparison.Work([&] { request.Check(account, 0); });
    comparison.Floor([&] {
      by_hand.Begin();
      for (int i = 1; i <= kRows; ++i) by_hand.Organisation(i, 8, 0);
      for (int i = 1; i <= kRows; ++i) by_hand.Goods(i, kUnknown + i);
      Require(by_hand.Finish() == 0, "the check by hand");
    });
  }
}

void Sizes(benchmark::internal::Benchmark* benchmark) {
  benchmark->Arg(1000)->Arg(10'000)->Arg(100'000)->Arg(1'000'000)->Unit(benchmark::kMillisecond)->UseManualTime();
}

BENCHMARK(OverlapUnknown)->Apply(Sizes);
BENCHMARK(OverlapKnown)->Apply(Sizes);
BENCHMARK(OverlapPair)->Apply(Sizes);
BENCHMARK(OverlapWholeClass)->Apply(Sizes);
BENCHMARK(OverlapStoredWholeClass)->Apply(Sizes);
BENCHMARK(OverlapAllPairs)->Unit(benchmark::kMillisecond)->UseManualTime();
BENCHMARK(OverlapWholeClassGrid)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace
}  // namespace rebate::bench
