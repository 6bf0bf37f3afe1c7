#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "platform/automation/object.h"
#include "platform/automation/variant.h"
#include "platform/values/types.h"

namespace rebate {

// The login and security components of the system, which belong to the host and are reached by program identifier and
// member name only (platform/automation/class_objects.h).
namespace login_component {
inline constexpr std::string_view kCacheFacade = "TALMtsCacheService.CacheFacade";
inline constexpr std::string_view kShareProps = "TALPropsMgr.ShareProps";
inline constexpr std::string_view kSecurityInfo = "TALEBSBase.SecurityInfo";
inline constexpr std::string_view kGlData = "TALEBCGLView.GLData";
inline constexpr std::string_view kCreator = "TALGlobal.Creator";
}  // namespace login_component

// A login component that has been created, called by member name; each call is announced to the thread's observer.
class LoginComponent {
 public:
  // Creates it with the system's plain object creation. Raises 429 where that fails.
  explicit LoginComponent(std::string_view program_id);

  // Raises what the member raises.
  Variant Call(std::string_view member, std::vector<Variant> arguments = {});

  // Through the thread's creator object: the host's, where it has one, else one that creates plainly.
  static LoginComponent ThroughCreator(std::string_view program_id);

 private:
  LoginComponent(std::string_view program_id, ObjectRef object) : program_id_(program_id), object_(std::move(object)) {}

  Text program_id_;
  ObjectRef object_;
};

}  // namespace rebate
