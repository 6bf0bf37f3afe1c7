#include "com/foreign_object.h"

#include "com/errors.h"
#include "com/values.h"
#include "com/wide_text.h"

namespace rebate::com {

// Arguments on their way to another's object, in the order of the system: the last one first.
class ForeignObject::Arguments {
 public:
  explicit Arguments(std::span<const Variant> arguments) : values_(arguments.size()), passed_(arguments.size()) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      ToClient(arguments[i], ValueOf(i));
      passed_[PlaceOf(i)] = ValueOf(i);  // borrowed
    }
  }

  void PassVariables() {
    for (std::size_t i = 0; i < values_.size(); ++i) {
      if (values_[i].vt == VT_BSTR) {
        passed_[i].vt = VT_BYREF | VT_BSTR;
        passed_[i].pbstrVal = &values_[i].bstrVal;
      } else if (values_[i].vt == VT_I4) {
        passed_[i].vt = VT_BYREF | VT_I4;
        passed_[i].plVal = &values_[i].lVal;
      }
    }
  }

  void TakeBack(std::span<Variant> arguments) {
    for (std::size_t i = 0; i < arguments.size(); ++i) {
      if ((passed_[PlaceOf(i)].vt & VT_BYREF) != 0) arguments[i] = FromClient(ValueOf(i));
    }
  }

  VARIANT* data() { return passed_.data(); }
  UINT size() const { return static_cast<UINT>(passed_.size()); }

 private:
  std::size_t PlaceOf(std::size_t argument) const { return values_.size() - 1 - argument; }
  OwnVariant& ValueOf(std::size_t argument) { return values_[PlaceOf(argument)]; }

  std::vector<OwnVariant> values_;
  std::vector<VARIANT> passed_;
};

Ref<ForeignObject> ForeignObject::Borrow(IDispatch* object) {
  Ref<ForeignObject> borrowed = New<ForeignObject>(ComRef<IDispatch>::Adopt(object));
  borrowed->borrowed_ = true;
  return borrowed;
}

ForeignObject::~ForeignObject() {
  if (borrowed_) object_.Detach();
}

HRESULT ForeignObject::Find(std::string_view member, DISPID& id) {
  id = DISPID_VALUE;
  if (member.empty()) return S_OK;
  for (const auto& [name, known] : ids_) {
    if (name == member) {
      id = known;
      return S_OK;
    }
  }
  std::wstring name = Wide(member);
  OLECHAR* names[] = {name.data()};
  const HRESULT result = object_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &id);
  if (SUCCEEDED(result)) ids_.emplace_back(member, id);
  return result;
}

DISPID ForeignObject::IdOf(std::string_view member) {
  DISPID id = DISPID_UNKNOWN;
  const HRESULT result = Find(member, id);
  if (FAILED(result)) {
    EXCEPINFO nothing_told{};
    throw Taken(result, nothing_told, member);
  }
  return id;
}

bool ForeignObject::Answers(std::string_view member) {
  DISPID id = DISPID_UNKNOWN;
  return SUCCEEDED(Find(member, id));
}

Variant ForeignObject::Invoke(std::string_view member, std::span<Variant> arguments) {
  Arguments passed(arguments);
  passed.PassVariables();
  Variant answer = Invoke(member, passed);
  passed.TakeBack(arguments);
  return answer;
}

Variant ForeignObject::InvokeByValue(std::string_view member, std::span<const Variant> arguments) {
  Arguments passed(arguments);
  return Invoke(member, passed);
}

Variant ForeignObject::Invoke(std::string_view member, Arguments& passed) {
  const DISPID id = IdOf(member);
  DISPPARAMS parameters{passed.data(), nullptr, passed.size(), 0};
  OwnVariant answer;
  EXCEPINFO told{};
  const HRESULT result = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                                         &parameters, &answer, &told, nullptr);
  if (FAILED(result)) throw Taken(result, told, member);
  return FromClient(answer);
}

void ForeignObject::Put(std::string_view member, std::span<Variant> arguments) {
  const DISPID id = IdOf(member);
  Arguments passed(arguments);
  DISPID value_name = DISPID_PROPERTYPUT;
  DISPPARAMS parameters{passed.data(), &value_name, passed.size(), 1};
  EXCEPINFO told{};
  const auto put = [&](WORD kind) {
    return object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, kind, &parameters, nullptr, &told, nullptr);
  };
  const bool reference = !arguments.empty() && arguments.back().IsObject();
  HRESULT result = put(reference ? DISPATCH_PROPERTYPUTREF : DISPATCH_PROPERTYPUT);
  // Not every class tells a reference from a value.
  if (reference && result == DISP_E_MEMBERNOTFOUND) result = put(DISPATCH_PROPERTYPUT);
  if (FAILED(result)) throw Taken(result, told, member);
}

}  // namespace rebate::com
