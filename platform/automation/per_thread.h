#pragma once

#include <memory>

// A value of each thread, destroyed with its thread.
//
// On Windows the compiler at hand frees the memory of a thread_local before it runs its destructor. There such values
// stand in slots that the system knows, and that it empties at a thread's end.
namespace rebate {

#ifdef _WIN32

// A place for one pointer in each thread, as long as the process lives.
class ThreadSlot {
 public:
  using Destroy = void(__stdcall*)(void* value);

  // `destroy` gets the pointer of each thread that ends, and that of the thread that ends the process. Raises where the
  // system has no more slots.
  explicit ThreadSlot(Destroy destroy);
  ThreadSlot(const ThreadSlot&) = delete;
  ThreadSlot& operator=(const ThreadSlot&) = delete;
  ~ThreadSlot();

  // This thread's pointer, null at first.
  void* Get() const noexcept;
  // Raises where the system has no memory for it.
  void Set(void* value) const;

 private:
  Destroy destroy_;
  unsigned long index_;
};

template <typename T>
void __stdcall DestroyValue(void* value) {
  delete static_cast<T*>(value);
}

#endif

// This thread's T, made at its first use there.
template <typename T>
T& OfThisThread() {
#ifdef _WIN32
  static const ThreadSlot slot(DestroyValue<T>);
  void* value = slot.Get();
  if (value == nullptr) {
    auto made = std::make_unique<T>();
    slot.Set(made.get());
    value = made.release();
  }
  return *static_cast<T*>(value);
#else
  thread_local T value;
  return value;
#endif
}

}  // namespace rebate
