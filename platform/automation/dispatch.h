#pragma once

#include <functional>
#include <initializer_list>
#include <tuple>
#include <type_traits>
#include <utility>
#include <vector>

#include "platform/automation/conversion.h"
#include "platform/automation/object.h"
#include "platform/automation/variant.h"

namespace rebate {

enum class MemberKind { Method, PropertyGet, PropertyPut };

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

// One member as the outside sees it: its name, its arguments in order (the new value last, where it puts a property)
// and its result.
struct Member {
  Text name;
  MemberKind kind = MemberKind::Method;
  std::vector<Parameter> parameters;
  DeclaredType result;
  std::function<Variant(Object&, std::span<Variant>)> call;
};

// The members of a class, in interface order. A property that can be read and written is two members of one name.
class MemberTable {
 public:
  MemberTable() = default;
  MemberTable(std::initializer_list<Member> members) : members_(members) {}

  // The method, or the property to be read; null where the class has no such member. Names are compared without regard
  // to case.
  const Member* Find(std::string_view name) const;
  // The property to be written, likewise.
  const Member* FindPut(std::string_view name) const;
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

// What holds an argument during a call.
template <typename T>
using Held = std::conditional_t<std::is_same_v<Plain<T>, std::string_view>, Text, Plain<T>>;

template <typename T>
constexpr bool kByRef = std::is_lvalue_reference_v<T> && !std::is_const_v<std::remove_reference_t<T>>;

// An argument on its way through a call: read before it, written back behind it where it goes by reference.
template <typename T>
struct Slot {
  explicit Slot(Variant& argument)
      : argument_(argument), value(argument.IsMissing() ? Held<T>() : Crossing<Held<T>>::Read(argument)) {}
  void WriteBack() {
    if constexpr (kByRef<T>) argument_ = Variant(std::move(value));
  }

  Variant& argument_;
  Held<T> value;
};

// `method` is a member function, const or not, or a function that takes the object first.
template <typename Class, typename Result, typename... Arguments, typename Function, std::size_t... Index>
Variant Call(Class& object, const Function& method, [[maybe_unused]] std::span<Variant> values,
             std::index_sequence<Index...>) {
  std::tuple<Slot<Arguments>...> slots(values[Index]...);
  if constexpr (std::is_void_v<Result>) {
    std::invoke(method, object, std::get<Index>(slots).value...);
    (std::get<Index>(slots).WriteBack(), ...);
    return {};
  } else {
    Variant result(std::invoke(method, object, std::get<Index>(slots).value...));
    (std::get<Index>(slots).WriteBack(), ...);
    return result;
  }
}

template <typename Class, typename Result, typename... Arguments, typename Function>
Member MakeMember(Text name, MemberKind kind, Function method, std::initializer_list<std::string_view> names) {
  const DeclaredType types[] = {Crossing<Held<Arguments>>::kType..., DeclaredType{}};
  const bool by_ref[] = {kByRef<Arguments>..., false};
  Member member{std::move(name), kind, {}, Crossing<Held<Result>>::kType, {}};
  for (std::string_view argument : names) {
    const bool optional = argument.starts_with('[');
    if (optional) argument = argument.substr(1, argument.size() - 2);
    const std::size_t at = member.parameters.size();
    member.parameters.push_back({Text(argument), types[at], by_ref[at], optional});
  }
  member.call = [method](Object& object, std::span<Variant> values) {
    return Call<Class, Result, Arguments...>(dynamic_cast<Class&>(object), method, values,
                                             std::index_sequence_for<Arguments...>());
  };
  return member;
}

// A member that calls `method`. `names` are its argument names in order; a name in brackets, as in "[SchemeID]", is
// optional, and its argument starts as 0 (or empty, or null) where it is left out.
template <typename Class, typename Result, typename... Arguments>
Member Method(Text name, Result (Class::*method)(Arguments...), std::initializer_list<std::string_view> names) {
  return MakeMember<Class, Result, Arguments...>(std::move(name), MemberKind::Method, method, names);
}
template <typename Class, typename Result, typename... Arguments>
Member Method(Text name, Result (Class::*method)(Arguments...) const, std::initializer_list<std::string_view> names) {
  return MakeMember<Class, Result, Arguments...>(std::move(name), MemberKind::Method, method, names);
}

// A property to be read.
template <typename Class, typename Result, typename... Arguments>
Member Property(Text name, Result (Class::*method)(Arguments...), std::initializer_list<std::string_view> names = {}) {
  return MakeMember<Class, Result, Arguments...>(std::move(name), MemberKind::PropertyGet, method, names);
}
template <typename Class, typename Result, typename... Arguments>
Member Property(Text name, Result (Class::*method)(Arguments...) const,
                std::initializer_list<std::string_view> names = {}) {
  return MakeMember<Class, Result, Arguments...>(std::move(name), MemberKind::PropertyGet, method, names);
}
template <typename Class, typename Result>
Member Property(Text name, Result (*read)(Class&)) {
  return MakeMember<Class, Result>(std::move(name), MemberKind::PropertyGet, read, {});
}

// A property to be written; the last of `names` is the new value.
template <typename Class, typename... Arguments>
Member PropertyPut(Text name, void (Class::*method)(Arguments...), std::initializer_list<std::string_view> names) {
  return MakeMember<Class, void, Arguments...>(std::move(name), MemberKind::PropertyPut, method, names);
}

}  // namespace dispatch
}  // namespace rebate
