#pragma once

#include <optional>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/automation/ref.h"
#include "platform/values/types.h"

namespace rebate {

// An ordered list of distinct keys, compared exactly. The rows of one result share one list, which then no longer
// changes.
class KeyList : public RefCounted {
 public:
  KeyList() = default;
  // Repeated names keep their first place.
  explicit KeyList(const std::vector<Text>& names);

  std::size_t size() const { return keys_.size(); }
  const Text& operator[](std::size_t index) const { return keys_[index]; }
  std::optional<std::size_t> Find(std::string_view key) const;

  // Appends a key that the list doesn't hold yet.
  void Add(std::string_view key);
  void Erase(std::size_t index);

 private:
  // Below this many keys a walk over the list is faster than a hash.
  static constexpr std::size_t kIndexFrom = 24;

  struct Hash {
    using is_transparent = void;
    std::size_t operator()(std::string_view key) const { return std::hash<std::string_view>()(key); }
  };

  void Reindex();

  std::vector<Text> keys_;
  std::unordered_map<Text, std::size_t, Hash, std::equal_to<>> index_;  // empty below kIndexFrom
};

}  // namespace rebate
