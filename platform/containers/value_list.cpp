#include "platform/containers/value_list.h"

#include <new>

namespace rebate {
void ValueList::Clear() noexcept {
  std::destroy_n(values_, size_);
  size_ = 0;
  if (!lent_) {
    ::operator delete(values_);
    values_ = nullptr;
    places_ = 0;
  }
}

void ValueList::Grow() {
  const std::size_t places = places_ == 0 ? 1 : 2 * static_cast<std::size_t>(places_);
  if (places > kMostPlaces) throw std::bad_alloc();
  auto* values = static_cast<Variant*>(::operator new(places * sizeof(Variant)));
  std::uninitialized_move_n(values_, size_, values);
  std::destroy_n(values_, size_);
  if (!lent_) ::operator delete(values_);
  values_ = values;
  places_ = static_cast<std::uint32_t>(places) & kMostPlaces;
  lent_ = false;
}

}  // namespace rebate
