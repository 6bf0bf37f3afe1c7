#include "com/elements.h"

#include <atomic>
#include <memory>
#include <vector>

#include "com/errors.h"
#include "com/module.h"
#include "com/values.h"
#include "platform/automation/dispatch.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"

namespace rebate::com {
namespace {

using Values = std::shared_ptr<const std::vector<Variant>>;

class Enumerator final : public IEnumVARIANT {
 public:
  Enumerator(Values values, std::size_t at) : values_(std::move(values)), at_(at) {}
  virtual ~Enumerator() = default;

  STDMETHODIMP QueryInterface(REFIID id, void** found) override {
    if (found == nullptr) return E_POINTER;
    *found = id == __uuidof(IUnknown) || id == __uuidof(IEnumVARIANT) ? this : nullptr;
    if (*found == nullptr) return E_NOINTERFACE;
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  STDMETHODIMP Next(ULONG count, VARIANT* values, ULONG* fetched) override {
    if (fetched != nullptr) *fetched = 0;
    if (values == nullptr || (fetched == nullptr && count != 1)) return E_POINTER;
    return Guarded(__uuidof(IEnumVARIANT), [&] {
      ULONG given = 0;
      try {
        for (; given < count && at_ + given < values_->size(); ++given)
          ToClient((*values_)[at_ + given], values[given]);
      } catch (...) {
        while (given > 0) VariantClear(&values[--given]);
        throw;
      }
      at_ += given;
      if (fetched != nullptr) *fetched = given;
      return given == count ? S_OK : S_FALSE;
    });
  }
  STDMETHODIMP Skip(ULONG count) override {
    const std::size_t left = values_->size() - at_;
    at_ += count < left ? count : left;
    return count <= left ? S_OK : S_FALSE;
  }
  STDMETHODIMP Reset() override {
    at_ = 0;
    return S_OK;
  }
  STDMETHODIMP Clone(IEnumVARIANT** clone) override {
    if (clone == nullptr) return E_POINTER;
    *clone = nullptr;
    return Guarded(__uuidof(IEnumVARIANT), [&] {
      *clone = new Enumerator(values_, at_);
      return S_OK;
    });
  }

 private:
  const InUse in_use_;
  Values values_;
  std::size_t at_;
  std::atomic<ULONG> references_{1};
};

// What is walked over by its count and its items from 0.
bool CountsItems(const Object& object) {
  const Member* item = object.Members().Find("Item");
  return item != nullptr && item->parameters.size() == 1 && object.Members().Find("Count") != nullptr;
}

std::vector<Variant> Elements(Object& object) {
  std::vector<Variant> values;
  if (const auto* list = dynamic_cast<const Vector*>(&object)) {
    for (Long i = 1; i <= list->Size(); ++i) values.push_back(list->Item(i));
  } else if (const auto* map = dynamic_cast<const Dictionary*>(&object)) {
    for (Long i = 1; i <= map->Count(); ++i) values.emplace_back(map->Key(i));
  } else {
    const Long count = ToLong(object.Invoke("Count", {}));
    for (Long i = 0; i < count; ++i) {
      Variant index[] = {i};
      values.push_back(object.Invoke("Item", index));
    }
  }
  return values;
}

}  // namespace

bool HasElements(const Object& object) {
  return dynamic_cast<const Vector*>(&object) != nullptr || dynamic_cast<const Dictionary*>(&object) != nullptr ||
         CountsItems(object);
}

ComRef<IUnknown> ElementsOf(Object& object) {
  auto values = std::make_shared<const std::vector<Variant>>(Elements(object));
  return ComRef<IUnknown>::Adopt(new Enumerator(std::move(values), 0));
}

}  // namespace rebate::com
