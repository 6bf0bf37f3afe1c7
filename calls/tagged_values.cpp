#include "calls/tagged_values.h"

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <optional>

#include "platform/automation/conversion.h"
#include "platform/automation/error.h"
#include "platform/values/number_text.h"

namespace rebate {
namespace {

[[noreturn]] void ThrowMismatch(const Text& path, const Text& reason) {
  throw Error(error_number::kTypeMismatch, "JSON", path + ": " + reason);
}

[[noreturn]] void ThrowOverflow(const Text& path, std::string_view kind) {
  throw Error(error_number::kOverflow, "JSON", path + ": the number is outside the kind " + Text(kind));
}

// The plain digits of the value of a `currency` or a `decimal`, which a number comes with as it is written.
Text DigitsFromJson(const Json& value, const Text& path) {
  constexpr std::size_t kMostDigits = 400;
  if (value.is_number_integer()) return value.dump();
  if (value.is_string()) {
    const auto& text = value.get_ref<const Text&>();
    // In a text stands no exponent, and a digit on both sides of a point.
    const bool plain = text.find_first_of("eE+") == Text::npos && IsDigit(text.empty() ? ' ' : text.back()) &&
                       (IsDigit(text[0]) || (text[0] == '-' && IsDigit(text[1])));
    if (plain && PlainDigits(text, kMostDigits)) return text;
  }
  ThrowMismatch(path, "a number in plain digits is due, as text or as number, not " + JsonLine(value));
}

Variant CurrencyFromDigits(std::string_view digits, const Text& path) {
  const std::optional<std::int64_t> units = CurrencyUnits(digits);
  if (!units) ThrowOverflow(path, "currency");
  return Variant::Currency(*units);
}

Variant ShortFromJson(const Json& value, const Text& path) {
  using Limits = std::numeric_limits<std::int16_t>;
  if (!value.is_number_integer()) ThrowMismatch(path, "an integer is due, not " + JsonLine(value));
  if (value < Limits::min() || value > Limits::max()) ThrowOverflow(path, "i2");
  return value.get<std::int16_t>();
}

Variant SingleFromJson(const Json& value, const Text& path) {
  if (!value.is_number()) ThrowMismatch(path, "a number is due, not " + JsonLine(value));
  const double number = value.get<double>();
  if (std::abs(number) > std::numeric_limits<float>::max()) ThrowOverflow(path, "r4");
  return static_cast<float>(number);
}

Variant DateFromJson(const Json& value, const Text& path) {
  if (value.is_string()) {
    if (const auto days = ParseDate(value.get_ref<const Text&>())) return Variant::Date(*days);
  }
  ThrowMismatch(path, "a date such as \"2026-01-02 03:04:05\" is due, not " + JsonLine(value));
}

void CheckKeys(const Json& json, bool has_value, const Text& path) {
  for (const auto& [key, value] : json.items()) {
    if (key != "$" && !(has_value && key == "value")) ThrowMismatch(path, "unexpected \"" + key + "\" beside \"$\"");
  }
  if (has_value && !json.contains("value")) ThrowMismatch(path, "\"value\" is missing beside \"$\"");
}

// The shortest digits that read back as the same 32-bit float.
double Shortest(float number) {
  return ReadFloat(ShortestText(number)).number;
}

Json Tagged(const char* kind, Json value) {
  return {{"$", kind}, {"value", std::move(value)}};
}

using Reader = Variant (*)(const Json& value, const Text& path);

struct Kind {
  std::string_view name;
  Reader read;
};

constexpr Kind kKinds[] = {
    {"i2", ShortFromJson},
    {"r4", SingleFromJson},
    {"currency", [](const Json& v, const Text& path) { return CurrencyFromDigits(DigitsFromJson(v, path), path); }},
    {"decimal", [](const Json& v, const Text& path) { return Variant::Decimal(DigitsFromJson(v, path)); }},
    {"date", DateFromJson},
};

}  // namespace

Json TaggedToJson(const Variant& value) {
  switch (value.type()) {
    case VariantType::Short:
      return Tagged("i2", value.integer());
    case VariantType::Single:
      return Tagged("r4", Shortest(static_cast<float>(value.real())));
    case VariantType::Currency:
      return Tagged("currency", ToText(value));
    case VariantType::Decimal:
      return Tagged("decimal", value.text());
    case VariantType::Date:
      return Tagged("date", DateText(value.real()));
    case VariantType::Null:
      return {{"$", "null"}};
    default:
      return {{"$", "empty"}};
  }
}

Variant TaggedFromJson(const Json& json, const Text& path) {
  const Json& name = json["$"];
  if (name == "empty" || name == "null") {
    CheckKeys(json, false, path);
    return name == "null" ? Variant::Null() : Variant();
  }
  for (const Kind& kind : kKinds) {
    if (name != kind.name) continue;
    CheckKeys(json, true, path);
    return kind.read(json["value"], path);
  }
  ThrowMismatch(path,
                "the kind " + JsonLine(name) + " is unknown; kinds are i2, r4, currency, decimal, date, empty, null");
}

}  // namespace rebate
