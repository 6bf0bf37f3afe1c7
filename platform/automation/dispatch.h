#pragma once

#include <functional>
#include <initializer_list>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/automation/conversion.h"
#include "platform/automation/object.h"
#include "platform/automation/variant.h"

namespace rebate {

enum class MemberKind { Method, PropertyGet };

// What an argument or a result is declared as. Containers are objects with the name of their class.
struct DeclaredType {
  enum class Kind { None, Text, Long, Boolean, Value, Object };
  Kind kind = Kind::None;
  std::string_view class_name = {};
};

struct Parameter {
  Text name;
  DeclaredType type;
  bool by_ref = false;
  bool optional = false;
};

// One member as the outside sees it: its name, its arguments in order and its result.
struct Member {
  Text name;
  MemberKind kind = MemberKind::Method;
  std::vector<Parameter> parameters;
  DeclaredType result;
  std::function<Variant(Object&, std::span<Variant>)> call;
};

// The members of a class, in interface order.
class MemberTable {
 public:
  MemberTable() = default;
  MemberTable(std::initializer_list<Member> members) : members_(members) {}

  // Null where the class has no such member; names are compared without regard to case.
  const Member* Find(std::string_view name) const;
  const std::vector<Member>& All() const { return members_; }

 private:
  std::vector<Member> members_;
};

namespace dispatch {

// How one C++ type crosses the late-bound world. `Read` raises 13 where a value doesn't convert.
template <typename T>
struct Crossing;

template <>
struct Crossing<void> {
  static constexpr DeclaredType kType{};
};
template <>
struct Crossing<Text> {
  static constexpr DeclaredType kType{DeclaredType::Kind::Text};
  static Text Read(const Variant& value) { return ToText(value); }
};
template <>
struct Crossing<Long> {
  static constexpr DeclaredType kType{DeclaredType::Kind::Long};
  static Long Read(const Variant& value) { return ToLong(value); }
};
template <>
struct Crossing<bool> {
  static constexpr DeclaredType kType{DeclaredType::Kind::Boolean};
  static bool Read(const Variant& value) { return ToBoolean(value); }
};
template <>
struct Crossing<Variant> {
  static constexpr DeclaredType kType{DeclaredType::Kind::Value};
  static Variant Read(const Variant& value) { return value; }
};
template <>
struct Crossing<ObjectRef> {
  static constexpr DeclaredType kType{DeclaredType::Kind::Object, "Object"};
  static ObjectRef Read(const Variant& value) { return ObjectAs<Object>(value); }
};
template <typename T>
struct Crossing<Ref<T>> {
  static constexpr DeclaredType kType{DeclaredType::Kind::Object, T::kClassName};
  static Ref<T> Read(const Variant& value) { return ObjectAs<T>(value); }
};

template <typename T>
using Plain = std::remove_cvref_t<T>;

template <typename T>
constexpr bool kByRef = std::is_lvalue_reference_v<T> && !std::is_const_v<std::remove_reference_t<T>>;

// An argument on its way through a call: read before it, written back behind it where it goes by reference.
template <typename T>
struct Slot {
  explicit Slot(Variant& argument)
      : argument_(argument), value(argument.IsMissing() ? Plain<T>() : Crossing<Plain<T>>::Read(argument)) {}
  void WriteBack() {
    if constexpr (kByRef<T>) argument_ = Variant(std::move(value));
  }

  Variant& argument_;
  Plain<T> value;
};

template <typename Class, typename Result, typename... Arguments, std::size_t... Index>
Variant Call(Class& object, Result (Class::*method)(Arguments...), [[maybe_unused]] std::span<Variant> values,
             std::index_sequence<Index...>) {
  std::tuple<Slot<Arguments>...> slots(values[Index]...);
  if constexpr (std::is_void_v<Result>) {
    (object.*method)(std::get<Index>(slots).value...);
    (std::get<Index>(slots).WriteBack(), ...);
    return {};
  } else {
    Variant result((object.*method)(std::get<Index>(slots).value...));
    (std::get<Index>(slots).WriteBack(), ...);
    return result;
  }
}

// A member that calls `method`. `names` are its argument names in order; a name in brackets, as in "[SchemeID]", is
// optional, and its argument starts as 0 (or empty, or null) where it is left out.
template <typename Class, typename Result, typename... Arguments>
Member Method(Text name, Result (Class::*method)(Arguments...), std::initializer_list<std::string_view> names) {
  const DeclaredType types[] = {Crossing<Plain<Arguments>>::kType..., DeclaredType{}};
  const bool by_ref[] = {kByRef<Arguments>..., false};
  Member member{std::move(name), MemberKind::Method, {}, Crossing<Plain<Result>>::kType, {}};
  for (std::string_view argument : names) {
    const bool optional = argument.starts_with('[');
    if (optional) argument = argument.substr(1, argument.size() - 2);
    const std::size_t at = member.parameters.size();
    member.parameters.push_back({Text(argument), types[at], by_ref[at], optional});
  }
  member.call = [method](Object& object, std::span<Variant> values) {
    return Call(dynamic_cast<Class&>(object), method, values, std::index_sequence_for<Arguments...>());
  };
  return member;
}

template <typename Class, typename Result>
Member Property(Text name, Result (Class::*method)()) {
  Member member = Method(std::move(name), method, {});
  member.kind = MemberKind::PropertyGet;
  return member;
}

}  // namespace dispatch
}  // namespace rebate
