#include "platform/automation/object.h"

#include "platform/automation/dispatch.h"

namespace rebate {
namespace {

[[noreturn]] void ThrowNoSuchMember(std::string_view name) {
  throw Error(error_number::kNoSuchMember, "", "Object doesn't support this property or method: " + Text(name));
}

Variant Call(const Member& member, Object& object, std::span<Variant> arguments) {
  const std::vector<Parameter>& parameters = member.parameters;
  if (arguments.size() > parameters.size()) {
    throw Error(error_number::kArgumentCount, "", "Wrong number of arguments: " + member.name);
  }
  std::vector<Variant> values(arguments.begin(), arguments.end());
  values.resize(parameters.size(), Variant::Missing());
  for (std::size_t i = 0; i < values.size(); ++i) {
    if (values[i].IsMissing() && !parameters[i].optional) {
      throw Error(error_number::kNotOptional, "", "Argument not optional: " + parameters[i].name);
    }
  }
  Variant result = member.call(object, values);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (parameters[i].by_ref) arguments[i] = std::move(values[i]);
  }
  return result;
}

}  // namespace

const Member* MemberTable::Find(std::string_view name) const {
  for (const Member& member : members_) {
    if (member.kind != MemberKind::PropertyPut && EqualsIgnoreCase(member.name, name)) return &member;
  }
  return nullptr;
}

const Member* MemberTable::FindPut(std::string_view name) const {
  for (const Member& member : members_) {
    if (member.kind == MemberKind::PropertyPut && EqualsIgnoreCase(member.name, name)) return &member;
  }
  return nullptr;
}

const MemberTable& Object::Members() const {
  static const MemberTable none;
  return none;
}

Variant Object::Invoke(std::string_view name, std::span<Variant> arguments) {
  const Member* member = Members().Find(name);
  if (member == nullptr) ThrowNoSuchMember(name);
  const bool for_default_member =
      member->kind == MemberKind::PropertyGet && member->parameters.empty() && !arguments.empty();
  if (!for_default_member) return Call(*member, *this, arguments);
  const Variant held = Call(*member, *this, {});
  if (!held.IsObject()) throw Error(error_number::kArgumentCount, "", "Wrong number of arguments: " + member->name);
  return held.object()->Invoke("", arguments);
}

void Object::Put(std::string_view name, std::span<Variant> arguments) {
  const Member* member = Members().FindPut(name);
  if (member == nullptr) ThrowNoSuchMember(name);
  Call(*member, *this, arguments);
}

}  // namespace rebate
