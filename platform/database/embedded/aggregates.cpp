#include "platform/database/embedded/aggregates.h"

#include <memory>
#include <vector>

#include "platform/database/embedded/functions.h"
#include "platform/database/embedded/sqlite_handles.h"
#include "platform/database/tsql/eval/aggregate.h"
#include "platform/database/tsql/print/printer.h"

namespace rebate {
namespace {

using tsql::Accumulator;
using tsql::AggregateKind;
using tsql::DataType;

struct Definition {
  Text name;
  AggregateKind kind;
  DataType result;
};

// SQLite keeps a pointer for each group from its first row on.
template <typename State>
State** StateOf(sqlite3_context* context, bool make) {
  return static_cast<State**>(sqlite3_aggregate_context(context, make ? sizeof(State*) : 0));
}

// Takes the state of a group that is over; null where it had no row.
template <typename State>
std::unique_ptr<State> TakeState(sqlite3_context* context) noexcept {
  State** state = StateOf<State>(context, false);
  if (state == nullptr) return nullptr;
  std::unique_ptr<State> taken(*state);
  *state = nullptr;
  return taken;
}

void Accumulate(sqlite3_context* context, int, sqlite3_value** arguments) noexcept {
  Guarded(context, [&] {
    const auto& definition = *static_cast<const Definition*>(sqlite3_user_data(context));
    Accumulator** state = StateOf<Accumulator>(context, true);
    if (state == nullptr) throw std::bad_alloc();
    if (*state == nullptr) *state = new Accumulator(definition.kind, definition.result);
    (*state)->Add(ReadValue(arguments[0], definition.result));
  });
}

void GiveAccumulated(sqlite3_context* context) noexcept {
  Guarded(context, [&] {
    const std::unique_ptr<Accumulator> state = TakeState<Accumulator>(context);
    if (state) GiveValue(context, state->Result());
  });
}

// ---- the only row ----

struct FreeValue {
  void operator()(sqlite3_value* value) const { sqlite3_value_free(value); }
};
struct SingleRow {
  std::unique_ptr<sqlite3_value, FreeValue> value;
};

void TakeRow(sqlite3_context* context, int, sqlite3_value** arguments) noexcept {
  Guarded(context, [&] {
    SingleRow** state = StateOf<SingleRow>(context, true);
    if (state == nullptr) throw std::bad_alloc();
    if (*state != nullptr) {
      throw Error(database_error::kStatement, "",
                  "Subquery returned more than 1 value. This is not permitted when the subquery follows =, !=, <, <= , "
                  ">, >= or when the subquery is used as an expression.");
    }
    *state = new SingleRow;
    (*state)->value.reset(sqlite3_value_dup(arguments[0]));
    if (!(*state)->value) throw std::bad_alloc();
  });
}

void GiveRow(sqlite3_context* context) noexcept {
  const std::unique_ptr<SingleRow> state = TakeState<SingleRow>(context);
  if (state && state->value) sqlite3_result_value(context, state->value.get());
}

// ---- the definitions ----

std::vector<Definition> MakeDefinitions() {
  std::vector<Definition> definitions;
  const auto add = [&](const DataType& type) {
    definitions.push_back({tsql::AggregateFunctionName("sum", type), AggregateKind::Sum, type});
    definitions.push_back({tsql::AggregateFunctionName("avg", type), AggregateKind::Avg, type});
  };
  for (const tsql::TypeKind kind :
       {tsql::TypeKind::Int, tsql::TypeKind::BigInt, tsql::TypeKind::Money, tsql::TypeKind::Float}) {
    add(tsql::TypeOf(kind));
  }
  for (int scale = 0; scale <= Decimal::kMaxDigits; ++scale) add(tsql::DecimalType(Decimal::kMaxDigits, scale));
  for (const auto& [name, kind] :
       {std::pair("t_stdev", AggregateKind::Stdev), std::pair("t_stdevp", AggregateKind::StdevP),
        std::pair("t_var", AggregateKind::Var), std::pair("t_varp", AggregateKind::VarP)}) {
    definitions.push_back({name, kind, tsql::FloatType()});
  }
  return definitions;
}

}  // namespace

void RegisterAggregates(sqlite3* database) {
  static const std::vector<Definition> definitions = MakeDefinitions();
  constexpr int kFlags = SQLITE_UTF8 | SQLITE_INNOCUOUS | SQLITE_DETERMINISTIC;
  for (const Definition& definition : definitions) {
    NeedDone(sqlite3_create_function_v2(database, definition.name.c_str(), 1, kFlags,
                                        const_cast<Definition*>(&definition), nullptr, Accumulate, GiveAccumulated,
                                        nullptr));
  }
  NeedDone(sqlite3_create_function_v2(database, "t_single", 1, kFlags, nullptr, nullptr, TakeRow, GiveRow, nullptr));
}

}  // namespace rebate
