#pragma once

#include <vector>

#include "service/call_frame.h"

namespace rebate {

// Texts that are gathered and then run in order. The first that is refused ends the run.
class StatementList {
 public:
  // An empty text is none.
  void Append(Text statement) {
    if (!statement.empty()) statements_.push_back(std::move(statement));
  }
  // Runs the statements and leaves the list empty.
  void Run(Call& call) {
    call.ExecuteEach(statements_);
    statements_.clear();
  }

 private:
  std::vector<Text> statements_;
};

// Runs what `gather(list)` appends, as if each text ran when it is appended: where the gathering fails, those in front
// of the failure have run.
template <typename Gather>
void RunGathered(Call& call, const Gather& gather) {
  StatementList statements;
  try {
    gather(statements);
  } catch (...) {
    statements.Run(call);
    throw;
  }
  statements.Run(call);
}

}  // namespace rebate
