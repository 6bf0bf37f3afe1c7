#include "platform/database/embedded/insert_group.h"

#include <algorithm>

namespace rebate {
namespace {

// The rows that the texts of one template insert.
struct Rows {
  PreparedBatch* batch;
  std::vector<BatchRunner::Literals> literals;
};

// Those of the last text come last: what it leaves in @@identity stays there.
Rows& RowsOf(std::vector<Rows>& all, PreparedBatch* batch) {
  const auto found = std::find_if(all.begin(), all.end(), [&](const Rows& rows) { return rows.batch == batch; });
  if (found == all.end()) return all.emplace_back(Rows{batch, {}});
  std::rotate(found, found + 1, all.end());
  return all.back();
}

}  // namespace

bool InsertGroup::Take(const PreparedBatchPtr& batch, std::span<const tsql::LiteralToken> literals) {
  if (!batch->InsertsRow() || !session_.InUnit()) {
    Run();
    return false;
  }
  waiting_.push_back({batch, literals_.size(), literals.size()});
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
  literals_.clear();
}

bool InsertGroup::RunTogether() {
  if (waiting_.size() < kRowsTogether.back()) return false;
  std::vector<Rows> all;
  for (const Waiting& text : waiting_) RowsOf(all, text.batch.get()).literals.push_back(LiteralsOf(text));
  session_.NeedTransaction(false);
  const AccountCatalog::Counters counters = session_.catalog().MarkCounters();
  try {
    session_.Atomically([&] {
      for (const Rows& rows : all) runner_.RunInserts(*rows.batch, rows.literals);
    });
    return true;
  } catch (const Error& error) {
    if (error.number != database_error::kStatement && error.number != database_error::kConstraint) throw;
    session_.catalog().ReturnTo(counters);
    return false;
  }
}

}  // namespace rebate
