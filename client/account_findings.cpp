#include "client/account_findings.h"

#include <algorithm>
#include <iterator>
#include <nlohmann/json.hpp>
#include <ostream>

#include "client/tool.h"
#include "platform/values/number_text.h"

namespace rebate {
namespace {

constexpr std::size_t kShownRows = 8;
constexpr std::size_t kShownFindings = 100;

Text KeyText(const FoundRow& row) {
  Text text;
  for (const auto& [column, value] : row.key) text += (text.empty() ? "" : ",") + column + "=" + value;
  return text;
}

// `t_FL_AllOrgs FID=1, FID=4; t_FL_AllItems FID=2 and 3 more rows`.
Text RowsText(const std::vector<FoundRow>& rows) {
  Text text;
  const std::size_t shown = std::min(rows.size(), kShownRows);
  for (std::size_t i = 0; i < shown; ++i) {
    const bool begins = i == 0 || rows[i].table != rows[i - 1].table;
    text += (i == 0 ? "" : begins ? "; " : ", ") + (begins ? rows[i].table + " " : Text()) + KeyText(rows[i]);
  }
  const std::size_t more = rows.size() - shown;
  return more == 0 ? text : text + " and " + std::to_string(more) + (more == 1 ? " more row" : " more rows");
}

}  // namespace

std::vector<Finding> MendableOf(const std::vector<Finding>& findings) {
  std::vector<Finding> mendable;
  if (std::any_of(findings.begin(), findings.end(), [](const Finding& f) { return f.check == kFileDamage; })) return {};
  std::copy_if(findings.begin(), findings.end(), std::back_inserter(mendable),
               [](const Finding& finding) { return finding.mendable; });
  return mendable;
}

void PrintFindings(const std::vector<Finding>& findings, Tool& tool) {
  for (auto kind = findings.begin(); kind != findings.end();) {
    const auto end =
        std::find_if(kind, findings.end(), [&](const Finding& finding) { return finding.check != kind->check; });
    const auto count = static_cast<std::size_t>(end - kind);
    tool.out << kind->check << " (" << count << ")\n";
    const auto shown = kind + static_cast<std::ptrdiff_t>(std::min(count, kShownFindings));
    for (auto finding = kind; finding != shown; ++finding) {
      tool.out << "  " << finding->what << (finding->mendable ? " [can be mended]" : "") << '\n';
      if (!finding->rows.empty()) tool.out << "    " << RowsText(finding->rows) << '\n';
    }
    if (shown != end) tool.out << "  and " << (end - shown) << " more; --json prints all of them\n";
    kind = end;
  }
}

Json FindingsJson(const std::vector<Finding>& findings) {
  Json list = Json::array();
  for (const Finding& finding : findings) {
    Json rows = Json::array();
    for (const FoundRow& row : finding.rows) {
      Json one = {{"table", row.table}};
      for (const auto& [column, value] : row.key) {
        const std::optional<std::int64_t> number = WholeNumber<std::int64_t>(value);
        one[column] = number ? Json(*number) : Json(value);
      }
      rows.push_back(std::move(one));
    }
    list.push_back(
        {{"check", finding.check}, {"what", finding.what}, {"mendable", finding.mendable}, {"rows", std::move(rows)}});
  }
  return list;
}

}  // namespace rebate
