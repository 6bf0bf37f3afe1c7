#pragma once

#include <nlohmann/json.hpp>
#include <optional>

#include "calls/json_text.h"
#include "platform/login/call_observer.h"

namespace rebate {

// Lists what calls do to the world, in order:
//   {"open":DSN}  {"vote":"abort"}  {"vote":"complete"}  {"connection":true}
//   {"execute":TEXT}, with "error" behind it where the statement was refused
//   {"component":PROGID,"member":NAME}
//   {"failure":…}, why the operation failed where neither its answer nor the statement before tells
class CallTrace : public CallObserver {
 public:
  // An array.
  const Json& entries() const { return entries_; }
  // Why the operation failed, as an error, where its answer doesn't tell; else null.
  const Json& failure() const { return failure_; }
  // The id under which the call wrote the head of a scheme, if it did.
  std::optional<Long> stored_scheme() const { return stored_scheme_; }

  void Opening(std::string_view dsn) override;
  void VotingAbort() override;
  void VotingComplete() override;
  void Connecting() override;
  void Executing(std::string_view text) override;
  void Withdrawing(std::size_t count) override;
  void Refused(const Error& error) override;
  void CallingComponent(std::string_view program_id, std::string_view member) override;
  void Swallowing(const Error& error) override;
  void StoringScheme(Long id) override { stored_scheme_ = id; }

 private:
  Json entries_ = Json::array();
  Json failure_ = nullptr;
  std::optional<Long> stored_scheme_;
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
