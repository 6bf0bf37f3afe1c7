#include "client/master_writer.h"

#include <algorithm>

#include "platform/values/ascii.h"

namespace rebate {
namespace {

using Role = MasterColumn::Role;
using What = MasterChange::What;

constexpr std::size_t kRowsAtOnce = 1000;  // the most that an insert takes
constexpr std::size_t kStatementsAtOnce = 50;
constexpr std::size_t kMostBytes = 1 << 20;  // of a text, well below what servers take

Text Literal(const MasterCell& cell, Role role) {
  if (!cell) return "null";
  if (role == Role::Flag) return *cell;
  return "N'" + Replace(*cell, "'", "''") + "'";
}

// Gathers pieces of one kind and runs them together.
class Gathered {
 public:
  Gathered(Connection& connection, Text start, Text separator, std::size_t most)
      : connection_(connection), start_(std::move(start)), separator_(std::move(separator)), most_(most) {}

  void Add(const Text& piece) {
    text_ += count_ == 0 ? start_ : separator_;
    text_ += piece;
    if (++count_ == most_ || text_.size() > kMostBytes) Run();
  }
  void Run() {
    if (count_ > 0) connection_.Execute(text_);
    text_.clear();
    count_ = 0;
  }

 private:
  Connection& connection_;
  Text start_;
  Text separator_;
  std::size_t most_;
  std::size_t count_ = 0;
  Text text_;
};

Text InsertStart(const MasterKind& kind, bool item) {
  Text start =
      item ? "insert into t_Item (FItemClassID,FItemID" : "insert into " + Text(kind.table) + " (" + Text(kind.id_name);
  for (const MasterColumn& column : kind.columns) {
    if (item ? column.in_item : !column.name.empty()) start += "," + Text(column.name);
  }
  return start + ") values ";
}

class Writer {
 public:
  Writer(Connection& connection, const MasterKind& kind)
      : kind_(kind),
        rows_(connection, InsertStart(kind, false), ",", kRowsAtOnce),
        items_(connection, InsertStart(kind, true), ",", kRowsAtOnce),
        updates_(connection, "", ";\n", kStatementsAtOnce),
        units_(connection, "insert into t_ItemUnit (FSrcItemId,FItemID) values ", ",", kRowsAtOnce) {}

  void Write(const MasterChange& change) {
    if (change.row == What::Insert) rows_.Add(Row(change, false));
    if (change.row == What::Update) UpdateRow(change);
    if (change.item == What::Insert) items_.Add(Row(change, true));
    if (change.item == What::Update) UpdateItem(change);
    for (std::size_t i = 0; i < kind_.columns.size(); ++i) {
      if (kind_.columns[i].role == Role::Units) WriteUnits(change, i);
    }
  }
  void Finish() {
    for (Gathered* gathered : {&rows_, &items_, &updates_, &units_}) gathered->Run();
  }

 private:
  Text Row(const MasterChange& change, bool item) const {
    Text row = item ? "(" + std::to_string(*kind_.item_class) + "," : "(";
    row += std::to_string(change.id);
    for (std::size_t i = 0; i < kind_.columns.size(); ++i) {
      const MasterColumn& column = kind_.columns[i];
      if (item ? column.in_item : !column.name.empty()) row += "," + Literal(change.cells[i], column.role);
    }
    return row + ")";
  }

  Text Assignment(const MasterChange& change, std::size_t column) const {
    return Text(kind_.columns[column].name) + "=" + Literal(change.cells[column], kind_.columns[column].role);
  }

  void UpdateRow(const MasterChange& change) {
    Text assignments;
    for (std::size_t i = 0; i < kind_.columns.size(); ++i) {
      if (kind_.columns[i].name.empty() || change.cells[i] == change.former[i]) continue;
      assignments += (assignments.empty() ? "" : ",") + Assignment(change, i);
    }
    updates_.Add("update " + Text(kind_.table) + " set " + assignments + " where " + Text(kind_.id_name) + "=" +
                 std::to_string(change.id));
  }

  void UpdateItem(const MasterChange& change) {
    Text assignments;
    for (std::size_t i = 0; i < kind_.columns.size(); ++i) {
      if (kind_.columns[i].in_item) assignments += (assignments.empty() ? "" : ",") + Assignment(change, i);
    }
    updates_.Add("update t_Item set " + assignments + " where FItemClassID=" + std::to_string(*kind_.item_class) +
                 " and FItemID=" + std::to_string(change.id));
  }

  void WriteUnits(const MasterChange& change, std::size_t column) {
    const std::vector<Long> due = UnitIds(*change.cells[column]);
    std::vector<Long> former;
    if (!change.former.empty()) former = UnitIds(change.former[column].value_or(""));
    const auto lacks = [](const std::vector<Long>& list, Long unit) {
      return std::find(list.begin(), list.end(), unit) == list.end();
    };
    const Text id = std::to_string(change.id);
    for (const Long unit : former) {
      if (lacks(due, unit)) {
        updates_.Add("delete from t_ItemUnit where FSrcItemId=" + id + " and FItemID=" + std::to_string(unit));
      }
    }
    for (const Long unit : due) {
      if (lacks(former, unit)) units_.Add("(" + id + "," + std::to_string(unit) + ")");
    }
  }

  const MasterKind& kind_;
  Gathered rows_;
  Gathered items_;
  Gathered updates_;
  Gathered units_;
};

}  // namespace

void WriteMaster(Connection& connection, const MasterKind& kind, const MasterPlan& plan, Progress& progress) {
  if (kind.item_class) {
    const Text item_class = std::to_string(*kind.item_class);
    connection.Execute("insert into t_ItemClass (FItemClassID, FName) select " + item_class + ", N'" +
                       Text(kind.class_name) +
                       "' where not exists (select 1 from t_ItemClass where FItemClassID=" + item_class + ")");
  }
  Writer writer(connection, kind);
  for (const MasterChange& change : plan.changes) {
    writer.Write(change);
    progress.Step();
  }
  writer.Finish();
}

Text WriterStatement(const MasterKind& kind) {
  return "delete from " + Text(kind.table) + " where 1=0";
}

}  // namespace rebate
