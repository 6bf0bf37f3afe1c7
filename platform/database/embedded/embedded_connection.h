#pragma once

#include "platform/database/connection.h"
#include "platform/database/embedded/prepared_batch.h"
#include "platform/database/embedded/session.h"
#include "platform/database/self_check.h"

namespace rebate {

// A connection to an account in a file.
class EmbeddedConnection : public Connection, public SelfCheckingStore {
 public:
  EmbeddedConnection(DatabaseHandle database, Text path, std::chrono::milliseconds lock_wait)
      : session_(std::move(database), std::move(path), lock_wait) {}

  RecordsetRef Execute(std::string_view text) override { return Run(text, nullptr); }
  RecordsetRef ExecuteForFirst(std::string_view text) override;
  void ExecuteFor(std::string_view text, BatchListener& listener) override { Run(text, &listener); }
  void ExecuteEach(std::span<const Text> texts, std::size_t& done) override;
  bool IsSound() const override { return session_.sound(); }
  std::vector<Text> TakeMessages() override { return std::exchange(messages_, {}); }
  std::vector<Text> FileFaults() override;
  void BeginWork() override { session_.BeginWork(); }
  void CommitWork() override { session_.CommitWork(); }
  void RollbackWork() noexcept override { session_.RollbackWork(); }

 private:
  // A text longer than this is looked up statement by statement: a long batch seldom comes twice, its statements do.
  static constexpr std::size_t kWholeBatch = 2048;

  // Runs `work`, and gives the connection up where it runs out of memory.
  template <typename Work>
  auto Trusting(const Work& work);
  RecordsetRef Run(std::string_view text, BatchListener* listener);
  RecordsetRef RunWhole(std::string_view text, BatchListener* listener);
  RecordsetRef RunParts(std::string_view text, BatchListener* listener);

  Session session_;
  BatchCache cache_;
  std::vector<tsql::LiteralToken> literals_;  // of the text that is read
  std::vector<Text> messages_;
};

}  // namespace rebate
