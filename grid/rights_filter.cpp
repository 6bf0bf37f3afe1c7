#include "grid/rights_filter.h"

#include "model/rebate_type.h"
#include "service/data_rights.h"
#include "service/statement_text.h"

namespace rebate {

Text RightsFilter(std::string_view column, Long rebate_type, Long user_id) {
  const std::string_view item_class = rebate_type::RightsClass(rebate_type);
  const bool applies =
      NeedAuthrize() && user_id != 0 && !item_class.empty() && AuthrizeItemClassList().find(item_class) != Text::npos;
  if (!applies) return "";
  return Statement(" And {} in (Select FItemID from {} where charindex('{}',FRightUserID)>0 ) ", column,
                   item_class == "8" ? "t_Supplier" : "t_Organization", user_id);
}

}  // namespace rebate
