#pragma once

#include <nlohmann/json.hpp>

#include "calls/json_text.h"
#include "platform/login/call_observer.h"

namespace rebate {

// Lists what calls do to the world, in order:
//   {"open":DSN}  {"vote":"abort"}  {"vote":"complete"}  {"connection":true}
//   {"execute":TEXT}, with "error" behind it where the statement was refused
//   {"component":PROGID,"member":NAME}
class CallTrace : public CallObserver {
 public:
  // An array.
  const Json& entries() const { return entries_; }

  void Opening(std::string_view dsn) override;
  void VotingAbort() override;
  void VotingComplete() override;
  void Connecting() override;
  void Executing(std::string_view text) override;
  void Refused(const Error& error) override;
  void CallingComponent(std::string_view program_id, std::string_view member) override;

 private:
  Json entries_ = Json::array();
};

// While it lives, `observer` is the calling thread's; the former one takes its place again.
class TracedThread {
 public:
  explicit TracedThread(CallObserver* observer) : former_(TheCallObserver()) { SetCallObserver(observer); }
  ~TracedThread() { SetCallObserver(former_); }
  TracedThread(const TracedThread&) = delete;
  TracedThread& operator=(const TracedThread&) = delete;

 private:
  CallObserver* former_;
};

}  // namespace rebate
