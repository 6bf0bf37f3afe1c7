#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "platform/login/call_observer.h"
#include "tests/scratch_folder.h"

namespace rebate {

// A fresh embedded account with the component's tables and rebate types, gone when the test ends.
class TestAccount {
 public:
  TestAccount();

  Text dsn() const { return "Data Source=" + path_ + ";AppUser=1001"; }
  // A file beside the account.
  Text File(const Text& name) const { return folder_.File(name); }

  // Runs a text outside any call, unseen by the observer.
  void Execute(std::string_view text) const;

  // The rows of a query: fields joined with '|', rows with a line break, Null as NULL.
  Text Rows(std::string_view query) const;

  // Everything that the component may write, as text.
  Text Everything() const;

 private:
  ScratchFolder folder_;
  Text path_;
};

// Records what the calls of this thread do to the world, and can refuse a statement or a complete vote.
class Trace : public CallObserver {
 public:
  Trace() { SetCallObserver(this); }
  ~Trace() override { SetCallObserver(nullptr); }

  // The statement with this number, counted from 1 from now on, is refused.
  void RefuseStatement(int number) {
    statements_ = 0;
    refused_ = number;
  }
  int statements() const { return statements_; }
  // The next complete vote is refused, as where a commit fails.
  void RefuseCommit(bool refuse) { refuses_commit_ = refuse; }

  // What was recorded since the last time: "open", "abort", "connection", "complete", a statement's text, or
  // "PROGID.Member".
  std::vector<Text> Take() { return std::exchange(events_, {}); }
  // The statements among it.
  std::vector<Text> TakeStatements();

  void Opening(std::string_view) override { events_.push_back("open"); }
  void VotingAbort() override { events_.push_back("abort"); }
  void VotingComplete() override;
  void Connecting() override { events_.push_back("connection"); }
  void Executing(std::string_view text) override;
  void Refused(const Error&) override {}
  void CallingComponent(std::string_view program_id, std::string_view member) override {
    events_.push_back(Text(program_id) + "." + Text(member));
  }

 private:
  [[noreturn]] static void Refuse();

  std::vector<Text> events_;
  int statements_ = 0;
  int refused_ = 0;
  bool refuses_commit_ = false;
};

// Calls `operation` with its first statement refused, then its second, until it runs through. Each refused call must
// answer false and leave everything as it was; the last must answer true.
void ExpectAllOrNothing(const TestAccount& account, const std::function<bool()>& operation);

// A Dictionary out of keys and values, a Vector out of values.
Ref<Dictionary> Row(std::initializer_list<std::pair<const char*, Variant>> entries);
Ref<Vector> List(std::initializer_list<Variant> items);

}  // namespace rebate
