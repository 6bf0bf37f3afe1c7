#include "client/scheme_ground.h"

#include <algorithm>
#include <limits>
#include <set>

#include "model/item_class.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

constexpr std::size_t kFewTimes = 16;
constexpr Long kNoRow = std::numeric_limits<Long>::min();

void SortOnce(std::vector<Long>& list) {
  std::sort(list.begin(), list.end());
  list.erase(std::unique(list.begin(), list.end()), list.end());
}

Long Number(const Recordset& rows, std::size_t field) {
  return ToLong(rows.FieldValue(field));
}

Text OfEnabledSchemes(const char* columns, const char* table, Long rebate_type) {
  return "select t.FSchemeID, t.FID, t.FRowID, " + Text(columns) + " from t_FL_SchemeList l inner join " + table +
         " t on t.FSchemeID = l.FSchemeID where l.FRebateType = " + std::to_string(rebate_type) +
         " and l.FEnable = 1 and t.FItemID is not null order by t.FSchemeID, t.FID";
}

// A row without a number of its own covers nothing together with goods.
Long RowNumber(const Recordset& rows) {
  const Variant row = rows.FieldValue(std::size_t{2});
  return row.IsNull() ? kNoRow : ToLong(row);
}

void FillRows(SchemeGround& scheme) {
  std::map<Long, GroundRow> rows;
  for (const OrganisationRow& row : scheme.organisation_rows) rows[row.row].organisations.Add(OrganisationsOf(row));
  for (const GoodsRow& row : scheme.goods_rows) {
    if (const auto found = rows.find(row.row); found != rows.end() && row.row != kNoRow) {
      found->second.goods.push_back(row.item);
    }
    scheme.goods.push_back(row.item);
  }
  SortOnce(scheme.goods);
  for (auto& [number, row] : rows) {
    row.number = number;
    row.organisations.Sort();
    SortOnce(row.goods);
    scheme.organisations.Add(row.organisations);
    scheme.rows.push_back(std::move(row));
  }
  scheme.organisations.Sort();
}

}  // namespace

void Organisations::Add(const Organisations& other) {
  items.insert(items.end(), other.items.begin(), other.items.end());
  classes.insert(classes.end(), other.classes.begin(), other.classes.end());
}

void Organisations::Sort() {
  SortOnce(items);
  SortOnce(classes);
}

Organisations OrganisationsOf(const OrganisationRow& row) {
  Organisations organisations;
  (row.item == item_class::kWholeClass ? organisations.classes : organisations.items)
      .push_back(row.item == item_class::kWholeClass ? row.item_class : row.item);
  return organisations;
}

std::vector<SchemeGround> ReadGround(Connection& connection, Long rebate_type) {
  std::vector<SchemeGround> schemes;
  {
    const RecordsetRef rows =
        connection.Execute(OfEnabledSchemes("t.FItemID, isnull(t.FItemClassID, 0)", "t_FL_AllOrgs", rebate_type));
    for (; !rows->Eof(); rows->MoveNext()) {
      const Long id = Number(*rows, 0);
      if (schemes.empty() || schemes.back().id != id) {
        schemes.emplace_back();
        schemes.back().id = id;
        schemes.back().rebate_type = rebate_type;
      }
      schemes.back().organisation_rows.push_back(
          {Number(*rows, 1), RowNumber(*rows), Number(*rows, 4), Number(*rows, 3)});
    }
  }
  const RecordsetRef rows = connection.Execute(OfEnabledSchemes("t.FItemID", "t_FL_AllItems", rebate_type));
  for (auto scheme = schemes.begin(); !rows->Eof(); rows->MoveNext()) {
    const Long id = Number(*rows, 0);
    while (scheme != schemes.end() && scheme->id < id) ++scheme;
    if (scheme == schemes.end()) break;
    if (scheme->id == id) scheme->goods_rows.push_back({Number(*rows, 1), RowNumber(*rows), Number(*rows, 3)});
  }
  for (SchemeGround& scheme : schemes) FillRows(scheme);
  return schemes;
}

ItemClasses ItemClasses::Read(Connection& connection) {
  ItemClasses classes;
  const RecordsetRef rows = connection.Execute(
      "select i.FItemClassID, i.FItemID from t_Item i where i.FItemID <> 0 and i.FItemClassID in (select "
      "o.FItemClassID "
      "from t_FL_AllOrgs o inner join t_FL_SchemeList l on l.FSchemeID = o.FSchemeID where o.FItemID = 0 and l.FEnable "
      "= 1)");
  for (; !rows->Eof(); rows->MoveNext()) classes.holding_[Number(*rows, 1)].push_back(Number(*rows, 0));
  std::map<Long, std::set<Long>> meeting;
  for (const auto& [item, holding] : classes.holding_) {
    for (const Long item_class : holding) meeting[item_class].insert(holding.begin(), holding.end());
  }
  for (const auto& [item_class, others] : meeting) classes.meeting_[item_class] = {others.begin(), others.end()};
  return classes;
}

const std::vector<Long>& ItemClasses::Holding(Long item) const {
  static const std::vector<Long> kNone;
  const auto found = holding_.find(item);
  return found == holding_.end() ? kNone : found->second;
}

const std::vector<Long>& ItemClasses::Meeting(Long item_class) const {
  static const std::vector<Long> kNone;
  const auto found = meeting_.find(item_class);
  return found == meeting_.end() ? kNone : found->second;
}

bool ItemClasses::IsHeldBy(Long item, const std::vector<Long>& classes) const {
  return !classes.empty() && std::any_of(classes.begin(), classes.end(), [&](Long item_class) {
    const std::vector<Long>& holding = Holding(item);
    return std::find(holding.begin(), holding.end(), item_class) != holding.end();
  });
}

bool ItemClasses::Meet(const Organisations& left, const Organisations& right) const {
  const auto held = [&](const Organisations& items, const Organisations& classes) {
    return !classes.classes.empty() && std::any_of(items.items.begin(), items.items.end(),
                                                   [&](Long item) { return IsHeldBy(item, classes.classes); });
  };
  return HaveCommon(left.items, right.items) || held(left, right) || held(right, left) ||
         std::any_of(left.classes.begin(), left.classes.end(),
                     [&](Long item_class) { return HaveCommon(Meeting(item_class), right.classes); });
}

bool HaveCommon(const std::vector<Long>& left, const std::vector<Long>& right) {
  if (left.size() > right.size()) return HaveCommon(right, left);
  if (left.size() * kFewTimes < right.size()) {
    return std::any_of(left.begin(), left.end(),
                       [&](Long one) { return std::binary_search(right.begin(), right.end(), one); });
  }
  for (auto a = left.begin(), b = right.begin(); a != left.end() && b != right.end();) {
    if (*a == *b) return true;
    *a < *b ? ++a : ++b;
  }
  return false;
}

}  // namespace rebate
