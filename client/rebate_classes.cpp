#include "client/rebate_classes.h"

#include "client/account.h"
#include "client/code_words.h"
#include "platform/automation/conversion.h"

namespace rebate {

std::vector<Long> ClassesToShow(const std::optional<Long>& wanted) {
  if (wanted) return {*wanted};
  return {24, 32, 40};
}

Ref<Vector> TypesOfClass(Account& account, Long rebate_class) {
  const Variant types = account.Call("LoadRebateTypeData", {rebate_class});
  if (account.refusal()) account.ThrowFailure({});
  return ObjectAs<Vector>(types);
}

Ref<Dictionary> FindTypeRow(Account& account, Long rebate_type) {
  for (const Long rebate_class : ClassesToShow({})) {
    const Ref<Vector> types = TypesOfClass(account, rebate_class);
    for (Long i = 1; types && i <= types->Size(); ++i) {
      auto row = ObjectAs<Dictionary>(types->Item(i));
      if (EqualsNumber(row->GetValue("FRebateType"), rebate_type)) return row;
    }
  }
  return nullptr;
}

Ref<Dictionary> TypeRow(Account& account, Long rebate_type) {
  if (Ref<Dictionary> row = FindTypeRow(account, rebate_type)) return row;
  throw Error(error_number::kInvalidCall, "rebate",
              "The account offers no rebate type " + std::to_string(rebate_type) + "; `rebate types` lists them");
}

Text RateUnitOf(Account& account, Long rebate_type) {
  const Ref<Dictionary> type = FindTypeRow(account, rebate_type);
  return type ? RateUnit(*type) : Text();
}

void AddAll(const Ref<Vector>& from, Vector& to) {
  for (Long i = 1; from && i <= from->Size(); ++i) to.Add(from->Item(i));
}

}  // namespace rebate
