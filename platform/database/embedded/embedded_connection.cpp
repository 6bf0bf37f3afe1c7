#include "platform/database/embedded/embedded_connection.h"

#include "platform/database/embedded/batch_runner.h"
#include "platform/database/embedded/insert_group.h"
#include "platform/database/tsql/parse/batch_splitter.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

RecordsetRef ResultOf(const BatchRunner& runner) {
  return runner.result() ? OpenRecordset(runner.result()) : RecordsetRef();
}

// A text that begins with a plain select, with a `top 1` in it; any other text as it is.
Text WithTopOne(std::string_view text) {
  const auto word_of = [](std::string_view from) {
    return from.substr(0, std::min(from.find_first_of(" \t\r\n("), from.size()));
  };
  const std::string_view select = word_of(text);
  const std::string_view behind = text.substr(select.size());
  const std::string_view next = word_of(TrimWhite(behind));
  const bool plain = EqualsIgnoreCase(select, "select") && !EqualsIgnoreCase(next, "top") &&
                     !EqualsIgnoreCase(next, "distinct") && !EqualsIgnoreCase(next, "all");
  return plain ? Text(select) + " top 1" + Text(behind) : Text(text);
}

}  // namespace

RecordsetRef EmbeddedConnection::ExecuteForFirst(std::string_view text) {
  return Run(WithTopOne(text), nullptr);
}

template <typename Work>
auto EmbeddedConnection::Trusting(const Work& work) {
  messages_.clear();
  try {
    return work();
  } catch (const std::bad_alloc&) {
    session_.Distrust();
    throw;
  } catch (const Error& error) {
    if (error.number == database_error::kMemory) session_.Distrust();
    throw;
  }
}

RecordsetRef EmbeddedConnection::Run(std::string_view text, BatchListener* listener) {
  return Trusting([&] { return text.size() > kWholeBatch ? RunParts(text, listener) : RunWhole(text, listener); });
}

void EmbeddedConnection::ExecuteEach(std::span<const Text> texts, std::size_t& done) {
  done = 0;
  Trusting([&] {
    BatchRunner runner(session_, messages_);
    InsertGroup group(session_, runner, done);
    for (const Text& text : texts) {
      PreparedBatchPtr batch;
      try {
        if (text.size() <= kWholeBatch) batch = cache_.Get(text, literals_);
      } catch (...) {
        group.Run();
        throw;
      }
      if (batch && group.Take(batch, literals_)) continue;
      if (batch) {
        BatchRunner(session_, messages_).Run(*batch, literals_);
      } else {
        group.Run();
        RunParts(text, nullptr);
      }
      ++done;
    }
    group.Run();
  });
}

RecordsetRef EmbeddedConnection::RunWhole(std::string_view text, BatchListener* listener) {
  const PreparedBatchPtr batch = cache_.Get(text, literals_);
  BatchRunner runner(session_, messages_, listener);
  runner.Run(*batch, literals_);
  return ResultOf(runner);
}

std::vector<Text> EmbeddedConnection::FileFaults() {
  session_.NeedTransaction(true);
  std::vector<Text> faults;
  try {
    RowQuery rows(session_.database(), session_.path(), "PRAGMA main.integrity_check");
    while (rows.Next()) faults.push_back(rows.TextAt(0));
  } catch (const Error& error) {
    // Some damage ends the check itself.
    if (error.number != database_error::kConnection) throw;
    faults.push_back(error.description);
  }
  if (faults == std::vector<Text>{"ok"}) faults.clear();
  return faults;
}

RecordsetRef EmbeddedConnection::RunParts(std::string_view text, BatchListener* listener) {
  struct Part {
    PreparedBatchPtr batch;
    std::size_t first_literal;
    std::size_t literal_count;
  };
  std::vector<Part> parts;
  std::vector<tsql::LiteralToken> literals;
  bool reads_only = true;
  for (const std::string_view part : tsql::SplitBatch(text)) {
    parts.push_back({cache_.Get(part, literals_), literals.size(), literals_.size()});
    literals.insert(literals.end(), literals_.begin(), literals_.end());
    reads_only = reads_only && parts.back().batch->reads_only;
  }
  session_.NeedTransaction(reads_only);
  BatchRunner runner(session_, messages_, listener);
  std::size_t done = 0;
  InsertGroup group(session_, runner, done);
  for (const Part& part : parts) {
    const auto own = std::span(literals).subspan(part.first_literal, part.literal_count);
    // A listener hears of each statement.
    if (listener == nullptr && group.Take(part.batch, own)) continue;
    if (!runner.Run(*part.batch, own)) break;
  }
  group.Run();
  return ResultOf(runner);
}

}  // namespace rebate
