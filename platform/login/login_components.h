#pragma once

#include <string_view>
#include <vector>

#include "platform/automation/object.h"
#include "platform/automation/variant.h"
#include "platform/values/types.h"

namespace rebate {

// The login and security components of the system, which the component reaches by program identifier and member name
// only. A host that has its own registers them under the same identifiers (platform/automation/class_objects.h).
namespace login_component {
inline constexpr std::string_view kCacheFacade = "TALMtsCacheService.CacheFacade";
inline constexpr std::string_view kShareProps = "TALPropsMgr.ShareProps";
inline constexpr std::string_view kSecurityInfo = "TALEBSBase.SecurityInfo";
inline constexpr std::string_view kGlData = "TALEBCGLView.GLData";
}  // namespace login_component

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
LoginAnswers TheLoginAnswers();

// Registers a stand-in for each of the four components that nobody has registered yet.
void RegisterLoginComponents();

// A login component that has been created, called by member name; each call is announced to the thread's observer.
class LoginComponent {
 public:
  // Creates it with the system's plain object creation. Raises 429 where that fails.
  explicit LoginComponent(std::string_view program_id);

  // Raises what the member raises.
  Variant Call(std::string_view member, std::vector<Variant> arguments = {});

  // Through the thread's creator object.
  static LoginComponent ThroughCreator(std::string_view program_id);

 private:
  LoginComponent(std::string_view program_id, ObjectRef object) : program_id_(program_id), object_(std::move(object)) {}

  Text program_id_;
  ObjectRef object_;
};

}  // namespace rebate
