#include <CLI/CLI.hpp>
#include <memory>

#include "calls/call_control.h"
#include "client/call_loop.h"
#include "client/tool.h"

namespace rebate {

namespace {

// An account that isn't there is told before the first request is read.
void Call(const CallOptions& options, Tool& tool) {
  CallControl control;
  CallServer server(options, control);
  server.OpenDataSource();
  ServeCalls(tool.in, tool.out, server);
}

}  // namespace

void AddCallVerb(CLI::App& app, Tool& tool) {
  auto options = std::make_shared<CallOptions>();
  options->library = "TALMRebateRuleMgr";
  CLI::App* verb = app.add_subcommand("call", "Serve calls of the operations as JSON Lines, for programs");
  verb->add_option("--dsn", options->dsn, "The account for calls that leave their sDsn out")->envname("REBATE_DSN");
  verb->add_flag("--trace", options->trace, "List in each answer what the call did: opens, votes, statements");
  verb->footer(
      "Reads one request a line from standard input and answers one line for each; {\"describe\":true} lists the\n"
      "operations with their arguments. A request's \"id\" comes back, \"tell\":[\"failure\",\"scheme\"] asks why an\n"
      "operation failed and for the id of a stored scheme. A line {\"login\":{…}} or {\"cache\":\"create\"} sets what "
      "the\n"
      "login components answer, or the process cache. docs/call.md shows it from Python and Node.\n"
      "Example: echo '{\"op\":\"BaseInfoMgr.LoadRebateTypeData\",\"args\":{\"lRebateClass\":24}}' | rebate call --dsn "
      "shop.db");
  verb->callback([options, &tool] { Call(*options, tool); });
}

}  // namespace rebate
