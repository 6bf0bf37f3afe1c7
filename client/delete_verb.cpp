#include <CLI/CLI.hpp>
#include <memory>
#include <nlohmann/json.hpp>

#include "calls/json_text.h"
#include "client/account.h"
#include "client/scheme_lookup.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"

namespace rebate {
namespace {

struct DeleteOptions : AccountOptions {
  std::vector<Text> lists;
  bool force = false;
};

Text NameOf(Long id, const std::optional<SchemeHead>& scheme) {
  return scheme ? SchemeText(*scheme) : "scheme " + std::to_string(id);
}

// Raises, naming them, where schemes are linked.
void CheckLinks(Account& account, const std::vector<Long>& ids) {
  Text linked;
  for (const Long id : ids) {
    if (ToBoolean(account.Call("CheckSchemeAllowDel", {std::to_string(id)}))) continue;
    if (account.refusal()) account.ThrowFailure({});
    linked += (linked.empty() ? "" : ", ") + NameOf(id, FindScheme(account, id));
  }
  if (linked.empty()) return;
  throw Error(error_number::kInvalidCall, "rebate",
              "Nothing was deleted: " + linked + " can't be deleted, being linked; --force deletes all the same");
}

void Delete(const DeleteOptions& options, Tool& tool) {
  Account account(options.dsn);
  const std::vector<Long> ids = SchemeIds(options.lists);
  if (!options.force) CheckLinks(account, ids);
  Json deleted = Json::array();
  Json missing = Json::array();
  Text sentences;
  for (const Long id : ids) {
    const std::optional<SchemeHead> scheme = FindScheme(account, id);
    (scheme ? deleted : missing).push_back(id);
    sentences += (scheme ? "Deleted " : "There is no ") + NameOf(id, scheme) + ".\n";
  }
  if (!ToBoolean(account.Call("DelSchemeData", {IdList(ids)}))) account.ThrowFailure("The schemes can't be deleted");
  tool.out << (options.json ? JsonLine({{"deleted", deleted}, {"missing", missing}}) + "\n" : sentences);
}

}  // namespace

void AddDeleteVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<DeleteOptions>();
  CLI::App* verb = app.add_subcommand("delete", "Delete schemes with all their rows, unless one of them is linked");
  AddSchemeIds(*verb, options->lists);
  verb->add_flag("--force", options->force, "Delete linked schemes, too");
  AddAccountOptions(*verb, *options);
  verb->footer("Example: rebate delete 2 3 --dsn shop.db");
  verb->callback([options, &tool] { Delete(*options, tool); });
}

}  // namespace rebate
