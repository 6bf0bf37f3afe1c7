#include <CLI/CLI.hpp>
#include <memory>

#include "client/call_loop.h"
#include "client/tool.h"

namespace rebate {

void AddCallVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<CallOptions>();
  options->library = "TALMRebateRuleMgr";
  CLI::App* verb = app.add_subcommand("call", "Serve calls of the operations as JSON Lines, for programs");
  verb->add_option("--dsn", options->dsn, "The account for calls that leave their sDsn out")->envname("REBATE_DSN");
  verb->add_flag("--trace", options->trace, "List in each answer what the call did: opens, votes, statements");
  verb->footer(
      "Reads one request a line from standard input and answers one line for each. A line {\"login\":{…}} or\n"
      "{\"cache\":\"create\"} sets what the login components answer, or the process cache.\n"
      "Example: echo '{\"op\":\"BaseInfoMgr.LoadRebateTypeData\",\"args\":{\"lRebateClass\":24}}' | rebate call --dsn "
      "shop.db");
  verb->callback([options, &tool] { ServeCalls(tool.in, tool.out, *options); });
}

}  // namespace rebate
