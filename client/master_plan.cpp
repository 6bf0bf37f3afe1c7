#include "client/master_plan.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include "client/entities.h"
#include "platform/automation/conversion.h"
#include "platform/database/recordset.h"

namespace rebate {
namespace {

using Role = MasterColumn::Role;
using What = MasterChange::What;

constexpr std::size_t kSeveral = static_cast<std::size_t>(-1);

std::size_t ColumnWith(const MasterKind& kind, Role role) {
  const auto found = std::find_if(kind.columns.begin(), kind.columns.end(),
                                  [role](const MasterColumn& column) { return column.role == role; });
  return static_cast<std::size_t>(found - kind.columns.begin());
}

Long GreatestId(Connection& connection, const Text& name, const Text& table) {
  const RecordsetRef rows = connection.Execute("select max(" + name + ") from " + table);
  const Variant value = rows->FieldValue(std::size_t{0});
  return value.IsNull() ? 0 : ToLong(value);
}

// The account's rows by id and by number.
class StoredIndex {
 public:
  StoredIndex(const std::vector<StoredRow>& rows, std::size_t key_column) : rows_(rows), key_column_(key_column) {
    by_id_.reserve(rows.size());
    by_key_.reserve(rows.size());
    for (std::size_t i = 0; i < rows.size(); ++i) {
      by_id_.emplace(rows[i].id, i);
      const Text key = KeyOf(rows[i]);
      if (key.empty()) continue;
      const auto [place, is_first] = by_key_.emplace(key, i);
      // A row of the table goes before an item that the table lacks.
      if (!is_first && rows[i].in_table) place->second = kSeveral;
    }
  }

  Text KeyOf(const StoredRow& row) const { return NumberKey(row.cells[key_column_].value_or("")); }
  const StoredRow* WithId(Long id) const {
    const auto found = by_id_.find(id);
    return found == by_id_.end() ? nullptr : &rows_[found->second];
  }
  const StoredRow* WithKey(const Text& key, bool& several) const {
    const auto found = by_key_.find(key);
    several = found != by_key_.end() && found->second == kSeveral;
    return found == by_key_.end() || several ? nullptr : &rows_[found->second];
  }

 private:
  const std::vector<StoredRow>& rows_;
  std::size_t key_column_;
  std::unordered_map<Long, std::size_t> by_id_;
  std::unordered_map<Text, std::size_t> by_key_;
};

class Planner {
 public:
  Planner(Connection& connection, const MasterKind& kind, MasterFile file, FileProblems& problems)
      : connection_(connection),
        kind_(kind),
        file_(std::move(file)),
        problems_(problems),
        key_column_(ColumnWith(kind, Role::Key)),
        units_column_(ColumnWith(kind, Role::Units)),
        stored_(ReadStoredRows(connection, kind)),
        index_(stored_, key_column_) {
    if (units_column_ < kind.columns.size()) units_ = std::make_unique<UnitNames>(connection);
  }

  MasterPlan Plan() {
    for (FileRow& row : file_.rows) {
      bool good = true;
      const StoredRow* stored = Match(row, good);
      if (good) PlanRow(row, stored);
      row.cells = {};
    }
    CheckNewIds();
    GiveFreeIds();
    return std::move(plan_);
  }

 private:
  const MasterCell& KeyCell(const FileRow& row) const {
    const auto found = std::find(file_.columns.begin(), file_.columns.end(), key_column_);
    return row.cells[static_cast<std::size_t>(found - file_.columns.begin())];
  }

  bool Report(const FileRow& row, std::size_t column, const Text& what) {
    problems_.Add(row.line, file_.PlaceOf(row.line, kind_, column) + ": " + what);
    return false;
  }

  bool ReportTwice(const FileRow& row, const Text& name, std::size_t line) {
    return Report(row, key_column_, name + " stands in line " + std::to_string(line) + " already");
  }

  // The account's row that the file's one is about; null where it is new. Not `good` where that can't be told.
  const StoredRow* Match(const FileRow& row, bool& good) {
    const Text key = NumberKey(KeyCell(row).value_or(""));
    const StoredRow* stored = row.id ? MatchById(row, key, good) : MatchByKey(row, key, good);
    if (!good) return nullptr;
    const auto id = stored != nullptr ? std::optional<Long>(stored->id) : row.id;
    if (id) {
      const auto [place, is_first] = lines_of_ids_.emplace(*id, row.line);
      if (!is_first) good = ReportTwice(row, Text(kind_.one) + " " + std::to_string(*id), place->second);
    }
    if (!key.empty()) lines_of_keys_.emplace(key, row.line);
    return stored;
  }

  const StoredRow* MatchById(const FileRow& row, const Text& key, bool& good) {
    const Text id = std::to_string(*row.id);
    const Text number = KeyCell(row).value_or("");
    if (const StoredRow* stored = index_.WithId(*row.id)) {
      if (!kind_.is_found_by_id && index_.KeyOf(*stored) != key) {
        good = Report(row, key_column_,
                      "in the account " + id + " is the id of " + Text(kind_.one) + " " +
                          stored->cells[key_column_].value_or("without a number") + ", not of " + number);
      }
      return stored;
    }
    if (*row.id > kind_.most_id) {
      good = Report(row, key_column_, "an id is at most " + std::to_string(kind_.most_id) + ", unlike " + id);
    }
    if (kind_.is_found_by_id || key.empty()) return nullptr;
    bool several = false;
    if (const StoredRow* other = index_.WithKey(key, several); other != nullptr || several) {
      good = Report(row, key_column_,
                    number + " has another id than " + id + " in the account" +
                        (several ? Text() : ": " + std::to_string(other->id)));
    }
    if (const auto line = lines_of_keys_.find(key); line != lines_of_keys_.end()) {
      good = ReportTwice(row, number, line->second);
    }
    return nullptr;
  }

  const StoredRow* MatchByKey(const FileRow& row, const Text& key, bool& good) {
    const Text number = KeyCell(row).value_or("");
    if (const auto line = lines_of_keys_.find(key); line != lines_of_keys_.end()) {
      good = ReportTwice(row, number, line->second);
      return nullptr;
    }
    bool several = false;
    const StoredRow* stored = index_.WithKey(key, several);
    if (several) {
      good = Report(row, key_column_,
                    "several " + Text(kind_.word) + " of the account are " + number + "; an id tells which is meant");
    }
    return stored;
  }

  void PlanRow(FileRow& row, const StoredRow* stored) {
    MasterChange change;
    change.id = stored != nullptr ? stored->id : row.id.value_or(0);
    change.cells = StartingCells(stored);
    for (std::size_t i = 0; i < file_.columns.size(); ++i) {
      if (!TakeCell(row, file_.columns[i], std::move(row.cells[i]), stored, change)) return;
    }
    Decide(stored, change);
    if (stored == nullptr) {
      ++plan_.inserted;
      if (row.id) {
        new_ids_.emplace(*row.id, NewRow{&row, plan_.changes.size()});
      } else {
        without_id_.push_back(plan_.changes.size());
      }
    } else if (IsNothing(change)) {
      ++plan_.unchanged;
      return;
    } else {
      ++plan_.updated;
      change.former = stored->cells;
    }
    plan_.changes.push_back(std::move(change));
  }

  std::vector<MasterCell> StartingCells(const StoredRow* stored) const {
    std::vector<MasterCell> cells = stored != nullptr ? stored->cells : std::vector<MasterCell>(kind_.columns.size());
    const bool is_new = stored == nullptr || !stored->in_table;
    for (std::size_t i = 0; i < cells.size(); ++i) {
      if (is_new && kind_.columns[i].role == Role::Flag) cells[i] = "0";
      if (!cells[i] && kind_.columns[i].role == Role::Units) cells[i] = "";
    }
    return cells;
  }

  bool TakeCell(const FileRow& row, std::size_t column, MasterCell value, const StoredRow* stored,
                MasterChange& change) {
    MasterCell& cell = change.cells[column];
    switch (kind_.columns[column].role) {
      case Role::Flag:
        if (value) cell = std::move(value);
        return true;
      case Role::Units:
        // What the account already has stays, be the units there or not.
        if (stored != nullptr && value && units_->NamesOf(*stored->cells[column]) == *value) return true;
        break;
      default:
        cell = std::move(value);
        return true;
    }
    Text unknown;
    cell = units_->IdsOf(value.value_or(""), unknown);
    return cell || Report(row, column, "there is no unit " + unknown + "; units are imported first");
  }

  void Decide(const StoredRow* stored, MasterChange& change) const {
    if (stored == nullptr || !stored->in_table) change.row = What::Insert;
    bool differs = false;
    bool item_differs = false;
    for (std::size_t i = 0; stored != nullptr && i < kind_.columns.size(); ++i) {
      if (change.cells[i] == stored->cells[i]) continue;
      if (!kind_.columns[i].name.empty()) differs = true;
      if (kind_.columns[i].in_item) item_differs = true;
    }
    if (differs && change.row == What::Nothing) change.row = What::Update;
    if (!kind_.item_class) return;
    if (stored == nullptr || !stored->has_item) {
      change.item = What::Insert;
    } else if (item_differs || !stored->item_agrees) {
      change.item = What::Update;
    }
  }

  // Of a stored row, whose units may differ all the same.
  bool IsNothing(const MasterChange& change) const {
    if (change.row != What::Nothing || change.item != What::Nothing) return false;
    if (units_column_ == kind_.columns.size()) return true;
    return index_.WithId(change.id)->cells[units_column_] == change.cells[units_column_];
  }

  // An item's id is that of no item of another class: parts of the account know items by their ids alone.
  void CheckNewIds() {
    if (!kind_.item_class || new_ids_.empty()) return;
    constexpr std::size_t kAtOnce = 1000;
    for (auto at = new_ids_.begin(); at != new_ids_.end();) {
      Text list;
      for (std::size_t i = 0; i < kAtOnce && at != new_ids_.end(); ++i, ++at) {
        list += (list.empty() ? "" : ",") + std::to_string(at->first);
      }
      const RecordsetRef taken =
          connection_.Execute("select FItemID,FItemClassID from t_Item where FItemClassID<>" +
                              std::to_string(*kind_.item_class) + " and FItemID in (" + list + ")");
      for (; !taken->Eof(); taken->MoveNext()) {
        const Long id = ToLong(taken->FieldValue(std::size_t{0}));
        const Text owner(KindOf(ToLong(taken->FieldValue(std::size_t{1}))));
        Report(*new_ids_.at(id).row, key_column_, std::to_string(id) + " is the id of another item, a " + owner);
      }
      if (units_) NoticeLeftUnits(list);
    }
  }

  // Goods that are gone may have left units behind, which a new item of their id would share.
  void NoticeLeftUnits(const Text& ids) {
    const RecordsetRef left =
        connection_.Execute("select FSrcItemId,FItemID from t_ItemUnit where FSrcItemId in (" + ids + ")");
    for (; !left->Eof(); left->MoveNext()) {
      MasterChange& change = plan_.changes[new_ids_.at(ToLong(left->FieldValue(std::size_t{0}))).change];
      change.former.resize(kind_.columns.size());
      MasterCell& units = change.former[units_column_];
      units = (units ? *units + ";" : Text()) + ToText(left->FieldValue(std::size_t{1}));
    }
  }

  void GiveFreeIds() {
    if (without_id_.empty()) return;
    Long greatest = GreatestId(connection_, Text(kind_.id_name), Text(kind_.table));
    if (units_) greatest = std::max(greatest, GreatestId(connection_, "FSrcItemId", "t_ItemUnit"));
    if (kind_.item_class) greatest = std::max(greatest, GreatestId(connection_, "FItemID", "t_Item"));
    if (!new_ids_.empty()) greatest = std::max(greatest, new_ids_.rbegin()->first);
    const auto wanted = static_cast<std::int64_t>(without_id_.size());
    if (std::max<std::int64_t>(greatest, 0) + wanted > kind_.most_id) {
      problems_.Add(0, "there are no " + std::to_string(wanted) + " free ids behind " + std::to_string(greatest) +
                           ", of at most " + std::to_string(kind_.most_id) + "; give ids in the file");
      return;
    }
    greatest = std::max(greatest, 0);
    for (const std::size_t at : without_id_) plan_.changes[at].id = ++greatest;
  }

  Connection& connection_;
  const MasterKind& kind_;
  MasterFile file_;
  FileProblems& problems_;
  std::size_t key_column_;
  std::size_t units_column_;  // behind the last column where there is none
  std::vector<StoredRow> stored_;
  StoredIndex index_;
  std::unique_ptr<UnitNames> units_;
  std::unordered_map<Text, std::size_t> lines_of_keys_;
  std::unordered_map<Long, std::size_t> lines_of_ids_;
  struct NewRow {
    const FileRow* row;
    std::size_t change;  // its position in the plan
  };
  std::map<Long, NewRow> new_ids_;       // that the file gives
  std::vector<std::size_t> without_id_;  // changes, by position
  MasterPlan plan_;
};

}  // namespace

MasterPlan PlanImport(Connection& connection, const MasterKind& kind, MasterFile file, FileProblems& problems) {
  return Planner(connection, kind, std::move(file), problems).Plan();
}

}  // namespace rebate
