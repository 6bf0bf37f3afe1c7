#pragma once

#include "platform/database/connection.h"
#include "platform/database/embedded/prepared_batch.h"
#include "platform/database/embedded/session.h"
#include "platform/database/self_check.h"

namespace rebate {

// A connection to an account in a file.
class EmbeddedConnection : public Connection, public SelfCheckingStore {
 public:
  EmbeddedConnection(DatabaseHandle database, Text path) : session_(std::move(database), std::move(path)) {}

  RecordsetRef Execute(std::string_view text) override { return Run(text, nullptr); }
  RecordsetRef ExecuteForFirst(std::string_view text) override;
  void ExecuteFor(std::string_view text, BatchListener& listener) override { Run(text, &listener); }
  bool IsSound() const override { return session_.sound(); }
  std::vector<Text> TakeMessages() override { return std::exchange(messages_, {}); }
  std::vector<Text> FileFaults() override;
  void BeginWork() override { session_.BeginWork(); }
  void CommitWork() override { session_.CommitWork(); }
  void RollbackWork() noexcept override { session_.RollbackWork(); }

 private:
  // A text longer than this is looked up statement by statement: a long batch seldom comes twice, its statements do.
  static constexpr std::size_t kWholeBatch = 2048;

  RecordsetRef Run(std::string_view text, BatchListener* listener);
  RecordsetRef RunWhole(std::string_view text, BatchListener* listener);
  RecordsetRef RunParts(std::string_view text, BatchListener* listener);

  Session session_;
  BatchCache cache_;
  tsql::BatchTemplate template_;
  std::vector<Text> messages_;
};

}  // namespace rebate
