#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_text.h"
#include "client/account.h"
#include "client/confirm.h"
#include "client/scheme_lookup.h"
#include "client/scheme_remains.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

struct DeleteOptions : AccountOptions {
  std::vector<Text> lists;
  bool force = false;
  bool yes = false;
};

// Raises, naming them, where schemes are linked.
void CheckLinks(Account& account, const std::vector<SchemeHead>& schemes) {
  Text linked;
  for (const SchemeHead& scheme : schemes) {
    if (ToBoolean(account.Call("CheckSchemeAllowDel", {std::to_string(scheme.id)}))) continue;
    if (account.refusal()) account.ThrowFailure({});
    linked += (linked.empty() ? "" : ", ") + SchemeText(scheme);
  }
  if (linked.empty()) return;
  throw Error(error_number::kInvalidCall, "rebate",
              "Nothing was deleted: " + linked + " can't be deleted, being linked; --force deletes all the same");
}

void ConfirmDeletion(const std::vector<SchemeHead>& schemes, Tool& tool) {
  Text question =
      schemes.size() == 1 ? "This scheme goes, with all its rows:" : "These schemes go, with all their rows:";
  for (const SchemeHead& scheme : schemes) {
    question += "\n  " + SchemeText(scheme) + (scheme.enabled ? ", enabled" : ", disabled");
  }
  Confirm(question + "\nDelete?", tool);
}

void Delete(const DeleteOptions& options, Tool& tool) {
  Account account(options.dsn);
  const std::vector<Long> ids = SchemeIds(options.lists);
  const std::vector<SchemeHead> schemes = FindSchemes(account, ids);
  if (!options.force) CheckLinks(account, schemes);
  if (!options.yes) ConfirmDeletion(schemes, tool);
  if (!ToBoolean(account.Call("DelSchemeData", {IdList(ids)}))) account.ThrowFailure("The schemes can't be deleted");
  RemoveRemains(account, ids);
  if (options.json) {
    tool.out << JsonLine({{"deleted", ids}}) << '\n';
    return;
  }
  for (const SchemeHead& scheme : schemes) tool.out << "Deleted " << SchemeText(scheme) << ".\n";
}

}  // namespace

void AddDeleteVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<DeleteOptions>();
  CLI::App* verb = app.add_subcommand("delete", "Delete schemes with all their rows, unless one of them is linked");
  AddSchemeIds(*verb, options->lists);
  verb->add_flag("--force", options->force, "Delete linked schemes, too");
  verb->add_flag("--yes,-y", options->yes, "Go on without a question");
  AddAccountOptions(*verb, *options);
  verb->footer(
      "Asks before it deletes; where nobody can be asked, it refuses without --yes. Where one of the schemes isn't\n"
      "there, none is deleted.\n"
      "Example: rebate delete 2 3 --dsn shop.db");
  verb->callback([options, &tool] { Delete(*options, tool); });
}

}  // namespace rebate
