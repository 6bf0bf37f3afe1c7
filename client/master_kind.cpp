#include "client/master_kind.h"

#include <algorithm>
#include <limits>

#include "model/item_class.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

using Role = MasterColumn::Role;

constexpr std::string_view kNumberWords[] = {"编号", "编码", "代码"};
constexpr std::string_view kNameWords[] = {"名称", "姓名"};
constexpr std::string_view kModelWords[] = {"规格", "规格型号", "型号"};
constexpr std::string_view kDeletedWords[] = {"停用", "禁用"};
constexpr std::string_view kRightsWords[] = {"权限用户", "授权用户"};
constexpr std::string_view kUnitsWords[] = {"单位", "计量单位"};
constexpr std::string_view kUserWords[] = {"用户名", "姓名", "名称"};

constexpr MasterColumn kNumber = {"Number", "FNumber", kNumberWords, Role::Key, true};
constexpr MasterColumn kName = {"Name", "FName", kNameWords, Role::Plain, true};
constexpr MasterColumn kDeleted = {"Deleted", "FDeleted", kDeletedWords, Role::Flag};

constexpr MasterColumn kOrganisationColumns[] = {
    kNumber, kName, kDeleted, {"Rights", "FRightUserID", kRightsWords, Role::Rights, true}};
constexpr MasterColumn kGoodsColumns[] = {
    kNumber, kName, {"Model", "FModel", kModelWords}, kDeleted, {"Units", "", kUnitsWords, Role::Units}};
constexpr MasterColumn kUnitColumns[] = {{"Number", "FNumber", kNumberWords, Role::Key}, {"Name", "FName", kNameWords}};
constexpr MasterColumn kUserColumns[] = {{"Name", "FName", kUserWords, Role::Key}};

constexpr Long kMostId = std::numeric_limits<Long>::max();
constexpr Long kMostUser = std::numeric_limits<std::int16_t>::max();  // one beyond can't log in

constexpr MasterKind kKinds[] = {
    {"suppliers", "supplier", "t_Supplier", "FItemID", item_class::kSuppliers, "供应商", kMostId, false,
     kOrganisationColumns},
    {"customers", "customer", "t_Organization", "FItemID", item_class::kCustomers, "客户", kMostId, false,
     kOrganisationColumns},
    {"employees", "employee", "t_Emp", "FItemID", item_class::kEmployees, "职员", kMostId, false, kOrganisationColumns},
    {"goods", "goods item", "t_ICItem", "FItemID", item_class::kGoods, "商品", kMostId, false, kGoodsColumns},
    {"units", "unit", "t_MeasureUnit", "FItemID", std::nullopt, "", kMostId, false, kUnitColumns},
    {"users", "user", "t_User", "FUserID", std::nullopt, "", kMostUser, true, kUserColumns},
};

}  // namespace

std::span<const MasterKind> MasterKinds() {
  return kKinds;
}

const MasterKind* FindMasterKind(std::string_view word) {
  const auto found =
      std::find_if(std::begin(kKinds), std::end(kKinds), [&](const MasterKind& kind) { return kind.word == word; });
  return found == std::end(kKinds) ? nullptr : found;
}

bool IsIdTitle(const MasterKind& kind, std::string_view title) {
  if (EqualsIgnoreCase(title, kind.id_name)) return true;
  return EqualsIgnoreCase(title, kIdTitle) || title == "内码";
}

std::optional<std::size_t> ColumnOfTitle(const MasterKind& kind, std::string_view title) {
  for (std::size_t i = 0; i < kind.columns.size(); ++i) {
    const MasterColumn& column = kind.columns[i];
    const bool is_synonym = std::find(column.synonyms.begin(), column.synonyms.end(), title) != column.synonyms.end();
    const bool is_name = !column.name.empty() && EqualsIgnoreCase(title, column.name);
    if (is_synonym || is_name || EqualsIgnoreCase(title, column.title)) return i;
  }
  return std::nullopt;
}

}  // namespace rebate
