#include "client/account.h"

#include <CLI/App.hpp>

#include "client/call_trace.h"
#include "platform/automation/class_objects.h"
#include "platform/login/data_source.h"

namespace rebate {
namespace {

// Remembers the last refused statement.
class RefusalObserver : public CallObserver {
 public:
  explicit RefusalObserver(std::optional<Error>& refusal) : refusal_(refusal) { refusal_.reset(); }

  void Opening(std::string_view) override {}
  void VotingAbort() override {}
  void VotingComplete() override {}
  void Connecting() override {}
  void Executing(std::string_view) override {}
  void Refused(const Error& error) override { refusal_ = error; }
  void CallingComponent(std::string_view, std::string_view) override {}

 private:
  std::optional<Error>& refusal_;
};

}  // namespace

void AddAccountOptions(CLI::App& verb, AccountOptions& options) {
  verb.add_option("--dsn", options.dsn, "The account: a file such as shop.db, or Key=Value;… text")
      ->envname("REBATE_DSN")
      ->required();
  verb.add_flag("--json", options.json, "Print JSON instead of tables");
}

Account::Account(Text dsn) : dsn_(std::move(dsn)) {
  Connect(DataSource::Parse(dsn_));
  manager_ = CreateObject("TALMRebateRuleMgr.BaseInfoMgr");
}

Variant Account::Call(std::string_view member, std::vector<Variant> arguments) {
  RefusalObserver observer(refusal_);
  const TracedThread traced(&observer);
  arguments.insert(arguments.begin(), dsn_);
  return manager_->Invoke(member, arguments);
}

void Account::ThrowFailure(const Text& otherwise) const {
  if (refusal_) throw Error(*refusal_);
  throw Error(error_number::kInvalidCall, "rebate", otherwise);
}

}  // namespace rebate
