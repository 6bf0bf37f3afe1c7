#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "calls/call_control.h"
#include "platform/automation/dispatch.h"
#include "platform/automation/error.h"
#include "platform/database/connection.h"
#include "platform/login/joint_work.h"

namespace CLI {
class App;
}

namespace rebate {

// The options that every verb on an account takes.
struct AccountOptions {
  Text dsn;
  bool json = false;
};
void AddAccountOptions(CLI::App& verb, AccountOptions& options);

// An account, worked on through the component's operations. Where an operation keeps to itself why it failed, the
// account has seen which statement was refused. Where the data source names rights, they hold for its user.
class Account {
 public:
  // Raises, naming the path or the server and what to do, where the account can't be opened.
  explicit Account(Text dsn);

  // Calls the operation of either class with `arguments`, the data source put in where it takes it. Raises what the
  // operation lets through.
  Variant Call(std::string_view operation, std::vector<Variant> arguments);
  // Likewise; behind the call `arguments` holds the by-ref ones as they then stand.
  Variant CallByRef(std::string_view operation, std::vector<Variant>& arguments);

  // The rows of a query of the tool's own, outside of any operation. Raises where it is refused.
  RecordsetRef Query(std::string_view text) const { return connection_->Execute(text); }
  // The first value of such a query's first row as an integer, nothing where there is no row.
  std::optional<Long> QueryNumber(std::string_view text) const;
  // Runs statements of the tool's own as one unit of work. Raises, all of it undone, where one is refused.
  void Change(const std::vector<Text>& statements);

  // Makes the calls from here on one unit of work, in which queries stand, too; without an end it is undone. Where a
  // call undoes work of its own, that of all is undone, and later ones store nothing.
  void JoinCalls();
  // Ends it: all that the calls stored stands, or raises, nothing standing; or nothing stands.
  void CommitCalls();
  void UndoCalls();
  // Whether the work of joined calls is undone, because one of them was refused.
  bool IsUndone() const { return joint_ && joint_->IsUndone(); }

  // The id of the user whom the data source names as logged in.
  Long app_user() const { return app_user_; }

  // The last error that a statement of the last call met, if any.
  const std::optional<Error>& refusal() const { return refusal_; }
  // Raises the refusal of the last call; without one, `otherwise`.
  [[noreturn]] void ThrowFailure(const Text& otherwise) const;

 private:
  Text dsn_;
  CallControl control_;
  Long app_user_;
  ConnectionRef connection_;
  std::unique_ptr<JointWork> joint_;  // null where each call stands for itself
  std::vector<ObjectRef> managers_;
  std::optional<Error> refusal_;
};

}  // namespace rebate
