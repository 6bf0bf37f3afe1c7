#include "client/account_check.h"

#include "client/digit_check.h"
#include "client/overlap_check.h"
#include "client/row_checks.h"
#include "platform/automation/conversion.h"
#include "platform/automation/error.h"
#include "platform/database/self_check.h"

namespace rebate {
namespace {

constexpr std::size_t kOtherSteps = 3;  // the file, overlaps, digits

std::vector<Text> KeyColumns(const RowCheck& check) {
  return Split(check.key, ',');
}

Text QueryOf(const RowCheck& check) {
  Text columns;
  Text order;
  for (const Text& column : KeyColumns(check)) {
    columns += ", t." + column;
    if (column != "FSchemeID") order += ", t." + column;
  }
  return "select t.FSchemeID as FGroup" + columns + " from " + check.table + " t where " + ConditionOf(check) +
         " order by t.FSchemeID" + order;
}

FoundRow RowOf(const RowCheck& check, const std::vector<Text>& columns, const Recordset& rows) {
  FoundRow row{check.table, {}};
  for (std::size_t i = 0; i < columns.size(); ++i) {
    const Variant value = rows.FieldValue(i + 1);
    row.key.emplace_back(columns[i], value.IsNull() ? "NULL" : ToText(value));
  }
  return row;
}

void RunCheck(Connection& connection, const RowCheck& check, std::vector<Finding>& findings) {
  const std::vector<Text> columns = KeyColumns(check);
  const RecordsetRef rows = connection.Execute(QueryOf(check));
  Text scheme;
  for (bool begins = true; !rows->Eof(); rows->MoveNext(), begins = false) {
    const Variant value = rows->FieldValue(std::size_t{0});
    Text of = value.IsNull() ? "(none)" : ToText(value);
    if (begins || of != scheme) {
      findings.push_back({check.name, Replace(check.what, "{}", of), {}, check.mend != nullptr});
    }
    scheme = std::move(of);
    findings.back().rows.push_back(RowOf(check, columns, *rows));
  }
}

std::vector<Finding> CheckFile(Connection& connection) {
  std::vector<Finding> findings;
  for (const Text& fault : FileFaults(connection)) {
    findings.push_back({kFileDamage, "the account's file is damaged: " + fault, {}, false});
  }
  return findings;
}

void CheckRows(Connection& connection, Progress& progress, std::vector<Finding>& findings) {
  const auto add = [&](std::vector<Finding> more) {
    findings.insert(findings.end(), more.begin(), more.end());
    progress.Step();
  };
  add(FindOverlaps(connection));
  for (const RowCheck& check : RowChecks()) {
    RunCheck(connection, check, findings);
    progress.Step();
  }
  add(FindStrayDigits(connection));
}

}  // namespace

std::size_t CheckSteps() {
  return RowChecks().size() + kOtherSteps;
}

std::vector<Finding> CheckAccount(Connection& connection, Progress& progress) {
  std::vector<Finding> findings = CheckFile(connection);
  progress.Step();
  const bool damaged = !findings.empty();
  try {
    CheckRows(connection, progress, findings);
  } catch (const Error& error) {
    if (!damaged) throw;
    findings.push_back({kFileDamage, "no more could be read: " + error.description, {}, false});
  }
  return findings;
}

void MendAccount(Connection& connection) {
  for (const RowCheck& check : RowChecks()) {
    if (check.mend == nullptr) continue;
    connection.Execute(Text(check.mend) + " from " + check.table + " t where " + ConditionOf(check));
  }
  MendStrayDigits(connection);
}

}  // namespace rebate
