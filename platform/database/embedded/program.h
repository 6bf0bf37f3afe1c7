#pragma once

#include <memory>
#include <vector>

#include "platform/database/embedded/sqlite_handles.h"
#include "platform/database/tsql/command.h"

namespace rebate {

// A statement as it was emitted and prepared, and the memory for the texts that are bound to it.
struct PreparedCommand {
  tsql::Command command;
  StatementHandle statement;
  std::uint64_t epoch = 0;  // of the catalog, when it was last known to be good
  std::vector<Text> scratch;
};

// One statement of a batch with what it was prepared to, on its first run.
struct Step {
  const tsql::Statement* statement = nullptr;
  std::unique_ptr<PreparedCommand> command;  // or the condition of an if or while
  std::vector<Step> then;                    // or the body of a while
  std::vector<Step> otherwise;
};

// A batch ready to run, as often as a text of its shape comes.
struct Program {
  // Parses the batch; raises what the parser raises.
  explicit Program(std::string_view text, const std::vector<tsql::LiteralToken>& literals);

  // Whether it serves a batch of its shape with these literals.
  bool Serves(std::span<const tsql::LiteralToken> literals) const;
  void Pin(std::size_t literal, std::span<const tsql::LiteralToken> literals);

  struct Pinned {
    std::size_t literal;
    Text text;
  };

  tsql::Batch batch;
  std::vector<Step> steps;
  tsql::VariableTypes variables;
  std::vector<Pinned> pins;
  bool reads_only = true;  // selects and nothing else
  bool keep = true;        // false for definitions, which come once
  std::uint64_t last_used = 0;
};

using ProgramPtr = std::shared_ptr<Program>;

// The programs of a connection, by the shape of their batches. The least recently used one goes where there are too
// many.
class ProgramCache {
 public:
  static constexpr std::size_t kCapacity = 512;

  // The program for the text, whose shape this is: the one that is there, or a new one. Raises what the parser raises.
  ProgramPtr Get(std::string_view text, const tsql::Shape& shape);

 private:
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
  };

  void MakeRoom();

  std::unordered_map<Text, std::vector<ProgramPtr>, Hash, std::equal_to<>> programs_;
  std::size_t count_ = 0;
  std::uint64_t clock_ = 0;
};

}  // namespace rebate
