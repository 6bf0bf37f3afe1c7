#include <variant>

#include "platform/automation/conversion.h"
#include "service/base_info_mgr.h"

namespace rebate {

void BaseInfoMgr::UpdateBatch(const Text& sDsn, const Variant& SQLBatch) {
  frame_.Run<std::monostate>(sDsn, OnFailure::Reraise, [&](Call& call, std::monostate&) {
    if (!SQLBatch.IsArray()) ThrowTypeMismatch();
    for (const Variant& element : SQLBatch.array()) {
      const Text text = ToText(element);
      if (!text.empty()) call.Execute(text);
    }
    call.Complete();
  });
}

}  // namespace rebate
