#include "client/call_loop.h"

#include <iostream>
#include <nlohmann/json.hpp>

namespace rebate {

void ServeCalls(std::istream& in, std::ostream& out, CallServer& server) {
  for (Text line; out && std::getline(in, line);) {
    out << JsonLine(server.Answer(line)) << '\n' << std::flush;
  }
}

}  // namespace rebate
