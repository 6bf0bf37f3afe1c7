#include "client/call_loop.h"

#include <iostream>
#include <nlohmann/json.hpp>

#include "calls/call_control.h"

namespace rebate {

void ServeCalls(std::istream& in, std::ostream& out, const CallOptions& options) {
  CallControl control;
  CallServer server(options, control);
  for (Text line; std::getline(in, line);) {
    out << JsonLine(server.Answer(line)) << '\n' << std::flush;
  }
}

}  // namespace rebate
