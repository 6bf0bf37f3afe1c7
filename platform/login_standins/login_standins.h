#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/automation/object.h"
#include "platform/values/types.h"

namespace rebate {

// Stand-ins for the login and security components where there is no host that has its own: in the tool, in the shared
// library, in the in-process server on a system without them, and in tests.

// What the stand-ins answer, for the whole process: who is logged in and where data rights apply.
struct LoginAnswers {
  Long app_user = 1;                   // the login properties UserID
  bool need_authrize = false;          // whether data rights apply at all
  Text authrize_item_class_list = {};  // to which item classes, as in "8,1"
  Text props_string = {};              // the login property PropsString, which the security component is asked with
  Long outer_login = 0;                // 1: properties come from the cache facade; 0: from the shared properties
  std::vector<Text> failing = {};      // program identifiers that can't be created
};

// Sets the answers from now on; they start as declared above.
void SetLoginAnswers(LoginAnswers answers);
// As the calling thread hears them: where the data source that it opened last names rights (`Rights=8,1`), data rights
// apply, to those item classes and for the user of that data source.
LoginAnswers TheLoginAnswers();

// The item classes named by the data source that the calling thread opened last; nothing where it names none.
std::optional<Text> RightsOfSource();

// A stand-in for the login component of that program identifier; null for any other identifier. Raises 429 where it is
// to fail.
ObjectRef CreateLoginStandIn(std::string_view program_id);

// Registers a stand-in for each of the four login components that nobody has registered yet, and heeds the rights that
// data sources name from then on.
void RegisterLoginStandIns();

}  // namespace rebate
