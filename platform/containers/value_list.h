#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/automation/variant.h"

namespace rebate {

// Values one behind the other: in places that the list was given, as long as there are enough of them, else in memory
// of its own. Half as large as a std::vector, and a container that is made with its values needs no second allocation.
class ValueList {
 public:
  ValueList() = default;
  // Takes raw memory for `places` values, which outlives the list and stays where it is.
  ValueList(void* memory, std::size_t places)
      : values_(static_cast<Variant*>(memory)),
        places_(static_cast<std::uint32_t>(places) & kMostPlaces),
        lent_(true) {}
  ValueList(const ValueList&) = delete;
  ValueList& operator=(const ValueList&) = delete;
  ~ValueList() { Clear(); }

  std::size_t size() const { return size_; }
  Variant& operator[](std::size_t index) { return values_[index]; }
  const Variant& operator[](std::size_t index) const { return values_[index]; }
  const Variant* begin() const { return values_; }
  const Variant* end() const { return values_ + size_; }

  // Raises std::bad_alloc, and the list is then as it was.
  void Add(Variant value) {
    if (size_ == places_) Grow();
    std::construct_at(values_ + size_, std::move(value));
    ++size_;
  }
  void RemoveLast() noexcept { std::destroy_at(values_ + --size_); }
  void Erase(std::size_t index) noexcept {
    for (std::size_t i = index + 1; i < size_; ++i) values_[i - 1] = std::move(values_[i]);
    RemoveLast();
  }
  void Clear() noexcept;

 private:
  static constexpr std::uint32_t kMostPlaces = 0x7FFFFFFF;

  void Grow();

  Variant* values_ = nullptr;
  std::uint32_t size_ = 0;
  std::uint32_t places_ : 31 = 0;
  std::uint32_t lent_ : 1 = false;  // the memory is the owner's
};

// Room behind an object, in one piece with it, for so many values.
struct RoomForValues {
  std::size_t places;
};

// What a class derives from, beside its base, so that `new (RoomForValues{n}) T` makes such an object.
template <typename T>
struct MadeWithRoom {
  static void* operator new(std::size_t size) { return ::operator new(size); }
  static void* operator new(std::size_t size, RoomForValues room) {
    return ::operator new(RoundedUp(size) + room.places * sizeof(Variant));
  }
  static void operator delete(void* memory) { ::operator delete(memory); }
  static void operator delete(void* memory, RoomForValues) { ::operator delete(memory); }

 protected:
  void* Room() { return reinterpret_cast<char*>(static_cast<T*>(this)) + RoundedUp(sizeof(T)); }

 private:
  // To where a value may stand.
  static constexpr std::size_t RoundedUp(std::size_t size) {
    return (size + alignof(Variant) - 1) / alignof(Variant) * alignof(Variant);
  }
};

}  // namespace rebate
