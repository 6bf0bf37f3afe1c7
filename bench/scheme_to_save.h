#pragma once

#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "service/base_info_mgr.h"

namespace rebate::bench {

// A new scheme of so many grid rows (one goods and one rate each), ten ranges, and ten organisations that stand in
// every grid row.
class SchemeToSave {
 public:
  static constexpr int kRanges = 10;
  static constexpr int kOrganisations = 10;

  explicit SchemeToSave(int rows);

  // Whether the save succeeds.
  bool Save(const Text& dsn);

 private:
  BaseInfoMgr manager_;
  Ref<Dictionary> type_;
  Ref<Dictionary> head_;
  Ref<Vector> ranges_ = New<Vector>();
  Ref<Vector> organisations_ = New<Vector>();
  Ref<Vector> grid_rows_ = New<Vector>();
};

}  // namespace rebate::bench
