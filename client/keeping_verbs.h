#pragma once

namespace CLI {
class App;
}

namespace rebate {

struct Tool;

// Each adds a verb that keeps a whole account, as those of tool.h do.
void AddBackupVerb(CLI::App& app, Tool& tool);
void AddVerifyVerb(CLI::App& app, Tool& tool);
void AddCopyVerb(CLI::App& app, Tool& tool);

}  // namespace rebate
