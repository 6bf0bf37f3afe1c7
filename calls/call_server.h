#pragma once

#include <map>
#include <optional>
#include <string_view>

#include "calls/call_thread.h"
#include "calls/json_text.h"

namespace rebate {

class CallControl;

struct CallOptions {
  Text library;             // the classes are created as `library.Class`
  std::optional<Text> dsn;  // for calls that leave their `sDsn` out
  bool trace = false;       // whether answers list what the call did to the world
  bool check_ids = false;   // whether arguments that statements can't take as they are are refused (see CheckIds)
};

// Answers requests, each one JSON object:
//   {"op":"Class.Member","args":{NAME:VALUE,…},"thread":NAME,"tell":[…]}   a call; all but "op" may be left out
//   {"op":…,"result":VALUE,"args":{…},"trace":[…]}              its answer, with the by-ref arguments if there are any
//   {"op":…,"error":{"number":…,"source":…,"description":…},…}  its answer where it raised, or could not be made
// `tell` asks for more in the answer: "failure", why the operation failed where nothing else in it tells, and "scheme",
// the id of the scheme that was stored; each null where there is none. The "id" of a request, any value, comes back.
// {"describe":true} in the place of a call lists the operations (see CallDescription), one with "login" or "cache"
// speaks for the host (see CallControl). Each thread named is a thread of the process with one instance of each class,
// made on first use; {"end":NAME} ends one with all that it holds. There may be 64 of them; a call that names one more
// is answered by an error. A server answers one request at a time, for whichever thread asks.
class CallServer {
 public:
  // `control` outlives the server.
  CallServer(CallOptions options, CallControl& control) : options_(std::move(options)), control_(control) {}

  // The answer to one request. What is no request is answered by an error, too; raises where memory or threads give
  // out.
  Json Answer(std::string_view line);

  // Opens the options' data source, where there is one, on the thread of the calls that name none; its connection stays
  // open for them. Raises what opening raises.
  void OpenDataSource();

 private:
  void AnswerRequest(const Json& request, Json& answer);
  void AnswerCall(const Json& request, Json& answer);
  void Perform(Instances& instances, const Text& operation, const Json& args, Json& answer) const;
  CallThread& ThreadOf(const Text& name);
  void EndThread(const Text& name);

  CallOptions options_;
  CallControl& control_;
  std::map<Text, CallThread> threads_;
};

}  // namespace rebate
