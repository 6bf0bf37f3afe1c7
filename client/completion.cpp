#include "client/completion.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <ostream>
#include <set>

#include "client/account_candidates.h"
#include "client/command_line.h"
#include "client/printable.h"
#include "client/tool.h"
#include "platform/files/files.h"

namespace rebate {
namespace {

constexpr std::size_t kMostCandidates = 500;

// Where a word stands that is being typed: what the words before it mean.
struct Place {
  CLI::App* verb = nullptr;
  std::size_t words = 0;     // that the verb has already, options apart
  Text awaited;              // the option whose value it is, empty where it is none's
  bool options_end = false;  // whether a `--` stands before it
  Text dsn;
};

bool LooksLikeOption(const Text& word, const Place& place) {
  return !place.options_end && word.size() > 1 && word[0] == '-';
}

std::vector<CLI::App*> VerbsOf(CLI::App& app) {
  return app.get_subcommands([](CLI::App*) { return true; });
}

// Null where there is no such verb.
CLI::App* VerbNamed(CLI::App& app, const Text& name) {
  for (CLI::App* verb : VerbsOf(app)) {
    if (verb->get_name() == name) return verb;
  }
  return nullptr;
}

// In front of the verb may stand what verbs have.
bool TakesValue(const Place& place, const Text& name) {
  if (name == "--dsn") return true;
  const CLI::Option* option = place.verb->get_option_no_throw(name);
  return option != nullptr && option->get_items_expected_max() > 0;
}

void Pass(const Text& word, Place& place) {
  if (!place.awaited.empty()) {
    if (place.awaited == "--dsn") place.dsn = word;
    place.awaited.clear();
  } else if (word == "--") {
    place.options_end = true;
  } else if (LooksLikeOption(word, place)) {
    const bool holds_value = word.find('=') != Text::npos;
    if (holds_value && OptionName(word) == "--dsn") place.dsn = word.substr(word.find('=') + 1);
    if (!holds_value && TakesValue(place, word)) place.awaited = word;
  } else if (CLI::App* verb = VerbNamed(*place.verb, word); verb != nullptr && place.words == 0) {
    place.verb = verb;
  } else {
    ++place.words;
  }
}

std::vector<Candidate> OptionCandidates(CLI::App& verb) {
  std::vector<Candidate> candidates;
  for (const CLI::Option* option : verb.get_options()) {
    for (const Text& name : option->get_lnames()) candidates.push_back({"--" + name, option->get_description()});
  }
  return candidates;
}

std::vector<Candidate> VerbCandidates(CLI::App& app) {
  std::vector<Candidate> candidates;
  for (const CLI::App* verb : VerbsOf(app)) candidates.push_back({verb->get_name(), verb->get_description()});
  return candidates;
}

// The word that stands behind `words` others; one that may be repeated takes all that follow.
CLI::Option* WordAt(CLI::App& verb, std::size_t words) {
  CLI::Option* last = nullptr;
  for (CLI::Option* option : verb.get_options()) {
    if (!option->get_positional()) continue;
    last = option;
    if (words-- == 0) return option;
  }
  return last != nullptr && last->get_items_expected_max() > 1 ? last : nullptr;
}

// By the name that help gives the value. Ids that are integers are those of schemes; entities have numbers besides.
std::vector<Candidate> ValueCandidates(const Text& name, CLI::Option* option, const Text& dsn) {
  if (option != nullptr) {
    std::vector<Candidate> words;
    for (const Text& word : WordsOf(*option)) words.push_back({word, ""});
    if (!words.empty()) return words;
  }
  static const std::set<Text> kTypes = {"TYPE", "--type"};
  static const std::set<Text> kSchemes = {"ID", "--id", "--scheme", "--except"};
  static const std::set<Text> kFiles = {"FILE", "FROM", "TO", "--dsn", "--file", "-f", "--set"};
  if (kTypes.contains(name)) return TypeCandidates(dsn);
  if (kSchemes.contains(name) && option != nullptr && option->get_type_name().starts_with("INT"))
    return SchemeCandidates(dsn);
  if (kFiles.contains(name) || name.find("DSN") != Text::npos) return {{kFilesLine, ""}};
  return {};
}

std::vector<Candidate> CandidatesAt(const Place& place, const Text& typed) {
  const auto values = [&](const Text& name) {
    return ValueCandidates(name, place.verb->get_option_no_throw(name), place.dsn);
  };
  if (!place.awaited.empty()) return values(place.awaited);
  if (LooksLikeOption(typed + "-", place) && typed.starts_with("-")) {
    if (typed.find('=') == Text::npos) return OptionCandidates(*place.verb);
    std::vector<Candidate> candidates = values(OptionName(typed));
    for (Candidate& candidate : candidates) {
      if (candidate.word != kFilesLine) candidate.word = OptionName(typed) + "=" + candidate.word;
    }
    return candidates;
  }
  if (!VerbsOf(*place.verb).empty()) return VerbCandidates(*place.verb);
  CLI::Option* option = WordAt(*place.verb, place.words);
  return option == nullptr ? std::vector<Candidate>() : ValueCandidates(option->get_name(true), option, place.dsn);
}

Text FirstLine(const Text& text) {
  return Printable(text.substr(0, text.find('\n')));
}

}  // namespace

void PrintCompletions(CLI::App& app, std::vector<Text> words, Tool& tool) {
  if (!words.empty() && words[0] == "--") words.erase(words.begin());
  if (words.empty()) words.emplace_back();
  const Text typed = words.back();
  words.pop_back();
  Place place;
  place.verb = &app;
  place.dsn = files::EnvironmentVariable("REBATE_DSN").value_or("");
  for (const Text& word : words) Pass(word, place);
  std::vector<Candidate> candidates;
  try {
    candidates = CandidatesAt(place, typed);
  } catch (const std::exception&) {
    return;  // a shell has no place for a message
  }
  std::size_t printed = 0;
  for (const Candidate& candidate : candidates) {
    if (candidate.word != kFilesLine && !candidate.word.starts_with(typed)) continue;
    if (printed++ == kMostCandidates) break;
    tool.out << candidate.word;
    if (!candidate.meaning.empty()) tool.out << '\t' << FirstLine(candidate.meaning);
    tool.out << '\n';
  }
}

}  // namespace rebate
