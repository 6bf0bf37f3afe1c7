#pragma once

#include "calls/json_text.h"
#include "platform/automation/variant.h"

namespace rebate {

// The kinds of value for which JSON has no word of its own, as {"$":KIND,"value":…}:
//   i2, r4               a number
//   currency, decimal    a text of plain digits; read from a number too
//   date                 a text `yyyy-mm-dd` or `yyyy-mm-dd hh:mm:ss`
//   empty, null          without a value

// The tagged object of a value of one of these kinds.
Json TaggedToJson(const Variant& value);

// The value of an object with a "$". Raises 13 for an unknown kind, a value that doesn't fit its kind and a key that
// doesn't belong there, and 6 for a number outside the kind; `path` names the place.
Variant TaggedFromJson(const Json& json, const Text& path);

}  // namespace rebate
