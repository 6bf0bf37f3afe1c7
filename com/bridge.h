#pragma once

#include <windows.h>

#include <oleauto.h>

#include <atomic>

#include "com/com_ref.h"
#include "com/module.h"
#include "platform/automation/object.h"

namespace rebate::com {

struct DualClass;

// What a client holds of one of this component's objects. There is one for an object at a time, so that a client that
// compares two references finds them the same.
class Bridge {
 public:
  // `dual` is null for an object whose members answer late alone.
  Bridge(ObjectRef object, const DualClass* dual) : object_(std::move(object)), dual_(dual) {}
  virtual ~Bridge() = default;
  Bridge(const Bridge&) = delete;
  Bridge& operator=(const Bridge&) = delete;

  virtual IDispatch* dispatch() = 0;
  Object& object() const { return *object_; }
  const DualClass* dual() const { return dual_; }

  ULONG AddRef() { return ++references_; }
  ULONG Release();
  // Counts one more unless the last reference is gone already.
  bool TryAddRef();

 private:
  const InUse in_use_;
  ObjectRef object_;
  const DualClass* dual_;
  std::atomic<ULONG> references_{1};
};

// The object as a client sees it: an object of a client's own goes back as it came, any other behind its bridge. Null
// for the null reference.
ComRef<IDispatch> ClientSide(const ObjectRef& object);

// The object behind a client's reference: this component's own where it is one, else one that stands for it.
ObjectRef OwnSide(IDispatch* object);

}  // namespace rebate::com
