#include "client/table_rows.h"

#include <cmath>
#include <string>

#include "platform/automation/conversion.h"

namespace rebate {
namespace {

constexpr std::int64_t kPartSize = 20'000;
constexpr std::int64_t kTicksAMillisecond = 10'000;
constexpr int kDaysBefore1900 = 2;  // automation dates count from 1899-12-30

Text DateLiteral(double automation_date) {
  const double day = std::trunc(automation_date);
  const double time = std::fabs(automation_date - day);
  const std::int64_t milliseconds = std::llround(time * (kTicksADay / kTicksAMillisecond));
  Moment moment{static_cast<std::int64_t>(day) - kDaysBefore1900, milliseconds * kTicksAMillisecond};
  if (moment.ticks == kTicksADay) moment = {moment.day + 1, 0};
  return "'" + StoredText(moment, DateKind::DateTime) + "'";
}

}  // namespace

Text LiteralOf(const Variant& value) {
  switch (value.type()) {
    case VariantType::Null:
    case VariantType::Empty:
      return "null";
    case VariantType::Boolean:
      return value.integer() != 0 ? "1" : "0";
    case VariantType::Single:
      return ShortestText(static_cast<float>(value.real()));
    case VariantType::Double:
      return ShortestText(value.real());
    case VariantType::Date:
      return DateLiteral(value.real());
    case VariantType::Text:
      return "N'" + Replace(value.text(), "'", "''") + "'";
    default:
      return ToText(value);
  }
}

std::int64_t TableRows::Number(const Text& expression, const Text& condition, std::int64_t if_null) const {
  const RecordsetRef rows =
      connection_.Execute("select " + expression + " from " + table_.name + " where " + condition);
  const Variant value = rows->FieldValue(std::size_t{0});
  return value.IsNull() ? if_null : std::stoll(ToText(value));
}

std::int64_t TableRows::Count() const {
  return Number("count(*)", "1 = 1", 0);
}

RecordsetRef TableRows::Find(const Text& condition) const {
  Text query;
  for (const Text& column : columns_) query += (query.empty() ? "select " : ", ") + column;
  return connection_.Execute(query + " from " + table_.name + " where " + condition + " order by " + table_.key);
}

void TableRows::Visit(std::int64_t first, std::int64_t last, const std::function<void(const Part& part)>& visit) const {
  const Text condition = table_.key + (" between " + std::to_string(first)) + " and " + std::to_string(last);
  const std::int64_t count = Number("count(*)", condition, 0);
  if (count == 0) return;
  if (count <= kPartSize || first == last) return visit({condition, Find(condition)});
  const std::int64_t middle = first + (last - first) / 2;
  Visit(first, middle, visit);
  Visit(middle + 1, last, visit);
}

void TableRows::EachPart(const std::function<void(const Part& part)>& visit) const {
  const Text without_key = table_.key + Text(" is null");
  if (Number("count(*)", without_key, 0) > 0) visit({without_key, Find(without_key)});
  const Text key = table_.key;
  const std::int64_t first = Number("min(" + key + ")", "1 = 1", 0);
  const std::int64_t last = Number("max(" + key + ")", "1 = 1", -1);
  if (first <= last) Visit(first, last, visit);
}

}  // namespace rebate
