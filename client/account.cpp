#include "client/account.h"

#include <CLI/App.hpp>
#include <algorithm>

#include "calls/call_trace.h"
#include "platform/automation/class_objects.h"
#include "platform/automation/conversion.h"
#include "platform/database/connect.h"

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
  verb.add_option("--dsn", options.dsn,
                  "The account: a file such as shop.db, or Key=Value;… text such as\nData "
                  "Source=shop.db;AppUser=1002;Rights=8,1")
      ->envname("REBATE_DSN")
      ->required();
  verb.add_flag("--json", options.json, "Print JSON instead of tables");
}

Account::Account(Text dsn) : dsn_(std::move(dsn)) {
  const DataSource source = DataSource::Parse(dsn_);
  connection_ = Connect(source);
  app_user_ = source.app_user;
  for (const char* manager : {"BaseInfoMgr", "RebateRuleMgr"}) {
    managers_.push_back(CreateObject(Text("TALMRebateRuleMgr.") + manager));
  }
}

Variant Account::Call(std::string_view operation, std::vector<Variant> arguments) {
  return CallByRef(operation, arguments);
}

Variant Account::CallByRef(std::string_view operation, std::vector<Variant>& arguments) {
  const auto offers = [&](const ObjectRef& manager) { return manager->Members().Find(operation) != nullptr; };
  const ObjectRef manager = *std::find_if(managers_.begin(), managers_.end() - 1, offers);
  const std::vector<Parameter>& parameters = manager->Members().Find(operation)->parameters;
  const auto dsn_at =
      std::find_if(parameters.begin(), parameters.end(), [](const Parameter& p) { return p.name == "sDsn"; }) -
      parameters.begin();
  RefusalObserver observer(refusal_);
  const TracedThread traced(&observer);
  arguments.insert(arguments.begin() + dsn_at, dsn_);
  const Variant result = manager->Invoke(operation, arguments);
  arguments.erase(arguments.begin() + dsn_at);
  return result;
}

std::optional<Long> Account::QueryNumber(std::string_view text) const {
  const RecordsetRef rows = Query(text);
  if (rows->Eof() || rows->FieldValue(std::size_t{0}).IsNull()) return std::nullopt;
  return ToLong(rows->FieldValue(std::size_t{0}));
}

void Account::Change(const std::vector<Text>& statements) {
  Call("UpdateBatch", {Variant::Array({statements.begin(), statements.end()})});
}

void Account::JoinCalls() {
  joint_ = std::make_unique<JointWork>(dsn_);
  connection_ = joint_->connection();
}

void Account::CommitCalls() {
  joint_->Commit();
  joint_ = nullptr;
}

void Account::UndoCalls() {
  joint_ = nullptr;
}

void Account::ThrowFailure(const Text& otherwise) const {
  if (refusal_) throw Error(*refusal_);
  throw Error(error_number::kInvalidCall, "rebate", otherwise);
}

}  // namespace rebate
