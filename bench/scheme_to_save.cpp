#include "bench/scheme_to_save.h"

#include "bench/bench_account.h"
#include "platform/automation/conversion.h"

namespace rebate::bench {

SchemeToSave::SchemeToSave(int rows)
    : type_(Row({{"FRebateType", 2041}, {"FRangeItemClass", 4}})),
      head_(Row({{"FSchemeID", 0}, {"FSchemeName", "bench"}, {"FNote", "note"}})) {
  for (int i = 0; i < kRanges; ++i) ranges_->Add(Row({{"FLowerLimit", i * 100}, {"FUpperLimit", i * 100 + 100}}));
  for (int i = 1; i <= kOrganisations; ++i) {
    organisations_->Add(Row({{"FRowID", 0}, {"FItemClassID", 8}, {"FItemID", i}, {"FShowName", "organisation"}}));
  }
  for (int i = 1; i <= rows; ++i) {
    Ref<Vector> goods = New<Vector>();
    goods->Add(Row({{"FRowID", i}, {"FItemID", 1000 + i}, {"FUnitID", 1}, {"FShowName", "goods"}}));
    Ref<Vector> rates = New<Vector>();
    rates->Add(Row({{"FRowID", i}, {"FRebateRate", "2.5"}, {"FIndex", i % kRanges + 1}}));
    grid_rows_->Add(Row({{"FItemIDs", goods}, {"FRebateRates", rates}, {"FZH", 0}}));
  }
}

bool SchemeToSave::Save(const Text& dsn) {
  const Ref<Dictionary> answer = manager_.SaveOneSchemeData(dsn, type_, head_, ranges_, organisations_, grid_rows_);
  return ToBoolean(answer->Value("OK"));
}

}  // namespace rebate::bench
