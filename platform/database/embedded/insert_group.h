#pragma once

#include "platform/database/embedded/batch_runner.h"

namespace rebate {

// Texts of one unit of work, each of which inserts a row: they wait for each other, and are then run table by table,
// many rows to a statement. What they leave is what they leave one by one; where one of them is refused, they are run
// so.
class InsertGroup {
 public:
  // `done` grows by the texts that have run.
  InsertGroup(Session& session, BatchRunner& runner, std::size_t& done)
      : session_(session), runner_(runner), done_(done) {}

  // Takes a text that may wait; where this one may not, runs those that do and gives false. Raises the error of the
  // first text that is refused.
  bool Take(const PreparedBatchPtr& batch, std::span<const tsql::LiteralToken> literals);
  // Runs what waits.
  void Run();

 private:
  static constexpr std::size_t kMostWaiting = 512;

  struct Waiting {
    PreparedBatchPtr batch;
    std::size_t first_literal;
    std::size_t literal_count;
    std::size_t stream;
  };
  // The stream to which the batch's rows belong, a new one where its table has none; nothing where it has another.
  std::optional<std::size_t> StreamOf(PreparedBatch& batch);
  bool RunTogether();
  std::span<const tsql::LiteralToken> LiteralsOf(const Waiting& text) const {
    return std::span(literals_).subspan(text.first_literal, text.literal_count);
  }

  Session& session_;
  BatchRunner& runner_;
  std::size_t& done_;
  std::vector<Waiting> waiting_;
  // A stream holds the rows for one table, all by statements that are the same but for how their values are written;
  // here each is known by the first of its batches.
  std::vector<PreparedBatch*> streams_;
  std::vector<tsql::LiteralToken> literals_;
};

}  // namespace rebate
