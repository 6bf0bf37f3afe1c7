#include "platform/database/tsql/eval/aggregate.h"

#include <algorithm>
#include <cmath>

#include "platform/database/tsql/eval/number_result.h"

namespace rebate::tsql {
namespace {

bool IsStatistic(AggregateKind kind) {
  return kind != AggregateKind::Sum && kind != AggregateKind::Avg;
}

}  // namespace

void Accumulator::Add(const Value& value) {
  if (value.IsNull()) return;
  ++count_;
  if (value.kind == Value::Kind::Integer) {
    whole_.Add(value.integer);
  } else if (value.kind == Value::Kind::Real) {
    AddReal(value.real);
  } else {
    const auto sum = Decimal::Add(decimal_, value.decimal, std::max(decimal_.scale(), value.decimal.scale()));
    if (!sum) RefuseOverflow(result_);
    decimal_ = *sum;
  }
}

// The mean and the distances from it move with each number, which keeps digits that a sum of squares would lose.
void Accumulator::AddReal(double number) {
  if (!IsStatistic(kind_)) {
    real_ += number;
    return;
  }
  const double distance = number - real_;
  real_ += distance / static_cast<double>(count_);
  squares_ += distance * (number - real_);
}

Value Accumulator::Result() const {
  if (count_ == 0) return {};
  if (IsStatistic(kind_)) return Spread();
  if (IsInteger(result_.kind)) return WholeResult();
  if (IsExactNumber(result_.kind)) return DecimalAmount();
  return RealResult(kind_ == AggregateKind::Avg ? real_ / static_cast<double>(count_) : real_, result_);
}

Value Accumulator::WholeResult() const {
  const std::optional<std::int64_t> whole = whole_.Result();
  if (!whole) RefuseOverflow(result_);
  const Value sum = IntegerResult(*whole, result_);
  return kind_ == AggregateKind::Avg ? Value::Of(sum.integer / count_) : sum;
}

Value Accumulator::DecimalAmount() const {
  if (kind_ == AggregateKind::Sum) return DecimalResult(decimal_, result_);
  const int scale = result_.kind == TypeKind::Decimal ? result_.scale : 4;
  return DecimalResult(Decimal::Divide(decimal_, Decimal(count_), scale, Decimal::Digits::Cut), result_);
}

Value Accumulator::Spread() const {
  const bool sample = kind_ == AggregateKind::Stdev || kind_ == AggregateKind::Var;
  if (sample && count_ == 1) return {};
  const double variance = squares_ / static_cast<double>(sample ? count_ - 1 : count_);
  const bool deviation = kind_ == AggregateKind::Stdev || kind_ == AggregateKind::StdevP;
  return RealResult(deviation ? std::sqrt(variance) : variance, result_);
}

}  // namespace rebate::tsql
