#include "client/entities.h"

#include "client/account.h"
#include "client/row_tables.h"
#include "model/item_class.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

// The table in which the entities of a class stand beside t_Item; empty where they don't.
std::string_view TableOf(Long item_class) {
  switch (item_class) {
    case item_class::kCustomers:
      return "t_Organization";
    case item_class::kEmployees:
      return "t_Emp";
    case item_class::kGoods:
      return "t_ICItem";
    case item_class::kSuppliers:
      return "t_Supplier";
    default:
      return "";
  }
}

Text Quoted(std::string_view text) {
  return "N'" + Replace(text, "'", "''") + "'";
}

}  // namespace

const Entity* Entities::Find(Long item_class, Long id) {
  const auto [place, is_new] = found_.try_emplace({item_class, id});
  std::optional<Entity>& entity = place->second;
  if (!is_new) return entity ? &*entity : nullptr;
  const auto read = [&](const Text& query) {
    const RecordsetRef rows = account_.Query(query);
    if (rows->Eof()) return false;
    if (!entity) entity = Entity{CellText(rows->FieldValue("FNumber")), CellText(rows->FieldValue("FName"))};
    entity->is_deleted = EqualsNumber(rows->FieldValue("FDeleted"), 1);
    return true;
  };
  const Text key = std::to_string(id);
  const bool is_item =
      read("select FNumber, FName, 0 as FDeleted from t_Item where FItemClassID=" + std::to_string(item_class) +
           " and FItemID=" + key);
  if (const std::string_view table = TableOf(item_class); !table.empty()) {
    read("select FNumber, FName, FDeleted from " + Text(table) + " where FItemID=" + key);
  }
  if (entity) entity->is_item = is_item;
  return entity ? &*entity : nullptr;
}

std::optional<Long> Entities::IdOf(Long item_class, std::string_view text) {
  if (const std::optional<Long> id = WholeNumber<Long>(Trim(text))) return id;
  const std::string_view table = TableOf(item_class);
  const Text number = " FNumber=" + Quoted(Trim(text));
  Text query = "select FItemID from t_Item where FItemClassID=" + std::to_string(item_class) + " and" + number;
  if (!table.empty()) query += " union select FItemID from " + Text(table) + " where" + number;
  return NumberedOne(query, text);
}

std::optional<Long> Entities::UnitOf(std::string_view text) {
  if (const std::optional<Long> id = WholeNumber<Long>(Trim(text))) return id;
  return NumberedOne("select FItemID from t_MeasureUnit where FNumber=" + Quoted(Trim(text)), text);
}

std::optional<Long> Entities::NumberedOne(const Text& query, std::string_view number) {
  const RecordsetRef rows = account_.Query(query);
  if (rows->Eof()) return std::nullopt;
  if (rows->RecordCount() > 1) {
    throw Error(error_number::kInvalidCall, "rebate",
                "Several bear the number " + Text(number) + "; name one by its id");
  }
  return ToLong(rows->FieldValue(std::size_t{0}));
}

bool Entities::HasUnit(Long unit) {
  return account_.QueryNumber("select FItemID from t_MeasureUnit where FItemID=" + std::to_string(unit)).has_value();
}

bool Entities::IsUnitOf(Long goods, Long unit) {
  return account_
      .QueryNumber("select FItemID from t_ItemUnit where FSrcItemId=" + std::to_string(goods) +
                   " and FItemID=" + std::to_string(unit))
      .has_value();
}

bool Entities::HasClass(Long item_class) {
  if (!TableOf(item_class).empty()) return true;
  return account_.QueryNumber("select FItemClassID from t_ItemClass where FItemClassID=" + std::to_string(item_class))
      .has_value();
}

std::string_view KindOf(Long item_class) {
  switch (item_class) {
    case item_class::kCustomers:
      return "customer";
    case item_class::kEmployees:
      return "employee";
    case item_class::kGoods:
      return "goods item";
    case item_class::kSuppliers:
      return "supplier";
    default:
      return "item";
  }
}

}  // namespace rebate
