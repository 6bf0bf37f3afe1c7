#include "client/master_kind_word.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "client/command_line.h"
#include "client/suggestion.h"
#include "platform/automation/error.h"
#include "platform/database/connect.h"

namespace rebate {

void AddMasterKind(CLI::App& verb, Text& word, std::vector<std::pair<Text, Text>> others) {
  std::vector<Text> words;
  for (const MasterKind& kind : MasterKinds()) words.emplace_back(kind.word);
  for (const auto& [other, problem] : others) {
    if (problem.empty()) words.push_back(other);
  }
  Text list;
  for (const Text& one : words) list += (list.empty() ? "" : ", ") + one;
  const auto problem = [words, list, others = std::move(others)](const Text& typed) -> Text {
    for (const auto& [other, said] : others) {
      if (typed == other) return said;
    }
    if (std::find(words.begin(), words.end(), typed) != words.end()) return {};
    return typed + " is none of " + list + DidYouMean(typed, words);
  };
  verb.add_option("KIND", word, "What: " + list)
      ->required()
      ->type_name("")
      ->check(WithWords(CLI::Validator(problem, ""), words));
}

Text TitlesText(const MasterKind& kind) {
  Text text = Text(kind.word) + ": " + Text(kIdTitle);
  for (const MasterColumn& column : kind.columns) {
    text += ", " + Text(column.title) + " (" + Text(column.synonyms.front()) + ")";
  }
  return text;
}

ConnectionRef ConnectToMasterData(const Text& dsn) {
  const DataSource source = DataSource::Parse(dsn);
  if (source.rights) {
    throw Error(error_number::kInvalidCall, "rebate",
                "Master data is read and written whole: the data source must name no Rights");
  }
  return Connect(source);
}

}  // namespace rebate
