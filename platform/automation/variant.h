#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "platform/automation/object.h"
#include "platform/values/types.h"

namespace rebate {

// The automation types that a value can have; the numbers are those of the automation world.
enum class VariantType : std::uint8_t {
  Empty = 0,
  Null = 1,
  Short = 2,     // 16-bit integer
  Long = 3,      // 32-bit integer
  Single = 4,    // 32-bit float
  Double = 5,    // 64-bit float
  Currency = 6,  // ten-thousandths in 64 bits
  Date = 7,      // days since 1899-12-30, the time as a fraction
  Text = 8,
  Object = 9,    // may be the null reference
  Missing = 10,  // an argument left out
  Boolean = 11,
  Decimal = 14,  // exact digits, kept as their text
  Array = 20,    // one-dimensional array of values, indices from 0
};

// A tagged value in 16 bytes. Texts up to 14 bytes live inside it, longer ones are shared and never change, so a copy
// never copies text.
class Variant {
 public:
  Variant() noexcept : wide_{} {}
  Variant(bool value) noexcept { Set(VariantType::Boolean).integer = value; }                 // NOLINT
  Variant(std::int16_t value) noexcept { Set(VariantType::Short).integer = value; }           // NOLINT
  Variant(std::int32_t value) noexcept { Set(VariantType::Long).integer = value; }            // NOLINT
  Variant(float value) noexcept { Set(VariantType::Single).real = value; }                    // NOLINT
  Variant(double value) noexcept { Set(VariantType::Double).real = value; }                   // NOLINT
  Variant(std::string_view value) { SetText(VariantType::Text, value); }                      // NOLINT
  Variant(const Text& value) : Variant(std::string_view(value)) {}                            // NOLINT
  Variant(const char* value) : Variant(std::string_view(value)) {}                            // NOLINT
  Variant(ObjectRef object) noexcept { Set(VariantType::Object).pointer = object.Detach(); }  // NOLINT
  template <typename T>
  Variant(const Ref<T>& object) : Variant(ObjectRef(object)) {}  // NOLINT
  Variant(const void*) = delete;

  static Variant Null() noexcept { return Variant(VariantType::Null); }
  static Variant Missing() noexcept { return Variant(VariantType::Missing); }
  static Variant Currency(std::int64_t ten_thousandths) noexcept;
  static Variant Date(double days) noexcept;
  // `digits` is plain decimal text: an optional minus sign, digits, an optional fraction. Trailing zeros of a fraction
  // are dropped.
  static Variant Decimal(std::string_view digits);
  static Variant Array(std::vector<Variant> elements);

  Variant(const Variant& other) noexcept : wide_(other.wide_) { Retain(); }
  Variant(Variant&& other) noexcept : wide_(other.wide_) { other.head_ = {VariantType::Empty, 0}; }
  Variant& operator=(const Variant& other) noexcept {
    Variant copy(other);
    std::swap(wide_, copy.wide_);
    return *this;
  }
  Variant& operator=(Variant&& other) noexcept {
    std::swap(wide_, other.wide_);
    return *this;
  }
  ~Variant() { Drop(); }

  VariantType type() const noexcept { return head_.type; }
  bool IsEmpty() const noexcept { return type() == VariantType::Empty; }
  bool IsNull() const noexcept { return type() == VariantType::Null; }
  bool IsMissing() const noexcept { return type() == VariantType::Missing; }
  bool IsText() const noexcept { return type() == VariantType::Text; }
  bool IsObject() const noexcept { return type() == VariantType::Object; }
  bool IsArray() const noexcept { return type() == VariantType::Array; }

  // The value as it is kept; each is meant for the types that it names and checks nothing.
  std::int64_t integer() const noexcept { return wide_.integer; }  // Short, Long, Boolean (0 or 1), Currency
  double real() const noexcept { return wide_.real; }              // Single, Double, Date
  std::string_view text() const noexcept;                          // Text, Decimal
  ObjectRef object() const { return ObjectRef(static_cast<Object*>(wide_.pointer)); }  // Object
  const std::vector<Variant>& array() const noexcept;                                  // Array

  // Same type and same value; objects are the same where they are one object.
  bool operator==(const Variant& other) const noexcept;

 private:
  struct Head {
    VariantType type;
    std::uint8_t length;  // of a text inside the value, or kShared
  };
  struct Small {
    Head head;
    char text[14];
  };
  struct Wide {
    Head head;
    std::uint8_t unused[6];
    union {
      std::int64_t integer;
      double real;
      void* pointer;
    };
  };
  static constexpr std::uint8_t kShared = 255;

  explicit Variant(VariantType type) noexcept { Set(type).integer = 0; }
  Wide& Set(VariantType type) noexcept {
    wide_ = {};
    wide_.head = {type, 0};
    return wide_;
  }
  void SetText(VariantType type, std::string_view value);
  bool HoldsPointer() const noexcept {
    return head_.length == kShared || type() == VariantType::Object || type() == VariantType::Array;
  }
  void Retain() const noexcept {
    if (HoldsPointer()) RetainPointer();
  }
  void Drop() noexcept {
    if (HoldsPointer()) DropPointer();
  }
  void RetainPointer() const noexcept;
  void DropPointer() noexcept;

  union {
    Head head_;
    Small small_;
    Wide wide_;
  };
};

static_assert(sizeof(Variant) == 16);

// The object in `value` as a T: null for the null reference and for Null, Empty and Missing values; raises 13 for a
// value or an object of another kind.
template <typename T>
Ref<T> ObjectAs(const Variant& value) {
  if (value.IsEmpty() || value.IsNull() || value.IsMissing()) return nullptr;
  if (!value.IsObject()) ThrowTypeMismatch();
  const ObjectRef object = value.object();
  if (!object) return nullptr;
  T* typed = dynamic_cast<T*>(object.get());
  if (typed == nullptr) ThrowTypeMismatch();
  return Ref<T>(typed);
}

}  // namespace rebate
