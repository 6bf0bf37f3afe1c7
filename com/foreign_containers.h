#pragma once

#include <unordered_map>
#include <vector>

#include "platform/automation/variant.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"

namespace rebate::com {

// The containers of a client's own that stand in for a Vector or a Dictionary during one call: they are copied in
// before it, with what is nested in them, and what the call changed is written back into them behind it.
class ForeignContainers {
 public:
  // `value` with every client's container in it as one of this component's; itself where there is none. `class_name`
  // tells what the value itself stands for where it is one. Raises 5 for a container that holds itself, and what the
  // client's object raises.
  Variant TakeIn(const Variant& value, std::string_view class_name);

  // An argument that was `before` is to be `after`, which may be the null reference. Has the client's container whose
  // copy `before` is filled with that; and so a container of this component's, if the argument is no variable that
  // could take another (`by_value`). False where neither is so.
  bool Replace(const Variant& before, const Variant& after, bool by_value);

  // Writes back what has changed. Raises 438 where a container of a client's can't be changed; none is then.
  void GiveBack();

 private:
  // A container and its copy.
  struct Taken {
    ObjectRef original;
    ObjectRef copy;
    ObjectRef now;                // what stands in the copy's place behind the call
    std::vector<Variant> before;  // the copy's content before the call
  };

  bool NeedsCopy(const Variant& value, int depth = 0) const;
  ObjectRef Copy(const ObjectRef& original, bool list);
  void CopyList(Object& original, Vector& copy);
  void CopyMap(Object& original, Dictionary& copy);
  Variant Inner(const Variant& value);
  const Taken* Find(const Variant& copy) const;
  Variant Original(const Variant& value) const;

  std::vector<Taken> taken_;
  std::unordered_map<const void*, std::size_t> by_identity_;  // of the original, its place in taken_
  std::unordered_map<const Object*, std::size_t> by_copy_;
  std::vector<const void*> open_;  // the identities of the containers that are being copied
};

}  // namespace rebate::com
