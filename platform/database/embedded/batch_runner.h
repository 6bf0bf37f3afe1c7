#pragma once

#include "platform/database/connection.h"
#include "platform/database/embedded/prepared_batch.h"
#include "platform/database/embedded/row_update.h"
#include "platform/database/embedded/session.h"
#include "platform/database/embedded/variables.h"
#include "platform/database/row_set.h"

namespace rebate {

// Runs the statements of one text, in order: they share its variables, its result and its messages.
class BatchRunner {
 public:
  // Messages go to `messages`; where there is a listener, it gets them instead, and all row sets and counts.
  BatchRunner(Session& session, std::vector<Text>& messages, BatchListener* listener = nullptr)
      : session_(session), messages_(messages), listener_(listener) {}

  // Runs the batch with these literals. Raises the error of the first statement that is refused. Gives false where the
  // text ends here.
  bool Run(PreparedBatch& batch, std::span<const tsql::LiteralToken> literals);

  // A text of a batch that InsertsRow.
  struct Row {
    PreparedBatch* batch;
    std::span<const tsql::LiteralToken> literals;
  };
  // Runs texts whose statements differ in nothing but how their values are written. Raises an error where one is
  // refused.
  void RunInserts(std::span<const Row> rows);

  // The first row set that a statement gave; null where none did, or a listener got it.
  const Ref<RowSet>& result() const { return result_; }

 private:
  enum class Flow { Next, Break, Continue, Return };
  struct Visitor;

  Flow RunSteps(std::vector<Step>& steps);
  Flow RunStep(Step& step);

  // The step's command of the number, made by `make` and prepared: anew where what it uses has changed.
  template <typename Make>
  PreparedCommand& Prepared(Step& step, std::size_t number, const Make& make);
  bool IsGood(PreparedCommand& command);

  int StepOnce(PreparedCommand& prepared, sqlite3_stmt* statement);
  [[noreturn]] void RaiseFailure(PreparedCommand& prepared, sqlite3_stmt* statement, int result);
  void BindParameters(PreparedCommand& prepared, sqlite3_stmt* statement,
                      const std::vector<tsql::Parameter>& parameters);
  // Binds from `?first` on.
  void BindFrom(int first, PreparedCommand& prepared, sqlite3_stmt* statement,
                const std::vector<tsql::Parameter>& parameters);
  // The number of a whole one; the text of an amount that is stored as it is written.
  std::optional<std::int64_t> IntegerOf(const tsql::Parameter& parameter) const;
  std::optional<std::string_view> KeyOf(const tsql::Parameter& parameter) const;
  tsql::Value ParameterValue(const tsql::Parameter& parameter, tsql::TextPool& pool);
  tsql::Value SystemValueOf(const tsql::Parameter& parameter, tsql::TextPool& pool);

  void Say(Text message);
  bool Holds(PreparedCommand& prepared);
  void RunQuery(PreparedCommand& prepared);
  void RunAssign(PreparedCommand& prepared);
  void RunChange(PreparedCommand& prepared);
  void RunInsert(PreparedCommand& prepared);
  // As many rows as the size says, in one statement; false where they are to run one by one.
  bool RunTogether(std::span<const Row> rows, std::size_t size);
  PreparedCommand& PreparedInsert(const Row& row);
  void RunSelectInto(PreparedCommand& prepared);
  // The value of one calculation over the row on which the statement stands, its columns counted from `first`.
  tsql::Value Calculated(PreparedCommand& prepared, std::size_t number, const tsql::RowValue& value, sqlite3_stmt* row,
                         const std::vector<tsql::DataType>& types, int first);
  // The update of a row at a time.
  void RunRowUpdate(PreparedCommand& prepared);
  void WriteRows(PreparedCommand& prepared, const std::vector<ChangedRow>& rows);

  // A value of the step by its number: as text, or as a whole number; nothing for Null.
  std::optional<Text> TextValue(Step& step, std::size_t number, const tsql::Expression& expression);
  std::optional<std::int64_t> NumberValue(Step& step, std::size_t number, const tsql::Expression& expression);

  Session& session_;
  std::vector<Text>& messages_;
  BatchListener* listener_;
  PreparedBatch* batch_ = nullptr;
  std::span<const tsql::LiteralToken> literals_;
  Variables variables_;
  Ref<RowSet> result_;
};

}  // namespace rebate
