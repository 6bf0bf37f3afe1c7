#include "client/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>

#include "client/id_lists.h"
#include "client/suggestion.h"

namespace rebate {
namespace {

bool IsOption(const Text& argument) {
  return argument.size() > 1 && argument[0] == '-';
}

// Whether it is an option that verbs have and that may stand in front of them.
bool IsForVerb(const Text& argument) {
  return OptionName(argument) == "--dsn" || OptionName(argument) == "--json";
}

std::vector<Text> VerbNames(const CLI::App& app) {
  std::vector<Text> names;
  for (const CLI::App* verb : app.get_subcommands([](const CLI::App*) { return true; })) {
    names.push_back(verb->get_name());
  }
  return names;
}

// The verb that the first words pick, as deep as they go, and how many words they are.
std::pair<const CLI::App*, std::size_t> PickedVerb(const CLI::App& app, const std::vector<Text>& arguments) {
  const CLI::App* verb = &app;
  std::size_t depth = 0;
  for (; depth < arguments.size(); ++depth) {
    const std::vector<Text> names = VerbNames(*verb);
    if (std::find(names.begin(), names.end(), arguments[depth]) == names.end()) break;
    verb = verb->get_subcommand(arguments[depth]);
  }
  return {verb, depth};
}

}  // namespace

Text OptionName(const Text& argument) {
  return argument.substr(0, argument.find('='));
}

std::vector<Text> VerbFirst(const std::vector<Text>& arguments) {
  std::vector<Text> moved;
  std::size_t at = 0;
  for (; at < arguments.size(); ++at) {
    if (!IsForVerb(arguments[at])) break;
    moved.push_back(arguments[at]);
    if (arguments[at] == "--dsn" && at + 1 < arguments.size()) moved.push_back(arguments[++at]);
  }
  // Without a verb behind them they stay where they are, and are told as wrong.
  if (at == arguments.size() || IsOption(arguments[at])) return arguments;
  std::vector<Text> ordered(arguments.begin() + static_cast<std::ptrdiff_t>(at), arguments.end());
  // Behind `--` nothing is an option.
  ordered.insert(std::find(ordered.begin(), ordered.end(), "--"), moved.begin(), moved.end());
  return ordered;
}

std::optional<Text> VerbProblem(const CLI::App& app, const std::vector<Text>& arguments) {
  const auto [verb, depth] = PickedVerb(app, arguments);
  const std::vector<Text> names = VerbNames(*verb);
  if (names.empty()) return std::nullopt;
  const Text help = "; `" + (depth == 0 ? "rebate" : "rebate " + verb->get_name()) + " --help` lists them";
  if (depth == arguments.size()) return "A verb is due" + help;
  const Text& typed = arguments[depth];
  if (IsForVerb(typed)) return "A verb is due" + help;
  if (IsOption(typed)) return std::nullopt;
  const Text near = DidYouMean(typed, names);
  return "There is no verb " + typed + (near.empty() ? help : near);
}

std::optional<Text> OptionProblem(const CLI::App& app, const std::vector<Text>& arguments) {
  const CLI::App* verb = PickedVerb(app, arguments).first;
  std::vector<Text> names;
  for (const CLI::Option* option : verb->get_options()) {
    for (const Text& name : option->get_lnames()) names.push_back("--" + name);
  }
  for (const Text& argument : arguments) {
    if (argument == "--") break;
    if (!argument.starts_with("--")) continue;
    const Text name = OptionName(argument);
    if (std::find(names.begin(), names.end(), name) != names.end()) continue;
    const Text near = DidYouMean(name, names);
    const Text verb_text = verb == &app ? "rebate" : "rebate " + verb->get_name();
    return verb_text + " knows no option " + name + (near.empty() ? "; `" + verb_text + " --help` lists them" : near);
  }
  return std::nullopt;
}

std::vector<Text> WordsOf(CLI::Option& option) {
  try {
    return ListParts(option.get_validator(0)->get_name());
  } catch (const CLI::OptionNotFound&) {
    return {};
  }
}

CLI::Validator WithWords(CLI::Validator validator, const std::vector<Text>& words) {
  // Its name is all that a validator carries beside its function.
  Text name;
  for (const Text& word : words) name += (name.empty() ? "" : " ") + word;
  return validator.name(name);
}

CLI::Validator OneOf(std::vector<ChoiceWord> words) {
  std::vector<Text> offered;
  for (const ChoiceWord& choice : words) offered.emplace_back(choice.word);
  const auto choose = [words = std::move(words)](Text& typed) -> Text {
    std::vector<Text> names;
    Text list;
    for (const ChoiceWord& choice : words) {
      if (typed == choice.value) return {};
      if (typed == choice.word) {
        typed = choice.value;
        return {};
      }
      names.push_back(choice.word);
      list += (list.empty() ? "" : ", ") + Text(choice.word);
    }
    const Text near = DidYouMean(typed, names);
    return typed + " is none of " + list + near;
  };
  return WithWords(CLI::Validator(choose, ""), offered);
}

CLI::Validator RebateClassWord() {
  return OneOf({{"suppliers", "24"}, {"customers", "32"}, {"salesmen", "40"}});
}

}  // namespace rebate
