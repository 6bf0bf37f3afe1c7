#include "com/values.h"

#include <limits>
#include <new>
#include <utility>

#include "com/arrays.h"
#include "com/bridge.h"
#include "com/wide_text.h"
#include "platform/automation/conversion.h"

namespace rebate::com {
namespace {

// Numbers and their texts have to be the same in every locale.
constexpr LCID kInvariant = LOCALE_INVARIANT;

Variant FromWhole(std::int64_t number) {
  const bool fits = number >= std::numeric_limits<Long>::min() && number <= std::numeric_limits<Long>::max();
  return fits ? Variant(static_cast<Long>(number)) : Variant::Decimal(std::to_string(number));
}

Variant FromDecimal(DECIMAL decimal) {
  OwnBstr digits;
  if (FAILED(VarBstrFromDec(&decimal, kInvariant, LOCALE_NOUSEROVERRIDE, digits.Receive()))) ThrowTypeMismatch();
  return Variant::Decimal(FromBstr(digits.get()));
}

void ToDecimal(std::string_view digits, VARIANT& target) {
  OwnBstr text(digits);
  DECIMAL decimal{};
  const HRESULT result = VarDecFromStr(text.get(), kInvariant, LOCALE_NOUSEROVERRIDE, &decimal);
  // The system rounds what is too long for it.
  if (SUCCEEDED(result) && FromDecimal(decimal).text() == digits) {
    target.decVal = decimal;
    target.vt = VT_DECIMAL;
  } else {
    target.bstrVal = text.Detach();
    target.vt = VT_BSTR;
  }
}

Variant FromUnknown(IUnknown* object) {
  if (object == nullptr) return ObjectRef();
  const ComRef<IDispatch> dispatch = As<IDispatch>(object);
  if (!dispatch) ThrowTypeMismatch();
  return OwnSide(dispatch.get());
}

// A variable of each type by its place, as the value that stands there.
VARIANT Dereferenced(const VARIANT& by_ref) {
  VARIANT value;
  VariantInit(&value);
  value.vt = static_cast<VARTYPE>(by_ref.vt & ~VT_BYREF);
  if (value.vt == VT_DECIMAL) {
    value.decVal = *by_ref.pdecVal;
    value.vt = VT_DECIMAL;
    return value;
  }
  switch (value.vt) {
    case VT_I1:
    case VT_UI1:
      value.bVal = *by_ref.pbVal;
      break;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      value.iVal = *by_ref.piVal;
      break;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
    case VT_ERROR:
      value.lVal = *by_ref.plVal;
      break;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
      value.llVal = *by_ref.pllVal;
      break;
    default:  // texts, objects and arrays are pointers
      value.byref = *static_cast<void**>(by_ref.byref);
  }
  return value;
}

void CheckStored(HRESULT result) {
  if (result == E_OUTOFMEMORY) throw std::bad_alloc();
  if (result == DISP_E_OVERFLOW) throw Error(error_number::kOverflow, "", "Overflow");
  if (FAILED(result)) ThrowTypeMismatch();
}

// Moves `value`, which is of the variable's type, to the variable's place.
void MoveInto(VARIANT& by_ref, VARIANT& value) {
  switch (value.vt) {
    case VT_I1:
    case VT_UI1:
      *by_ref.pbVal = value.bVal;
      break;
    case VT_I2:
    case VT_UI2:
    case VT_BOOL:
      *by_ref.piVal = value.iVal;
      break;
    case VT_I4:
    case VT_UI4:
    case VT_INT:
    case VT_UINT:
    case VT_R4:
      *by_ref.plVal = value.lVal;
      break;
    case VT_I8:
    case VT_UI8:
    case VT_R8:
    case VT_CY:
    case VT_DATE:
      *by_ref.pllVal = value.llVal;
      break;
    case VT_DECIMAL:
      *by_ref.pdecVal = value.decVal;
      break;
    case VT_BSTR:
      SysFreeString(*by_ref.pbstrVal);
      *by_ref.pbstrVal = value.bstrVal;
      break;
    case VT_DISPATCH:
    case VT_UNKNOWN:
      // What ends with the old object may look at the variable.
      if (IUnknown* old = std::exchange(*by_ref.ppunkVal, value.punkVal)) old->Release();
      break;
    default:
      ThrowTypeMismatch();
  }
  value.vt = VT_EMPTY;  // its content has another owner now
}

}  // namespace

Variant FromClient(const VARIANT& value) {
  if (value.vt == (VT_BYREF | VT_VARIANT)) return FromClient(*value.pvarVal);
  if ((value.vt & VT_ARRAY) != 0) return FromArray((value.vt & VT_BYREF) != 0 ? *value.pparray : value.parray);
  if ((value.vt & VT_BYREF) != 0) return FromClient(Dereferenced(value));
  switch (value.vt) {
    case VT_EMPTY:
      return {};
    case VT_NULL:
      return Variant::Null();
    case VT_I1:
      return static_cast<Long>(value.cVal);
    case VT_UI1:
      return static_cast<Long>(value.bVal);
    case VT_I2:
      return std::int16_t{value.iVal};
    case VT_UI2:
      return static_cast<Long>(value.uiVal);
    case VT_I4:
    case VT_INT:
      return static_cast<Long>(value.lVal);
    case VT_UI4:
    case VT_UINT:
      return FromWhole(value.ulVal);
    case VT_I8:
      return FromWhole(value.llVal);
    case VT_UI8:
      return value.ullVal <= 0x7FFFFFFF ? FromWhole(value.llVal) : Variant::Decimal(std::to_string(value.ullVal));
    case VT_R4:
      return value.fltVal;
    case VT_R8:
      return value.dblVal;
    case VT_CY:
      return Variant::Currency(value.cyVal.int64);
    case VT_DATE:
      return Variant::Date(value.date);
    case VT_DECIMAL:
      return FromDecimal(value.decVal);
    case VT_BSTR:
      return FromBstr(value.bstrVal);
    case VT_BOOL:
      return value.boolVal != VARIANT_FALSE;
    case VT_DISPATCH:
    case VT_UNKNOWN:
      return FromUnknown(value.punkVal);
    case VT_ERROR:
      if (value.scode == DISP_E_PARAMNOTFOUND) return Variant::Missing();
      break;
    default:
      break;
  }
  ThrowTypeMismatch();
}

void ToClient(const Variant& value, VARIANT& target) {
  VariantInit(&target);
  switch (value.type()) {
    case VariantType::Empty:
      return;
    case VariantType::Missing:
      target.scode = DISP_E_PARAMNOTFOUND;
      break;
    case VariantType::Null:
      break;
    case VariantType::Short:
      target.iVal = static_cast<SHORT>(value.integer());
      break;
    case VariantType::Long:
      target.lVal = static_cast<LONG>(value.integer());
      break;
    case VariantType::Single:
      target.fltVal = static_cast<float>(value.real());
      break;
    case VariantType::Double:
      target.dblVal = value.real();
      break;
    case VariantType::Currency:
      target.cyVal.int64 = value.integer();
      break;
    case VariantType::Date:
      target.date = value.real();
      break;
    case VariantType::Text:
      target.bstrVal = NewBstr(value.text());
      break;
    case VariantType::Object:
      target.pdispVal = ClientSide(value.object()).Detach();
      break;
    case VariantType::Boolean:
      target.boolVal = value.integer() != 0 ? VARIANT_TRUE : VARIANT_FALSE;
      break;
    case VariantType::Decimal:
      return ToDecimal(value.text(), target);
    case VariantType::Array:
      target.parray = ToArray(value.array());
      target.vt = VT_ARRAY | VT_VARIANT;
      return;
  }
  // The numbers of the types are the system's own.
  target.vt = static_cast<VARTYPE>(value.type());
}

void WriteBack(const Variant& value, VARIANT& by_ref) {
  OwnVariant written;
  ToClient(value, written);
  if (by_ref.vt == (VT_BYREF | VT_VARIANT)) {
    VARIANT& target = *by_ref.pvarVal;
    if ((target.vt & VT_BYREF) != 0) return WriteBack(value, target);
    CheckStored(VariantCopy(&target, &written));
    return;
  }
  const auto type = static_cast<VARTYPE>(by_ref.vt & ~VT_BYREF);
  if (written.vt != type)
    CheckStored(VariantChangeTypeEx(&written, &written, kInvariant, VARIANT_NOUSEROVERRIDE, type));
  MoveInto(by_ref, written);
}

}  // namespace rebate::com
