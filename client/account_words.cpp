#include "client/account_words.h"

#include <CLI/CLI.hpp>

#include "platform/files/files.h"

namespace rebate {

void AccountWords::AddTo(CLI::App& verb, std::size_t more, const char* name, const char* help) {
  more_ = more;
  verb.add_option(name, words_, help)->expected(0, static_cast<int>(more) + 1)->type_name("");
  verb.add_option("--dsn", dsn_, "The account: a file such as shop.db, or Key=Value;… text; REBATE_DSN where left out");
}

std::pair<Text, std::vector<Text>> AccountWords::Split() const {
  if (dsn_) {
    if (words_.size() > more_) throw CLI::ValidationError("--dsn", "the account is named twice: " + words_[0]);
    return {*dsn_, words_};
  }
  const std::optional<Text> environment = files::EnvironmentVariable("REBATE_DSN");
  if (environment && !environment->empty()) {
    const bool is_other =
        words_.size() == 1 && more_ > 0 && words_[0].find_first_of(" \t\n") != Text::npos && !files::IsTaken(words_[0]);
    if (words_.empty() || is_other) return {*environment, words_};
  }
  if (words_.empty()) throw CLI::RequiredError("DSN (or --dsn, or REBATE_DSN)");
  return {words_[0], {words_.begin() + 1, words_.end()}};
}

}  // namespace rebate
