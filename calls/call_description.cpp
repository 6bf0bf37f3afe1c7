#include "calls/call_description.h"

#include <nlohmann/json.hpp>

#include "calls/late_call.h"
#include "service/component_classes.h"

namespace rebate {
namespace {

Json ArgumentOf(const Parameter& parameter) {
  Json argument = {{"name", parameter.name}, {"type", TypeName(parameter.type)}};
  if (parameter.by_ref) argument["byRef"] = true;
  if (parameter.optional) argument["optional"] = true;
  return argument;
}

Json OperationOf(std::string_view class_name, const Member& member) {
  Json arguments = Json::array();
  for (const Parameter& parameter : member.parameters) arguments.push_back(ArgumentOf(parameter));
  return {{"op", Text(class_name) + "." + member.name},
          {"args", std::move(arguments)},
          {"result", TypeName(member.result)}};
}

}  // namespace

Json CallDescription() {
  const ComponentLibrary& component = TheComponent();
  Json operations = Json::array();
  for (const ComponentClass& component_class : component.classes) {
    const ObjectRef instance = component_class.create();
    for (const Member& member : instance->Members().All()) {
      operations.push_back(OperationOf(component_class.name, member));
    }
  }
  return {{"protocol", kCallProtocol},
          {"component", component.name},
          {"version", std::to_string(component.major_version) + "." + std::to_string(component.minor_version)},
          {"operations", std::move(operations)}};
}

}  // namespace rebate
