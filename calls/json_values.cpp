#include "calls/json_values.h"

#include <charconv>
#include <limits>
#include <nlohmann/json.hpp>

#include "calls/tagged_values.h"
#include "platform/containers/dictionary.h"
#include "platform/containers/vector.h"
#include "platform/database/recordset.h"

namespace rebate {
namespace {

Json ListToJson(const std::vector<Variant>& values) {
  Json list = Json::array();
  for (const Variant& value : values) list.push_back(ToJson(value));
  return list;
}

Json ToJson(const Vector& vector) {
  Json list = Json::array();
  for (Long i = 1; i <= vector.Size(); ++i) list.push_back(ToJson(vector.Item(i)));
  return list;
}

Json ToJson(const Dictionary& dictionary) {
  Json object = Json::object();
  auto& members = object.get_ref<Json::object_t&>();
  members.reserve(static_cast<std::size_t>(dictionary.Count()));
  for (Long i = 1; i <= dictionary.Count(); ++i) {
    const Text& key = dictionary.Key(i);
    members.emplace_back(key, ToJson(dictionary.Value(key)));  // the keys are distinct
  }
  return object;
}

Json ToJson(Recordset& recordset) {
  Json columns = Json::array();
  const std::size_t count = recordset.FieldCount();
  for (std::size_t i = 0; i < count; ++i) columns.push_back(recordset.FieldName(i));
  Json rows = Json::array();
  for (recordset.MoveFirst(); !recordset.Eof(); recordset.MoveNext()) {
    Json& row = rows.emplace_back(Json::array());
    for (std::size_t i = 0; i < count; ++i) row.push_back(ToJson(recordset.FieldValue(i)));
  }
  return {{"$", "recordset"}, {"columns", std::move(columns)}, {"rows", std::move(rows)}};
}

Json ObjectToJson(Object* object) {
  if (object == nullptr) return nullptr;
  if (const auto* dictionary = dynamic_cast<const Dictionary*>(object)) return ToJson(*dictionary);
  if (const auto* vector = dynamic_cast<const Vector*>(object)) return ToJson(*vector);
  if (auto* recordset = dynamic_cast<Recordset*>(object)) return ToJson(*recordset);
  return {{"$", "object"}};
}

Variant DictionaryFromJson(const Json& json, const Text& path) {
  auto dictionary = New<Dictionary>();
  for (const auto& [key, value] : json.items()) {
    dictionary->SetValue(key, FromJson(value, path.empty() ? key : path + "." + key));
  }
  return dictionary;
}

std::vector<Variant> ListFromJson(const Json& json, const Text& path) {
  std::vector<Variant> values;
  values.reserve(json.size());
  for (const Json& element : json) {
    values.push_back(FromJson(element, path + "[" + std::to_string(values.size() + 1) + "]"));
  }
  return values;
}

Variant VectorFromJson(const Json& json, const Text& path) {
  auto vector = New<Vector>();
  for (Variant& value : ListFromJson(json, path)) vector->Add(std::move(value));
  return vector;
}

bool FitsLong(const Json& json) {
  using Limits = std::numeric_limits<Long>;
  if (json.is_number_unsigned()) return json.get<std::uint64_t>() <= static_cast<std::uint64_t>(Limits::max());
  const auto number = json.get<std::int64_t>();
  return number >= Limits::min() && number <= Limits::max();
}

Variant LongFromJson(const Json& json, const Text& path) {
  if (!FitsLong(json)) {
    throw Error(error_number::kOverflow, "JSON",
                path + ": the integer " + json.dump() + " is outside 32 bits; with a fraction it is a float");
  }
  return json.get<Long>();
}

}  // namespace

Json ToJson(const Variant& value) {
  switch (value.type()) {
    case VariantType::Long:
      return value.integer();
    case VariantType::Double:
      return value.real();
    case VariantType::Text:
      return value.text();
    case VariantType::Boolean:
      return value.integer() != 0;
    case VariantType::Object:
      return ObjectToJson(value.object().get());
    case VariantType::Array:
      return ListToJson(value.array());
    default:
      return TaggedToJson(value);
  }
}

Variant FromJson(const Json& json, const Text& path) {
  switch (json.type()) {
    case Json::value_t::null:
      return ObjectRef();
    case Json::value_t::boolean:
      return json.get<bool>();
    case Json::value_t::string:
      return json.get_ref<const Text&>();
    case Json::value_t::number_float:
      return json.get<double>();
    case Json::value_t::array:
      return VectorFromJson(json, path);
    case Json::value_t::object:
      return json.contains("$") ? TaggedFromJson(json, path) : DictionaryFromJson(json, path);
    default:
      return LongFromJson(json, path);
  }
}

Variant ArgumentFromJson(const Json& json, const Parameter& parameter) {
  if (parameter.type.kind == DeclaredType::Kind::Value && json.is_array()) {
    return Variant::Array(ListFromJson(json, parameter.name));
  }
  return FromJson(json, parameter.name);
}

Json ErrorToJson(const Error& error) {
  return {{"number", error.number}, {"source", error.source}, {"description", error.description}};
}

}  // namespace rebate
