#pragma once

#include <optional>
#include <vector>

#include "platform/containers/dictionary.h"

namespace CLI {
class App;
}

namespace rebate {

class Account;

// What a scheme's head tells.
struct SchemeHead {
  Long id = 0;
  Text name;
  Long rebate_type = 0;
  std::optional<Long> rebate_class;  // of its type, where the account offers it
  bool enabled = false;
  bool is_form = false;  // whether a form stored it
  Ref<Dictionary> row;   // all columns of the head
};

// The scheme with the id, nothing where there is none. Raises the reason where the account can't tell.
std::optional<SchemeHead> FindScheme(Account& account, Long id);

// The schemes with the ids. Raises 5, naming them, where some aren't there.
std::vector<SchemeHead> FindSchemes(Account& account, const std::vector<Long>& ids);

// The id under which a scheme of this type and name was stored last, nothing where there is none.
std::optional<Long> NewestScheme(Account& account, Long rebate_type, const Text& name);

// The scheme as a sentence names it, such as `scheme 3 (年度返利)`.
Text SchemeText(const SchemeHead& scheme);

// Adds the argument of verbs on several schemes: ids with blanks or commas between them; anything else is wrong usage.
// `lists` outlives the run.
void AddSchemeIds(CLI::App& verb, std::vector<Text>& lists);

// The ids of these lists, in the order in which each came first.
std::vector<Long> SchemeIds(const std::vector<Text>& lists);

// The ids with commas between them, as operations on several schemes take them.
Text IdList(const std::vector<Long>& ids);

}  // namespace rebate
