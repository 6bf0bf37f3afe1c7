#pragma once

#include <thread>

#include "abi/rebate.h"
#include "tests/tool_kit.h"

namespace rebate {

// The text that a function of the shared library gave, which is freed; "NULL" for none.
inline Text Take(char* text) {
  const Text taken = text == nullptr ? "NULL" : text;
  rebate_free(text);
  return taken;
}

// A session of the shared library.
class AbiSession {
 public:
  explicit AbiSession(const Text& dsn, std::uint32_t flags = 0) {
    EXPECT_EQ(Take(rebate_open(dsn.c_str(), flags, &number_)), "NULL");
  }
  ~AbiSession() { rebate_close(number_); }
  AbiSession(const AbiSession&) = delete;
  AbiSession& operator=(const AbiSession&) = delete;

  rebate_session number() const { return number_; }
  Text Call(const Text& request) const { return Take(rebate_call(number_, request.c_str())); }

 private:
  rebate_session number_ = 0;
};

inline Long ErrorNumber(const Text& answer) {
  const Json json = ParseJson(answer);
  return json.contains("error") ? json["error"]["number"].get<Long>() : 0;
}

}  // namespace rebate
