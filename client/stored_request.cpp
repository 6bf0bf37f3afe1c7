#include "client/stored_request.h"

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <set>

#include "client/account.h"
#include "client/row_tables.h"
#include "platform/automation/conversion.h"
#include "platform/containers/vector.h"
#include "platform/database/recordset.h"

namespace rebate {
namespace {

Long NumberOf(const Recordset& row, std::string_view column) {
  return static_cast<Long>(LeadingNumber(CellText(row.FieldValue(column))));
}

// The grid rows by position; those that hold nothing are null.
class GridRows {
 public:
  void Reach(Long row) { count_ = std::max(count_, row); }
  void Add(Long row, const char* list, Json inner) {
    Reach(row);
    rows_[row][list].push_back(std::move(inner));
  }
  void Mark(Long row) { rows_[row]["FZH"] = 1; }
  Long count() const { return count_; }

  Json ToJson() const {
    Json list = Json::array();
    for (Long row = 1; row <= count_; ++row) {
      const auto found = rows_.find(row);
      list.push_back(found == rows_.end() ? Json() : found->second);
    }
    return list;
  }

 private:
  Long count_ = 0;
  std::map<Long, Json> rows_;
};

template <typename Visit>
void EachRow(const Dictionary& scheme, const char* key, Visit visit) {
  const auto rows = ObjectAs<Recordset>(scheme.Value(key));
  for (rows->MoveFirst(); !rows->Eof(); rows->MoveNext()) visit(*rows);
}

Json Ranges(const Dictionary& scheme) {
  Json list = Json::array();
  const auto ranges = ObjectAs<Vector>(scheme.Value("AllRanges"));
  for (Long i = 1; i <= ranges->Size(); ++i) {
    const auto range = ObjectAs<Dictionary>(ranges->Item(i));
    list.push_back({{"FLowerLimit", AmountJson(CellText(*range, "FLowerLimit"))},
                    {"FUpperLimit", AmountJson(CellText(*range, "FUpperLimit"))}});
  }
  return list;
}

// Each organisation once, with FRowID 0 where it stands in all rows; otherwise once a row.
Json Organisations(const Dictionary& scheme, Long row_count) {
  Json list = Json::array();
  std::map<std::pair<Long, Long>, std::set<Long>> standing;
  EachRow(scheme, "AllOrgsRS", [&](const Recordset& row) {
    standing[{NumberOf(row, "FItemClassID"), NumberOf(row, "FItemID")}].insert(NumberOf(row, "FRowID"));
  });
  EachRow(scheme, "AllOrgsRS", [&](const Recordset& row) {
    std::set<Long>& rows = standing[{NumberOf(row, "FItemClassID"), NumberOf(row, "FItemID")}];
    const bool in_all = std::ssize(rows) == row_count;
    if (rows.empty()) return;
    list.push_back({{"FRowID", in_all ? 0 : NumberOf(row, "FRowID")},
                    {"FItemClassID", NumberOf(row, "FItemClassID")},
                    {"FItemID", NumberOf(row, "FItemID")},
                    {"FShowName", CellText(row.FieldValue("FShowName"))}});
    if (in_all) rows.clear();
  });
  return list;
}

}  // namespace

Json AmountJson(const Text& amount) {
  return ParseJson(amount.empty() ? "0" : amount);
}

Json StoredRequest(Account& account, const SchemeHead& head, const Dictionary& scheme) {
  GridRows rows;
  EachRow(scheme, "AllOrgsRS", [&](const Recordset& row) { rows.Reach(NumberOf(row, "FRowID")); });
  EachRow(scheme, "AllItemsRS", [&](const Recordset& row) {
    rows.Add(NumberOf(row, "FRowID"), "FItemIDs",
             {{"FRowID", NumberOf(row, "FRowID")},
              {"FItemID", NumberOf(row, "FItemID")},
              {"FUnitID", NumberOf(row, "FUnitID")},
              {"FShowName", CellText(row.FieldValue("FShowName"))}});
  });
  Json points = Json::object();
  EachRow(scheme, "AllChecksRS", [&](const Recordset& row) {
    const Long place = NumberOf(row, "FRowID");
    if (place == 0) {
      points[CellText(row.FieldValue("FItemID"))] = nullptr;
      return;
    }
    rows.Add(
        place, "FCheckItems",
        {{"FRowID", place}, {"FItemClassID", NumberOf(row, "FItemClassID")}, {"FItemID", NumberOf(row, "FItemID")}});
  });
  EachRow(scheme, "AllRulesRS", [&](const Recordset& row) {
    rows.Add(NumberOf(row, "FRowID"), "FRebateRates",
             {{"FRowID", NumberOf(row, "FRowID")},
              {"FRebateRate", AmountJson(CellText(row.FieldValue("FRebateRate")))},
              {"FIndex", NumberOf(row, "FIndex")}});
  });
  const RecordsetRef marked = account.Query(
      "select distinct FRowID from t_FL_RebateRule where FItemID='2' and FSchemeID=" + std::to_string(head.id));
  for (; !marked->Eof(); marked->MoveNext()) rows.Mark(NumberOf(*marked, "FRowID"));
  Json organisations = Organisations(scheme, rows.count());
  if (!points.empty()) {
    const auto in_all = [](const Json& organisation) { return organisation["FRowID"] == 0; };
    std::stable_partition(organisations.begin(), organisations.end(), in_all);
    if (!organisations.empty()) organisations[0]["CheckPoints"] = points;
  }
  return {
      {"FRebateType", head.rebate_type},
      {"SchemeMainData", {{"FSchemeID", head.id}, {"FSchemeName", head.name}, {"FNote", CellText(*head.row, "FNote")}}},
      {"AllRangesData", Ranges(scheme)},
      {"AllOrgsData", organisations},
      {"AllGridRows", rows.ToJson()}};
}

Json LoadRequest(Account& account, const SchemeHead& head) {
  const auto scheme = New<Dictionary>();
  if (!ToBoolean(account.Call("LoadSchemeRowData", {head.id, scheme}))) {
    account.ThrowFailure("Scheme " + std::to_string(head.id) + " can't be read whole");
  }
  return StoredRequest(account, head, *scheme);
}

}  // namespace rebate
