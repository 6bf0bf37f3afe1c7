#include "platform/database/embedded/batch_runner.h"

#include <algorithm>
#include <set>

#include "platform/database/embedded/constraint_error.h"
#include "platform/database/embedded/functions.h"
#include "platform/database/embedded/row_reader.h"
#include "platform/database/embedded/row_update.h"
#include "platform/database/embedded/said.h"
#include "platform/database/tsql/eval/literal.h"
#include "platform/values/ascii.h"

namespace rebate {

using tsql::Parameter;
using tsql::Value;

namespace {

std::vector<Text> NamesOf(std::span<const tsql::ResultColumn> columns) {
  std::vector<Text> names;
  for (const tsql::ResultColumn& column : columns) names.push_back(column.name);
  return names;
}

}  // namespace

bool BatchRunner::Run(PreparedBatch& batch, std::span<const tsql::LiteralToken> literals) {
  batch_ = &batch;
  literals_ = literals;
  return RunSteps(batch.steps) == Flow::Next;
}

void BatchRunner::RunInserts(std::span<const Row> rows) {
  for (std::size_t size = 0; size < kRowsTogether.size(); ++size) {
    const std::size_t count = kRowsTogether[size];
    while (rows.size() >= count && RunTogether(rows.first(count), size)) rows = rows.subspan(count);
  }
  for (const Row& row : rows) Run(*row.batch, row.literals);
}

BatchRunner::Flow BatchRunner::RunSteps(std::vector<Step>& steps) {
  for (Step& step : steps) {
    const Flow flow = RunStep(step);
    if (flow != Flow::Next) return flow;
  }
  return Flow::Next;
}

// ---- what each kind of statement does ----

struct BatchRunner::Visitor {
  BatchRunner& runner;
  Step& step;

  Flow operator()(const tsql::SelectStatement& node) {
    PreparedCommand& command =
        runner.Prepared(step, 0, [&](tsql::BindContext& context) { return MakeQuery(context, node); });
    switch (command.command.kind) {
      case tsql::Command::Kind::SelectInto:
        runner.RunSelectInto(command);
        TellCount();
        break;
      case tsql::Command::Kind::Assign:
        runner.RunAssign(command);
        break;
      default:
        runner.RunQuery(command);
    }
    return Flow::Next;
  }
  Flow operator()(const tsql::Insert& node) {
    runner.RunInsert(runner.Prepared(step, 0, [&](auto& context) { return MakeInsert(context, node); }));
    TellCount();
    return Flow::Next;
  }
  Flow operator()(const tsql::Update& node) {
    runner.RunChange(runner.Prepared(step, 0, [&](auto& context) { return MakeUpdate(context, node); }));
    TellCount();
    return Flow::Next;
  }
  Flow operator()(const tsql::Delete& node) {
    runner.RunChange(runner.Prepared(step, 0, [&](auto& context) { return MakeDelete(context, node); }));
    TellCount();
    return Flow::Next;
  }

  // ---- definitions ----
  Flow operator()(const tsql::Truncate& node) {
    return Define([&] { runner.session_.catalog().Truncate(node.table); });
  }
  Flow operator()(const tsql::CreateTable& node) {
    return Define([&] { runner.session_.catalog().Create(Draft(node.elements, node.table, nullptr)); });
  }
  Flow operator()(const tsql::AlterTableAdd& node) {
    return Define([&] {
      AccountCatalog& catalog = runner.session_.catalog();
      const tsql::TablePtr table = catalog.Find(node.table);
      catalog.Add(Draft(node.elements, node.table, table.get()));
    });
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

  // ---- control ----
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
    if (node.value) Assign(node.variable, *node.value);
    return Flow::Next;
  }
  Flow operator()(const tsql::SetVariable& node) {
    Assign(node.variable, *node.value);
    return Flow::Next;
  }
  Flow operator()(const tsql::SetOption& node) {
    if (node.option == "identity_insert") runner.session_.catalog().SetIdentityInsert(node.table, node.on);
    return Flow::Next;
  }
  Flow operator()(const tsql::Jump& node) { return node.kind == tsql::LoopJump::Break ? Flow::Break : Flow::Continue; }
  Flow operator()(const tsql::Return&) { return Flow::Return; }

  // ---- what a text says ----
  Flow operator()(const tsql::Print& node) {
    runner.Say(runner.TextValue(step, 0, *node.message).value_or(""));
    return Flow::Next;
  }
  Flow operator()(const tsql::RaiseError& node) {
    RaisedMessage raised;
    raised.format = runner.TextValue(step, 0, *node.message).value_or("");
    raised.severity = runner.NumberValue(step, 1, *node.severity).value_or(0);
    raised.state = runner.NumberValue(step, 2, *node.state).value_or(0);
    for (std::size_t i = 0; i < node.arguments.size(); ++i) {
      raised.arguments.push_back(runner.TextValue(step, 3 + i, *node.arguments[i]));
    }
    runner.Say(RaisedText(raised));
    return Flow::Next;
  }
  Flow operator()(const tsql::Throw& node) {
    ThrowRaised(runner.NumberValue(step, 0, *node.number), runner.TextValue(step, 1, *node.message),
                runner.NumberValue(step, 2, *node.state));
  }

  // ---- transactions ----
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

  void TellCount() {
    if (runner.listener_ != nullptr) runner.listener_->Affected(runner.session_.row_count);
  }
  template <typename Work>
  Flow Define(const Work& work) {
    runner.session_.Atomically(work);
    runner.session_.row_count = 0;
    return Flow::Next;
  }
  tsql::TableDraft Draft(const tsql::TableElements& elements, const tsql::ObjectName& name,
                         const tsql::TableInfo* table) {
    tsql::BindContext context{runner.session_.catalog(), runner.literals_, runner.batch_->variables};
    return DraftTable(context, elements, name, table);
  }
  bool Holds(const tsql::Expression& condition) {
    return runner.Holds(runner.Prepared(step, 0, [&](auto& context) { return MakeCondition(context, condition); }));
  }
  void Assign(const Text& variable, const tsql::Expression& value) {
    const Text key = tsql::LowerKey(variable);
    runner.RunAssign(runner.Prepared(
        step, 0, [&](auto& context) { return MakeAssignment(context, value, key, runner.batch_->variables.at(key)); }));
  }
};

BatchRunner::Flow BatchRunner::RunStep(Step& step) {
  session_.NeedTransaction(batch_->reads_only);
  BeginInstant();
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

template <typename Make>
PreparedCommand& BatchRunner::Prepared(Step& step, std::size_t number, const Make& make) {
  if (step.commands.size() <= number) step.commands.resize(number + 1);
  std::unique_ptr<PreparedCommand>& kept = step.commands[number];
  if (kept && IsGood(*kept)) return *kept;
  AccountCatalog& catalog = session_.catalog();
  catalog.NoticeChanges();
  kept.reset();
  auto prepared = std::make_unique<PreparedCommand>();
  tsql::BindContext context{catalog, literals_, batch_->variables};
  prepared->command = make(context);
  prepared->epoch = catalog.epoch();
  const tsql::Command& command = prepared->command;
  for (const std::size_t literal : command.fixed_literals) batch_->FixLiteral(literal, literals_);
  const auto& values = command.rows ? command.rows->values : command.values;
  for (const tsql::RowValue& value : values) {
    prepared->calculations.emplace_back(value.program.empty() ? "null:int" : std::string_view(value.program));
  }
  // The table of a select into isn't there yet.
  if (command.kind != tsql::Command::Kind::SelectInto && !command.sql.text.empty()) {
    prepared->statement = Prepare(session_.database(), command.sql.text, session_.path());
  }
  if (command.kind == tsql::Command::Kind::Query) prepared->fields = New<FieldNames>(NamesOf(command.columns));
  kept = std::move(prepared);
  return *kept;
}

// ---- binding ----

Value BatchRunner::SystemValueOf(const Parameter& parameter, tsql::TextPool& pool) {
  switch (parameter.system.value) {
    case tsql::bound::SystemValue::Now:
      return Value::Of(pool.Keep(InstantText(LocalInstant(), parameter.type)));
    case tsql::bound::SystemValue::UtcNow:
      return Value::Of(pool.Keep(InstantText(UniversalInstant(), parameter.type)));
    case tsql::bound::SystemValue::Identity:
      return session_.identity ? Value::Of(Decimal(*session_.identity)) : Value();
    case tsql::bound::SystemValue::RowCount:
      return Value::Of(session_.row_count);
    case tsql::bound::SystemValue::TransactionCount:
      return Value::Of(std::int64_t{session_.TransactionCount()});
    case tsql::bound::SystemValue::ErrorNumber:
      return Value::Of(std::int64_t{0});
    case tsql::bound::SystemValue::DatabaseName:
      return Value::Of(pool.Keep(DatabaseName(session_.path())));
    case tsql::bound::SystemValue::LastIdentity: {
      const auto last = session_.catalog().LastIdentity(LiteralText(literals_[parameter.system.literal]));
      return last ? Value::Of(Decimal(*last)) : Value();
    }
    case tsql::bound::SystemValue::ObjectId:
      break;
  }
  const auto id = session_.catalog().ObjectId(LiteralText(literals_[parameter.system.literal]));
  return id ? Value::Of(*id) : Value();
}

Value BatchRunner::ParameterValue(const Parameter& parameter, tsql::TextPool& pool) {
  switch (parameter.source) {
    case Parameter::Source::Literal: {
      const tsql::bound::Literal& literal = parameter.literal;
      return LiteralValue(literals_[literal.index], literal.negated, literal.as_written, parameter.type,
                          literal.purpose, pool);
    }
    case Parameter::Source::Variable:
      return variables_.Get(parameter.variable);
    case Parameter::Source::System:
      break;
  }
  return SystemValueOf(parameter, pool);
}

std::optional<std::int64_t> BatchRunner::IntegerOf(const Parameter& parameter) const {
  if (parameter.source != Parameter::Source::Literal || parameter.literal.as_written) return std::nullopt;
  return LiteralInteger(literals_[parameter.literal.index], parameter.literal.negated, parameter.type);
}

std::optional<std::string_view> BatchRunner::KeyOf(const Parameter& parameter) const {
  if (parameter.source != Parameter::Source::Literal || parameter.literal.negated) return std::nullopt;
  return LiteralKey(literals_[parameter.literal.index], parameter.type);
}

void BatchRunner::BindParameters(PreparedCommand& prepared, sqlite3_stmt* statement,
                                 const std::vector<Parameter>& parameters) {
  prepared.texts.Clear();
  BindFrom(1, prepared, statement, parameters);
}

void BatchRunner::BindFrom(int first, PreparedCommand& prepared, sqlite3_stmt* statement,
                           const std::vector<Parameter>& parameters) {
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    const int index = first + static_cast<int>(i);
    if (const auto number = IntegerOf(parameters[i])) {
      Bind(statement, index, *number);
      continue;
    }
    if (const auto key = KeyOf(parameters[i])) {
      Bind(statement, index, *key);
      continue;
    }
    const Value value = ParameterValue(parameters[i], prepared.texts);
    if (value.kind == Value::Kind::Decimal) {
      Bind(statement, index, Value::Of(prepared.texts.Keep(value.decimal.ToKey())));
    } else {
      Bind(statement, index, value);
    }
  }
}

int BatchRunner::StepOnce(PreparedCommand& prepared, sqlite3_stmt* statement) {
  const int result = sqlite3_step(statement);
  if (result != SQLITE_ROW && result != SQLITE_DONE) [[unlikely]]
    RaiseFailure(prepared, statement, result);
  return result;
}

void BatchRunner::RaiseFailure(PreparedCommand& prepared, sqlite3_stmt* statement, int result) {
  const tsql::Command& command = prepared.command;
  Error error = SqliteError(session_.database(), result, session_.path());
  if ((result & 0xFF) == SQLITE_CONSTRAINT) {
    const tsql::TablePtr target = command.target ? command.target : session_.catalog().Find(command.draft.name);
    const Doing doing = command.kind == tsql::Command::Kind::Change ? Doing::Update : Doing::Insert;
    if (target) {
      error = ConstraintError(sqlite3_extended_errcode(session_.database()), sqlite3_errmsg(session_.database()),
                              *target, doing, session_.path());
    }
  }
  sqlite3_reset(statement);
  session_.NoticeFailure();
  throw error;
}

// ---- running ----

void BatchRunner::Say(Text message) {
  if (listener_ != nullptr) {
    listener_->Message(message);
  } else {
    messages_.push_back(std::move(message));
  }
}

bool BatchRunner::Holds(PreparedCommand& prepared) {
  BindParameters(prepared, prepared.statement.get(), prepared.command.sql.parameters);
  const RunningStatement running(prepared.statement.get());
  return StepOnce(prepared, prepared.statement.get()) == SQLITE_ROW;
}

void BatchRunner::RunQuery(PreparedCommand& prepared) {
  sqlite3_stmt* statement = prepared.statement.get();
  BindParameters(prepared, statement, prepared.command.sql.parameters);
  const RunningStatement running(statement);
  std::int64_t count = 0;
  if (result_) {
    while (StepOnce(prepared, statement) == SQLITE_ROW) ++count;
  } else {
    RowReader reader(statement, prepared.command.columns, prepared.fields);
    for (; StepOnce(prepared, statement) == SQLITE_ROW; ++count) reader.AddRow();
    reader.Sort(prepared.command.order);
    if (listener_ != nullptr) {
      listener_->Rows(OpenRecordset(reader.rows()));
    } else {
      result_ = reader.rows();
    }
  }
  session_.row_count = count;
}

Value BatchRunner::Calculated(PreparedCommand& prepared, std::size_t number, const tsql::RowValue& value,
                              sqlite3_stmt* row, const std::vector<tsql::DataType>& types, int first) {
  std::vector<Value> arguments;
  arguments.reserve(value.arguments.size());
  for (const tsql::RowValue::Argument& argument : value.arguments) {
    if (argument.column) {
      const int column = first + static_cast<int>(*argument.column);
      arguments.push_back(ReadValue(sqlite3_column_value(row, column), types[*argument.column]));
    } else {
      arguments.push_back(ParameterValue(argument.parameter, prepared.texts));
    }
  }
  tsql::Program::Memory memory;
  Value result = prepared.calculations[number].Run(arguments, memory);
  if (result.kind == Value::Kind::Text) result.text = prepared.texts.Keep(Text(result.text));
  return result;
}

void BatchRunner::RunAssign(PreparedCommand& prepared) {
  const tsql::Command& command = prepared.command;
  const auto assign = [&](sqlite3_stmt* row, const std::vector<tsql::DataType>& types) {
    for (std::size_t i = 0; i < command.values.size(); ++i) {
      const tsql::RowValue& value = command.values[i];
      variables_.Set(value.variable, Calculated(prepared, i, value, row, types, 0));
    }
  };
  if (!prepared.statement) {
    prepared.texts.Clear();
    return assign(nullptr, {});
  }
  sqlite3_stmt* statement = prepared.statement.get();
  std::vector<tsql::DataType> types;
  for (const tsql::ResultColumn& column : command.columns) types.push_back(column.type);
  BindParameters(prepared, statement, command.sql.parameters);
  const RunningStatement running(statement);
  std::int64_t count = 0;
  for (; StepOnce(prepared, statement) == SQLITE_ROW; ++count) assign(statement, types);
  session_.row_count = count;
}

void BatchRunner::RunInsert(PreparedCommand& prepared) {
  const tsql::Command& command = prepared.command;
  AccountCatalog& catalog = session_.catalog();
  catalog.CheckIdentityInsert(*command.target, command.gives_identity);
  sqlite3_stmt* statement = prepared.statement.get();
  BindParameters(prepared, statement, command.sql.parameters);
  {
    const RunningStatement running(statement);
    StepOnce(prepared, statement);
  }
  session_.row_count = sqlite3_changes(session_.database());
  session_.identity.reset();
  if (session_.row_count > 0) session_.identity = catalog.NoteInsert(*command.target, command.gives_identity);
}

PreparedCommand& BatchRunner::PreparedInsert(const Row& row) {
  batch_ = row.batch;
  literals_ = row.literals;
  Step& step = row.batch->steps.front();
  return Prepared(step, 0,
                  [&](auto& context) { return MakeInsert(context, std::get<tsql::Insert>(step.statement->node)); });
}

bool BatchRunner::RunTogether(std::span<const Row> rows, std::size_t size) {
  BeginInstant();
  PreparedCommand& first = PreparedInsert(rows.front());
  const tsql::Command& command = first.command;
  if (!command.row) return false;
  session_.catalog().CheckIdentityInsert(*command.target, false);
  StatementHandle& statement = first.together[size];
  if (!statement) statement = Prepare(session_.database(), WithRows(command, rows.size()), session_.path());
  first.texts.Clear();
  int index = 1;
  for (const Row& row : rows) {
    const std::vector<Parameter>& parameters = PreparedInsert(row).command.sql.parameters;
    BindFrom(index, first, statement.get(), parameters);
    index += static_cast<int>(parameters.size());
  }
  {
    const RunningStatement running(statement.get());
    StepOnce(first, statement.get());
  }
  session_.row_count = 1;
  session_.identity = session_.catalog().NoteInsert(*command.target, false);
  return true;
}

void BatchRunner::RunChange(PreparedCommand& prepared) {
  const tsql::Command& command = prepared.command;
  if (command.row_by_row) return RunRowUpdate(prepared);
  sqlite3_stmt* statement = prepared.statement.get();
  BindParameters(prepared, statement, command.sql.parameters);
  {
    const RunningStatement running(statement);
    const int result = sqlite3_step(statement);
    const bool in_the_way = (result & 0xFF) == SQLITE_CONSTRAINT && command.rows;
    if (!in_the_way) {
      if (result != SQLITE_ROW && result != SQLITE_DONE) RaiseFailure(prepared, statement, result);
      session_.row_count = sqlite3_changes(session_.database());
      return;
    }
  }
  // A key is held half way by a row that gives it up: what counts is how the rows are at the end.
  RunRowUpdate(prepared);
}

void BatchRunner::RunSelectInto(PreparedCommand& prepared) {
  const tsql::Command& command = prepared.command;
  session_.Atomically([&] {
    session_.catalog().Create(command.draft, prepared.making);
    if (!prepared.statement) prepared.statement = Prepare(session_.database(), command.sql.text, session_.path());
    sqlite3_stmt* statement = prepared.statement.get();
    BindParameters(prepared, statement, command.sql.parameters);
    const RunningStatement running(statement);
    StepOnce(prepared, statement);
    session_.row_count = sqlite3_changes(session_.database());
  });
  session_.identity.reset();
  const tsql::TablePtr table = session_.catalog().Find(command.draft.name);
  if (session_.row_count > 0) session_.identity = session_.catalog().NoteInsert(*table, true);
}

// ---- the update of a row at a time ----

void BatchRunner::RunRowUpdate(PreparedCommand& prepared) {
  const tsql::RowUpdate& update = *prepared.command.rows;
  if (!prepared.select_rows) {
    prepared.select_rows = Prepare(session_.database(), update.select.text, session_.path());
    prepared.remove_row = Prepare(session_.database(), update.remove, session_.path());
    prepared.insert_row = Prepare(session_.database(), update.insert, session_.path());
  }
  sqlite3_stmt* select = prepared.select_rows.get();
  BindParameters(prepared, select, update.select.parameters);
  std::vector<ChangedRow> rows;
  std::set<std::int64_t> seen;
  {
    const RunningStatement running(select);
    while (StepOnce(prepared, select) == SQLITE_ROW) {
      // A row that the from clause finds several times is changed once.
      if (!seen.insert(sqlite3_column_int64(select, 0)).second) continue;
      ChangedRow row(select, update.stored.size());
      for (std::size_t i = 0; i < update.values.size(); ++i) {
        const tsql::RowValue& value = update.values[i];
        if (value.program.empty()) {
          row.SetDefault(*value.target, session_.database(), value.default_sql, session_.path());
          continue;
        }
        const Value result = Calculated(prepared, i, value, select, update.column_types, 1);
        if (value.target) row.Set(*value.target, result);
        if (!value.variable.empty()) AssignVariable(value, result, variables_);
      }
      rows.push_back(std::move(row));
    }
  }
  WriteRows(prepared, rows);
  session_.row_count = static_cast<std::int64_t>(rows.size());
}

void BatchRunner::WriteRows(PreparedCommand& prepared, const std::vector<ChangedRow>& rows) {
  session_.Atomically([&] {
    for (const ChangedRow& row : rows) {
      sqlite3_stmt* remove = prepared.remove_row.get();
      const RunningStatement running(remove);
      Bind(remove, 1, row.number());
      StepOnce(prepared, remove);
    }
    for (const ChangedRow& row : rows) {
      sqlite3_stmt* insert = prepared.insert_row.get();
      const RunningStatement running(insert);
      row.BindTo(insert);
      StepOnce(prepared, insert);
    }
  });
}

// ---- values of a statement ----

std::optional<Text> BatchRunner::TextValue(Step& step, std::size_t number, const tsql::Expression& expression) {
  PreparedCommand& prepared = Prepared(step, number, [&](auto& context) {
    return MakeValue(context, expression, tsql::TextType(tsql::TypeKind::NVarChar, 4000));
  });
  sqlite3_stmt* statement = prepared.statement.get();
  BindParameters(prepared, statement, prepared.command.sql.parameters);
  const RunningStatement running(statement);
  StepOnce(prepared, statement);
  if (sqlite3_column_type(statement, 0) == SQLITE_NULL) return std::nullopt;
  return Text(ColumnText(statement, 0));
}

std::optional<std::int64_t> BatchRunner::NumberValue(Step& step, std::size_t number,
                                                     const tsql::Expression& expression) {
  PreparedCommand& prepared =
      Prepared(step, number, [&](auto& context) { return MakeValue(context, expression, tsql::IntType()); });
  sqlite3_stmt* statement = prepared.statement.get();
  BindParameters(prepared, statement, prepared.command.sql.parameters);
  const RunningStatement running(statement);
  StepOnce(prepared, statement);
  if (sqlite3_column_type(statement, 0) == SQLITE_NULL) return std::nullopt;
  return sqlite3_column_int64(statement, 0);
}

}  // namespace rebate
