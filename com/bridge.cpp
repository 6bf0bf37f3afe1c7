#include "com/bridge.h"

#include <mutex>
#include <unordered_map>

#include "com/dual_classes.h"
#include "com/foreign_object.h"
#include "com/late_bridge.h"

namespace rebate::com {
namespace {

// The bridges that clients hold, by their objects and by the references under which clients know them.
struct Bridges {
  std::mutex mutex;
  std::unordered_map<const Object*, Bridge*> by_object;
  std::unordered_map<const IUnknown*, Bridge*> by_reference;
};

Bridges& TheBridges() {
  // A client may release its last object behind the end of this module's static ones.
  static Bridges& bridges = *new Bridges;
  return bridges;
}

const IUnknown* ReferenceOf(Bridge& bridge) {
  return bridge.dispatch();
}

ComRef<IDispatch> Held(Bridges& bridges, const Object* object) {
  const auto found = bridges.by_object.find(object);
  if (found == bridges.by_object.end() || !found->second->TryAddRef()) return {};
  return ComRef<IDispatch>::Adopt(found->second->dispatch());
}

Bridge* NewBridge(const ObjectRef& object) {
  const DualClass* dual = DualClassOf(*object);
  return dual != nullptr ? dual->bridge(object, *dual) : new LateBridge(object);
}

}  // namespace

ULONG Bridge::Release() {
  const ULONG left = --references_;
  if (left != 0) return left;
  {
    Bridges& bridges = TheBridges();
    const std::lock_guard lock(bridges.mutex);
    bridges.by_reference.erase(ReferenceOf(*this));
    const auto found = bridges.by_object.find(&object());
    // A client may have asked for the object anew in the meantime.
    if (found != bridges.by_object.end() && found->second == this) bridges.by_object.erase(found);
  }
  delete this;
  return 0;
}

bool Bridge::TryAddRef() {
  ULONG references = references_;
  while (references != 0) {
    if (references_.compare_exchange_weak(references, references + 1)) return true;
  }
  return false;
}

ComRef<IDispatch> ClientSide(const ObjectRef& object) {
  if (!object) return {};
  if (const auto* foreign = dynamic_cast<const ForeignObject*>(object.get())) return foreign->client_object();
  Bridges& bridges = TheBridges();
  ComRef<IDispatch> reference;  // let go behind the lock where there is no memory to note it
  const std::lock_guard lock(bridges.mutex);
  if (ComRef<IDispatch> held = Held(bridges, object.get())) return held;
  Bridge* bridge = NewBridge(object);
  reference = ComRef<IDispatch>::Adopt(bridge->dispatch());
  bridges.by_reference[ReferenceOf(*bridge)] = bridge;
  bridges.by_object[object.get()] = bridge;
  return reference;
}

ObjectRef OwnSide(IDispatch* object) {
  if (object == nullptr) return nullptr;
  {
    Bridges& bridges = TheBridges();
    const std::lock_guard lock(bridges.mutex);
    const auto found = bridges.by_reference.find(object);
    if (found != bridges.by_reference.end()) return ObjectRef(&found->second->object());
  }
  return New<ForeignObject>(ComRef<IDispatch>(object));
}

}  // namespace rebate::com
