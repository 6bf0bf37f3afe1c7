#pragma once

#include <functional>
#include <nlohmann/json.hpp>

#include "calls/json_text.h"

namespace rebate {

// Texts that would drop a table, were they to stand in a statement as they are.
inline constexpr const char* kHostile[] = {"1 drop table t_Canary", "1) drop table t_Canary --",
                                           "1,1) drop table t_Canary --", "x' drop table t_Canary --"};

// Calls `use` with the whole of `document` for each value in it, and each key, and each hostile text in its place.
inline void ForEachHostile(const Json& document, const std::function<void(const Json&)>& use) {
  const Json flat = document.flatten();
  for (const auto& [place, value] : flat.items()) {
    for (const char* text : kHostile) {
      Json changed = document;
      changed[Json::json_pointer(place)] = text;
      use(changed);
      const Json::json_pointer pointer(place);
      Json& parent = changed[pointer.parent_pointer()];
      if (!parent.is_object()) continue;
      parent.erase(pointer.back());
      parent[text] = value;
      use(changed);
    }
  }
}

}  // namespace rebate
