#include "platform/login_standins/login_standins.h"

#include <algorithm>
#include <mutex>

#include "platform/automation/class_objects.h"
#include "platform/automation/dispatch.h"
#include "platform/automation/per_thread.h"
#include "platform/database/data_source.h"
#include "platform/login/login_components.h"
#include "platform/login/source_login.h"

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

// What the data source that a thread opened last says of its login.
struct SourceLogin {
  std::optional<Text> rights;
  Long app_user = 0;
};

void HeedSource(const DataSource& source) {
  auto& login = OfThisThread<SourceLogin>();
  login.rights = source.rights;
  login.app_user = source.app_user;
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

struct StandIn {
  std::string_view program_id;
  ObjectRef (*create)();
};

template <typename Component>
ObjectRef Create() {
  return New<Component>();
}

constexpr StandIn kStandIns[] = {
    {login_component::kCacheFacade, &Create<CacheFacade>},
    {login_component::kShareProps, &Create<ShareProps>},
    {login_component::kSecurityInfo, &Create<SecurityInfo>},
    {login_component::kGlData, &Create<GlData>},
};

}  // namespace

void SetLoginAnswers(LoginAnswers answers) {
  SharedAnswers& shared = TheSharedAnswers();
  const std::lock_guard lock(shared.mutex);
  shared.answers = std::move(answers);
}

LoginAnswers TheLoginAnswers() {
  SharedAnswers& shared = TheSharedAnswers();
  LoginAnswers answers;
  {
    const std::lock_guard lock(shared.mutex);
    answers = shared.answers;
  }
  if (const auto& login = OfThisThread<SourceLogin>(); login.rights) {
    answers.app_user = login.app_user;
    answers.need_authrize = true;
    answers.authrize_item_class_list = *login.rights;
  }
  return answers;
}

std::optional<Text> RightsOfSource() {
  return OfThisThread<SourceLogin>().rights;
}

ObjectRef CreateLoginStandIn(std::string_view program_id) {
  const auto named = [&](std::string_view name) { return EqualsIgnoreCase(name, program_id); };
  const auto found = std::find_if(std::begin(kStandIns), std::end(kStandIns),
                                  [&](const StandIn& stand_in) { return named(stand_in.program_id); });
  if (found == std::end(kStandIns)) return nullptr;
  const LoginAnswers answers = TheLoginAnswers();
  if (std::any_of(answers.failing.begin(), answers.failing.end(), named)) {
    throw Error(error_number::kCannotCreate, "", "ActiveX component can't create object: " + Text(program_id));
  }
  return found->create();
}

void RegisterLoginStandIns() {
  SetSourceLoginListener(HeedSource);
  for (const StandIn& stand_in : kStandIns) {
    const std::string_view program_id = stand_in.program_id;
    if (IsClassRegistered(program_id)) continue;
    RegisterClass(program_id, [program_id] { return CreateLoginStandIn(program_id); });
  }
}

}  // namespace rebate
