#include "platform/automation/variant.h"

#include <atomic>
#include <cstring>
#include <new>
#include <utility>

namespace rebate {
namespace {

// A text too long for the inside of a value: one block of memory, shared by the values that hold it.
struct SharedText {
  std::atomic<std::uint32_t> references;
  std::uint32_t size;

  char* data() { return reinterpret_cast<char*>(this + 1); }

  static SharedText* Make(std::string_view value) {
    void* memory = ::operator new(sizeof(SharedText) + value.size());
    auto* text = new (memory) SharedText{{1}, static_cast<std::uint32_t>(value.size())};
    std::memcpy(text->data(), value.data(), value.size());
    return text;
  }
};

class ArrayHolder : public RefCounted {
 public:
  explicit ArrayHolder(std::vector<Variant> elements_in) : elements(std::move(elements_in)) {}
  const std::vector<Variant> elements;
};

// 12.50 -> 12.5, 3.00 -> 3, -0 -> 0.
std::string_view WithoutTrailingZeros(std::string_view digits) {
  if (digits.find('.') != std::string_view::npos) {
    digits.remove_suffix(digits.size() - digits.find_last_not_of('0') - 1);
    if (digits.ends_with('.')) digits.remove_suffix(1);
  }
  return digits == "-0" || digits.empty() ? "0" : digits;
}

}  // namespace

Variant Variant::Currency(std::int64_t ten_thousandths) noexcept {
  Variant value(VariantType::Currency);
  value.wide_.integer = ten_thousandths;
  return value;
}

Variant Variant::Date(double days) noexcept {
  Variant value(VariantType::Date);
  value.wide_.real = days;
  return value;
}

Variant Variant::Decimal(std::string_view digits) {
  Variant value;
  value.SetText(VariantType::Decimal, WithoutTrailingZeros(digits));
  return value;
}

Variant Variant::Array(std::vector<Variant> elements) {
  Ref<ArrayHolder> holder = New<ArrayHolder>(std::move(elements));
  Variant value(VariantType::Array);
  value.wide_.pointer = static_cast<RefCounted*>(holder.Detach());
  return value;
}

void Variant::SetText(VariantType type, std::string_view value) {
  Set(type);
  if (value.size() <= sizeof(small_.text)) {
    small_.head.length = static_cast<std::uint8_t>(value.size());
    if (!value.empty()) std::memcpy(small_.text, value.data(), value.size());
  } else {
    wide_.pointer = SharedText::Make(value);
    wide_.head.length = kShared;
  }
}

std::string_view Variant::text() const noexcept {
  if (head_.length != kShared) return {small_.text, head_.length};
  auto* text = static_cast<SharedText*>(wide_.pointer);
  return {text->data(), text->size};
}

const std::vector<Variant>& Variant::array() const noexcept {
  return static_cast<ArrayHolder*>(static_cast<RefCounted*>(wide_.pointer))->elements;
}

void Variant::RetainPointer() const noexcept {
  if (head_.length == kShared) {
    static_cast<SharedText*>(wide_.pointer)->references.fetch_add(1, std::memory_order_relaxed);
  } else if (type() == VariantType::Object) {
    if (wide_.pointer != nullptr) static_cast<Object*>(wide_.pointer)->AddRef();
  } else {
    static_cast<RefCounted*>(wide_.pointer)->AddRef();
  }
}

void Variant::DropPointer() noexcept {
  if (head_.length == kShared) {
    auto* text = static_cast<SharedText*>(wide_.pointer);
    if (text->references.fetch_sub(1, std::memory_order_acq_rel) == 1) ::operator delete(text);
  } else if (type() == VariantType::Object) {
    if (wide_.pointer != nullptr) static_cast<Object*>(wide_.pointer)->Release();
  } else {
    static_cast<RefCounted*>(wide_.pointer)->Release();
  }
}

bool Variant::operator==(const Variant& other) const noexcept {
  if (type() != other.type()) return false;
  switch (type()) {
    case VariantType::Empty:
    case VariantType::Null:
    case VariantType::Missing:
      return true;
    case VariantType::Text:
    case VariantType::Decimal:
      return text() == other.text();
    case VariantType::Single:
    case VariantType::Double:
    case VariantType::Date:
      return real() == other.real();
    case VariantType::Object:
      return wide_.pointer == other.wide_.pointer;
    case VariantType::Array:
      return array() == other.array();
    case VariantType::Short:
    case VariantType::Long:
    case VariantType::Currency:
    case VariantType::Boolean:
      return integer() == other.integer();
  }
  return false;
}

}  // namespace rebate
