#include "client/scheme_lookup.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "client/account.h"
#include "client/id_lists.h"
#include "client/row_tables.h"
#include "platform/automation/conversion.h"
#include "platform/containers/vector.h"

namespace rebate {
namespace {

std::optional<Long> ClassOfType(const Dictionary& scheme, Long rebate_type) {
  const auto types = ObjectAs<Vector>(scheme.GetValue("SchemeConst"));
  for (Long i = 1; types && i <= types->Size(); ++i) {
    const auto type = ObjectAs<Dictionary>(types->Item(i));
    if (EqualsNumber(type->GetValue("FRebateType"), rebate_type)) return ToLong(type->Value("FRebateClass"));
  }
  return std::nullopt;
}

// Nothing for a text that is no id.
std::optional<Long> IdOf(std::string_view text) {
  const std::optional<Long> id = WholeNumber<Long>(text);
  return id && *id > 0 ? id : std::nullopt;
}

}  // namespace

std::optional<SchemeHead> FindScheme(Account& account, Long id) {
  const auto scheme = New<Dictionary>();
  account.Call("LoadSchemeRowData", {id, scheme});
  const auto row = ObjectAs<Dictionary>(scheme->GetValue("SchemeMain"));
  if (!row) {
    if (account.refusal()) account.ThrowFailure({});
    return std::nullopt;
  }
  SchemeHead head;
  head.id = id;
  head.name = CellText(*row, "FSchemeName");
  head.rebate_type = static_cast<Long>(LeadingNumber(CellText(*row, "FRebateType")));
  head.rebate_class = ClassOfType(*scheme, head.rebate_type);
  head.enabled = EqualsNumber(row->Value("FEnable"), 1);
  head.is_form = !CellText(*row, "FRebateMode").empty();
  head.row = row;
  return head;
}

std::vector<SchemeHead> FindSchemes(Account& account, const std::vector<Long>& ids) {
  std::vector<SchemeHead> schemes;
  Text missing;
  for (const Long id : ids) {
    if (const std::optional<SchemeHead> scheme = FindScheme(account, id)) {
      schemes.push_back(*scheme);
    } else {
      missing += (missing.empty() ? "" : ", ") + std::to_string(id);
    }
  }
  if (missing.empty()) return schemes;
  throw Error(error_number::kInvalidCall, "rebate", "There is no scheme " + missing + "; nothing was changed");
}

std::optional<Long> NewestScheme(Account& account, Long rebate_type, const Text& name) {
  return account.QueryNumber("select max(FSchemeID) from t_FL_SchemeList where FRebateType=" +
                             std::to_string(rebate_type) + " and FSchemeName=N'" + Replace(name, "'", "''") + "'");
}

Text SchemeText(const SchemeHead& scheme) {
  return "scheme " + std::to_string(scheme.id) + " (" + scheme.name + ")";
}

void AddSchemeIds(CLI::App& verb, std::vector<Text>& lists) {
  const auto problem = [](const Text& list) {
    const std::vector<Text> ids = ListParts(list);
    const bool good =
        !ids.empty() && std::all_of(ids.begin(), ids.end(), [](const Text& id) { return IdOf(id).has_value(); });
    return good ? Text() : "a scheme's id is a positive integer, unlike " + (list.empty() ? "an empty text" : list);
  };
  verb.add_option("ID", lists, "The schemes' ids, as `rebate list --status all` gives them")
      ->required()
      ->type_name("INT ...")
      ->check(problem);
}

std::vector<Long> SchemeIds(const std::vector<Text>& lists) {
  std::vector<Long> ids;
  for (const Text& list : lists) {
    for (const Text& text : ListParts(list)) {
      const Long id = IdOf(text).value();
      if (std::find(ids.begin(), ids.end(), id) == ids.end()) ids.push_back(id);
    }
  }
  return ids;
}

Text IdList(const std::vector<Long>& ids) {
  Text list;
  for (const Long id : ids) list += (list.empty() ? "" : ",") + std::to_string(id);
  return list;
}

}  // namespace rebate
