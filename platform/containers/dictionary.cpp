#include "platform/containers/dictionary.h"

#include "platform/automation/dispatch.h"

namespace rebate {
namespace {

[[noreturn]] void ThrowNotFound(std::string_view key) {
  throw Error(error_number::kElementNotFound, "Dictionary", "Element not found: " + Text(key));
}

}  // namespace

const Text& Dictionary::Key(Long index) const {
  if (index < 1 || index > Count()) throw Error(error_number::kSubscript, "Dictionary", "Subscript out of range");
  if (removed_ == 0) return (*keys_)[static_cast<std::size_t>(index - 1)];
  for (std::size_t i = 0;; ++i) {
    if (!values_[i].IsMissing() && --index == 0) return (*keys_)[i];
  }
}

const Variant* Dictionary::Slot(std::string_view key) const {
  if (!keys_) return nullptr;
  const std::optional<std::size_t> at = keys_->Find(key);
  return at && !values_[*at].IsMissing() ? &values_[*at] : nullptr;
}

const Variant& Dictionary::Value(std::string_view key) const {
  const Variant* slot = Slot(key);
  if (slot == nullptr) ThrowNotFound(key);
  return *slot;
}

void Dictionary::SetValue(std::string_view key, Variant value) {
  if (value.IsMissing()) value = {};
  const Variant* slot = Slot(key);
  if (slot != nullptr) {
    values_[static_cast<std::size_t>(slot - values_.begin())] = std::move(value);
    return;
  }
  OwnKeys();
  values_.Add(std::move(value));
  try {
    keys_->Add(key);
  } catch (...) {
    values_.RemoveLast();
    throw;
  }
}

Variant Dictionary::GetValue(std::string_view key, Variant fallback) const {
  const Variant* slot = Slot(key);
  if (slot != nullptr) return *slot;
  return fallback.IsMissing() ? Variant() : std::move(fallback);
}

void Dictionary::Remove(std::string_view key) {
  const Variant* slot = Slot(key);
  if (slot == nullptr) ThrowNotFound(key);
  const auto at = static_cast<std::size_t>(slot - values_.begin());
  if (owns_keys_) {
    keys_->Erase(at);
    values_.Erase(at);
  } else {
    values_[at] = Variant::Missing();
    removed_ = (removed_ + 1) & 0x7FFFFFFFu;
  }
}

void Dictionary::Clear() {
  keys_ = nullptr;
  values_.Clear();
  removed_ = 0;
  owns_keys_ = false;
}

// Before a key is added: a list of this dictionary's own, without what was removed.
void Dictionary::OwnKeys() {
  if (owns_keys_) return;
  Ref<KeyList> own = New<KeyList>();
  for (std::size_t i = 0; i < values_.size(); ++i) {
    if (!values_[i].IsMissing()) own->Add((*keys_)[i]);
  }
  // From here on nothing fails.
  for (std::size_t i = values_.size(); i > 0; --i) {
    if (values_[i - 1].IsMissing()) values_.Erase(i - 1);
  }
  keys_ = std::move(own);
  removed_ = 0;
  owns_keys_ = true;
}

const MemberTable& Dictionary::Members() const {
  using dispatch::Method;
  using dispatch::Property;
  using dispatch::PropertyPut;
  static const MemberTable members{
      Property("Count", &Dictionary::Count),
      Property("Key", &Dictionary::Key, {"Index"}),
      Property("Value", &Dictionary::Value, {"Key"}),
      PropertyPut("Value", &Dictionary::SetValue, {"Key", "Value"}),
      Method("GetValue", &Dictionary::GetValue, {"Key", "[Default]"}),
      Method("Remove", &Dictionary::Remove, {"Key"}),
      Method("Clear", &Dictionary::Clear, {}),
  };
  return members;
}

}  // namespace rebate
