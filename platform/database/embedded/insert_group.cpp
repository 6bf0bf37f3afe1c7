#include "platform/database/embedded/insert_group.h"

#include <utility>

namespace rebate {
namespace {

const tsql::Command& InsertOf(const PreparedBatch& batch) {
  return batch.steps.front().commands.front()->command;
}

}  // namespace

std::optional<std::size_t> InsertGroup::StreamOf(PreparedBatch& batch) {
  const tsql::Command& insert = InsertOf(batch);
  for (std::size_t i = 0; i < streams_.size(); ++i) {
    const tsql::Command& other = InsertOf(*streams_[i]);
    if (streams_[i] == &batch || insert.sql.text == other.sql.text) return i;
    // Its rows would get their numbers out of turn.
    if (insert.target->SqlName() == other.target->SqlName()) return std::nullopt;
  }
  streams_.push_back(&batch);
  return streams_.size() - 1;
}

bool InsertGroup::Take(const PreparedBatchPtr& batch, std::span<const tsql::LiteralToken> literals) {
  if (!batch->InsertsRow() || !session_.InUnit()) {
    Run();
    return false;
  }
  std::optional<std::size_t> stream = StreamOf(*batch);
  if (!stream) {
    Run();
    // What has run may have been prepared anew, and otherwise.
    if (!batch->InsertsRow()) return false;
    stream = StreamOf(*batch);
  }
  waiting_.push_back({batch, literals_.size(), literals.size(), *stream});
  literals_.insert(literals_.end(), literals.begin(), literals.end());
  if (waiting_.size() == kMostWaiting) Run();
  return true;
}

void InsertGroup::Run() {
  if (waiting_.empty()) return;
  if (RunTogether()) {
    done_ += waiting_.size();
  } else {
    for (const Waiting& text : waiting_) {
      runner_.Run(*text.batch, LiteralsOf(text));
      ++done_;
    }
  }
  waiting_.clear();
  streams_.clear();
  literals_.clear();
}

bool InsertGroup::RunTogether() {
  if (waiting_.size() < kRowsTogether.back()) return false;
  std::vector<std::vector<BatchRunner::Row>> rows(streams_.size());
  for (const Waiting& text : waiting_) rows[text.stream].push_back({text.batch.get(), LiteralsOf(text)});
  // Those of the last text come last: what it leaves in @@identity stays there.
  std::swap(rows.back(), rows[waiting_.back().stream]);
  session_.NeedTransaction(false);
  const AccountCatalog::Counters counters = session_.catalog().MarkCounters();
  const std::optional<std::int64_t> identity = session_.identity;
  const std::int64_t row_count = session_.row_count;
  try {
    session_.Atomically([&] {
      for (const std::vector<BatchRunner::Row>& stream : rows) runner_.RunInserts(stream);
    });
    return true;
  } catch (const Error& error) {
    if (error.number != database_error::kStatement && error.number != database_error::kConstraint) throw;
    session_.catalog().ReturnTo(counters);
    session_.identity = identity;
    session_.row_count = row_count;
    return false;
  }
}

}  // namespace rebate
