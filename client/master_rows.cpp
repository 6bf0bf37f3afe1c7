#include "client/master_rows.h"

#include <algorithm>
#include <set>

#include "platform/automation/conversion.h"
#include "platform/database/recordset.h"
#include "platform/values/ascii.h"
#include "platform/values/folding.h"
#include "platform/values/number_text.h"

namespace rebate {
namespace {

using Role = MasterColumn::Role;

constexpr char kSeparator = ';';
constexpr char kIdMark = '#';

MasterCell CellOf(const Variant& value) {
  if (value.IsNull()) return std::nullopt;
  return ToText(value);
}

// The table's rows, each with the columns of its row in t_Item behind its own.
Text TableQuery(const MasterKind& kind) {
  const Text id = "a." + Text(kind.id_name);
  Text columns = id;
  Text item_columns;
  for (const MasterColumn& column : kind.columns) {
    if (column.name.empty()) continue;
    columns += ",a." + Text(column.name);
    if (column.in_item) item_columns += ",i." + Text(column.name) + " as Item" + Text(column.name);
  }
  const Text from = " from " + Text(kind.table) + " a";
  if (!kind.item_class) return "select " + columns + from + " order by " + id;
  return "select " + columns + ",i.FItemID as ItemID" + item_columns + from +
         " left join t_Item i on i.FItemClassID=" + std::to_string(*kind.item_class) + " and i.FItemID=a.FItemID" +
         " order by " + id;
}

// The items of the class that the table lacks.
Text ItemQuery(const MasterKind& kind) {
  Text columns = "i.FItemID";
  for (const MasterColumn& column : kind.columns) {
    if (column.in_item) columns += ",i." + Text(column.name);
  }
  return "select " + columns + " from t_Item i where i.FItemClassID=" + std::to_string(*kind.item_class) +
         " and not exists (select 1 from " + Text(kind.table) + " a where a.FItemID=i.FItemID) order by i.FItemID";
}

void ReadTable(Connection& connection, const MasterKind& kind, std::vector<StoredRow>& rows) {
  const RecordsetRef read = connection.Execute(TableQuery(kind));
  rows.reserve(static_cast<std::size_t>(read->RecordCount()));
  for (; !read->Eof(); read->MoveNext()) {
    StoredRow& row = rows.emplace_back();
    std::size_t field = 0;
    row.id = ToLong(read->FieldValue(field++));
    for (const MasterColumn& column : kind.columns) {
      row.cells.push_back(column.name.empty() ? MasterCell() : CellOf(read->FieldValue(field++)));
    }
    row.item_agrees = row.has_item = kind.item_class && !read->FieldValue(field++).IsNull();
    for (std::size_t i = 0; row.has_item && i < kind.columns.size(); ++i) {
      if (kind.columns[i].in_item && CellOf(read->FieldValue(field++)) != row.cells[i]) row.item_agrees = false;
    }
  }
}

void ReadLoneItems(Connection& connection, const MasterKind& kind, std::vector<StoredRow>& rows) {
  const RecordsetRef read = connection.Execute(ItemQuery(kind));
  for (; !read->Eof(); read->MoveNext()) {
    StoredRow& row = rows.emplace_back();
    std::size_t field = 0;
    row.id = ToLong(read->FieldValue(field++));
    for (const MasterColumn& column : kind.columns) {
      row.cells.push_back(column.in_item ? CellOf(read->FieldValue(field++)) : MasterCell());
    }
    row.in_table = false;
    row.has_item = row.item_agrees = true;
  }
}

// The cells of units hold a list, be it an empty one.
void ReadUnits(Connection& connection, std::size_t column, std::vector<StoredRow>& rows) {
  std::unordered_map<Long, Text> lists;
  const RecordsetRef read = connection.Execute("select FSrcItemId,FItemID from t_ItemUnit order by FSrcItemId,FItemID");
  for (; !read->Eof(); read->MoveNext()) {
    Text& list = lists[ToLong(read->FieldValue(std::size_t{0}))];
    if (!list.empty()) list += kSeparator;
    list += ToText(read->FieldValue(std::size_t{1}));
  }
  for (StoredRow& row : rows) {
    const auto found = lists.find(row.id);
    row.cells[column] = found == lists.end() ? Text() : std::move(found->second);
  }
}

bool IsPlainName(const Text& number) {
  return !number.empty() && number[0] != kIdMark && number.find(kSeparator) == Text::npos &&
         Trim(number).size() == number.size();
}

}  // namespace

std::vector<StoredRow> ReadStoredRows(Connection& connection, const MasterKind& kind) {
  std::vector<StoredRow> rows;
  ReadTable(connection, kind, rows);
  if (kind.item_class) ReadLoneItems(connection, kind, rows);
  for (std::size_t i = 0; i < kind.columns.size(); ++i) {
    if (kind.columns[i].role == Role::Units) ReadUnits(connection, i, rows);
  }
  return rows;
}

Text NumberKey(const Text& number) {
  return Folded(ComparedPart(number));
}

UnitNames::UnitNames(Connection& connection) {
  std::unordered_map<Text, int> bearers;
  const RecordsetRef read = connection.Execute("select FItemID,FNumber from t_MeasureUnit");
  for (; !read->Eof(); read->MoveNext()) {
    const MasterCell number = CellOf(read->FieldValue(std::size_t{1}));
    const Text& name = names_.emplace(ToLong(read->FieldValue(std::size_t{0})), number.value_or("")).first->second;
    ++bearers[NumberKey(name)];
  }
  for (auto& [id, name] : names_) {
    const Text by_id = kIdMark + std::to_string(id);
    ids_[by_id] = id;
    if (IsPlainName(name) && bearers[NumberKey(name)] == 1) {
      ids_[NumberKey(name)] = id;
    } else {
      name = by_id;
    }
  }
}

Text UnitNames::NamesOf(const Text& ids) const {
  Text names;
  for (const Long id : UnitIds(ids)) {
    const auto found = names_.find(id);
    if (!names.empty()) names += kSeparator;
    names += found == names_.end() ? kIdMark + std::to_string(id) : found->second;
  }
  return names;
}

std::optional<Text> UnitNames::IdsOf(const Text& names, Text& unknown) const {
  std::set<Long> ids;
  for (const Text& part : Split(names, kSeparator)) {
    const Text name(Trim(part));
    if (name.empty()) continue;
    const auto found = ids_.find(NumberKey(name));
    if (found == ids_.end()) {
      unknown = name;
      return std::nullopt;
    }
    ids.insert(found->second);
  }
  Text list;
  for (const Long id : ids) list += (list.empty() ? "" : Text(1, kSeparator)) + std::to_string(id);
  return list;
}

std::vector<Long> UnitIds(const Text& ids) {
  std::vector<Long> list;
  for (const Text& id : Split(ids, kSeparator)) list.push_back(WholeNumber<Long>(id).value());
  return list;
}

}  // namespace rebate
