#pragma once

#include <iosfwd>

#include "calls/call_server.h"

namespace rebate {

// Reads requests, one JSON object a line, until the end of `in`, and writes one line of answer for each at once (see
// CallServer). A line that is no request is answered by an error, and the next one is read; so is an empty line.
// Stops at an answer that can't be written, `out` being bad then.
void ServeCalls(std::istream& in, std::ostream& out, CallServer& server);

}  // namespace rebate
