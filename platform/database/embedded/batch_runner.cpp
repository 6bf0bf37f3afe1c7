#include "platform/database/embedded/batch_runner.h"

#include <algorithm>
#include <unordered_map>

#include "platform/automation/conversion.h"
#include "platform/database/embedded/constraint_error.h"
#include "platform/database/embedded/row_reader.h"
#include "platform/database/tsql/moment.h"

namespace rebate {

using tsql::Parameter;
using tsql::ParameterSource;
using tsql::Value;

bool BatchRunner::Run(Program& program, std::span<const tsql::LiteralToken> literals) {
  program_ = &program;
  literals_ = literals;
  for (const auto& [name, type] : program.variables) variables_[name].type = type;
  return RunSteps(program.steps) == Flow::Next;
}

BatchRunner::Flow BatchRunner::RunSteps(std::vector<Step>& steps) {
  for (Step& step : steps) {
    const Flow flow = RunStep(step);
    if (flow != Flow::Next) return flow;
  }
  return Flow::Next;
}

tsql::Surroundings BatchRunner::Surround() {
  return {session_.catalog(), literals_, program_->variables};
}

// ---- what each kind of statement does ----

struct BatchRunner::Visitor {
  BatchRunner& runner;
  Step& step;

  Flow operator()(const tsql::SelectStatement& node) {
    PreparedCommand& command = runner.Need(step, [&] { return EmitQuery(runner.Surround(), *node.select); });
    if (command.command.kind == tsql::Command::Kind::SelectInto) {
      runner.RunSelectInto(command);
    } else {
      runner.RunQuery(command);
    }
    return Flow::Next;
  }
  Flow operator()(const tsql::Insert& node) {
    runner.RunChange(runner.Need(step, [&] { return EmitInsert(runner.Surround(), node); }));
    return Flow::Next;
  }
  Flow operator()(const tsql::Update& node) {
    runner.RunChange(runner.Need(step, [&] { return EmitUpdate(runner.Surround(), node); }));
    return Flow::Next;
  }
  Flow operator()(const tsql::Delete& node) {
    runner.RunChange(runner.Need(step, [&] { return EmitDelete(runner.Surround(), node); }));
    return Flow::Next;
  }
  Flow operator()(const tsql::Truncate& node) {
    return Define([&] { runner.session_.catalog().Truncate(node.table); });
  }
  Flow operator()(const tsql::CreateTable& node) {
    return Define([&] { runner.session_.catalog().Create(DraftTable(runner.Surround(), node)); });
  }
  Flow operator()(const tsql::CreateIndex& node) {
    return Define([&] { runner.session_.catalog().Create(node); });
  }
  Flow operator()(const tsql::CreateView& node) {
    return Define([&] { runner.session_.catalog().CreateView(node); });
  }
  Flow operator()(const tsql::Drop& node) {
    return Define([&] { runner.session_.catalog().Drop(node); });
  }
  Flow operator()(const tsql::If& node) { return runner.RunSteps(Holds(*node.condition) ? step.then : step.otherwise); }
  Flow operator()(const tsql::While& node) {
    while (Holds(*node.condition)) {
      const Flow flow = runner.RunSteps(step.then);
      if (flow == Flow::Break) break;
      if (flow == Flow::Return) return flow;
    }
    return Flow::Next;
  }
  Flow operator()(const tsql::Declare& node) {
    if (node.value) runner.SetVariable(step, node.variable, *node.value);
    return Flow::Next;
  }
  Flow operator()(const tsql::SetVariable& node) {
    runner.SetVariable(step, node.variable, *node.value);
    return Flow::Next;
  }
  Flow operator()(const tsql::SetOption& node) {
    runner.SetOption(node);
    return Flow::Next;
  }
  Flow operator()(const tsql::Print&) { return Flow::Next; }
  Flow operator()(const tsql::BeginTransaction&) {
    runner.session_.BeginTransaction();
    return Flow::Next;
  }
  Flow operator()(const tsql::CommitTransaction&) {
    runner.session_.CommitTransaction();
    return Flow::Next;
  }
  Flow operator()(const tsql::RollbackTransaction&) {
    runner.session_.RollbackTransaction();
    return Flow::Next;
  }
  Flow operator()(const tsql::Jump& node) { return node.kind == tsql::LoopJump::Break ? Flow::Break : Flow::Continue; }
  Flow operator()(const tsql::Return&) { return Flow::Return; }

  template <typename Work>
  Flow Define(const Work& work) {
    runner.session_.Atomically(work);
    runner.session_.row_count = 0;
    return Flow::Next;
  }
  bool Holds(const tsql::Expression& condition) {
    return runner.Holds(runner.Need(step, [&] { return EmitCondition(runner.Surround(), condition); }));
  }
};

BatchRunner::Flow BatchRunner::RunStep(Step& step) {
  session_.NeedTransaction(program_->reads_only);
  return std::visit(Visitor{*this, step}, step.statement->node);
}

// ---- preparing ----

bool BatchRunner::IsGood(PreparedCommand& prepared) {
  AccountCatalog& catalog = session_.catalog();
  if (prepared.epoch == catalog.epoch()) [[likely]]
    return true;
  for (const tsql::ObjectUse& use : prepared.command.uses) {
    const tsql::TablePtr object = catalog.Find(use.name);
    if (!object || object->signature != use.signature) return false;
  }
  prepared.epoch = catalog.epoch();
  return true;
}

template <typename Emit>
PreparedCommand& BatchRunner::Need(Step& step, const Emit& emit) {
  if (step.command && IsGood(*step.command)) return *step.command;
  AccountCatalog& catalog = session_.catalog();
  catalog.NoticeChanges();
  step.command.reset();
  auto prepared = std::make_unique<PreparedCommand>();
  prepared->command = emit();
  prepared->epoch = catalog.epoch();
  prepared->scratch.resize(prepared->command.parameters.size());
  for (const std::size_t literal : prepared->command.pins) program_->Pin(literal, literals_);
  // The table of a select into isn't there yet.
  if (prepared->command.kind != tsql::Command::Kind::SelectInto) PrepareSql(*prepared);
  step.command = std::move(prepared);
  return *step.command;
}

void BatchRunner::PrepareSql(PreparedCommand& prepared) {
  prepared.statement = Prepare(session_.database(), prepared.command.sql, session_.path());
}

// ---- binding ----

Value BatchRunner::ParameterValue(const Parameter& parameter, Text& scratch, Text& instant) {
  switch (parameter.source) {
    case ParameterSource::Literal:
      return LiteralValue(literals_[parameter.literal], parameter.negated, parameter.type, parameter.purpose, scratch);
    case ParameterSource::Variable:
      return variables_[parameter.variable].value;
    case ParameterSource::Now:
      if (instant.empty()) instant = tsql::FormatMoment(tsql::Now());
      scratch = instant;
      return Value::Of(std::string_view(scratch));
    case ParameterSource::Identity:
      return session_.identity ? Value::Of(*session_.identity) : Value();
    case ParameterSource::RowCount:
      return Value::Of(session_.row_count);
    case ParameterSource::TransactionCount:
      return Value::Of(std::int64_t{session_.TransactionCount()});
    case ParameterSource::ErrorNumber:
      return Value::Of(std::int64_t{0});
    case ParameterSource::ObjectId:
      break;
  }
  const auto id = session_.catalog().ObjectId(LiteralText(literals_[parameter.literal]));
  return id ? Value::Of(*id) : Value();
}

void BatchRunner::BindParameters(PreparedCommand& prepared) {
  Text instant;
  const std::vector<Parameter>& parameters = prepared.command.parameters;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    Bind(prepared.statement.get(), static_cast<int>(i) + 1,
         ParameterValue(parameters[i], prepared.scratch[i], instant));
  }
}

int BatchRunner::StepOnce(PreparedCommand& prepared) {
  const int result = sqlite3_step(prepared.statement.get());
  if (result != SQLITE_ROW && result != SQLITE_DONE) [[unlikely]]
    RaiseFailure(prepared, result);
  return result;
}

void BatchRunner::RaiseFailure(PreparedCommand& prepared, int result) {
  Error error = SqliteError(session_.database(), result, session_.path());
  if ((result & 0xFF) == SQLITE_CONSTRAINT) {
    const int extended = sqlite3_extended_errcode(session_.database());
    error = ConstraintError(extended, error.description, prepared.command, session_.catalog());
  }
  sqlite3_reset(prepared.statement.get());
  session_.NoticeFailure();
  throw error;
}

// ---- running ----

bool BatchRunner::Holds(PreparedCommand& prepared) {
  BindParameters(prepared);
  const RunningStatement running(prepared.statement.get());
  return StepOnce(prepared) == SQLITE_ROW;
}

void BatchRunner::RunQuery(PreparedCommand& prepared) {
  const std::vector<tsql::ResultColumn>& columns = prepared.command.columns;
  BindParameters(prepared);
  const RunningStatement running(prepared.statement.get());
  std::int64_t count = 0;
  if (!columns.empty() && !columns.front().variable.empty()) {
    for (; StepOnce(prepared) == SQLITE_ROW; ++count) AssignRow(prepared);
  } else if (result_) {
    while (StepOnce(prepared) == SQLITE_ROW) ++count;
  } else {
    RowReader reader(prepared.statement.get(), columns);
    for (; StepOnce(prepared) == SQLITE_ROW; ++count) reader.AddRow();
    result_ = reader.rows();
  }
  session_.row_count = count;
}

void BatchRunner::AssignRow(PreparedCommand& prepared) {
  const std::vector<tsql::ResultColumn>& columns = prepared.command.columns;
  for (std::size_t i = 0; i < columns.size(); ++i) {
    Variable& variable = variables_[columns[i].variable];
    sqlite3_stmt* statement = prepared.statement.get();
    const int column = static_cast<int>(i);
    Value value;
    if (sqlite3_column_type(statement, column) == SQLITE_INTEGER) {
      value = Value::Of(std::int64_t{sqlite3_column_int64(statement, column)});
    } else if (sqlite3_column_type(statement, column) == SQLITE_FLOAT) {
      value = Value::Of(sqlite3_column_double(statement, column));
    } else if (sqlite3_column_type(statement, column) == SQLITE_TEXT) {
      value = Value::Of(ColumnText(statement, column));
    }
    Text scratch;
    variable.value = Convert(value, columns[i].type, variable.type, tsql::Purpose::Cast, scratch);
    if (variable.value.kind == Value::Kind::Text) {
      variable.text = Text(variable.value.text);
      variable.value.text = variable.text;
    }
  }
}

void BatchRunner::SetVariable(Step& step, const Text& name, const tsql::Expression& value) {
  const Text key = tsql::LowerKey(name);
  PreparedCommand& prepared = Need(step, [&] {
    tsql::Command command = EmitValue(Surround(), value, program_->variables.at(key));
    command.columns.front().variable = key;
    return command;
  });
  BindParameters(prepared);
  const RunningStatement running(prepared.statement.get());
  if (StepOnce(prepared) == SQLITE_ROW) AssignRow(prepared);
}

void BatchRunner::CheckIdentity(const tsql::Command& command) const {
  if (command.gives_identity == false && session_.identity_insert.empty()) [[likely]]
    return;
  const bool on = session_.identity_insert.contains(tsql::LowerKey(command.target->name));
  if (on == command.gives_identity) return;
  throw Error(database_error::kStatement, "",
              on ? "Explicit value must be specified for identity column in table '" + command.target->name +
                       "' either when IDENTITY_INSERT is set to ON or when a replication user is inserting into a NOT "
                       "FOR REPLICATION identity column."
                 : "Cannot insert explicit value for identity column in table '" + command.target->name +
                       "' when IDENTITY_INSERT is set to OFF.");
}

void BatchRunner::NoteIdentity(const tsql::TableInfo& table) {
  const bool counted =
      std::any_of(table.columns.begin(), table.columns.end(), [](const auto& c) { return c.identity; });
  session_.identity.reset();
  if (counted && session_.row_count > 0) session_.identity = sqlite3_last_insert_rowid(session_.database());
}

void BatchRunner::RunChange(PreparedCommand& prepared) {
  const bool insert = prepared.command.kind == tsql::Command::Kind::Insert;
  if (insert) CheckIdentity(prepared.command);
  BindParameters(prepared);
  const RunningStatement running(prepared.statement.get());
  StepOnce(prepared);
  session_.row_count = sqlite3_changes(session_.database());
  if (insert) NoteIdentity(*prepared.command.target);
}

void BatchRunner::RunSelectInto(PreparedCommand& prepared) {
  session_.Atomically([&] {
    session_.catalog().Create(prepared.command.draft);
    if (!prepared.statement) PrepareSql(prepared);
    BindParameters(prepared);
    const RunningStatement running(prepared.statement.get());
    StepOnce(prepared);
    session_.row_count = sqlite3_changes(session_.database());
  });
  NoteIdentity(*session_.catalog().Find(prepared.command.draft.name));
}

void BatchRunner::SetOption(const tsql::SetOption& option) {
  if (option.option != "identity_insert") return;
  const tsql::TablePtr table = FindObject(session_.catalog(), option.table);
  const bool counted =
      std::any_of(table->columns.begin(), table->columns.end(), [](const auto& c) { return c.identity; });
  if (!counted) {
    throw Error(database_error::kStatement, "",
                "Table '" + table->name + "' does not have the identity property. Cannot perform SET operation.");
  }
  const Text key = tsql::LowerKey(table->name);
  if (!option.on) {
    session_.identity_insert.erase(key);
    return;
  }
  if (!session_.identity_insert.empty() && !session_.identity_insert.contains(key)) {
    throw Error(database_error::kStatement, "",
                "IDENTITY_INSERT is already ON for table '" + *session_.identity_insert.begin() +
                    "'. Cannot perform SET operation for table '" + table->name + "'.");
  }
  session_.identity_insert.insert(key);
}

}  // namespace rebate
