#include "client/save_many.h"

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <sstream>

#include "client/first_rows.h"
#include "client/json_file.h"
#include "client/progress.h"
#include "client/row_tables.h"
#include "client/scheme_store.h"
#include "client/tool.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "platform/database/error_numbers.h"
#include "platform/files/files.h"
#include "platform/values/ascii.h"

namespace rebate {
namespace {

namespace fs = std::filesystem;

// One scheme or form of several.
struct Source {
  Text place;  // file, or file and line
  Text text;   // of a line; empty for a file, which is read when its turn comes
  Text path;   // of a file
};

// What became of one.
struct Outcome {
  Text place = {};
  Text name = {};
  std::vector<Text> reasons = {};  // why it isn't stored
  std::vector<Text> notes = {};    // what is odd about it
  bool stored = false;
  bool disabled = false;
  std::optional<Long> id = {};
  std::optional<Long> replaced = {};
};

bool IsForm(const Json& json) {
  return json.is_object() && json.contains("vecSchemeData");
}

// The name that a request or form bears, as far as it can be told.
Text NameOf(const Json& json) {
  if (!json.is_object()) return {};
  const Json& head = json.contains("SchemeMainData") ? json["SchemeMainData"] : json;
  const char* key = IsForm(json) ? "SchemeName" : "FSchemeName";
  if (!head.is_object() || !head.contains(key) || !head[key].is_string()) return {};
  return head[key].get<Text>();
}

// Why the operation refused a request: its own words, and the entries that overlap.
std::vector<Text> ReasonsOf(const Dictionary& answer) {
  constexpr Long kShown = 20;
  std::vector<Text> reasons = {CellText(answer, "Err")};
  const auto repeat = ObjectAs<Vector>(answer.GetValue("Repeat"));
  for (Long i = 1; repeat && i <= std::min(repeat->Size(), kShown); ++i) {
    const auto row = ObjectAs<Dictionary>(repeat->Item(i));
    Text entry = "overlaps with " + CellText(*row, "FSchemeName") + ": " + CellText(*row, "FOrgNumber") + " " +
                 CellText(*row, "FOrgName");
    if (row->Has("FItemNumber")) entry += ", " + CellText(*row, "FItemNumber") + " " + CellText(*row, "FItemName");
    reasons.push_back(std::move(entry));
  }
  if (repeat && repeat->Size() > kShown) {
    reasons.push_back("overlaps in " + std::to_string(repeat->Size() - kShown) + " more entries");
  }
  return reasons;
}

// Stores one after the other.
class Saving {
 public:
  Saving(const SaveOptions& options, Tool& tool) : options_(options), tool_(tool), account_(options.dsn) {
    if (options.all_or_nothing) account_.JoinCalls();
  }

  void Run(const std::vector<Source>& sources) {
    {
      Progress progress(tool_.err, tool_.progress, "saving", sources.size());
      for (const Source& source : sources) {
        outcomes_.push_back({source.place});
        Store(source, outcomes_.back());
        progress.Step();
      }
    }
    if (options_.all_or_nothing) End();
    TellProblems();
    options_.json ? PrintJson() : PrintTable();
    if (refused_ > 0) tool_.status = 1;
  }

 private:
  void Store(const Source& source, Outcome& outcome) {
    if (given_up_) {
      outcome.reasons = {"not tried: " + *given_up_};
    } else {
      try {
        StoreJson(source.path.empty() ? ParseJson(source.text) : ReadJsonFile(source.path), outcome);
      } catch (const Error& error) {
        outcome.stored = false;
        outcome.reasons.push_back(error.description);
        if (error.number == database_error::kConnection) given_up_ = "the connection was lost";
      }
    }
    if (!outcome.reasons.empty()) ++refused_;
  }

  void StoreJson(const Json& json, Outcome& outcome) {
    outcome.name = NameOf(json);
    const CheckedScheme scheme = IsForm(json) ? CheckFormRequest(account_, json) : CheckRequest(account_, json);
    outcome.reasons = scheme.problems;
    const std::vector<Text>& refusals = scheme.findings.refusals();
    const std::vector<Text>& oddities = scheme.findings.oddities();
    outcome.reasons.insert(outcome.reasons.end(), refusals.begin(), refusals.end());
    std::vector<Text>& where = options_.strict ? outcome.reasons : outcome.notes;
    where.insert(where.end(), oddities.begin(), oddities.end());
    if (!outcome.reasons.empty()) return;
    // The operation would not be heard: what it stores can't stand any more.
    if (account_.IsUndone()) return;
    MakeFirstRows(account_, tool_);
    const StoredScheme stored = IsForm(json) ? StoreForm(account_, scheme) : StoreRequest(account_, scheme);
    outcome.stored = stored.stored;
    outcome.disabled = stored.disabled;
    outcome.id = stored.id;
    if (scheme.replaced) outcome.replaced = scheme.replaced->id;
    if (!stored.stored) outcome.reasons = ReasonsOf(*stored.answer);
  }

  // Has all of them stand, or none.
  void End() {
    if (refused_ == 0) return account_.CommitCalls();
    account_.UndoCalls();
    for (Outcome& outcome : outcomes_) outcome.stored = false;
  }

  void TellProblems() const {
    for (const Outcome& outcome : outcomes_) {
      for (const Text& reason : outcome.reasons) tool_.err << outcome.place << ": " << reason << '\n';
      for (const Text& note : outcome.notes) tool_.err << outcome.place << ": note: " << note << '\n';
    }
    tool_.err.flush();
  }

  std::size_t StoredCount() const {
    return static_cast<std::size_t>(
        std::count_if(outcomes_.begin(), outcomes_.end(), [](const Outcome& outcome) { return outcome.stored; }));
  }

  static Text WhatBecame(const Outcome& outcome) {
    if (!outcome.reasons.empty()) return "refused";
    if (!outcome.stored) return "not stored";
    Text text = "stored";
    if (outcome.replaced) text += " in the place of " + std::to_string(*outcome.replaced);
    return outcome.disabled ? text + ", disabled" : text;
  }

  static Text WhyOf(const Outcome& outcome) {
    if (outcome.reasons.empty()) return {};
    const std::size_t more = outcome.reasons.size() - 1;
    return outcome.reasons.front() + (more == 0 ? Text() : " (and " + std::to_string(more) + " more)");
  }

  void PrintTable() const {
    Table table({{"From"}, {"ID", true}, {"Scheme"}, {"Outcome"}, {"Why"}});
    for (const Outcome& outcome : outcomes_) {
      const Text id = outcome.stored && outcome.id ? std::to_string(*outcome.id) : Text();
      table.Add({outcome.place, id, outcome.name, WhatBecame(outcome), WhyOf(outcome)});
    }
    table.Print(tool_.out, tool_.width);
    tool_.out << "Stored " << StoredCount() << " of " << outcomes_.size() << ", refused " << refused_;
    tool_.out << (options_.all_or_nothing && refused_ > 0 ? "; the account is as it was.\n" : ".\n");
  }

  void PrintJson() const {
    Json schemes = Json::array();
    for (const Outcome& outcome : outcomes_) {
      Json one = {{"from", outcome.place}, {"name", outcome.name}, {"stored", outcome.stored}};
      if (outcome.stored && outcome.id) one["SchemeID"] = *outcome.id;
      if (outcome.stored && outcome.replaced) one["replaced"] = *outcome.replaced;
      if (outcome.stored) one["disabled"] = outcome.disabled;
      if (!outcome.reasons.empty()) one["why"] = outcome.reasons;
      if (!outcome.notes.empty()) one["notes"] = outcome.notes;
      schemes.push_back(std::move(one));
    }
    tool_.out << JsonLine({{"stored", StoredCount()}, {"refused", refused_}, {"schemes", std::move(schemes)}}) << '\n';
  }

  const SaveOptions& options_;
  Tool& tool_;
  Account account_;
  std::vector<Outcome> outcomes_;
  std::size_t refused_ = 0;
  std::optional<Text> given_up_;  // why no more is tried
};

void SaveSources(const SaveOptions& options, const std::vector<Source>& sources, Tool& tool) {
  if (sources.empty()) throw Error(error_number::kInvalidCall, "rebate", "There is no scheme in " + options.file);
  Saving(options, tool).Run(sources);
}

bool IsJsonObject(const Text& text) {
  try {
    return ParseJson(text).is_object();
  } catch (const Error&) {
    return false;
  }
}

}  // namespace

bool IsManySchemes(const Text& path, const Text& text) {
  if (path.ends_with(".jsonl") || path.ends_with(".ndjson")) return true;
  std::istringstream lines(text);
  std::size_t objects = 0;
  for (Text line; objects < 2 && std::getline(lines, line);) {
    if (TrimWhite(line).empty()) continue;
    // The lines of one object that stands on several are none.
    if (!IsJsonObject(line)) return objects > 0;
    ++objects;
  }
  return objects == 2;
}

void SaveDirectory(const SaveOptions& options, Tool& tool) {
  std::vector<Text> paths;
  std::error_code error;
  for (fs::directory_iterator entry(files::ToPath(options.file), error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    const Text path = files::FromPath(entry->path());
    if (path.ends_with(".json") && files::KindOf(path) == files::Kind::File) paths.push_back(path);
  }
  if (error) throw Error(error_number::kInvalidCall, "rebate", "Can't read " + options.file + ": " + error.message());
  std::sort(paths.begin(), paths.end());
  std::vector<Source> sources;
  for (const Text& path : paths) sources.push_back({path, {}, path});
  SaveSources(options, sources, tool);
}

void SaveLines(const SaveOptions& options, const Text& text, Tool& tool) {
  const bool is_input = options.file == "-";
  const Text name = is_input ? "stdin" : options.file;
  std::vector<Source> sources;
  if (is_input && IsJsonObject(text)) {
    sources.push_back({name, text, {}});
    return SaveSources(options, sources, tool);
  }
  std::istringstream lines(text);
  std::size_t number = 0;
  for (Text line; std::getline(lines, line);) {
    ++number;
    if (number == 1 && line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
    if (!TrimWhite(line).empty()) sources.push_back({name + ":" + std::to_string(number), line, {}});
  }
  SaveSources(options, sources, tool);
}

}  // namespace rebate
