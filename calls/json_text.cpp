#include "calls/json_text.h"

#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

#include "platform/automation/error.h"
#include "platform/values/ascii.h"
#include "platform/values/number_text.h"

namespace rebate {
namespace {

// What walks a value later does so recursively: the depth is bounded here, once.
constexpr std::size_t kMaxDepth = 200;

constexpr const char* kSource = "JSON";

// A decimal's or currency's number stays as it is written, since no float holds all of its digits.
bool IsExactKind(const Json& object) {
  const auto kind = object.find("$");
  return kind != object.end() && (*kind == "decimal" || *kind == "currency");
}

// The parser writes a number with the point of the process's locale.
Text WithPoint(Text number) {
  for (char& c : number) {
    if (!IsDigit(c) && c != '-' && c != '+' && c != 'e' && c != 'E') c = '.';
  }
  return number;
}

// Builds the value out of the parser's events. The library's own builder would take an integer of more than 64 bits for
// a float, without a word.
class Builder : public nlohmann::json_sax<Json> {
 public:
  Json Take() { return std::move(root_); }

  bool null() override { return Put(nullptr); }
  bool boolean(bool value) override { return Put(value); }
  bool number_integer(number_integer_t value) override { return Put(value); }
  bool number_unsigned(number_unsigned_t value) override { return Put(value); }
  bool number_float(number_float_t, const string_t& text) override {
    const Text number = WithPoint(text);
    if (!open_.empty() && open_.back().container->is_object() && key_ == "value") {
      // Only the whole object tells what its value is.
      Put(nullptr);
      open_.back().number = number;
      return true;
    }
    return Put(FloatOf(number));
  }
  bool string(string_t& value) override { return Put(std::move(value)); }
  bool binary(binary_t&) override { return false; }
  bool start_object(std::size_t) override { return Open(Json::object()); }
  bool key(string_t& name) override {
    key_ = std::move(name);
    return true;
  }
  bool end_object() override { return Close(); }
  bool start_array(std::size_t) override { return Open(Json::array()); }
  bool end_array() override { return Close(); }
  bool parse_error(std::size_t, const std::string&, const nlohmann::detail::exception& error) override {
    std::string_view reason = error.what();
    if (const std::size_t tag = reason.find("] "); reason.starts_with('[') && tag != std::string_view::npos) {
      reason.remove_prefix(tag + 2);
    }
    throw Error(error_number::kInvalidCall, kSource, Text(reason));
  }

 private:
  // A container around the next value; it doesn't move while it is open.
  struct Container {
    Json* container;
    Text number;  // of an object: its value, where that is a number that isn't read yet
  };

  static double FloatOf(const Text& number) {
    if (number.find_first_of(".eE") == Text::npos) {
      throw Error(error_number::kOverflow, kSource, "The integer " + number + " is out of range");
    }
    return ReadFloat(number).number;
  }
  Json& Place(Json value) {
    if (open_.empty()) return root_ = std::move(value);
    Json& container = *open_.back().container;
    if (!container.is_array()) {
      if (key_ == "value") open_.back().number.clear();  // of a key that comes twice, the last value counts
      return container[key_] = std::move(value);
    }
    container.push_back(std::move(value));
    return container.back();
  }
  bool Put(Json value) {
    Place(std::move(value));
    return true;
  }
  bool Open(Json container) {
    if (open_.size() == kMaxDepth) throw Error(error_number::kInvalidCall, kSource, "Nested too deeply");
    open_.push_back({&Place(std::move(container)), {}});
    return true;
  }
  bool Close() {
    const Container& last = open_.back();
    if (!last.number.empty()) {
      const auto digits = IsExactKind(*last.container) ? PlainDigits(last.number) : std::nullopt;
      (*last.container)["value"] = digits ? Json(*digits) : Json(FloatOf(last.number));
    }
    open_.pop_back();
    return true;
  }

  Json root_;
  Text key_;
  std::vector<Container> open_;
};

}  // namespace

Json ParseJson(std::string_view text) {
  Builder builder;
  Json::sax_parse(text, &builder);
  return builder.Take();
}

Text JsonLine(const Json& value) {
  return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}

}  // namespace rebate
