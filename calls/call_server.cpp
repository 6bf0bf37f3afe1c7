#include "calls/call_server.h"

#include <nlohmann/json.hpp>

#include "calls/call_control.h"
#include "calls/call_description.h"
#include "calls/call_trace.h"
#include "calls/id_check.h"
#include "calls/json_values.h"
#include "calls/late_call.h"
#include "platform/login/data_context.h"

namespace rebate {
namespace {

constexpr const char* kSource = "rebate call";
constexpr Long kOutOfMemory = 7;
// Each may hold open connections, with their files and memory.
constexpr std::size_t kMostThreads = 64;

[[noreturn]] void Refuse(const Text& reason) {
  throw Error(error_number::kInvalidCall, kSource, reason);
}

Text TextOf(const Json& request, const char* key) {
  const Json& value = request[key];
  if (!value.is_string()) Refuse("\"" + Text(key) + "\" is a text");
  return value.get<Text>();
}

// What a call's answer tells on request.
struct Tell {
  bool failure = false;
  bool scheme = false;
};

Tell TellOf(const Json& request) {
  Tell tell;
  if (!request.contains("tell")) return tell;
  const Json& wishes = request["tell"];
  if (!wishes.is_array()) Refuse("\"tell\" is an array of \"failure\" and \"scheme\"");
  for (const Json& wish : wishes) {
    if (wish == "failure") {
      tell.failure = true;
    } else if (wish == "scheme") {
      tell.scheme = true;
    } else {
      Refuse("\"tell\" knows \"failure\" and \"scheme\", not " + JsonLine(wish));
    }
  }
  return tell;
}

// Runs `work`; what it raises becomes the answer's error.
template <typename Work>
void AnswerErrors(Json& answer, Work work) {
  try {
    work();
  } catch (const Error& error) {
    answer["error"] = ErrorToJson(error);
  } catch (const std::bad_alloc&) {
    answer["error"] = ErrorToJson(Error(kOutOfMemory, kSource, "Out of memory"));
  } catch (const std::exception& error) {
    constexpr Long kUnexpected = -2147418113;
    answer["error"] = ErrorToJson(Error(kUnexpected, kSource, error.what()));
  }
}

}  // namespace

Json CallServer::Answer(std::string_view line) {
  Json answer = Json::object();
  AnswerErrors(answer, [&] {
    Json request = ParseJson(line);
    if (!request.is_object()) Refuse("A request is an object, such as {\"op\":\"Class.Member\",\"args\":{}}");
    if (request.contains("id")) {
      answer["id"] = request["id"];
      request.erase("id");
    }
    AnswerRequest(request, answer);
  });
  // A request that came to no call did nothing to the world.
  if (options_.trace && answer.contains("error") && !answer.contains("trace")) answer["trace"] = Json::array();
  return answer;
}

// Each kind of request is known by a key of its own.
void CallServer::AnswerRequest(const Json& request, Json& answer) {
  if (request.contains("op")) {
    AnswerCall(request, answer);
  } else if (CallControl::IsControl(request)) {
    answer.update(control_.Perform(request));
  } else if (request.contains("end")) {
    if (request.size() != 1) Refuse("A line that ends a thread is {\"end\":NAME}");
    EndThread(TextOf(request, "end"));
    answer["end"] = request["end"];
  } else if (request.contains("describe")) {
    if (request.size() != 1 || request["describe"] != true) {
      Refuse("A line that asks for a description is {\"describe\":true}");
    }
    ThreadOf({}).Run([&](Instances&) { answer["describe"] = CallDescription(); });
  } else {
    Refuse("\"op\" is missing: the operation, as Class.Member; {\"describe\":true} lists them");
  }
}

void CallServer::OpenDataSource() {
  if (!options_.dsn) return;
  ThreadOf({}).Run([this](Instances&) { TheGlobalApplication().GetContext()->Open(*options_.dsn); });
}

void CallServer::AnswerCall(const Json& request, Json& answer) {
  const Text operation = TextOf(request, "op");
  answer["op"] = operation;
  for (const auto& [key, value] : request.items()) {
    if (key != "op" && key != "args" && key != "thread" && key != "tell") Refuse("Unknown key in a call: " + key);
  }
  const Tell tell = TellOf(request);
  static const Json kNoArguments = Json::object();
  const Json& args = request.contains("args") ? request["args"] : kNoArguments;
  if (!args.is_object()) Refuse("\"args\" is an object: the arguments by their names");
  const Text thread = request.contains("thread") ? TextOf(request, "thread") : Text();

  CallTrace trace;
  ThreadOf(thread).Run([&](Instances& instances) {
    const TracedThread traced(options_.trace || tell.failure || tell.scheme ? &trace : nullptr);
    Perform(instances, operation, args, answer);
  });
  if (tell.failure) answer["failure"] = trace.failure();
  if (tell.scheme) answer["scheme"] = trace.stored_scheme() ? Json(*trace.stored_scheme()) : Json();
  if (options_.trace) answer["trace"] = trace.entries();
}

void CallServer::Perform(Instances& instances, const Text& operation, const Json& args, Json& answer) const {
  AnswerErrors(answer, [&] {
    if (options_.check_ids) CheckIds(args);
    LateCall call(instances, operation, args, options_.dsn);
    AnswerErrors(answer, [&] {
      call.Invoke();
      answer["result"] = call.Result();
    });
    if (Json by_ref = call.ByRefArguments(); !by_ref.empty()) answer["args"] = std::move(by_ref);
  });
}

CallThread& CallServer::ThreadOf(const Text& name) {
  const auto found = threads_.find(name);
  if (found != threads_.end()) return found->second;
  if (!name.empty() && threads_.size() - threads_.count({}) >= kMostThreads) {
    Refuse("There are " + std::to_string(kMostThreads) + " threads: {\"end\":NAME} ends one that is no longer needed");
  }
  return threads_.try_emplace(name, options_.library).first->second;
}

void CallServer::EndThread(const Text& name) {
  if (name.empty()) Refuse("\"end\" names a thread; that of the calls that name none stays");
  if (threads_.erase(name) == 0) Refuse("No thread has the name " + name);
}

}  // namespace rebate
