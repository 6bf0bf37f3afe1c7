#include "client/digit_check.h"

#include <algorithm>

#include "platform/automation/conversion.h"
#include "platform/values/decimal.h"

namespace rebate {
namespace {

constexpr int kMeantDigits = 15;

struct AmountColumn {
  const char* table;
  const char* column;
};
constexpr AmountColumn kColumns[] = {
    {"t_FL_RebateRange", "FLowerLimit"}, {"t_FL_RebateRange", "FUpperLimit"}, {"t_FL_RebateRule", "FRebateRate"}};

struct StrayAmount {
  Text scheme;
  Text id;
  Text stands;
  Text meant;
};

std::vector<StrayAmount> StrayAmounts(Connection& connection, const AmountColumn& column) {
  const Text amount = column.column;
  std::vector<StrayAmount> found;
  // What has five digits or less on the right, and ten on the left, has no more than 15.
  const RecordsetRef rows =
      connection.Execute("select FSchemeID, FID, " + amount + " from " + column.table + " where " + amount +
                         " <> round(" + amount + ", 5) or abs(" + amount + ") >= 10000000000 order by FSchemeID, FID");
  for (; !rows->Eof(); rows->MoveNext()) {
    const Variant scheme = rows->FieldValue(std::size_t{0});
    Text stands = ToText(rows->FieldValue(std::size_t{2}));
    const std::optional<Text> meant = DigitsMeant(stands);
    if (!meant) continue;
    found.push_back(
        {scheme.IsNull() ? "0" : ToText(scheme), ToText(rows->FieldValue(std::size_t{1})), std::move(stands), *meant});
  }
  return found;
}

}  // namespace

std::optional<Text> DigitsMeant(std::string_view amount) {
  const std::optional<Decimal> read = Decimal::Parse(amount);
  if (!read || read->IsZero()) return std::nullopt;
  const Text digits = read->ToKey();
  // Zeros in front of the first digit that counts are none.
  const std::size_t first = digits.find_first_of("123456789");
  const std::size_t point = std::min(digits.find('.'), digits.size());
  const int before_point =
      first < point ? static_cast<int>(point - first) : static_cast<int>(point + 1) - static_cast<int>(first);
  const std::optional<Decimal> meant = read->RoundedTo(kMeantDigits - before_point);
  if (!meant || *meant == *read) return std::nullopt;
  return meant->ToKey();
}

std::vector<Finding> FindStrayDigits(Connection& connection) {
  std::vector<Finding> findings;
  for (const AmountColumn& column : kColumns) {
    for (const StrayAmount& amount : StrayAmounts(connection, column)) {
      const Text of = amount.scheme == "0" ? Text("a rate grid") : "scheme " + amount.scheme;
      findings.push_back(
          {"digits",
           Text(column.column) + " of " + of + " is " + amount.stands + ", which was meant as " + amount.meant,
           {{column.table, {{"FID", amount.id}}}},
           true});
    }
  }
  return findings;
}

void MendStrayDigits(Connection& connection) {
  for (const AmountColumn& column : kColumns) {
    for (const StrayAmount& amount : StrayAmounts(connection, column)) {
      connection.Execute("update " + Text(column.table) + " set " + column.column + " = " + amount.meant +
                         " where FID = " + amount.id);
    }
  }
}

}  // namespace rebate
