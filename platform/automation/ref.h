#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>
#include <utility>

#include "platform/automation/error.h"

namespace rebate {

// Base of everything held by Ref: counts its references, from any thread.
class RefCounted {
 public:
  RefCounted() = default;
  RefCounted(const RefCounted&) = delete;
  RefCounted& operator=(const RefCounted&) = delete;

  void AddRef() const noexcept { references_.fetch_add(1, std::memory_order_relaxed); }
  void Release() const noexcept {
    if (references_.fetch_sub(1, std::memory_order_acq_rel) == 1) delete this;
  }

 protected:
  virtual ~RefCounted() = default;

 private:
  mutable std::atomic<std::uint32_t> references_{0};
};

// A counted reference, which may be null. Calling through a null one raises error 91, as everywhere in the automation
// world, so that a null container in a request takes the operation's failure path and not the process down.
template <typename T>
class Ref {
 public:
  Ref() = default;
  Ref(std::nullptr_t) {}  // NOLINT: a null reference is a value
  explicit Ref(T* object) : object_(object) {
    if (object_ != nullptr) object_->AddRef();
  }
  Ref(const Ref& other) : Ref(other.object_) {}
  Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  template <typename U>
  requires std::is_convertible_v<U*, T*> Ref(const Ref<U>& other) : Ref(other.get()) {}  // NOLINT: upcast
  template <typename U>
  requires std::is_convertible_v<U*, T*> Ref(Ref<U>&& other)
  noexcept : object_(other.Detach()) {}  // NOLINT: upcast
  ~Ref() {
    if (object_ != nullptr) object_->Release();
  }
  Ref& operator=(Ref other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }

  T* get() const noexcept { return object_; }
  T* operator->() const { return &Object(); }
  T& operator*() const { return Object(); }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  bool operator==(const Ref& other) const noexcept { return object_ == other.object_; }

  // Gives the object up without releasing it: the caller owns the count.
  T* Detach() noexcept { return std::exchange(object_, nullptr); }

 private:
  T& Object() const {
    if (object_ == nullptr) [[unlikely]]
      ThrowNotSet();
    return *object_;
  }
  [[noreturn]] static void ThrowNotSet() {
    throw Error(error_number::kObjectNotSet, "", "Object variable or With block variable not set");
  }

  T* object_ = nullptr;
};

template <typename T, typename... Arguments>
Ref<T> New(Arguments&&... arguments) {
  return Ref<T>(new T(std::forward<Arguments>(arguments)...));
}

}  // namespace rebate
