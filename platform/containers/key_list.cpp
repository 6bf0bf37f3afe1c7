#include "platform/containers/key_list.h"

namespace rebate {

KeyList::KeyList(const std::vector<Text>& names) {
  for (const Text& name : names) {
    if (!Find(name)) Add(name);
  }
}

std::optional<std::size_t> KeyList::Find(std::string_view key) const {
  if (!index_.empty()) {
    const auto found = index_.find(key);
    if (found == index_.end()) return std::nullopt;
    return found->second;
  }
  for (std::size_t i = 0; i < keys_.size(); ++i) {
    if (keys_[i] == key) return i;
  }
  return std::nullopt;
}

void KeyList::Add(std::string_view key) {
  keys_.emplace_back(key);
  if (keys_.size() < kIndexFrom) return;
  if (index_.empty()) return Reindex();
  try {
    index_.emplace(key, keys_.size() - 1);
  } catch (const std::bad_alloc&) {
    index_.clear();
  }
}

void KeyList::Erase(std::size_t index) {
  keys_.erase(keys_.begin() + static_cast<std::ptrdiff_t>(index));
  if (!index_.empty()) Reindex();
}

// Where there is no memory for an index, a walk finds the keys.
void KeyList::Reindex() {
  try {
    index_.clear();
    for (std::size_t i = 0; i < keys_.size(); ++i) index_.emplace(keys_[i], i);
  } catch (const std::bad_alloc&) {
    index_.clear();
  }
}

}  // namespace rebate
