#include "abi/session.h"

#include <nlohmann/json.hpp>

#include "calls/call_control.h"
#include "platform/automation/error.h"
#include "platform/login/process_id.h"

namespace rebate {
namespace {

constexpr const char* kSource = "rebate";
constexpr Long kBusy = 70;

struct Control {
  std::mutex mutex;
  int users = 0;
  std::optional<CallControl> control;
};

// Outlives the process's static objects: a session may be left open at the end.
Control& TheControl() {
  static Control& control = *new Control;
  return control;
}

}  // namespace

SharedControl::SharedControl() {
  Control& shared = TheControl();
  const std::lock_guard lock(shared.mutex);
  if (shared.users == 0) shared.control.emplace();
  ++shared.users;
}

SharedControl::~SharedControl() {
  Control& shared = TheControl();
  const std::lock_guard lock(shared.mutex);
  if (--shared.users == 0) shared.control.reset();
}

CallControl& SharedControl::operator*() const {
  return *TheControl().control;
}

ClientSession::ClientSession(std::optional<Text> dsn, bool trace) : process_(CurrentProcessId()) {
  server_.emplace(CallOptions{"TALMRebateRuleMgr", std::move(dsn), trace, true}, *control_);
  server_->OpenDataSource();
}

Text ClientSession::Answer(std::string_view request) {
  if (IsForeign()) {
    throw Error(error_number::kInvalidCall, kSource,
                "The session belongs to the process that this one was forked from: open one here");
  }
  const std::unique_lock lock(serving_, std::try_to_lock);
  if (!lock) throw Error(kBusy, kSource, "The session is serving a call of another thread");
  if (!server_) throw Error(error_number::kObjectNotSet, kSource, "The session is closed");
  return JsonLine(server_->Answer(request));
}

void ClientSession::Close() {
  if (IsForeign()) return;
  const std::lock_guard lock(serving_);
  server_.reset();
}

bool ClientSession::IsForeign() const {
  return process_ != CurrentProcessId();
}

}  // namespace rebate
