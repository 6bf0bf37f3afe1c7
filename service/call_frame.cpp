#include "service/call_frame.h"

#include "platform/login/call_observer.h"

namespace rebate {
namespace {

constexpr std::string_view kReraiseSource = "BaseInfoMgr:UpdateBatch";

bool TellsReason(OnFailure on_failure) {
  return on_failure == OnFailure::ReportInResult || on_failure == OnFailure::Reraise;
}

}  // namespace

CallFrame::CallFrame() : context_(TheGlobalApplication().GetContext()) {
  user_info_ = context_->GetUserInfo();
}

void CallFrame::OpenDataContext(const Text& dsn) {
  context_ = TheGlobalApplication().GetContext();
  context_->Open(dsn);
}

bool CallFrame::ResetsResult(OnFailure on_failure) {
  return on_failure == OnFailure::Swallow || on_failure == OnFailure::SwallowAndAbort;
}

void CallFrame::Report(const Error& error, Ref<Dictionary>& result) {
  if (!result) result = New<Dictionary>();
  result->SetValue("OK", false);
  result->SetValue("Err", "错误号：" + std::to_string(error.number) + "," + error.description);
}

void CallFrame::Vote(OnFailure on_failure, const Error& error) {
  if (CallObserver* observer = TheCallObserver(); observer != nullptr && !TellsReason(on_failure)) {
    observer->Swallowing(error);
  }
  switch (on_failure) {
    case OnFailure::Swallow:
    case OnFailure::Leave:
      return;
    case OnFailure::SwallowAndAbort:
    case OnFailure::ReportInResult:
      context_->VoteAbort();
      return;
    case OnFailure::SwallowAndComplete:
      try {
        context_->VoteComplete();
      } catch (...) {
        // The failure is answered already; what can't be committed is undone when the call ends.
      }
      return;
    case OnFailure::Reraise:
      context_->VoteAbort();
      Error raised = error;
      raised.source = kReraiseSource;
      throw raised;
  }
}

void Refuse(std::string_view source, std::string_view description) {
  throw Error(error_number::kInvalidCall, Text(source), Text(description));
}

}  // namespace rebate
