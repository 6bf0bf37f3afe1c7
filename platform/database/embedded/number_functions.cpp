#include <cmath>
#include <numbers>
#include <random>

#include "platform/database/embedded/functions.h"

namespace rebate {
namespace {

using tsql::Value;

[[noreturn]] void Refuse(std::string_view description) {
  throw Error(database_error::kStatement, "", Text(description));
}

template <tsql::Purpose kPurpose>
void ConvertFunction(sqlite3_context* context, int count, sqlite3_value** arguments) {
  const tsql::DataType from = tsql::UnpackType(sqlite3_value_int64(arguments[1]));
  const tsql::DataType to = tsql::UnpackType(sqlite3_value_int64(arguments[2]));
  const int style = count > 3 ? sqlite3_value_int(arguments[3]) : 0;
  Text scratch;
  Give(context, tsql::Convert(ValueOf(arguments[0]), from, to, kPurpose, scratch, style));
}

void DivideWhole(sqlite3_context* context, int, sqlite3_value** arguments) {
  const std::int64_t divisor = sqlite3_value_int64(arguments[1]);
  if (divisor == 0) Refuse("Divide by zero error encountered.");
  const std::int64_t number = sqlite3_value_int64(arguments[0]);
  sqlite3_result_int64(context, divisor == -1 ? -number : number / divisor);
}

void Divide(sqlite3_context* context, int, sqlite3_value** arguments) {
  const double divisor = sqlite3_value_double(arguments[1]);
  if (divisor == 0) Refuse("Divide by zero error encountered.");
  sqlite3_result_double(context, sqlite3_value_double(arguments[0]) / divisor);
}

void Modulo(sqlite3_context* context, int, sqlite3_value** arguments) {
  const Value number = ValueOf(arguments[0]);
  const Value divisor = ValueOf(arguments[1]);
  if (divisor.AsDouble() == 0) Refuse("Divide by zero error encountered.");
  if (number.kind == Value::Kind::Integer && divisor.kind == Value::Kind::Integer) {
    sqlite3_result_int64(context, divisor.integer == -1 ? 0 : number.integer % divisor.integer);
  } else {
    sqlite3_result_double(context, std::fmod(number.AsDouble(), divisor.AsDouble()));
  }
}

// A number with fifteen digits that count, so that a sum of decimals equals the decimal that it is.
void Tidy(sqlite3_context* context, int, sqlite3_value** arguments) {
  const Value value = ValueOf(arguments[0]);
  if (value.kind != Value::Kind::Real || value.real == 0) return Give(context, value);
  const int magnitude = static_cast<int>(std::floor(std::log10(std::abs(value.real)))) + 1;
  sqlite3_result_double(context, tsql::RoundHalfAway(value.real, 15 - magnitude));
}

void Round(sqlite3_context* context, int count, sqlite3_value** arguments) {
  const Value value = ValueOf(arguments[0]);
  const int scale = sqlite3_value_int(arguments[1]);
  const bool cut = count > 2 && sqlite3_value_int(arguments[2]) != 0;
  if (value.kind == Value::Kind::Integer && scale >= 0) return Give(context, value);
  double number = value.AsDouble();
  if (cut) {
    const double power = std::pow(10.0, scale);
    number = std::trunc(number * power) / power;
  } else {
    number = tsql::RoundHalfAway(number, scale);
  }
  if (value.kind == Value::Kind::Integer) return Give(context, Value::Of(static_cast<std::int64_t>(number)));
  sqlite3_result_double(context, number);
}

void Abs(sqlite3_context* context, int, sqlite3_value** arguments) {
  const Value value = ValueOf(arguments[0]);
  if (value.kind == Value::Kind::Integer) {
    sqlite3_result_int64(context, value.integer < 0 ? -value.integer : value.integer);
  } else {
    sqlite3_result_double(context, std::abs(value.AsDouble()));
  }
}

void Sign(sqlite3_context* context, int, sqlite3_value** arguments) {
  const double number = sqlite3_value_double(arguments[0]);
  sqlite3_result_int64(context, number > 0 ? 1 : number < 0 ? -1 : 0);
}

template <double (*Function)(double)>
void Whole(sqlite3_context* context, int, sqlite3_value** arguments) {
  const Value value = ValueOf(arguments[0]);
  if (value.kind == Value::Kind::Integer) return Give(context, value);
  sqlite3_result_double(context, Function(value.AsDouble()));
}

void GiveFinite(sqlite3_context* context, double number) {
  if (!std::isfinite(number)) Refuse("An invalid floating point operation occurred.");
  sqlite3_result_double(context, number);
}

template <double (*Function)(double)>
void Plain(sqlite3_context* context, int, sqlite3_value** arguments) {
  GiveFinite(context, Function(sqlite3_value_double(arguments[0])));
}

double SquareOf(double number) {
  return number * number;
}
double FloorOf(double number) {
  return std::floor(number);
}
double CeilingOf(double number) {
  return std::ceil(number);
}
double RootOf(double number) {
  return std::sqrt(number);
}
double PowerOfE(double number) {
  return std::exp(number);
}
double LogOf(double number) {
  return std::log(number);
}

void Power(sqlite3_context* context, int, sqlite3_value** arguments) {
  GiveFinite(context, std::pow(sqlite3_value_double(arguments[0]), sqlite3_value_double(arguments[1])));
}

void Pi(sqlite3_context* context, int, sqlite3_value**) {
  sqlite3_result_double(context, std::numbers::pi);
}

std::mt19937_64& Generator() {
  thread_local std::mt19937_64 generator{std::random_device{}()};
  return generator;
}

void Rand(sqlite3_context* context, int, sqlite3_value**) {
  sqlite3_result_double(context, std::uniform_real_distribution<double>(0, 1)(Generator()));
}

void NewId(sqlite3_context* context, int, sqlite3_value**) {
  const std::uint64_t high = Generator()();
  const std::uint64_t low = Generator()();
  char text[40];
  const int length = std::snprintf(text, sizeof text, "%08X-%04X-4%03X-%04X-%012llX", static_cast<unsigned>(high >> 32),
                                   static_cast<unsigned>(high >> 16 & 0xFFFF), static_cast<unsigned>(high & 0xFFF),
                                   static_cast<unsigned>((low >> 48 & 0x3FFF) | 0x8000),
                                   static_cast<unsigned long long>(low & 0xFFFFFFFFFFFF));
  GiveText(context, {text, static_cast<std::size_t>(length)});
}

constexpr FunctionDefinition kFunctions[] = {
    {"t_cast", -1, Guarded<ConvertFunction<tsql::Purpose::Cast>>},
    {"t_assign", 3, Guarded<ConvertFunction<tsql::Purpose::Assign>>},
    {"t_match", 3, Guarded<ConvertFunction<tsql::Purpose::Match>>},
    {"t_divide_whole", 2, Guarded<DivideWhole>},
    {"t_divide", 2, Guarded<Divide>},
    {"t_modulo", 2, Guarded<Modulo>},
    {"t_tidy", 1, Guarded<Tidy>},
    {"t_round", -1, Guarded<Round>},
    {"t_abs", 1, Guarded<Abs>},
    {"t_sign", 1, Guarded<Sign>},
    {"t_ceiling", 1, Guarded<Whole<CeilingOf>>},
    {"t_floor", 1, Guarded<Whole<FloorOf>>},
    {"t_sqrt", 1, Guarded<Plain<RootOf>>},
    {"t_square", 1, Guarded<Plain<SquareOf>>},
    {"t_exp", 1, Guarded<Plain<PowerOfE>>},
    {"t_log", 1, Guarded<Plain<LogOf>>},
    {"t_power", 2, Guarded<Power>},
    {"t_pi", 0, Guarded<Pi>},
    {"t_rand", 0, Guarded<Rand>, false},
    {"t_newid", 0, Guarded<NewId>, false},
};

}  // namespace

std::span<const FunctionDefinition> NumberFunctions() {
  return kFunctions;
}

}  // namespace rebate
