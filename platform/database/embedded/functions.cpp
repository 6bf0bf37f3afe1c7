#include "platform/database/embedded/functions.h"

#include <cmath>
#include <memory>
#include <unordered_map>

#include "platform/database/embedded/aggregates.h"
#include "platform/database/embedded/sqlite_handles.h"
#include "platform/database/tsql/eval/program.h"
#include "platform/database/tsql/print/definition.h"
#include "platform/values/folding.h"
#include "platform/values/text_order.h"

namespace rebate {
namespace {

using tsql::Program;
using tsql::Value;

// ---- collations ----

template <int (*Compare)(std::string_view, std::string_view)>
int Collate(void*, int left_size, const void* left, int right_size, const void* right) noexcept {
  return Compare({static_cast<const char*>(left), static_cast<std::size_t>(left_size)},
                 {static_cast<const char*>(right), static_cast<std::size_t>(right_size)});
}

// ---- calculations ----

// The programs that a connection has met, by their texts.
class Calculations {
 public:
  using ProgramPtr = std::shared_ptr<const Program>;

  ProgramPtr Get(std::string_view text) {
    if (const auto found = programs_.find(text); found != programs_.end()) return found->second;
    if (programs_.size() == kMostKept) programs_.clear();
    return programs_.emplace(text, std::make_shared<const Program>(text)).first->second;
  }

 private:
  static constexpr std::size_t kMostKept = 2000;
  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const { return std::hash<std::string_view>()(text); }
  };
  std::unordered_map<Text, ProgramPtr, Hash, std::equal_to<>> programs_;
};

// One place of a statement where something is calculated, while the statement runs.
struct CalculationSite {
  Calculations::ProgramPtr program;
  std::vector<Value> arguments;
  Program::Memory memory;
};

void Calculate(sqlite3_context* context, int count, sqlite3_value** arguments) noexcept {
  Guarded(context, [&] {
    auto* site = static_cast<CalculationSite*>(sqlite3_get_auxdata(context, 0));
    std::unique_ptr<CalculationSite> own;
    if (site == nullptr) {
      own = std::make_unique<CalculationSite>();
      own->program = static_cast<Calculations*>(sqlite3_user_data(context))->Get(TextOf(arguments[0]));
      site = own.get();
    }
    const std::vector<tsql::DataType>& types = site->program->arguments();
    site->arguments.resize(static_cast<std::size_t>(count - 1));
    for (std::size_t i = 0; i < site->arguments.size(); ++i) {
      site->arguments[i] = i < types.size() ? ReadValue(arguments[i + 1], types[i]) : Value();
    }
    GiveValue(context, site->program->Run(site->arguments, site->memory));
    if (!own) return;
    sqlite3_set_auxdata(context, 0, own.release(), [](void* kept) { delete static_cast<CalculationSite*>(kept); });
  });
}

void RegisterCalculations(sqlite3* database) {
  // One cache for both: the first that goes takes it along.
  const auto make = [&](const char* name, int flags) {
    NeedDone(sqlite3_create_function_v2(database, name, -1, SQLITE_UTF8 | SQLITE_INNOCUOUS | flags, new Calculations,
                                        Calculate, nullptr, nullptr,
                                        [](void* kept) { delete static_cast<Calculations*>(kept); }));
  };
  make("t_calc", SQLITE_DETERMINISTIC);
  make("t_calc_anew", 0);
}

// ---- the count of a top ----

void TopRows(sqlite3_context* context, int, sqlite3_value** arguments) noexcept {
  Guarded(context, [&] {
    if (sqlite3_value_type(arguments[0]) == SQLITE_NULL) {
      throw Error(database_error::kStatement, "",
                  "The number of rows provided for a TOP or FETCH clauses row count parameter must be an integer.");
    }
    const std::int64_t rows = sqlite3_value_int64(arguments[0]);
    if (rows < 0) {
      throw Error(database_error::kStatement, "", "A TOP N or FETCH rowcount value may not be negative.");
    }
    sqlite3_result_int64(context, rows);
  });
}

void PercentOfRows(sqlite3_context* context, int, sqlite3_value** arguments) noexcept {
  Guarded(context, [&] {
    const double percent = sqlite3_value_double(arguments[1]);
    if (sqlite3_value_type(arguments[1]) == SQLITE_NULL || !(percent >= 0 && percent <= 100)) {
      throw Error(database_error::kStatement, "", "Percent values must be between 0 and 100.");
    }
    const double rows = static_cast<double>(sqlite3_value_int64(arguments[0]));
    sqlite3_result_int64(context, static_cast<std::int64_t>(std::ceil(rows * percent / 100)));
  });
}

// ---- the ends of a range of texts ----

// The text that is the whole range; else the end that `give_end` gives.
template <typename Give>
void GiveRangeEnd(sqlite3_context* context, sqlite3_value** arguments, const Give& give_end) {
  const auto is_null = [](sqlite3_value* value) { return sqlite3_value_type(value) == SQLITE_NULL; };
  if (is_null(arguments[0]) || is_null(arguments[1])) return sqlite3_result_null(context);
  if (CompareText(TextOf(arguments[0]), TextOf(arguments[1])) != 0) return give_end();
  sqlite3_result_value(context, arguments[0]);
}

void RangeFrom(sqlite3_context* context, int, sqlite3_value** arguments) noexcept {
  GiveRangeEnd(context, arguments, [&] { sqlite3_result_text(context, "", 0, SQLITE_STATIC); });
}

// Every blob is greater than every text.
void RangeTo(sqlite3_context* context, int, sqlite3_value** arguments) noexcept {
  GiveRangeEnd(context, arguments, [&] { sqlite3_result_zeroblob(context, 0); });
}

// ---- the instant ----

struct Instant {
  bool known = false;
  Moment local;
  Moment universal;
};
thread_local Instant instant;

const Instant& KnownInstant() {
  if (!instant.known) {
    instant.local = Now();
    instant.universal = UtcNow();
    instant.known = true;
  }
  return instant;
}

// The default of a column: a datetime.
void NowFunction(sqlite3_context* context, int, sqlite3_value**) noexcept {
  Guarded(context, [&] {
    const Text text = InstantText(LocalInstant(), tsql::DateTimeType());
    GiveValue(context, Value::Of(std::string_view(text)));
  });
}

}  // namespace

void BeginInstant() {
  instant.known = false;
}

Moment LocalInstant() {
  return KnownInstant().local;
}

Moment UniversalInstant() {
  return KnownInstant().universal;
}

Text InstantText(const Moment& moment, const tsql::DataType& type) {
  const DateForm form = FormOf(type);
  return StoredText(Fit(moment, form).value_or(moment), form.kind);
}

Value ReadValue(sqlite3_value* value, const tsql::DataType& type) {
  const int kind = sqlite3_value_type(value);
  if (kind == SQLITE_NULL) return {};
  if (IsInteger(type.kind)) return Value::Of(std::int64_t{sqlite3_value_int64(value)});
  if (IsFloat(type.kind)) return Value::Of(sqlite3_value_double(value));
  if (!IsExactNumber(type.kind)) return Value::Of(TextOf(value));
  if (kind == SQLITE_INTEGER) return Value::Of(Decimal(std::int64_t{sqlite3_value_int64(value)}));
  const auto number = Decimal::Parse(TextOf(value));
  if (!number) throw Error(database_error::kStatement, "", "A number that the account holds can't be read.");
  return Value::Of(*number);
}

void GiveValue(sqlite3_context* context, const Value& value) {
  const auto give_text = [&](std::string_view text) {
    sqlite3_result_text64(context, text.data() != nullptr ? text.data() : "", text.size(), SQLITE_TRANSIENT,
                          SQLITE_UTF8);
  };
  switch (value.kind) {
    case Value::Kind::Null:
      return sqlite3_result_null(context);
    case Value::Kind::Integer:
      return sqlite3_result_int64(context, value.integer);
    case Value::Kind::Real:
      return sqlite3_result_double(context, value.real);
    case Value::Kind::Decimal:
      return give_text(value.decimal.ToKey());
    case Value::Kind::Text:
      return give_text(value.text);
  }
}

void RegisterFunctions(sqlite3* database) {
  const auto collation = [&](std::string_view name, auto* compare) {
    NeedDone(sqlite3_create_collation_v2(database, Text(name).c_str(), SQLITE_UTF8, nullptr, compare, nullptr));
  };
  collation(tsql::kTextCollation, Collate<CompareText>);
  collation(tsql::kTextOrder, Collate<CompareInOrder>);
  collation(tsql::kNumberCollation, Collate<CompareKeys>);
  RegisterCalculations(database);
  RegisterAggregates(database);
  const auto function = [&](const char* name, int arguments, int flags, auto* call) {
    NeedDone(sqlite3_create_function_v2(database, name, arguments, SQLITE_UTF8 | SQLITE_INNOCUOUS | flags, nullptr,
                                        call, nullptr, nullptr, nullptr));
  };
  function("t_top", 1, SQLITE_DETERMINISTIC, TopRows);
  function("t_percent", 2, SQLITE_DETERMINISTIC, PercentOfRows);
  function(tsql::kRangeFrom.data(), 2, SQLITE_DETERMINISTIC, RangeFrom);
  function(tsql::kRangeTo.data(), 2, SQLITE_DETERMINISTIC, RangeTo);
  function("t_now", 0, 0, NowFunction);
}

}  // namespace rebate
