#pragma once

#include <optional>
#include <vector>

#include "calls/json_text.h"
#include "platform/automation/dispatch.h"

namespace rebate {

class Instances;

// A declared type as descriptions of the operations name it: text, integer, boolean, any, none, or a class such as
// Vector.
Text TypeName(const DeclaredType& type);

// One call by names: the operation is "Class.Member", its arguments come by their names.
class LateCall {
 public:
  // Finds the operation and fits the arguments to it; `dsn` stands for an `sDsn` that was left out. Raises 429 for an
  // unknown class, 438 for an unknown member, 448 for an argument that the member doesn't have, 449 for one that is
  // left out, and what a value raises that doesn't convert (see FromJson), the
  // argument named.
  LateCall(Instances& instances, const Text& operation, const Json& args, const std::optional<Text>& dsn);

  // Makes the call. Raises what the member raises.
  void Invoke();

  // The result of the call that was made, null where the member has none.
  Json Result() const;
  // The by-ref arguments as they stand, by name.
  Json ByRefArguments() const;

 private:
  void Fit(const Json& args);
  void CheckConversions(const Json& args) const;
  void CheckNoneMissing(const std::optional<Text>& dsn);
  std::size_t PositionOf(const Text& argument) const;

  ObjectRef object_;
  const Member* member_;
  std::vector<Variant> values_;
  Variant result_;
};

}  // namespace rebate
