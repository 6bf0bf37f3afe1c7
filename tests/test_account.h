#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <vector>

#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "platform/login/call_observer.h"

namespace rebate {

// A fresh embedded account with the component's tables and rebate types, gone when the test ends.
class TestAccount {
 public:
  TestAccount();
  ~TestAccount();
  TestAccount(const TestAccount&) = delete;
  TestAccount& operator=(const TestAccount&) = delete;

  Text dsn() const { return "Data Source=" + path_.string() + ";AppUser=1001"; }
  const std::filesystem::path& path() const { return path_; }

  // Runs a text outside any call, unseen by the observer.
  void Execute(std::string_view text) const;

  // The rows of a query: fields joined with '|', rows with a line break, Null as NULL.
  Text Rows(std::string_view query) const;

  // Everything that the component may write, as text.
  Text Everything() const;

 private:
  std::filesystem::path folder_;
  std::filesystem::path path_;
};

// Records what the calls of this thread do to the world, and can refuse a statement.
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

  // What was recorded since the last time: "open", "abort", "connection", "complete", a statement's text, or
  // "PROGID.Member".
  std::vector<Text> Take() { return std::exchange(events_, {}); }
  // The statements among it.
  std::vector<Text> TakeStatements();

  void Opening(std::string_view) override { events_.push_back("open"); }
  void VotingAbort() override { events_.push_back("abort"); }
  void VotingComplete() override { events_.push_back("complete"); }
  void Connecting() override { events_.push_back("connection"); }
  void Executing(std::string_view text) override;
  void Refused(const Error&) override {}
  void CallingComponent(std::string_view program_id, std::string_view member) override {
    events_.push_back(Text(program_id) + "." + Text(member));
  }

 private:
  std::vector<Text> events_;
  int statements_ = 0;
  int refused_ = 0;
};

// Calls `operation` with its first statement refused, then its second, until it runs through. Each refused call must
// answer false and leave everything as it was; the last must answer true.
void ExpectAllOrNothing(const TestAccount& account, const std::function<bool()>& operation);

// A Dictionary out of keys and values, a Vector out of values.
Ref<Dictionary> Row(std::initializer_list<std::pair<const char*, Variant>> entries);
Ref<Vector> List(std::initializer_list<Variant> items);

}  // namespace rebate
