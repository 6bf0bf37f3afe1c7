#include "com/arrays.h"

#include <memory>
#include <new>

#include "com/values.h"

namespace rebate::com {
namespace {

struct DestroyArray {
  void operator()(SAFEARRAY* array) const { SafeArrayDestroy(array); }
};

Variant Element(SAFEARRAY* array, VARTYPE type, LONG index) {
  OwnVariant element;
  // An array of VARIANTs gives the whole value, any other the plain content.
  void* place = type == VT_VARIANT   ? static_cast<void*>(&element)
                : type == VT_DECIMAL ? static_cast<void*>(&element.decVal)
                                     : static_cast<void*>(&element.llVal);
  if (FAILED(SafeArrayGetElement(array, &index, place))) ThrowTypeMismatch();
  if (type != VT_VARIANT) element.vt = type;
  return FromClient(element);
}

}  // namespace

Variant FromArray(SAFEARRAY* array) {
  VARTYPE type = VT_EMPTY;
  LONG lower = 0;
  LONG upper = -1;
  const bool readable = array != nullptr && SafeArrayGetDim(array) == 1 &&
                        SUCCEEDED(SafeArrayGetVartype(array, &type)) &&
                        SUCCEEDED(SafeArrayGetLBound(array, 1, &lower)) &&
                        SUCCEEDED(SafeArrayGetUBound(array, 1, &upper)) && type != VT_RECORD;
  if (!readable) ThrowTypeMismatch();
  std::vector<Variant> elements;
  for (std::int64_t i = lower; i <= upper; ++i) elements.push_back(Element(array, type, static_cast<LONG>(i)));
  return Variant::Array(std::move(elements));
}

SAFEARRAY* ToArray(const std::vector<Variant>& elements) {
  std::unique_ptr<SAFEARRAY, DestroyArray> array(
      SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(elements.size())));
  if (!array) throw std::bad_alloc();
  LONG index = 0;
  for (const Variant& element : elements) {
    OwnVariant value;
    ToClient(element, value);
    if (FAILED(SafeArrayPutElement(array.get(), &index, static_cast<VARIANT*>(&value)))) throw std::bad_alloc();
    ++index;
  }
  return array.release();
}

}  // namespace rebate::com
