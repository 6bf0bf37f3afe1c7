#pragma once

#include "calls/json_text.h"
#include "client/entities.h"
#include "client/findings.h"

namespace rebate {

class Dictionary;

// Looks up what a file's value names, and puts the id in the place of a number.
class EntityCheck {
 public:
  EntityCheck(Account& account, Findings& findings) : entities_(account), findings_(findings) {}

  // An item of the class at `place`; refused where the account has none. Gives its id.
  std::optional<Long> CheckItem(Json& item, Long item_class, const Text& place);
  // The items of a list, such as "401,G002".
  std::vector<Long> CheckList(Json& list, Long item_class, const Text& place);
  // A unit of measure, in which each of the goods can be counted; 0 is none.
  void CheckUnit(Json& unit, const std::vector<Long>& goods, const Text& place);

  Entities& entities() { return entities_; }

 private:
  std::optional<Long> Look(std::string_view text, Long item_class, const Text& place);

  Entities entities_;
  Findings& findings_;
};

// The item classes whose organisations a type's rebates go to: those of its rebate class.
std::vector<Long> OrganisationClasses(const Dictionary& type);

// The id of an item that an argument names by its id or number. Raises 5 where the account has none.
Long EntityNamed(Account& account, Long item_class, std::string_view text);

// An integer of right shape.
Long IntegerOf(const Json& value);

}  // namespace rebate
