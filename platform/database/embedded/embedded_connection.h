#pragma once

#include "platform/database/connection.h"
#include "platform/database/embedded/program.h"
#include "platform/database/embedded/session.h"

namespace rebate {

// A connection to an account in a file.
class EmbeddedConnection : public Connection {
 public:
  EmbeddedConnection(DatabaseHandle database, Text path) : session_(std::move(database), std::move(path)) {}

  RecordsetRef Execute(std::string_view text) override;
  void BeginWork() override { session_.BeginWork(); }
  void CommitWork() override { session_.CommitWork(); }
  void RollbackWork() noexcept override { session_.RollbackWork(); }

 private:
  // A text longer than this is looked up statement by statement: a long batch seldom comes twice, its statements do.
  static constexpr std::size_t kWholeBatch = 2048;

  RecordsetRef ExecuteParts(std::string_view text);

  Session session_;
  ProgramCache cache_;
  tsql::Shape shape_;
};

}  // namespace rebate
