#pragma once

#include <cstdint>
#include <optional>

#include "platform/database/tsql/eval/value.h"

namespace rebate::tsql {

enum class AggregateKind : std::uint8_t { Sum, Avg, Stdev, StdevP, Var, VarP };

// A sum of 64-bit integers that holds whatever their number and order, in two words.
class WideSum {
 public:
  void Add(std::int64_t number) {
    const auto added = static_cast<std::uint64_t>(number);
    low_ += added;
    high_ += (low_ < added ? 1 : 0) - (number < 0 ? 1 : 0);
  }
  // Nothing where the sum is beyond 64 bits.
  std::optional<std::int64_t> Result() const {
    const auto sum = static_cast<std::int64_t>(low_);
    return high_ == (sum < 0 ? -1 : 0) ? std::optional(sum) : std::nullopt;
  }

 private:
  std::uint64_t low_ = 0;
  std::int64_t high_ = 0;  // the upper word of the two's complement
};

// What an aggregate has seen of a group.
class Accumulator {
 public:
  // `result` is the type of the aggregate; its family (integers, decimals and money, floats) is that of the values. The
  // statistics go over floats.
  Accumulator(AggregateKind kind, const DataType& result) : kind_(kind), result_(result) {}

  // Null counts for nothing.
  void Add(const Value& value);
  // Null where nothing was added; Null for the deviation or variance of a sample of one. A sum that doesn't fit is
  // refused here, whatever the order of the values; an integer average's sum, too.
  Value Result() const;

 private:
  void AddReal(double number);
  Value WholeResult() const;
  Value DecimalAmount() const;
  Value Spread() const;

  AggregateKind kind_;
  DataType result_;
  std::int64_t count_ = 0;
  WideSum whole_;
  Decimal decimal_;
  double real_ = 0;     // the sum, or the running mean of a statistic
  double squares_ = 0;  // of the distances from the mean
};

}  // namespace rebate::tsql
