#include "platform/login/login_components.h"

#include "platform/automation/class_objects.h"
#include "platform/automation/dispatch.h"
#include "platform/automation/per_thread.h"
#include "platform/login/call_observer.h"

namespace rebate {
namespace {

// The creator object where the host has none. Its second argument is always left out here.
class Creator : public Object {
 public:
  ObjectRef CreateInstance(const Text& program_id, const Variant&) { return CreateObject(program_id); }
  const MemberTable& Members() const override {
    static const MemberTable members{
        dispatch::Method("CreateInstance", &Creator::CreateInstance, {"ProgramID", "[Context]"})};
    return members;
  }
};

// A thread's creator: the host's, where it has one.
struct ThreadCreator {
  ObjectRef of_host = CreateIfRegistered(login_component::kCreator);
  ObjectRef creator = of_host ? of_host : New<Creator>();

  // When a thread ends, the system may have put away the code of its host's classes already.
  ~ThreadCreator() {
    creator = nullptr;
    of_host.Detach();
  }
};

}  // namespace

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
