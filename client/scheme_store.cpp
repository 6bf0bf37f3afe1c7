#include "client/scheme_store.h"

#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "client/account.h"
#include "client/first_rows.h"
#include "client/form_file.h"
#include "client/form_sense.h"
#include "client/rebate_classes.h"
#include "client/request_check.h"
#include "client/row_tables.h"
#include "client/scheme_remains.h"
#include "client/scheme_sense.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"

namespace rebate {
namespace {

Ref<Dictionary> TypeRowOf(Account& account, const Json& request) {
  if (request.contains("SchemeConst")) return ObjectAs<Dictionary>(FromJson(request["SchemeConst"], "SchemeConst"));
  return TypeRow(account, ToLong(FromJson(request["FRebateType"], "FRebateType")));
}

// The head as it is asked for, with the note that the operation would otherwise store as a 0.
Ref<Dictionary> HeadOf(const Json& request) {
  auto head = ObjectAs<Dictionary>(FromJson(request["SchemeMainData"], "SchemeMainData"));
  if (!head->Has("FNote")) head->SetValue("FNote", "");
  return head;
}

// A save enables what it stores. A scheme that takes the place of a disabled one stays disabled, and so does one that
// asks for it.
bool IsDisabled(const CheckedScheme& scheme, const Dictionary& head) {
  return (scheme.replaced && !scheme.replaced->enabled) || (head.Has("FEnable") && ToLong(head.Value("FEnable")) == 0);
}

void Disable(Account& account, Long id) {
  if (ToBoolean(account.Call("EnableScheme", {id, false}))) return;
  account.ThrowFailure("Scheme " + std::to_string(id) + " is stored, but enabled: it can't be disabled");
}

// The form's argument, `otherwise` where it is left out.
Variant ArgumentOf(const Json& form, const char* key, const Variant& otherwise) {
  return form.contains(key) ? FromJson(form[key], key) : otherwise;
}

// The operation stores a form disabled and leaves the rows of the one that it replaces.
void FinishReplacing(Account& account, const SchemeHead& replaced, const std::optional<Long>& id) {
  std::vector<Text> also;
  if (replaced.enabled && id) {
    also.push_back("update t_FL_SchemeList set FEnable=1 where FSchemeID=" + std::to_string(*id));
  }
  try {
    RemoveRemains(account, {replaced.id}, also);
  } catch (const Error& error) {
    throw Error(error.number, error.source,
                "The form is stored, disabled, but the rows of " + SchemeText(replaced) +
                    " can't be removed: " + error.description);
  }
}

}  // namespace

CheckedScheme CheckRequest(Account& account, Json request) {
  CheckedScheme scheme;
  scheme.problems = RequestProblems(request);
  if (!scheme.problems.empty()) return scheme;
  scheme.request = PlainObject(request, RequestKeys());
  scheme.replaced = CheckScheme(account, scheme.request, scheme.findings);
  CheckUser(account, "AppUser", scheme.findings);
  return scheme;
}

StoredScheme StoreRequest(Account& account, const CheckedScheme& scheme) {
  const Ref<Dictionary> type = TypeRowOf(account, scheme.request);
  const Ref<Dictionary> head = HeadOf(scheme.request);
  std::vector<Variant> arguments = {type, head};
  for (const char* key : {"AllRangesData", "AllOrgsData", "AllGridRows"}) {
    arguments.push_back(FromJson(scheme.request[key], key));
  }
  StoredScheme outcome;
  outcome.name = CellText(*head, "FSchemeName");
  outcome.answer = ObjectAs<Dictionary>(account.Call("SaveOneSchemeData", std::move(arguments)));
  if (!outcome.answer) account.ThrowFailure("The scheme can't be saved");
  outcome.stored = ToBoolean(outcome.answer->Value("OK"));
  if (!outcome.stored) return outcome;
  outcome.id = NewestScheme(account, ToLong(type->Value("FRebateType")), outcome.name);
  outcome.disabled = outcome.id && IsDisabled(scheme, *head);
  if (outcome.disabled) Disable(account, *outcome.id);
  return outcome;
}

CheckedScheme CheckFormRequest(Account& account, Json form) {
  CheckedScheme scheme;
  scheme.problems = FormProblems(form);
  if (!scheme.problems.empty()) return scheme;
  scheme.request = PlainObject(form, FormKeys());
  scheme.replaced = CheckForm(account, scheme.request, scheme.findings);
  CheckUser(account, "AppUser", scheme.findings);
  return scheme;
}

StoredScheme StoreForm(Account& account, const CheckedScheme& scheme) {
  const Json& form = scheme.request;
  StoredScheme outcome;
  outcome.name = form["SchemeName"].get<Text>();
  const Long type = ToLong(ArgumentOf(form, "lRebateType", 0));
  const Variant saved =
      account.Call("SaveSchemeData",
                   {scheme.replaced ? scheme.replaced->id : 0, outcome.name, type, ArgumentOf(form, "lRebateMode", 0),
                    ArgumentOf(form, "sOrg", ""), ArgumentOf(form, "vecRangeData", {}),
                    ArgumentOf(form, "vecSchemeData", {}), ArgumentOf(form, "Note", "")});
  if (!ToBoolean(saved)) account.ThrowFailure("The form can't be saved");
  outcome.stored = true;
  outcome.id = NewestScheme(account, type, outcome.name);
  outcome.disabled = !scheme.replaced || !scheme.replaced->enabled;
  if (scheme.replaced) FinishReplacing(account, *scheme.replaced, outcome.id);
  return outcome;
}

}  // namespace rebate
