#pragma once

#include <optional>
#include <vector>

#include "platform/values/types.h"

namespace CLI {
class App;
class Option;
class Validator;
}  // namespace CLI

namespace rebate {

// The arguments behind the program's name, those that stand in front of the verb though the verb is to have them
// (`--dsn DSN`, `--json`) moved behind it.
std::vector<Text> VerbFirst(const std::vector<Text>& arguments);

// The name of an option as it is typed, which may hold its value: `--dsn` of `--dsn=shop.db`.
Text OptionName(const Text& argument);

// What is wrong with the words that pick the verb, with a suggestion; nothing where they name one.
std::optional<Text> VerbProblem(const CLI::App& app, const std::vector<Text>& arguments);

// What is wrong with the first argument that looks like an option of the verb and is none, with a suggestion; nothing
// where there is no such argument.
std::optional<Text> OptionProblem(const CLI::App& app, const std::vector<Text>& arguments);

// A word that a value may be given as, and the value that it stands for.
struct ChoiceWord {
  const char* word;
  const char* value;
};

// Lets an option's value be one of the words, which its value then takes the place of, or one of the values; any other
// is wrong usage, with a suggestion.
CLI::Validator OneOf(std::vector<ChoiceWord> words);

// The words that an option's value may be, none where it isn't one of a few.
std::vector<Text> WordsOf(CLI::Option& option);
// Has WordsOf give them for the options that the validator checks.
CLI::Validator WithWords(CLI::Validator validator, const std::vector<Text>& words);

// The same for a rebate class: 24 suppliers, 32 customers, 40 salesmen.
CLI::Validator RebateClassWord();

}  // namespace rebate
