#pragma once

#include <utility>
#include <vector>

#include "client/master_kind.h"
#include "platform/database/connection.h"

namespace CLI {
class App;
}

namespace rebate {

// Adds the word that picks a kind of master data to a verb; any other is wrong usage, with a suggestion. `others` are
// words of no such kind, each with what is said to it; nothing where it is taken. `word` outlives the run.
void AddMasterKind(CLI::App& verb, Text& word, std::vector<std::pair<Text, Text>> others);

// The kind's word and the titles of its columns, as in `units: ID, Number (编号), Name (名称)`.
Text TitlesText(const MasterKind& kind);

// Opens an account to read or write its master data whole. Raises 5 where the data source names rights, under which a
// user sees a part of it alone.
ConnectionRef ConnectToMasterData(const Text& dsn);

}  // namespace rebate
