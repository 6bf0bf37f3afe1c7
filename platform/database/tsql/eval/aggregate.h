#pragma once

#include "platform/database/tsql/eval/value.h"

namespace rebate::tsql {

enum class AggregateKind : std::uint8_t { Sum, Avg, Stdev, StdevP, Var, VarP };

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
  __extension__ using Wide = __int128;  // holds every sum of 64-bit integers

  void AddReal(double number);
  Value WholeResult() const;
  Value DecimalAmount() const;
  Value Spread() const;

  AggregateKind kind_;
  DataType result_;
  std::int64_t count_ = 0;
  Wide whole_ = 0;
  Decimal decimal_;
  double real_ = 0;     // the sum, or the running mean of a statistic
  double squares_ = 0;  // of the distances from the mean
};

}  // namespace rebate::tsql
