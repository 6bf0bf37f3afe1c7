#include <algorithm>
#include <boost/multiprecision/cpp_int.hpp>
#include <clocale>
#include <random>

#include "platform/login/process_cache.h"
#include "platform/login_standins/host_cache.h"
#include "platform/login_standins/login_standins.h"
#include "service/component_classes.h"
#include "service/rebate_rule_mgr.h"
#include "tests/embedded_kit.h"
#include "tests/scheme_kit.h"
#include "tests/tool_kit.h"

namespace rebate {
namespace {

using Big = boost::multiprecision::cpp_int;

// ---- rates and the bands to which they belong ----

struct Band {
  const char* lower;
  const char* upper;
  int rate = 0;  // 0 for a band without one
};

class RatesOfBands : public testing::Test {
 protected:
  RatesOfBands() {
    RegisterLoginStandIns();
    RegisterComponent();
    PutProcessCache(NewProcessCache());
    SetLoginAnswers({});
    AddMasterData(account_);
    Ref<Dictionary> nobody = Row({});
    EXPECT_TRUE(manager_.SaveSelectedItem(account_.dsn(), nobody, kType, 0, 0));
  }

  ~RatesOfBands() override { DropProcessCache(); }

  bool SaveBands(const std::vector<Band>& bands) {
    Ref<Vector> rows = List({});
    for (const Band& band : bands) {
      rows->Add(Row({{"FLower", band.lower}, {"FUpper", band.upper}, {"FIndex", rows->Size() + 1}}));
    }
    return manager_.SaveRebateRange(account_.dsn(), kType, rows, 0);
  }

  // The rows of a rule for each band, as a form has them.
  Ref<Vector> Rules(const std::vector<Band>& bands, bool with_organisation) {
    const Ref<Vector> ranges = manager_.GetRebateRange(account_.dsn(), kType);
    Ref<Vector> rows = List({});
    for (const Band& band : bands) {
      const Ref<Dictionary> range = ObjectAs<Dictionary>(ranges->Item(rows->Size() + 1));
      Ref<Dictionary> row = Row({{"FSchemeID", 0},
                                 {"FClassTypeID", kType},
                                 {"FItemID", "0"},
                                 {"FAmtRangeID", range->Value("FID")},
                                 {"FIndex", rows->Size() + 1},
                                 {"FRebateRate", band.rate}});
      if (with_organisation) row->SetValue("FOrgID", 7);
      rows->Add(row);
    }
    return rows;
  }
  bool SaveRules(const std::vector<Band>& bands, bool for_the_rest) {
    Ref<Vector> rows = Rules(bands, !for_the_rest);
    Long type = kType;
    return for_the_rest ? rules_.SaveAllRule(account_.dsn(), type, rows)
                        : rules_.SaveRebateRule(account_.dsn(), kType, rows, 0, 0);
  }

  // Each rate beside the limits of the band that it names, and whether its position is that band's.
  Text RatesByBand() const {
    return account_.Rows(
        "select b.FLowerLimit,b.FUpperLimit,r.FRebateRate,case when r.FIndex=b.FIndex then 'there' else 'off' end from "
        "t_FL_RebateRule r left join t_FL_RebateRange b on b.FID=r.FAmtRangeID where r.FOrgID=7 order by "
        "b.FLowerLimit");
  }
  static Text Expected(std::vector<Band> bands) {
    std::sort(bands.begin(), bands.end(),
              [](const Band& a, const Band& b) { return std::stoi(a.lower) < std::stoi(b.lower); });
    Text text;
    for (const Band& band : bands) {
      if (band.rate == 0) continue;
      if (!text.empty()) text += '\n';
      text += Text(band.lower) + '|' + band.upper + '|' + std::to_string(band.rate) + "|there";
    }
    return text;
  }

  static constexpr Long kType = 2040;
  TestAccount account_;
  BaseInfoMgr manager_;
  RebateRuleMgr rules_;
};

TEST_F(RatesOfBands, StayWhereTheyBelong) {
  const std::vector<Band> bands = {{"0", "100000", 1}, {"100000", "500000", 2}, {"500000", "1000000", 3}};
  const std::vector<Band> changes[] = {
      // the same again
      bands,
      // the first is split
      {{"0", "50000", 1}, {"50000", "100000"}, {"100000", "500000", 2}, {"500000", "1000000", 3}},
      // one in front of all
      {{"-50000", "0"}, {"0", "100000", 1}, {"100000", "500000", 2}, {"500000", "1000000", 3}},
      // the first two change places, then the outer ones
      {{"100000", "500000", 2}, {"0", "100000", 1}, {"500000", "1000000", 3}},
      {{"500000", "1000000", 3}, {"100000", "500000", 2}, {"0", "100000", 1}},
      // all move by one
      {{"500000", "1000000", 3}, {"0", "100000", 1}, {"100000", "500000", 2}}};
  for (const bool for_the_rest : {false, true}) {
    for (const std::vector<Band>& change : changes) {
      ASSERT_TRUE(SaveBands(bands));
      ASSERT_TRUE(SaveRules(bands, for_the_rest));
      ASSERT_EQ(RatesByBand(), Expected(bands));
      ASSERT_TRUE(SaveBands(change));
      EXPECT_EQ(RatesByBand(), Expected(change)) << change.front().lower << " – " << change.front().upper;
      ASSERT_TRUE(SaveBands(change));
      EXPECT_EQ(RatesByBand(), Expected(change)) << "saved again";
    }
  }
}

TEST_F(RatesOfBands, AreReadBackThroughTheGrid) {
  const std::vector<Band> bands = {{"0", "100000", 1}, {"100000", "500000", 2}, {"500000", "1000000", 3}};
  ASSERT_TRUE(SaveBands(bands));
  ASSERT_TRUE(SaveRules(bands, false));
  ASSERT_TRUE(SaveBands({{"0", "50000", 1}, {"50000", "100000"}, {"100000", "500000", 2}, {"500000", "1000000", 3}}));
  Ref<Dictionary> seven = Row({{"1", 7}});
  ASSERT_TRUE(manager_.SaveSelectedItem(account_.dsn(), seven, kType, 0, 0));
  const Ref<Vector> ranges = manager_.GetRebateRange(account_.dsn(), kType);
  const Ref<Vector> lines = rules_.GetRebateRule(account_.dsn(), kType, 0, 1);
  Text grid;
  for (Long i = 1; i <= ranges->Size(); ++i) {
    const Ref<Dictionary> range = ObjectAs<Dictionary>(ranges->Item(i));
    grid += ToText(range->Value("FLowerLimit")) + ':';
    for (Long j = 1; j <= lines->Size(); ++j) {
      const Ref<Dictionary> line = ObjectAs<Dictionary>(lines->Item(j));
      if (line->Value("FAmtRangeID") == range->Value("FID")) grid += ToText(line->Value("FRebateRate"));
    }
    grid += ' ';
  }
  EXPECT_EQ(grid, "0:1 50000: 100000:2 500000:3 ");
}

using RangesVerb = ToolTest;

TEST_F(RangesVerb, SavingRangesAgainKeepsTheirIds) {
  const char* ids = "select FID,FLowerLimit,FUpperLimit,FIndex from t_FL_RebateRange where FClassTypeID=2040";
  Text first;
  for (int i = 0; i < 3; ++i) {
    ASSERT_EQ(Run({"ranges", "2040", "--set", Example("ranges")}).out, "Type 2040 now has 2 ranges.\n");
    const Text now = RunRebate({"sql", dsn_, ids, "--json"}).out;
    if (i == 0) first = now;
    EXPECT_EQ(now, first);
  }
  EXPECT_TRUE(Holds(first, "\"FUpperLimit\":200000,")) << first;
}

// ---- amounts ----

struct Amount {
  Big units;  // of 10^-10
  Text text;  // as short as can be
};

constexpr int kScale = 10;

// The digits of the units with a point in front of the last ten, without what doesn't count.
Text TextOf(const Big& units) {
  Text digits = Big(abs(units)).str();
  if (digits.size() <= kScale) digits.insert(0, kScale + 1 - digits.size(), '0');
  digits.insert(digits.size() - kScale, 1, '.');
  while (digits.back() == '0') digits.pop_back();
  if (digits.back() == '.') digits.pop_back();
  return units < 0 ? '-' + digits : digits;
}

Amount DrawAmount(std::mt19937_64& random) {
  const int scale = static_cast<int>(random() % (kScale + 1));
  const int digits = 1 + static_cast<int>(random() % 28);
  Big units = 0;
  for (int i = 0; i < digits; ++i) units = units * 10 + random() % 10;
  for (int i = scale; i < kScale; ++i) units *= 10;
  if (random() % 3 == 0) units = -units;
  return {units, TextOf(units)};
}

// The amount as somebody may write it.
Text Written(const Text& text, std::mt19937_64& random) {
  const bool negative = text.starts_with('-');
  Text digits = negative ? text.substr(1) : text;
  if (random() % 3 == 0) digits.insert(0, static_cast<std::size_t>(1 + random() % 3), '0');
  // A text of digits alone is a decimal with a point, or where it is a short one an int.
  const bool point = digits.find('.') != Text::npos;
  if (!point && random() % 2 == 0) digits += '.';
  if (digits.find('.') != Text::npos && random() % 3 == 0)
    digits.append(static_cast<std::size_t>(1 + random() % 3), '0');
  if (negative) return '-' + digits;
  return random() % 3 == 0 ? '+' + digits : digits;
}

class Amounts : public EmbeddedTest {
 protected:
  static constexpr int kCount = 100000;
  static constexpr int kRowsOfInsert = 500;

  Amounts() {
    Run("create table t_amount (FID int primary key, FAmount decimal(38,10)) create index IX_amount on t_amount "
        "(FAmount)");
    std::mt19937_64 random(20240229);
    amounts_.reserve(kCount);
    for (int i = 0; i < kCount; ++i) amounts_.push_back(DrawAmount(random));
    account_->BeginWork();
    for (int first = 0; first < kCount; first += kRowsOfInsert) {
      Text insert = "insert into t_amount values ";
      for (int i = first; i < first + kRowsOfInsert; ++i) {
        if (i > first) insert += ',';
        insert += '(' + std::to_string(i) + ',' + Written(amounts_[static_cast<std::size_t>(i)].text, random) + ')';
      }
      Run(insert);
    }
    account_->CommitWork();
  }

  std::vector<Amount> amounts_;
};

TEST_F(Amounts, AreFoundByEqualityAndReadWithAllDigits) {
  std::mt19937_64 random(7);
  int wrong = 0;
  for (std::size_t i = 0; i < amounts_.size() && wrong < 10; ++i) {
    const Text written = Written(amounts_[i].text, random);
    const RecordsetRef rows = account_->Execute("select FID,FAmount from t_amount where FAmount=" + written);
    bool found = false;
    for (; !rows->Eof(); rows->MoveNext()) {
      found = found || ToText(rows->FieldValue(std::size_t{0})) == std::to_string(i);
      EXPECT_EQ(ToText(rows->FieldValue(std::size_t{1})), amounts_[i].text);
    }
    EXPECT_TRUE(found) << written;
    wrong += found ? 0 : 1;
  }
}

TEST_F(Amounts, AreSummedExactly) {
  // As many of these as there are have a sum that fits.
  const Text limit = "10000000000000000000000";
  const Text low = " from t_amount where FAmount between -" + limit + " and " + limit;
  Big sum = 0;
  Big absolute = 0;
  for (const Amount& amount : amounts_) {
    if (abs(amount.units) > Big(limit + "0000000000")) continue;
    sum += amount.units;
    absolute += abs(amount.units);
  }
  EXPECT_EQ(Rows("select sum(FAmount)" + low), TextOf(sum));
  EXPECT_EQ(Rows("declare @s decimal(38,10) set @s=0 select @s=@s+FAmount" + low + " select @s"), TextOf(sum));
  EXPECT_EQ(Rows("select sum(s) from (select sum(abs(FAmount)) as s" + low + " group by FID%97) x"), TextOf(absolute));
  EXPECT_EQ(Refusal("select sum(FAmount) from t_amount where FAmount > " + limit + "00000").description,
            "Arithmetic overflow error converting expression to data type numeric.");
}

TEST_F(Amounts, AreOrderedAsNumbers) {
  std::vector<std::size_t> order(amounts_.size());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::stable_sort(order.begin(), order.end(),
                   [&](std::size_t a, std::size_t b) { return amounts_[a].units < amounts_[b].units; });
  // By the index, and where an index can't serve.
  for (const char* key : {"FAmount", "FAmount+0"}) {
    const RecordsetRef rows = account_->Execute("select FID from t_amount order by " + Text(key) + ",FID");
    std::size_t wrong = 0;
    for (const std::size_t expected : order) {
      ASSERT_FALSE(rows->Eof());
      wrong += ToText(rows->FieldValue(std::size_t{0})) == std::to_string(expected) ? 0 : 1;
      rows->MoveNext();
    }
    EXPECT_EQ(wrong, 0u) << key;
  }
  for (const std::size_t place : {0, 1, 50000, 99999}) {
    const Big& limit = amounts_[order[place]].units;
    const auto below =
        std::count_if(amounts_.begin(), amounts_.end(), [&](const Amount& a) { return a.units < limit; });
    EXPECT_EQ(Rows("select count(*) from t_amount where FAmount<" + TextOf(limit)), std::to_string(below));
  }
}

// ---- a host that has set a locale ----

TEST(AmountsInAnyLocale, AreStoredAndReadAsTheyAre) {
  const TestAccount account;
  AddMasterData(account);
  const Text former = std::setlocale(LC_ALL, nullptr);
  if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) GTEST_SKIP() << "no locale with a decimal comma";
  SchemeRequest request;
  request.ranges = List({Row({{"FLowerLimit", 80.5}, {"FUpperLimit", "100.25"}})});
  request.Organisation(0, 8, 7).GridRow({71}, 0.25).GridRow({72}, "5.75");
  const bool saved = request.Saves(account);
  const Text rates = account.Rows("select FRebateRate,FRebateRate*2 from t_FL_RebateRule order by FID");
  const Text range = account.Rows("select FLowerLimit,FUpperLimit from t_FL_RebateRange");
  std::setlocale(LC_ALL, former.c_str());
  EXPECT_TRUE(saved);
  EXPECT_EQ(rates, "0.25|0.5\n5.75|11.5");
  EXPECT_EQ(range, "80.5|100.25");
}

}  // namespace
}  // namespace rebate
