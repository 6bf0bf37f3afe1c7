#include "platform/database/embedded/embedded_connection.h"

#include "platform/database/embedded/batch_runner.h"
#include "platform/database/tsql/batch_splitter.h"

namespace rebate {
namespace {

RecordsetRef ResultOf(const BatchRunner& runner) {
  return runner.result() ? OpenRecordset(runner.result()) : RecordsetRef();
}

}  // namespace

RecordsetRef EmbeddedConnection::Execute(std::string_view text) {
  if (text.size() > kWholeBatch) return ExecuteParts(text);
  ReadShape(text, shape_);
  const ProgramPtr program = cache_.Get(text, shape_);
  BatchRunner runner(session_);
  runner.Run(*program, shape_.literals);
  return ResultOf(runner);
}

RecordsetRef EmbeddedConnection::ExecuteParts(std::string_view text) {
  struct Part {
    ProgramPtr program;
    std::size_t first_literal;
    std::size_t literal_count;
  };
  std::vector<Part> parts;
  std::vector<tsql::LiteralToken> literals;
  bool reads_only = true;
  for (const std::string_view part : tsql::SplitBatch(text)) {
    ReadShape(part, shape_);
    parts.push_back({cache_.Get(part, shape_), literals.size(), shape_.literals.size()});
    literals.insert(literals.end(), shape_.literals.begin(), shape_.literals.end());
    reads_only = reads_only && parts.back().program->reads_only;
  }
  session_.NeedTransaction(reads_only);
  BatchRunner runner(session_);
  for (const Part& part : parts) {
    if (!runner.Run(*part.program, std::span(literals).subspan(part.first_literal, part.literal_count))) break;
  }
  return ResultOf(runner);
}

}  // namespace rebate
