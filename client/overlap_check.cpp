#include "client/overlap_check.h"

#include <algorithm>
#include <map>
#include <unordered_map>

#include "client/scheme_ground.h"
#include "model/item_class.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

constexpr std::size_t kMostPairs = 1000;

// Looks the schemes of one type through, the earliest first. What is known of them at each moment is what an earlier
// save left.
class OverlapSearch {
 public:
  OverlapSearch(Connection& connection, const ItemClasses& classes, bool by_goods, std::vector<Finding>& findings)
      : connection_(connection), classes_(classes), by_goods_(by_goods), findings_(findings) {}

  void Run(const std::vector<SchemeGround>& schemes) {
    schemes_ = &schemes;
    seen_.assign(schemes.size(), kNobody);
    for (std::size_t later = 0; later < schemes.size() && !IsFull(); ++later) {
      for (const GroundRow& row : schemes[later].rows) Look(later, row);
      Remember(later);
    }
  }

  bool IsFull() const { return findings_.size() >= kMostPairs; }

 private:
  static constexpr std::size_t kNobody = static_cast<std::size_t>(-1);
  using Schemes = std::vector<std::size_t>;

  // The lists of earlier schemes that hold all which meet the row on one side.
  using Lists = std::vector<const Schemes*>;
  static std::size_t SizeOf(const Lists& lists) {
    std::size_t size = 0;
    for (const Schemes* list : lists) size += list->size();
    return size;
  }
  template <typename Map, typename Key>
  static void AddList(Lists& lists, const Map& map, const Key& key) {
    if (const auto found = map.find(key); found != map.end()) lists.push_back(&found->second);
  }

  Lists OnOrganisations(const GroundRow& row) const {
    Lists lists;
    for (const Long item : row.organisations.items) {
      AddList(lists, of_organisation_, item);
      for (const Long item_class : classes_.Holding(item)) AddList(lists, of_class_, item_class);
    }
    for (const Long item_class : row.organisations.classes) AddList(lists, touching_class_, item_class);
    return lists;
  }
  Lists OnGoods(const GroundRow& row) const {
    Lists lists;
    for (const Long item : row.goods) AddList(lists, of_goods_, item);
    return lists;
  }

  // Goes through the side on which fewer schemes stand, and looks at the other one of each.
  void Look(std::size_t later, const GroundRow& row) {
    Lists candidates = OnOrganisations(row);
    if (by_goods_) {
      const Lists on_goods = OnGoods(row);
      if (SizeOf(on_goods) < SizeOf(candidates)) candidates = on_goods;
    }
    for (const Schemes* list : candidates) {
      for (const std::size_t earlier : *list) {
        if (seen_[earlier] == later || !Meets(row, (*schemes_)[earlier])) continue;
        seen_[earlier] = later;
        findings_.push_back(Told((*schemes_)[earlier], (*schemes_)[later]));
        if (IsFull()) return;
      }
    }
  }

  bool Meets(const GroundRow& row, const SchemeGround& earlier) const {
    return (!by_goods_ || HaveCommon(row.goods, earlier.goods)) &&
           classes_.Meet(row.organisations, earlier.organisations);
  }

  void Remember(std::size_t scheme) {
    const SchemeGround& ground = (*schemes_)[scheme];
    for (const Long item : ground.organisations.items) {
      of_organisation_[item].push_back(scheme);
      for (const Long item_class : classes_.Holding(item)) Touch(item_class, scheme);
    }
    for (const Long item_class : ground.organisations.classes) {
      of_class_[item_class].push_back(scheme);
      for (const Long other : classes_.Meeting(item_class)) Touch(other, scheme);
    }
    for (const Long item : ground.goods) of_goods_[item].push_back(scheme);
  }
  void Touch(Long item_class, std::size_t scheme) {
    Schemes& schemes = touching_class_[item_class];
    if (schemes.empty() || schemes.back() != scheme) schemes.push_back(scheme);
  }

  // The scheme as a sentence names it, such as `scheme 3 (年度返利)`.
  Text NameOf(const SchemeGround& scheme) const {
    const Text id = std::to_string(scheme.id);
    const RecordsetRef rows =
        connection_.Execute("select isnull(FSchemeName, '') from t_FL_SchemeList where FSchemeID = " + id);
    return "scheme " + id + (rows->Eof() ? Text() : " (" + ToText(rows->FieldValue(std::size_t{0})) + ")");
  }

  // Of both schemes the rows that meet, in all grid rows of the later one.
  Finding Told(const SchemeGround& earlier, const SchemeGround& later) const {
    Finding finding;
    finding.check = "overlap";
    finding.what = NameOf(earlier) + " and " + NameOf(later) + " of type " + std::to_string(later.rebate_type) +
                   " are both enabled and cover the same ground";
    GroundRow met;
    std::vector<FoundRow> of_later;
    for (const GroundRow& row : later.rows) {
      if (!Meets(row, earlier)) continue;
      AddRows(later, row.number, earlier.organisations, earlier.goods, of_later);
      met.organisations.Add(row.organisations);
      met.goods.insert(met.goods.end(), row.goods.begin(), row.goods.end());
    }
    met.organisations.Sort();
    std::sort(met.goods.begin(), met.goods.end());
    AddRows(earlier, std::nullopt, met.organisations, met.goods, finding.rows);
    finding.rows.insert(finding.rows.end(), of_later.begin(), of_later.end());
    std::stable_sort(finding.rows.begin(), finding.rows.end(), [](const FoundRow& a, const FoundRow& b) {
      return a.table > b.table;  // organisations first
    });
    return finding;
  }

  // The rows of a scheme, or of one of its grid rows, that meet the other side.
  void AddRows(const SchemeGround& scheme, std::optional<Long> row, const Organisations& organisations,
               const std::vector<Long>& goods, std::vector<FoundRow>& rows) const {
    for (const OrganisationRow& own : scheme.organisation_rows) {
      if (row && own.row != *row) continue;
      if (classes_.Meet(OrganisationsOf(own), organisations)) {
        rows.push_back({"t_FL_AllOrgs", {{"FID", std::to_string(own.id)}}});
      }
    }
    if (!by_goods_) return;
    for (const GoodsRow& own : scheme.goods_rows) {
      if (row && own.row != *row) continue;
      if (std::binary_search(goods.begin(), goods.end(), own.item)) {
        rows.push_back({"t_FL_AllItems", {{"FID", std::to_string(own.id)}}});
      }
    }
  }

  Connection& connection_;
  const ItemClasses& classes_;
  bool by_goods_;
  std::vector<Finding>& findings_;
  const std::vector<SchemeGround>* schemes_ = nullptr;
  Schemes seen_;  // of each scheme the last later one that it was found to meet
  std::unordered_map<Long, Schemes> of_organisation_;
  std::unordered_map<Long, Schemes> of_goods_;
  std::map<Long, Schemes> of_class_;        // that name the whole class
  std::map<Long, Schemes> touching_class_;  // that cover any item of it
};

// The types of enabled schemes with the item class that they range over; a save refuses any other class.
std::vector<std::pair<Long, Long>> TypesInUse(Connection& connection) {
  std::vector<std::pair<Long, Long>> types;
  const RecordsetRef rows = connection.Execute(
      "select m.FRebateType, m.FRangeItemClass from t_FL_SchemeMode m where m.FRangeItemClass in (1, 4, 8) and exists "
      "(select 1 from t_FL_SchemeList l where l.FRebateType = m.FRebateType and l.FEnable = 1) order by m.FRebateType");
  for (; !rows->Eof(); rows->MoveNext()) {
    types.emplace_back(ToLong(rows->FieldValue(std::size_t{0})), ToLong(rows->FieldValue(std::size_t{1})));
  }
  return types;
}

}  // namespace

std::vector<Finding> FindOverlaps(Connection& connection) {
  std::vector<Finding> findings;
  const ItemClasses classes = ItemClasses::Read(connection);
  for (const auto& [type, range_class] : TypesInUse(connection)) {
    OverlapSearch search(connection, classes, range_class == item_class::kGoods, findings);
    search.Run(ReadGround(connection, type));
    if (!search.IsFull()) continue;
    findings.push_back({"overlap", "the search for schemes that overlap ended here: there are too many", {}, false});
    break;
  }
  return findings;
}

}  // namespace rebate
