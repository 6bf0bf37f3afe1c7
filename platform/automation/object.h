#pragma once

#include <span>
#include <string_view>

#include "platform/automation/ref.h"

namespace rebate {

class Variant;
class MemberTable;

// An object of the automation world: counted, and its members answer by name at run time.
class Object : public RefCounted {
 public:
  // The members that answer by name, with their argument names. Objects without any give an empty table.
  virtual const MemberTable& Members() const;

  // Calls `member` (without regard to case; the empty name is the default member) with positional arguments; an
  // argument left out at the end, or given as Missing, takes its default where it is optional. By-ref arguments come
  // back in `arguments`. Raises 438 for an unknown member, 449 and 450 for arguments that don't fit, 13 for one that
  // doesn't convert, and whatever the member raises.
  // Arguments for a property that takes none go to the default member of the object that it holds.
  virtual Variant Invoke(std::string_view member, std::span<Variant> arguments);

  // Writes the property `member` (the empty name is the default one); the new value is the last of `arguments`. Raises
  // as Invoke does, 438 for a property that isn't there or can't be written.
  virtual void Put(std::string_view member, std::span<Variant> arguments);
};

using ObjectRef = Ref<Object>;

}  // namespace rebate
