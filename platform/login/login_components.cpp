#include "platform/login/login_components.h"

#include <algorithm>
#include <mutex>

#include "platform/automation/class_objects.h"
#include "platform/automation/dispatch.h"
#include "platform/automation/per_thread.h"
#include "platform/login/call_observer.h"

namespace rebate {
namespace {

struct SharedAnswers {
  std::mutex mutex;
  LoginAnswers answers;
};

SharedAnswers& TheSharedAnswers() {
  static SharedAnswers shared;
  return shared;
}

Variant LoginProperty(const Text& name) {
  const LoginAnswers answers = TheLoginAnswers();
  if (name == "UserID") return answers.app_user;
  if (name == "PropsString") return answers.props_string;
  return {};
}

class CacheFacade : public Object {
 public:
  Variant GetItem(const Text& key, Long) {
    if (key == "IsOuterLogin") return TheLoginAnswers().outer_login;
    return LoginProperty(key);
  }
  const MemberTable& Members() const override {
    static const MemberTable members{dispatch::Method("GetItem", &CacheFacade::GetItem, {"Key", "ProcessID"})};
    return members;
  }
};

class ShareProps : public Object {
 public:
  Variant GetProperty(const Text& name, Long) { return LoginProperty(name); }
  const MemberTable& Members() const override {
    static const MemberTable members{dispatch::Method("GetProperty", &ShareProps::GetProperty, {"Name", "ProcessID"})};
    return members;
  }
};

class SecurityInfo : public Object {
 public:
  bool NeedAutorized(const Variant&) { return TheLoginAnswers().need_authrize; }
  const MemberTable& Members() const override {
    static const MemberTable members{dispatch::Method("NeedAutorized", &SecurityInfo::NeedAutorized, {"PropsString"})};
    return members;
  }
};

class GlData : public Object {
 public:
  Text GetAuthItemClassList() { return TheLoginAnswers().authrize_item_class_list; }
  const MemberTable& Members() const override {
    static const MemberTable members{dispatch::Method("GetAuthItemClassList", &GlData::GetAuthItemClassList, {})};
    return members;
  }
};

// The creator object, one per thread. Its second argument is always left out here.
class Creator : public Object {
 public:
  ObjectRef CreateInstance(const Text& program_id, const Variant&) { return CreateObject(program_id); }
  const MemberTable& Members() const override {
    static const MemberTable members{
        dispatch::Method("CreateInstance", &Creator::CreateInstance, {"ProgramID", "[Context]"})};
    return members;
  }
};

struct ThreadCreator {
  ObjectRef creator = New<Creator>();
};

template <typename Component>
void RegisterStandIn(std::string_view program_id) {
  if (IsClassRegistered(program_id)) return;
  RegisterClass(program_id, [program_id]() -> ObjectRef {
    const LoginAnswers answers = TheLoginAnswers();
    const bool fails = std::any_of(answers.failing.begin(), answers.failing.end(),
                                   [&](const Text& failing) { return EqualsIgnoreCase(failing, program_id); });
    if (fails)
      throw Error(error_number::kCannotCreate, "", "ActiveX component can't create object: " + Text(program_id));
    return New<Component>();
  });
}

}  // namespace

void SetLoginAnswers(LoginAnswers answers) {
  SharedAnswers& shared = TheSharedAnswers();
  const std::lock_guard lock(shared.mutex);
  shared.answers = std::move(answers);
}

LoginAnswers TheLoginAnswers() {
  SharedAnswers& shared = TheSharedAnswers();
  const std::lock_guard lock(shared.mutex);
  return shared.answers;
}

void RegisterLoginComponents() {
  RegisterStandIn<CacheFacade>(login_component::kCacheFacade);
  RegisterStandIn<ShareProps>(login_component::kShareProps);
  RegisterStandIn<SecurityInfo>(login_component::kSecurityInfo);
  RegisterStandIn<GlData>(login_component::kGlData);
}

LoginComponent::LoginComponent(std::string_view program_id) : LoginComponent(program_id, CreateObject(program_id)) {}

LoginComponent LoginComponent::ThroughCreator(std::string_view program_id) {
  const ObjectRef& creator = OfThisThread<ThreadCreator>().creator;
  Variant arguments[] = {program_id};
  return LoginComponent(program_id, ObjectAs<Object>(creator->Invoke("CreateInstance", arguments)));
}

Variant LoginComponent::Call(std::string_view member, std::vector<Variant> arguments) {
  if (CallObserver* observer = TheCallObserver()) observer->CallingComponent(program_id_, member);
  return object_->Invoke(member, arguments);
}

}  // namespace rebate
