#pragma once

#include "calls/json_text.h"
#include "platform/automation/dispatch.h"
#include "platform/automation/error.h"
#include "platform/automation/variant.h"

namespace rebate {

// A value as JSON: text, integers of 32 bits, floats (always with a fraction or an exponent), true, false; null for the
// null reference; an object for a Dictionary, an array for a Vector or an array. Every other kind is
// {"$":KIND,"value":…}: i2, r4, currency, decimal, date, empty, null, and
// {"$":"recordset","columns":[…],"rows":[[…],…]} with all rows that its filter shows; its cursor is moved.
Json ToJson(const Variant& value);

// The value that the JSON stands for, as above, recordsets excepted. `path` names the place in errors, which go on with
// `.key` and `[position]`, positions from 1. Raises 6 for an integer outside 32 bits and 13 for what is no value.
Variant FromJson(const Json& json, const Text& path);

// The value for an argument: as FromJson, but an array for an argument of any kind is an array, not a Vector.
Variant ArgumentFromJson(const Json& json, const Parameter& parameter);

// {"number":…,"source":…,"description":…}
Json ErrorToJson(const Error& error);

}  // namespace rebate
