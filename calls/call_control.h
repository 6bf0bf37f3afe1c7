#pragma once

#include "calls/json_text.h"

namespace rebate {

// The host's side of served calls: what the login components answer, and whether the process cache is in its place.
// Both belong to the process. One of these starts with a new cache in place and the answers as LoginAnswers declares
// them; its end takes the cache away and sets the answers back.
class CallControl {
 public:
  CallControl();
  ~CallControl();
  CallControl(const CallControl&) = delete;
  CallControl& operator=(const CallControl&) = delete;

  // Whether a request is a control line, known by its key: "login" or "cache".
  static bool IsControl(const Json& request);

  // Carries out
  //   {"login":{"AppUser":12,"NeedAuthrize":true,"AuthrizeItemClassList":"8,1","PropsString":"…","OuterLogin":0}}
  //     with "fail":[PROGID,…] in it or beside it; what is left out goes back to its start, and the cache is left alone
  //   {"cache":"create"}, a new and empty one, or {"cache":"drop"}
  // and gives the answer, {"login":true} or {"cache":…}. Raises 5 for anything else, nothing being changed.
  Json Perform(const Json& request);
};

}  // namespace rebate
