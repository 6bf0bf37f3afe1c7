#pragma once

#include <array>
#include <memory>
#include <vector>

#include "platform/database/embedded/account_catalog.h"
#include "platform/database/row_set.h"
#include "platform/database/tsql/eval/program.h"
#include "platform/database/tsql/print/command.h"

namespace rebate {

// So many rows the inserts of several texts can share one statement for, the most first.
inline constexpr std::array<std::size_t, 2> kRowsTogether = {64, 8};

// A statement as it was printed and prepared, and the memory for the texts that are bound to it.
struct PreparedCommand {
  tsql::Command command;
  StatementHandle statement;                // null where the command needs no row
  Ref<FieldNames> fields;                   // of a query
  AccountCatalog::Making making;            // of a select into
  std::vector<tsql::Program> calculations;  // of the command's values, or of those of its row by row update
  StatementHandle select_rows, remove_row, insert_row;
  std::array<StatementHandle, kRowsTogether.size()> together;  // of an insert: of as many rows as kRowsTogether says
  std::uint64_t epoch = 0;                                     // of the catalog, when it was last known to be good
  tsql::TextPool texts;
};

// One statement of a batch with what it was prepared to, on its first run.
struct Step {
  const tsql::Statement* statement = nullptr;
  std::vector<std::unique_ptr<PreparedCommand>> commands;  // the statement itself, or the values and conditions in it
  std::vector<Step> then;                                  // or the body of a while
  std::vector<Step> otherwise;
};

// A batch ready to run, as often as a text of its template comes.
struct PreparedBatch {
  // Parses the batch; raises what the parser raises.
  explicit PreparedBatch(std::string_view text, const std::vector<tsql::LiteralToken>& literals);

  // Whether it is good for a batch of its template with these literals.
  bool Matches(std::span<const tsql::LiteralToken> literals) const;
  // From now on it is good only for batches that have the same text in the literal's place.
  void FixLiteral(std::size_t literal, std::span<const tsql::LiteralToken> literals);

  // Whether it has run before and is one insert, of one row of literals: several can run together.
  bool InsertsRow() const;

  struct FixedLiteral {
    std::size_t literal;
    Text text;
  };

  tsql::Batch batch;
  std::vector<Step> steps;
  tsql::VariableTypes variables;
  std::vector<FixedLiteral> fixed_literals;
  bool reads_only = true;  // selects and nothing else
  bool keep = true;        // false for definitions, which come once
  std::uint64_t last_used = 0;
};

using PreparedBatchPtr = std::shared_ptr<PreparedBatch>;

// The batches of a connection, by their templates. Those used least recently go where there are too many.
class BatchCache {
 public:
  static constexpr std::size_t kCapacity = 512;

  // The prepared batch for the text, the one that is there or a new one, and the text's literals, which point into it.
  // Raises what the lexer and the parser raise.
  PreparedBatchPtr Get(std::string_view text, std::vector<tsql::LiteralToken>& literals);

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
  };

  // A batch that came lately, and what its texts look like.
  struct Recent {
    tsql::TextShape shape;
    PreparedBatchPtr batch;
  };

  PreparedBatchPtr FindRecent(std::string_view text, std::vector<tsql::LiteralToken>& literals);
  PreparedBatchPtr FindOrMake(std::string_view text);
  void MakeRoom();

  std::array<Recent, 4> recent_;
  std::size_t next_recent_ = 0;
  tsql::BatchTemplate template_;
  std::unordered_map<Text, std::vector<PreparedBatchPtr>, Hash, std::equal_to<>> batches_;
  std::size_t count_ = 0;
  std::uint64_t clock_ = 0;
};

}  // namespace rebate
