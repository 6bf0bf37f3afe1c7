#pragma once

#include <windows.h>

#include <utility>

namespace rebate::com {

// A counted reference to an object of the system's, which may be null.
template <typename T>
class ComRef {
 public:
  ComRef() = default;
  // Counts one more.
  explicit ComRef(T* object) : object_(object) {
    if (object_ != nullptr) object_->AddRef();
  }
  ComRef(const ComRef& other) : ComRef(other.object_) {}
  ComRef(ComRef&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
  ComRef& operator=(ComRef other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~ComRef() {
    if (object_ != nullptr) object_->Release();
  }

  // Takes over a count that the caller owns.
  static ComRef Adopt(T* object) {
    ComRef taken;
    taken.object_ = object;
    return taken;
  }

  T* get() const { return object_; }
  T* operator->() const { return object_; }
  explicit operator bool() const { return object_ != nullptr; }

  // Where a callee puts an object that the reference then owns; it holds none before.
  T** Receive() { return &object_; }
  // Gives the count up to the caller.
  T* Detach() { return std::exchange(object_, nullptr); }

 private:
  T* object_ = nullptr;
};

// The other interface of an object; null where it has none, and for the null reference.
template <typename Interface>
ComRef<Interface> As(IUnknown* object) {
  ComRef<Interface> found;
  if (object != nullptr &&
      FAILED(object->QueryInterface(__uuidof(Interface), reinterpret_cast<void**>(found.Receive()))))
    return {};
  return found;
}

}  // namespace rebate::com
