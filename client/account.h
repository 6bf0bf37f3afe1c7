#pragma once

#include <optional>
#include <vector>

#include "platform/automation/dispatch.h"
#include "platform/automation/error.h"

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
// account has seen which statement was refused.
class Account {
 public:
  // Raises, naming the path or the server and what to do, where the account can't be opened.
  explicit Account(Text dsn);

  // Calls `BaseInfoMgr.<member>` with the data source, then `arguments`. Raises what the operation lets through.
  Variant Call(std::string_view member, std::vector<Variant> arguments);

  // The last error that a statement of the last call met, if any.
  const std::optional<Error>& refusal() const { return refusal_; }
  // Raises the refusal of the last call; without one, `otherwise`.
  [[noreturn]] void ThrowFailure(const Text& otherwise) const;

 private:
  Text dsn_;
  ObjectRef manager_;
  std::optional<Error> refusal_;
};

}  // namespace rebate
