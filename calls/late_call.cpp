#include "calls/late_call.h"

#include <nlohmann/json.hpp>

#include "calls/call_thread.h"
#include "calls/json_values.h"
#include "platform/automation/conversion.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"

namespace rebate {
namespace {

constexpr Long kNoSuchArgument = 448;
constexpr const char* kSource = "rebate call";
constexpr std::string_view kDsnArgument = "sDsn";

Text ArgumentNames(const Member& member) {
  Text names;
  for (const Parameter& parameter : member.parameters) names += (names.empty() ? "" : ", ") + parameter.name;
  return names.empty() ? "none" : names;
}

// Raises what the conversion to the declared type raises.
void Convert(const Variant& value, const DeclaredType& type) {
  switch (type.kind) {
    case DeclaredType::Kind::Text:
      ToText(value);
      return;
    case DeclaredType::Kind::Long:
      ToLong(value);
      return;
    case DeclaredType::Kind::Boolean:
      ToBoolean(value);
      return;
    case DeclaredType::Kind::Object:
      if (type.class_name == Vector::kClassName) {
        ObjectAs<Vector>(value);
      } else if (type.class_name == Dictionary::kClassName) {
        ObjectAs<Dictionary>(value);
      } else {
        ObjectAs<Object>(value);
      }
      return;
    default:
      return;
  }
}

Text Shown(const Json& value) {
  constexpr std::size_t kMost = 60;
  const Text text = JsonLine(value);
  return text.size() > kMost ? Text("this ") + value.type_name() : text;
}

}  // namespace

Text TypeName(const DeclaredType& type) {
  switch (type.kind) {
    case DeclaredType::Kind::None:
      return "none";
    case DeclaredType::Kind::Text:
      return "text";
    case DeclaredType::Kind::Long:
      return "integer";
    case DeclaredType::Kind::Boolean:
      return "boolean";
    case DeclaredType::Kind::Value:
      return "any";
    case DeclaredType::Kind::Object:
      break;
  }
  return Text(type.class_name);
}

LateCall::LateCall(Instances& instances, const Text& operation, const Json& args, const std::optional<Text>& dsn) {
  const std::size_t point = operation.find('.');
  if (point == Text::npos) {
    throw Error(error_number::kInvalidCall, kSource, "Unknown operation " + operation + ": it goes by Class.Member");
  }
  const Text member = operation.substr(point + 1);
  object_ = instances.Of(operation.substr(0, point));
  member_ = object_->Members().Find(member);
  if (member_ == nullptr) {
    throw Error(error_number::kNoSuchMember, kSource, "Object doesn't support this property or method: " + member);
  }
  values_.resize(member_->parameters.size(), Variant::Missing());
  Fit(args);
  CheckNoneMissing(dsn);
  CheckConversions(args);
}

void LateCall::Fit(const Json& args) {
  for (const auto& [name, value] : args.items()) {
    const std::size_t at = PositionOf(name);
    values_[at] = ArgumentFromJson(value, member_->parameters[at]);
  }
}

void LateCall::CheckNoneMissing(const std::optional<Text>& dsn) {
  for (std::size_t i = 0; i < values_.size(); ++i) {
    const Parameter& parameter = member_->parameters[i];
    if (!values_[i].IsMissing()) continue;
    if (dsn && EqualsIgnoreCase(parameter.name, kDsnArgument)) {
      values_[i] = *dsn;
    } else if (!parameter.optional) {
      throw Error(error_number::kNotOptional, kSource, "Argument not optional: " + parameter.name);
    }
  }
}

void LateCall::CheckConversions(const Json& args) const {
  for (const auto& [name, value] : args.items()) {
    const std::size_t at = PositionOf(name);
    const Parameter& parameter = member_->parameters[at];
    try {
      Convert(values_[at], parameter.type);
    } catch (const Error& error) {
      throw Error(error.number, error.source,
                  error.description + ": argument " + parameter.name + " is due as " + TypeName(parameter.type) +
                      ", not " + Shown(value));
    }
  }
}

std::size_t LateCall::PositionOf(const Text& argument) const {
  const std::vector<Parameter>& parameters = member_->parameters;
  for (std::size_t i = 0; i < parameters.size(); ++i) {
    if (EqualsIgnoreCase(parameters[i].name, argument)) return i;
  }
  throw Error(kNoSuchArgument, kSource,
              "Named argument not found: " + argument + "; " + member_->name + " takes " + ArgumentNames(*member_));
}

void LateCall::Invoke() {
  result_ = object_->Invoke(member_->name, values_);
}

Json LateCall::Result() const {
  if (member_->result.kind == DeclaredType::Kind::None) return nullptr;
  return ToJson(result_);
}

Json LateCall::ByRefArguments() const {
  Json arguments = Json::object();
  for (std::size_t i = 0; i < values_.size(); ++i) {
    const Parameter& parameter = member_->parameters[i];
    if (parameter.by_ref && !values_[i].IsMissing()) arguments[parameter.name] = ToJson(values_[i]);
  }
  return arguments;
}

}  // namespace rebate
