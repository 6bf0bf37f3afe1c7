#pragma once

#include "platform/database/embedded/program.h"
#include "platform/database/embedded/session.h"
#include "platform/database/row_set.h"

namespace rebate {

// Runs the programs of one batch, in order: they share its variables and its result.
class BatchRunner {
 public:
  explicit BatchRunner(Session& session) : session_(session) {}

  // Runs the program with these literals. Raises the error of the first statement that is refused. Gives false where
  // the batch ends here.
  bool Run(Program& program, std::span<const tsql::LiteralToken> literals);

  // The first row set that a statement gave; null where none did.
  const Ref<RowSet>& result() const { return result_; }

 private:
  enum class Flow { Next, Break, Continue, Return };
  struct Variable {
    tsql::DataType type;
    tsql::Value value;
    Text text;
  };
  struct Visitor;

  Flow RunSteps(std::vector<Step>& steps);
  Flow RunStep(Step& step);

  // The step's command, emitted and prepared: anew where what it uses has changed.
  template <typename Emit>
  PreparedCommand& Need(Step& step, const Emit& emit);
  bool IsGood(PreparedCommand& command);
  void PrepareSql(PreparedCommand& prepared);

  void BindParameters(PreparedCommand& prepared);
  tsql::Value ParameterValue(const tsql::Parameter& parameter, Text& scratch, Text& instant);
  // Runs a prepared command, anew emitted by `emit` where another connection has changed the tables under it.
  int StepOnce(PreparedCommand& prepared);
  [[noreturn]] void RaiseFailure(PreparedCommand& prepared, int result);

  bool Holds(PreparedCommand& prepared);
  void RunQuery(PreparedCommand& prepared);
  void AssignRow(PreparedCommand& prepared);
  void RunChange(PreparedCommand& prepared);
  void RunSelectInto(PreparedCommand& prepared);
  void CheckIdentity(const tsql::Command& command) const;
  void NoteIdentity(const tsql::TableInfo& table);
  void Assign(const Text& name, sqlite3_stmt* statement, int column);
  void SetVariable(Step& step, const Text& name, const tsql::Expression& value);
  void SetOption(const tsql::SetOption& option);
  tsql::Surroundings Surround();

  Session& session_;
  Program* program_ = nullptr;
  std::span<const tsql::LiteralToken> literals_;
  std::unordered_map<Text, Variable> variables_;
  Ref<RowSet> result_;
};

}  // namespace rebate
