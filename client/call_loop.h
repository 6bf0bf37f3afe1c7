#pragma once

#include <iosfwd>
#include <optional>

#include "platform/values/types.h"

namespace rebate {

struct CallOptions {
  Text library;             // the classes are created as `library.Class`
  std::optional<Text> dsn;  // for calls that leave their `sDsn` out
  bool trace = false;       // whether answers list what the call did to the world
};

// Reads requests, one JSON object a line, until the end of `in`, and writes one line of answer for each at once:
//   {"op":"Class.Member","args":{NAME:VALUE,…},"thread":NAME}   a call; `args` and `thread` may be left out
//   {"op":…,"result":VALUE,"args":{…},"trace":[…]}              its answer, with the by-ref arguments if there are any
//   {"op":…,"error":{"number":…,"source":…,"description":…},…}  its answer where it raised, or could not be made
// A line with "login" or "cache" in the place of "op" speaks for the host (see CallControl).
// A line that is no request is answered by an error, and the next one is read; so is an empty line. Each thread
// named is a thread of the process with one instance of each class, made on first use; calls still run one at a time.
void ServeCalls(std::istream& in, std::ostream& out, const CallOptions& options);

}  // namespace rebate
