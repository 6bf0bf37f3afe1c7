#include "calls/call_trace.h"

#include <algorithm>

#include "calls/json_values.h"

namespace rebate {

void CallTrace::Opening(std::string_view dsn) {
  entries_.push_back({{"open", dsn}});
}

void CallTrace::VotingAbort() {
  entries_.push_back({{"vote", "abort"}});
}

void CallTrace::VotingComplete() {
  entries_.push_back({{"vote", "complete"}});
}

void CallTrace::Connecting() {
  entries_.push_back({{"connection", true}});
}

void CallTrace::Executing(std::string_view text) {
  entries_.push_back({{"execute", text}});
}

void CallTrace::Withdrawing(std::size_t count) {
  for (std::size_t at = entries_.size(); at > 0 && count > 0; --at) {
    if (!entries_[at - 1].contains("execute")) continue;
    entries_.erase(at - 1);
    --count;
  }
}

void CallTrace::Refused(const Error& error) {
  for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) {
    if (!entry->contains("execute")) continue;
    (*entry)["error"] = ErrorToJson(error);
    return;
  }
}

void CallTrace::Swallowing(const Error& error) {
  failure_ = ErrorToJson(error);
  const auto executed =
      std::find_if(entries_.rbegin(), entries_.rend(), [](const Json& entry) { return entry.contains("execute"); });
  const bool told = executed != entries_.rend() && executed->value("error", Json()) == failure_;
  if (!told) entries_.push_back({{"failure", failure_}});
}

void CallTrace::CallingComponent(std::string_view program_id, std::string_view member) {
  entries_.push_back({{"component", program_id}, {"member", member}});
}

}  // namespace rebate
