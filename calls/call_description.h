#pragma once

#include "calls/json_text.h"

namespace rebate {

// The version of the requests and answers. What is only added leaves it as it is.
inline constexpr int kCallProtocol = 1;

// What can be asked of served calls:
//   {"protocol":1,"component":"TALMRebateRuleMgr","version":"2.3","operations":[
//     {"op":"Class.Member","args":[{"name":…,"type":…,"byRef":true,"optional":true},…],"result":TYPE},…]}
// `byRef` and `optional` stand where they are true; types as TypeName gives them.
Json CallDescription();

}  // namespace rebate
