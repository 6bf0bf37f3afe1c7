#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include "platform/database/tsql/data_types.h"
#include "platform/values/decimal.h"

namespace rebate::tsql {

// A value while it is worked with. Bits and integers are Integer, float and real are Real, decimal and money are
// Decimal; character types, and dates in the form in which a column keeps them, are Text.
struct Value {
  enum class Kind : std::uint8_t { Null, Integer, Real, Decimal, Text };

  Kind kind = Kind::Null;
  std::int64_t integer = 0;
  double real = 0;
  rebate::Decimal decimal;
  std::string_view text;  // whoever made the value owns the bytes

  static Value Of(std::int64_t integer);
  static Value Of(double real);
  static Value Of(const rebate::Decimal& decimal);
  static Value Of(std::string_view text);
  static Value OfBool(bool value) { return Of(std::int64_t{value}); }
  bool IsNull() const { return kind == Kind::Null; }
};

// Keeps the texts that a calculation makes until it is over.
class TextPool {
 public:
  std::string_view Keep(Text text);
  void Clear();

 private:
  std::vector<std::unique_ptr<Text>> texts_;
};

}  // namespace rebate::tsql
