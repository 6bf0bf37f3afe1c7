#pragma once

#include <string_view>

#include "platform/automation/error.h"
#include "platform/values/types.h"

namespace rebate {

// Sees, on the thread that it is set for, what the calls do to the world, in order. What `Executing` raises takes the
// place of the statement, which is then not sent.
class CallObserver {
 public:
  virtual ~CallObserver() = default;
  virtual void Opening(std::string_view dsn) = 0;  // without passwords
  virtual void VotingAbort() = 0;
  virtual void VotingComplete() = 0;
  virtual void Connecting() = 0;
  virtual void Executing(std::string_view text) = 0;
  // The last statements, so many, don't run: they were kept back together with one that is refused.
  virtual void Withdrawing(std::size_t) {}
  virtual void Refused(const Error& error) = 0;  // the statement that was announced last and isn't withdrawn
  virtual void CallingComponent(std::string_view program_id, std::string_view member) = 0;
  virtual void Swallowing(const Error&) {}  // the operation failed, and its answer doesn't tell why
  virtual void StoringScheme(Long) {}       // the head of a scheme was written under this id
};

// The calling thread's observer, null at the start. The caller keeps it alive while it is set.
void SetCallObserver(CallObserver* observer);
CallObserver* TheCallObserver();

}  // namespace rebate
