#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "platform/values/types.h"

namespace CLI {
class App;
}

namespace rebate {

// The account of a verb that takes it as its first word, or by --dsn or REBATE_DSN as all other verbs do, and the words
// behind it.
class AccountWords {
 public:
  // Adds the words, the account and up to `more`, and --dsn to the verb; this object outlives the run.
  void AddTo(CLI::App& verb, std::size_t more, const char* name, const char* help);

  // The account and the other words. Where REBATE_DSN is set, one word is the account, unless it holds a blank and
  // there is no such file. Wrong usage where no account is named, or two.
  std::pair<Text, std::vector<Text>> Split() const;

 private:
  std::size_t more_ = 0;
  std::vector<Text> words_;
  std::optional<Text> dsn_;
};

}  // namespace rebate
