#include "platform/database/tsql/eval/convert_steps.h"

namespace rebate::tsql {
namespace {

[[noreturn]] void RefuseText(std::string_view text, DateOrder order, const Conversion& conversion) {
  const TypeKind to = conversion.to.kind;
  const bool older = to == TypeKind::DateTime || to == TypeKind::SmallDateTime;
  if (older && HasDateForm(text, FormOf(conversion.to), order)) {
    Refuse("The conversion of a " + conversion.FromName() + " data type to a " + conversion.ToName() +
           " data type resulted in an out-of-range value.");
  }
  if (to == TypeKind::SmallDateTime) {
    Refuse("Conversion failed when converting character string to smalldatetime data type.");
  }
  Refuse("Conversion failed when converting date and/or time from character string.");
}

// What three short numbers mean by a style of the convert function.
DateOrder OrderOf(const Conversion& conversion) {
  switch (conversion.style) {
    case 0:
      return DateOrder::MonthFirst;
    case 3:
    case 4:
    case 5:
    case 103:
    case 104:
    case 105:
      return DateOrder::DayFirst;
    case 2:
    case 11:
    case 102:
    case 111:
      return DateOrder::YearFirst;
    default:
      break;
  }
  if (FormatMoment({}, {DateKind::DateTime}, conversion.style)) return DateOrder::MonthFirst;
  Refuse(std::to_string(conversion.style) + " is not a valid style number when converting from " +
         conversion.FromName() + " to " + conversion.ToName() + ".");
}

Moment FromText(std::string_view text, const Conversion& conversion) {
  const DateOrder order = OrderOf(conversion);
  const std::optional<Moment> moment = ParseMoment(text, FormOf(conversion.to), order);
  if (!moment) RefuseText(text, order, conversion);
  return *moment;
}

Moment FromDate(const Value& value, const Conversion& conversion) {
  const std::optional<Moment> moment = Fit(MomentOf(value), FormOf(conversion.to));
  if (!moment) {
    Refuse("The conversion of a " + conversion.FromName() + " data type to a " + conversion.ToName() +
           " data type resulted in an out-of-range value.");
  }
  return *moment;
}

Moment FromNumber(const Value& value, const Conversion& conversion) {
  const double days = value.kind == Value::Kind::Integer ? static_cast<double>(value.integer)
                      : value.kind == Value::Kind::Real  ? value.real
                                                         : value.decimal.ToDouble();
  std::optional<Moment> moment = FromDays(days);
  if (moment) moment = Fit(*moment, FormOf(conversion.to));
  if (!moment) RefuseExpression(conversion);
  return *moment;
}

}  // namespace

Value ToDate(const Value& value, const Conversion& conversion) {
  const TypeKind from = conversion.from.kind;
  if (conversion.from == conversion.to) return value;
  const Moment moment = IsText(from)   ? FromText(value.text, conversion)
                        : IsDate(from) ? FromDate(value, conversion)
                                       : FromNumber(value, conversion);
  return Value::Of(conversion.pool.Keep(StoredText(moment, FormOf(conversion.to).kind)));
}

Moment MomentOf(const Value& value) {
  if (const std::optional<Moment> moment = ReadStored(value.text)) return *moment;
  Refuse("Conversion failed when converting date and/or time from character string.");
}

Decimal DaysOf(const Value& value) {
  constexpr int kPlaces = 20;
  const Moment moment = MomentOf(value);
  const auto time = Decimal::Divide(Decimal(moment.ticks), Decimal(kTicksADay), kPlaces, Decimal::Digits::Round);
  return *Decimal::Add(Decimal(moment.day), *time, kPlaces);
}

}  // namespace rebate::tsql
