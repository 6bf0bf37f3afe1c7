#pragma once

#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "platform/containers/dictionary.h"
#include "platform/database/connection.h"
#include "platform/login/data_context.h"
#include "platform/values/types.h"

namespace rebate {

// What an operation does with a failure of any kind inside it. Every failure leaves the abort vote that was cast when
// the call began in force, but for SwallowAndComplete.
enum class OnFailure {
  Swallow,             // the result goes back to its empty value
  SwallowAndAbort,     // likewise, and the abort vote is cast again
  SwallowAndComplete,  // the complete vote is cast; the result stays as it stood
  Leave,               // the result and the by-ref arguments stay as they stood
  ReportInResult,      // a Dictionary with "OK" False and the reason under "Err"; the abort vote is cast again
  Reraise,             // the abort vote is cast again and the error goes to the caller
};

// Which vote opens the call.
enum class Opening { AbortVote, NoVote };

// A call at work: its connection and its votes.
class Call {
 public:
  Call(DataContext& context, ConnectionRef connection) : context_(context), connection_(std::move(connection)) {}

  // Runs one text; the null reference where it gives no rows.
  RecordsetRef Execute(std::string_view text) { return connection_->Execute(text); }
  // Runs texts that give no rows, in order, up to the first that is refused.
  void ExecuteEach(std::span<const Text> texts) {
    std::size_t done = 0;
    connection_->ExecuteEach(texts, done);
  }
  // Likewise, for nothing but the first row.
  RecordsetRef ExecuteForFirst(std::string_view text) { return connection_->ExecuteForFirst(text); }
  Connection& connection() { return *connection_; }

  // The logged-in user's id, asked for at this moment.
  Long UserId() const { return context_.GetUserInfo()->UserID(); }

  // Lets the connection go and casts the complete vote: the last thing that a successful call does.
  void Complete() {
    connection_ = nullptr;
    context_.VoteComplete();
  }
  // Lets the connection go and casts the abort vote, on a road that is no failure: the result goes back as it stands.
  void Abort() {
    connection_ = nullptr;
    context_.VoteAbort();
  }

 private:
  DataContext& context_;
  ConnectionRef connection_;
};

// The steps that every operation shares: entry, the open step, the abort vote, the connection step, the work, and the
// failure policy behind it. It holds all that an instance holds.
class CallFrame {
 public:
  // Takes the current context and its user. Raises what these raise.
  CallFrame();

  // Runs `work(call, result)` as one call on the data source and gives the result, which starts as its type's empty
  // value: False, 0, the empty text or the null reference.
  template <typename Result, typename Work>
  Result Run(const Text& dsn, OnFailure on_failure, Work&& work, Opening opening = Opening::AbortVote) {
    Result result{};
    const EndOfCall end(*this);
    try {
      OpenDataContext(dsn);
      if (opening == Opening::AbortVote) context_->VoteAbort();
      Call call(*context_, context_->GetConnection());
      work(call, result);
    } catch (...) {
      const Error error = CurrentError();
      if constexpr (std::is_same_v<Result, Ref<Dictionary>>) {
        if (on_failure == OnFailure::ReportInResult) Report(error, result);
      }
      if (ResetsResult(on_failure)) result = Result{};
      Vote(on_failure, error);
    }
    return result;
  }

 private:
  // Undoes, on return from the call, what no complete vote stands for.
  class EndOfCall {
   public:
    explicit EndOfCall(CallFrame& frame) : frame_(frame) {}
    EndOfCall(const EndOfCall&) = delete;
    EndOfCall& operator=(const EndOfCall&) = delete;
    ~EndOfCall() { frame_.context_->EndCall(); }

   private:
    CallFrame& frame_;
  };

  void OpenDataContext(const Text& dsn);
  void Vote(OnFailure on_failure, const Error& error);
  static bool ResetsResult(OnFailure on_failure);
  static void Report(const Error& error, Ref<Dictionary>& result);

  Ref<UserInfo> user_info_;
  Ref<DataContext> context_;
};

// A refusal in an operation's own words; it takes the operation's failure path like any other failure.
[[noreturn]] void Refuse(std::string_view source, std::string_view description);

}  // namespace rebate
