#pragma once

#include <map>
#include <optional>
#include <string_view>

#include "platform/values/types.h"

namespace rebate {

class Account;

// An organisation or goods item as the account holds it.
struct Entity {
  Text number;
  Text name;
  bool is_item = false;     // whether it stands in t_Item, by which schemes name it
  bool is_deleted = false;  // whether it is kept for old records alone
};

// Who and what an account knows, asked for by item class (1 customers, 3 employees, 4 goods, 8 suppliers) and id or
// number. What was once found is kept. Everything raises where the account can't tell.
class Entities {
 public:
  explicit Entities(Account& account) : account_(account) {}

  // Null where there is none.
  const Entity* Find(Long item_class, Long id);
  // The id that a text names, being one or the number that an item of the class bears, nothing where it is neither.
  // Raises 5 where several bear the number.
  std::optional<Long> IdOf(Long item_class, std::string_view text);
  // The same for a unit of measure.
  std::optional<Long> UnitOf(std::string_view text);

  bool HasUnit(Long unit);
  bool IsUnitOf(Long goods, Long unit);
  bool HasClass(Long item_class);

 private:
  std::optional<Long> NumberedOne(const Text& query, std::string_view number);

  Account& account_;
  std::map<std::pair<Long, Long>, std::optional<Entity>> found_;
};

// What an entity of the class is called in a sentence: `supplier`, `customer`, `employee`, `goods item`, or `item`.
std::string_view KindOf(Long item_class);

}  // namespace rebate
