#pragma once

#include <string_view>
#include <vector>

#include "platform/automation/variant.h"
#include "platform/containers/key_list.h"

namespace rebate {

// A map from text to value that keeps the order in which its keys came. Keys are compared exactly; positions count
// from 1.
class Dictionary : public Object {
 public:
  static constexpr std::string_view kClassName = "Dictionary";

  Dictionary() = default;
  // A row: `values[i]` stands under `(*keys)[i]`. The keys are shared, not copied.
  Dictionary(Ref<KeyList> keys, std::vector<Variant> values);

  Long Count() const { return static_cast<Long>(keys_ ? keys_->size() - removed_ : 0); }
  // Raises 9 outside 1 to Count.
  const Text& Key(Long index) const;
  bool Has(std::string_view key) const { return Slot(key) != nullptr; }
  // Raises 32811, naming the key, where it isn't there.
  const Variant& Value(std::string_view key) const;
  void SetValue(std::string_view key, Variant value);
  // The key's value, or `fallback` where the key isn't there.
  Variant GetValue(std::string_view key, Variant fallback = {}) const;
  // Raises 32811, naming the key, where it isn't there.
  void Remove(std::string_view key);
  void Clear();

  const MemberTable& Members() const override;

 private:
  const Variant* Slot(std::string_view key) const;
  void OwnKeys();

  Ref<KeyList> keys_;            // null while nothing was ever stored
  std::vector<Variant> values_;  // Missing marks a removed key of a shared list
  std::uint32_t removed_ = 0;
  bool owns_keys_ = false;
};

}  // namespace rebate
