#include "com/late_call.h"

#include <algorithm>
#include <optional>

#include "com/bridge.h"
#include "com/dual_classes.h"
#include "com/elements.h"
#include "com/errors.h"
#include "com/foreign_containers.h"
#include "com/foreign_object.h"
#include "com/type_library.h"
#include "com/values.h"
#include "com/wide_text.h"

namespace rebate::com {
namespace {

constexpr WORD kReads = DISPATCH_METHOD | DISPATCH_PROPERTYGET;
constexpr WORD kWrites = DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;

const Member* MemberOf(const Object& object, DISPID id, bool writes) {
  const MemberTable& table = object.Members();
  if (id == DISPID_VALUE) return writes ? table.FindPut("") : table.Find("");
  const std::vector<Member>& all = table.All();
  if (id < 1 || static_cast<std::size_t>(id) > all.size()) return nullptr;
  const Text& name = all[static_cast<std::size_t>(id - 1)].name;
  return writes ? table.FindPut(name) : table.Find(name);
}

std::optional<DISPID> IdOf(const Object& object, std::string_view name) {
  const std::vector<Member>& all = object.Members().All();
  if (name.empty()) return std::nullopt;
  for (std::size_t i = 0; i < all.size(); ++i) {
    if (EqualsIgnoreCase(all[i].name, name)) return static_cast<DISPID>(i + 1);
  }
  if (EqualsIgnoreCase(name, "_NewEnum") && HasElements(object)) return DISPID_NEWENUM;
  return std::nullopt;
}

DISPID ParameterId(const Object& object, DISPID member_id, std::string_view name) {
  const Member* member = MemberOf(object, member_id, false);
  if (member == nullptr) member = MemberOf(object, member_id, true);
  if (member == nullptr) return DISPID_UNKNOWN;
  const auto named = [&](const Parameter& parameter) { return EqualsIgnoreCase(parameter.name, name); };
  const auto found = std::find_if(member->parameters.begin(), member->parameters.end(), named);
  return found == member->parameters.end() ? DISPID_UNKNOWN : static_cast<DISPID>(found - member->parameters.begin());
}

// Puts a client's arguments, the last of them first and named ones in front, into their order. Gives the result of a
// call whose arguments don't fit.
HRESULT InOrder(const DISPPARAMS& parameters, std::size_t places, bool writes, std::vector<VARIANT*>& ordered,
                UINT* wrong_argument) {
  ordered.assign(places, nullptr);
  const UINT named = parameters.cNamedArgs;
  const UINT unnamed = parameters.cArgs - named;
  if (unnamed > places) return DISP_E_BADPARAMCOUNT;
  for (UINT i = 0; i < unnamed; ++i) ordered[i] = &parameters.rgvarg[parameters.cArgs - 1 - i];
  for (UINT i = 0; i < named; ++i) {
    const DISPID id = parameters.rgdispidNamedArgs[i];
    const bool value = writes && id == DISPID_PROPERTYPUT;
    const std::size_t place = value ? places - 1 : static_cast<std::size_t>(id);
    if (place >= places || ordered[place] != nullptr) {
      if (wrong_argument != nullptr) *wrong_argument = i;
      return DISP_E_PARAMNOTFOUND;
    }
    ordered[place] = &parameters.rgvarg[i];
  }
  return S_OK;
}

// A field of a recordset that is assigned without Set counts by its value.
void LetFieldBeItsValue(Variant& value) {
  if (!value.IsObject() || !value.object()) return;
  const ObjectRef object = value.object();
  if (auto* foreign = dynamic_cast<ForeignObject*>(object.get())) {
    if (foreign->Answers("Name") && foreign->Answers("Value")) value = foreign->Invoke("Value", {});
    return;
  }
  const Member* held = object->Members().Find("");
  if (held != nullptr && held->parameters.empty() && held->result.kind == DeclaredType::Kind::Value) {
    value = object->Invoke("", {});
  }
}

// An object where a plain value is due counts by its default member, as a field of a recordset does.
void LetObjectBeItsValue(Variant& value, const DeclaredType& type) {
  const bool plain = type.kind == DeclaredType::Kind::Text || type.kind == DeclaredType::Kind::Long ||
                     type.kind == DeclaredType::Kind::Boolean;
  if (!plain || !value.IsObject() || !value.object()) return;
  const ObjectRef object = value.object();
  auto* foreign = dynamic_cast<ForeignObject*>(object.get());
  value = foreign != nullptr ? foreign->InvokeByValue("", {}) : object->Invoke("", {});
}

bool IsContainer(const DeclaredType& type) {
  return type.kind == DeclaredType::Kind::Object &&
         (type.class_name == Vector::kClassName || type.class_name == Dictionary::kClassName);
}

bool IsByRef(const VARIANT* argument) {
  return argument != nullptr && (argument->vt & VT_BYREF) != 0;
}

Variant ValueOf(const VARIANT* argument) {
  return argument != nullptr ? FromClient(*argument) : Variant::Missing();
}

std::vector<Variant> ValuesOf(const Member& member, std::span<VARIANT* const> arguments) {
  std::vector<Variant> values;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    values.push_back(ValueOf(arguments[i]));
    if (i < member.parameters.size()) LetObjectBeItsValue(values.back(), member.parameters[i].type);
  }
  return values;
}

Variant Read(Object& object, const Member& member, std::span<VARIANT* const> arguments) {
  if (arguments.size() == member.parameters.size()) return CallMember(object, member, arguments);
  // A property that takes no arguments hands them on to the default member of what it holds.
  std::vector<Variant> values = ValuesOf(member, arguments);
  return object.Invoke(member.name, values);
}

void Write(Object& object, const Member& member, std::span<VARIANT* const> arguments, bool reference) {
  std::vector<Variant> values = ValuesOf(member, arguments);
  if (!reference) LetFieldBeItsValue(values.back());
  object.Put(member.name, values);
}

HRESULT InvokeMember(Object& object, DISPID id, WORD kind, const DISPPARAMS& parameters, VARIANT* result,
                     UINT* wrong_argument) {
  if (id == DISPID_NEWENUM && HasElements(object)) {
    if (result == nullptr) return S_OK;
    result->punkVal = ElementsOf(object).Detach();
    result->vt = VT_UNKNOWN;
    return S_OK;
  }
  const bool writes = (kind & kWrites) != 0;
  if (!writes && (kind & kReads) == 0) return E_INVALIDARG;
  const Member* member = MemberOf(object, id, writes);
  if (member == nullptr) return DISP_E_MEMBERNOTFOUND;
  const bool hands_on = !writes && member->kind == MemberKind::PropertyGet && member->parameters.empty();
  std::vector<VARIANT*> ordered;
  const std::size_t places = hands_on ? parameters.cArgs : member->parameters.size();
  const HRESULT fits = InOrder(parameters, places, writes, ordered, wrong_argument);
  if (FAILED(fits)) return fits;
  if (writes) {
    Write(object, *member, ordered, (kind & DISPATCH_PROPERTYPUTREF) != 0);
    return S_OK;
  }
  const Variant answer = Read(object, *member, ordered);
  if (result != nullptr) ToClient(answer, *result);
  return S_OK;
}

}  // namespace

Variant CallMember(Object& object, const Member& member, std::span<VARIANT* const> arguments) {
  ForeignContainers foreign;
  std::vector<Variant> values = ValuesOf(member, arguments);
  for (std::size_t i = 0; i < values.size(); ++i) {
    const DeclaredType& type = member.parameters[i].type;
    if (IsContainer(type)) values[i] = foreign.TakeIn(values[i], type.class_name);
  }
  const std::vector<Variant> before = values;
  Variant result = object.Invoke(member.name, values);
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (!member.parameters[i].by_ref || values[i] == before[i]) continue;
    const bool by_ref = IsByRef(arguments[i]);
    if (foreign.Replace(before[i], values[i], !by_ref)) continue;
    if (by_ref) WriteBack(values[i], *arguments[i]);
  }
  foreign.GiveBack();
  return result;
}

HRESULT GetTypeInfoCount(const Bridge& bridge, UINT* count) noexcept {
  if (count == nullptr) return E_POINTER;
  *count = bridge.dual() != nullptr ? 1 : 0;
  return S_OK;
}

HRESULT GetTypeInfo(const Bridge& bridge, UINT index, ITypeInfo** info) noexcept {
  if (info == nullptr) return E_POINTER;
  *info = nullptr;
  if (bridge.dual() == nullptr || index != 0) return DISP_E_BADINDEX;
  return Guarded(bridge.dual()->interface_id, [&] { return FindTypeInfo(bridge.dual()->interface_id, info); });
}

HRESULT GetIDsOfNames(Object& object, LPOLESTR* names, UINT count, DISPID* ids) noexcept {
  if (names == nullptr || ids == nullptr || count == 0) return E_INVALIDARG;
  return Guarded(__uuidof(IDispatch), [&]() -> HRESULT {
    std::fill_n(ids, count, DISPID_UNKNOWN);
    const std::optional<DISPID> id = IdOf(object, Narrow(names[0]));
    if (!id) return DISP_E_UNKNOWNNAME;
    ids[0] = *id;
    HRESULT result = S_OK;
    for (UINT i = 1; i < count; ++i) {
      ids[i] = ParameterId(object, *id, Narrow(names[i]));
      if (ids[i] == DISPID_UNKNOWN) result = DISP_E_UNKNOWNNAME;
    }
    return result;
  });
}

HRESULT Invoke(Object& object, DISPID id, WORD kind, DISPPARAMS* parameters, VARIANT* result, EXCEPINFO* told,
               UINT* wrong_argument) noexcept {
  if (parameters == nullptr) return E_INVALIDARG;
  if (result != nullptr) VariantInit(result);
  // The object may lose its last reference to a client during the call.
  const ObjectRef alive(&object);
  return Guarded(__uuidof(IDispatch), [&] {
    try {
      return InvokeMember(object, id, kind, *parameters, result, wrong_argument);
    } catch (...) {
      const Error error = CurrentError();
      Tell(error, told);
      Leave(error, __uuidof(IDispatch));
      return DISP_E_EXCEPTION;
    }
  });
}

}  // namespace rebate::com
