#pragma once

#include <string_view>

#include "platform/containers/key_list.h"
#include "platform/containers/value_list.h"

namespace rebate {

// A map from text to value that keeps the order in which its keys came. Keys are compared exactly; positions count
// from 1.
class Dictionary : public Object, public MadeWithRoom<Dictionary> {
 public:
  static constexpr std::string_view kClassName = "Dictionary";

  Dictionary() = default;
  // A row: `value_at(i)` stands under `(*keys)[i]`. The keys are shared, not copied.
  template <typename ValueAt>
  static Ref<Dictionary> RowOf(Ref<KeyList> keys, const ValueAt& value_at) {
    const std::size_t size = keys->size();
    Ref<Dictionary> row(new (RoomForValues{size}) Dictionary(size));
    for (std::size_t i = 0; i < size; ++i) row->values_.Add(value_at(i));
    row->keys_ = std::move(keys);
    return row;
  }

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
  explicit Dictionary(std::size_t places) : values_(Room(), places) {}

  const Variant* Slot(std::string_view key) const;
  void OwnKeys();

  std::uint32_t removed_ : 31 = 0;
  std::uint32_t owns_keys_ : 1 = false;
  Ref<KeyList> keys_;  // null while nothing was ever stored
  ValueList values_;   // Missing marks a removed key of a shared list
};

}  // namespace rebate
