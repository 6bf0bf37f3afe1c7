#include "com/class_factory.h"

#include <atomic>

#include "com/bridge.h"
#include "com/errors.h"
#include "com/module.h"

namespace rebate::com {
namespace {

class ClassFactory final : public IClassFactory {
 public:
  explicit ClassFactory(const CreatableClass& made) : made_(made) {}
  virtual ~ClassFactory() = default;

  STDMETHODIMP QueryInterface(REFIID id, void** found) override {
    if (found == nullptr) return E_POINTER;
    *found = id == __uuidof(IUnknown) || id == __uuidof(IClassFactory) ? this : nullptr;
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

  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID id, void** object) override {
    if (object == nullptr) return E_POINTER;
    *object = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    return Guarded(made_.class_id, [&] { return ClientSide(made_.create())->QueryInterface(id, object); });
  }
  STDMETHODIMP LockServer(BOOL lock) override {
    LockModule(lock != FALSE);
    return S_OK;
  }

 private:
  const InUse in_use_;
  const CreatableClass& made_;
  std::atomic<ULONG> references_{1};
};

}  // namespace

HRESULT MakeClassFactory(const CreatableClass& made, REFIID id, void** factory) noexcept {
  return Guarded(made.class_id, [&] {
    const auto fresh = ComRef<IClassFactory>::Adopt(new ClassFactory(made));
    return fresh->QueryInterface(id, factory);
  });
}

}  // namespace rebate::com
