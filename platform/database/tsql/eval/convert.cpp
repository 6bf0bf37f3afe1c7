#include "platform/database/tsql/eval/convert.h"

#include "platform/automation/error.h"
#include "platform/database/error_numbers.h"
#include "platform/database/tsql/eval/convert_steps.h"
#include "platform/values/number_text.h"

namespace rebate::tsql {
namespace {

// date and datetime2 stand for no number; the older two do.
bool StandsForNumber(TypeKind kind) {
  return kind == TypeKind::DateTime || kind == TypeKind::SmallDateTime;
}

void CheckAllowed(const Conversion& conversion) {
  const TypeKind from = conversion.from.kind;
  const TypeKind to = conversion.to.kind;
  if (!(IsNumber(from) && IsDate(to)) && !(IsDate(from) && IsNumber(to))) return;
  const bool explicitly = conversion.purpose == Purpose::Cast || conversion.purpose == Purpose::Tolerant;
  if (!StandsForNumber(IsDate(from) ? from : to)) {
    if (!explicitly) {
      Refuse("Operand type clash: " + conversion.FromName() + " is incompatible with " + conversion.ToName());
    }
    Refuse("Explicit conversion from data type " + conversion.FromName() + " to " + conversion.ToName() +
           " is not allowed.");
  }
  if (conversion.purpose == Purpose::Assign && IsDate(from)) {
    Refuse("Implicit conversion from data type " + conversion.FromName() + " to " + conversion.ToName() +
           " is not allowed. Use the CONVERT function to run this query.");
  }
}

Value Converted(const Value& value, const Conversion& conversion) {
  const TypeKind to = conversion.to.kind;
  if (IsInteger(to)) return ToInteger(value, conversion);
  if (IsExactNumber(to)) return ToExactNumber(value, conversion);
  if (IsFloat(to)) return ToFloat(value, conversion);
  if (IsText(to)) return ToTextType(value, conversion);
  return ToDate(value, conversion);
}

}  // namespace

Value Convert(const Value& value, const DataType& from, const DataType& to, Purpose purpose, TextPool& pool,
              int style) {
  const Conversion conversion{from, to, purpose, pool, style};
  CheckAllowed(conversion);
  if (value.IsNull()) return value;
  if (purpose != Purpose::Tolerant) return Converted(value, conversion);
  try {
    return Converted(value, conversion);
  } catch (const Error&) {
    return {};
  }
}

void Refuse(Text description) {
  throw Error(database_error::kStatement, "", std::move(description));
}

void RefuseOverflow(const Conversion& conversion) {
  Refuse("Arithmetic overflow error converting " + conversion.FromName() + " to data type " + conversion.ToName() +
         ".");
}

void RefuseExpression(const Conversion& conversion) {
  Refuse("Arithmetic overflow error converting expression to data type " + conversion.ToName() + ".");
}

void RefuseFloat(const Conversion& conversion, double number) {
  Refuse("Arithmetic overflow error for type " + conversion.ToName() + ", value = " + FixedText(number, 6) + ".");
}

}  // namespace rebate::tsql
