#include "calls/call_control.h"

#include <nlohmann/json.hpp>

#include "calls/json_values.h"
#include "platform/automation/conversion.h"
#include "platform/login/process_cache.h"
#include "platform/login_standins/host_cache.h"
#include "platform/login_standins/login_standins.h"

namespace rebate {
namespace {

[[noreturn]] void Refuse(const Text& reason) {
  throw Error(error_number::kInvalidCall, "rebate call", reason);
}

Text TextOf(const Text& key, const Json& value) {
  if (!value.is_string()) Refuse("\"" + key + "\" is a text");
  return value.get<Text>();
}

Long IntegerOf(const Text& key, const Json& value) {
  if (!value.is_number_integer()) Refuse("\"" + key + "\" is an integer");
  return ToLong(FromJson(value, key));
}

bool FlagOf(const Text& key, const Json& value) {
  if (!value.is_boolean()) Refuse("\"" + key + "\" is true or false");
  return value.get<bool>();
}

void AddFailing(const Json& value, LoginAnswers& answers) {
  if (!value.is_array()) Refuse("\"fail\" is an array of program identifiers");
  for (const Json& program_id : value) answers.failing.push_back(TextOf("fail", program_id));
}

void SetAnswer(const Text& key, const Json& value, LoginAnswers& answers) {
  if (key == "AppUser") {
    answers.app_user = IntegerOf(key, value);
  } else if (key == "NeedAuthrize") {
    answers.need_authrize = FlagOf(key, value);
  } else if (key == "AuthrizeItemClassList") {
    answers.authrize_item_class_list = TextOf(key, value);
  } else if (key == "PropsString") {
    answers.props_string = TextOf(key, value);
  } else if (key == "OuterLogin") {
    answers.outer_login = IntegerOf(key, value);
  } else if (key == "fail") {
    AddFailing(value, answers);
  } else {
    Refuse("Unknown key in a login: " + key);
  }
}

void Login(const Json& request) {
  LoginAnswers answers;
  for (const auto& [key, value] : request.items()) {
    if (key == "fail") {
      AddFailing(value, answers);
    } else if (key != "login") {
      Refuse("Unknown key beside \"login\": " + key);
    } else if (!value.is_object()) {
      Refuse("\"login\" is an object, such as {\"AppUser\":12,\"NeedAuthrize\":true}");
    } else {
      for (const auto& [name, answer] : value.items()) SetAnswer(name, answer, answers);
    }
  }
  SetLoginAnswers(std::move(answers));
}

void Cache(const Json& request) {
  const Json& wish = request["cache"];
  if (request.size() != 1 || (wish != "create" && wish != "drop")) {
    Refuse("A line on the cache is {\"cache\":\"create\"} or {\"cache\":\"drop\"}");
  }
  if (wish == "create") {
    PutProcessCache(NewProcessCache());
  } else {
    DropProcessCache();
  }
}

}  // namespace

CallControl::CallControl() {
  RegisterLoginStandIns();
  SetLoginAnswers({});
  PutProcessCache(NewProcessCache());
}

CallControl::~CallControl() {
  DropProcessCache();
  SetLoginAnswers({});
}

bool CallControl::IsControl(const Json& request) {
  return request.contains("login") || request.contains("cache");
}

Json CallControl::Perform(const Json& request) {
  if (request.contains("login")) {
    Login(request);
    return {{"login", true}};
  }
  Cache(request);
  return {{"cache", request["cache"]}};
}

}  // namespace rebate
