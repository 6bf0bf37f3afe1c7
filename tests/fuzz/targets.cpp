#include "tests/fuzz/targets.h"

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <thread>

#include "calls/call_control.h"
#include "calls/call_server.h"
#include "client/tool.h"
#include "model/account_script.h"
#include "platform/automation/conversion.h"
#include "platform/database/connect.h"
#include "platform/database/connection_text.h"
#include "platform/values/ascii.h"
#include "service/component_classes.h"
#include "tests/scratch_folder.h"

namespace rebate {
namespace {

[[noreturn]] void Fail(std::string_view what, std::string_view input) {
  std::cerr << what << "\n" << input << "\n";
  std::abort();
}

// A sample account, made once in the process.
struct SampleAccount {
  ScratchFolder folder;
  Text path = folder.File("shop.db");

  SampleAccount() {
    AccountSetup setup(DataSource::Parse(path));
    for (const std::string_view script : {AccountSchema(), AccountSample()}) {
      for (const ScriptBatch& batch : Batches(script)) setup.connection().Execute(batch.text);
    }
    setup.Finish();
  }
};

const SampleAccount& Sample() {
  static const SampleAccount sample;
  return sample;
}

bool HoldsAny(std::string_view text, std::initializer_list<std::string_view> words) {
  const Text lower = AsciiLower(text);
  return std::any_of(words.begin(), words.end(), [&](std::string_view word) { return lower.find(word) != Text::npos; });
}

// A loop may run as long as it likes, and a text may ask for another one of any size.
bool MayRunOn(std::string_view text) {
  return HoldsAny(text, {"while", "replicate", "space"});
}

Text Types(const ConnectionRef& connection) {
  return ToText(connection->Execute("select count(*) from t_FL_SchemeMode")->FieldValue(std::size_t{0}));
}

// Whatever a text does inside a unit of work, the account is as it was when that is undone.
void RunStatements(std::string_view input) {
  if (MayRunOn(input) || HoldsAny(input, {"commit"})) return;
  static const ConnectionRef connection = Connect(DataSource::Parse(Sample().path));
  static const Text types = Types(connection);
  connection->BeginWork();
  try {
    connection->Execute(input);
  } catch (const Error&) {
  }
  connection->RollbackWork();
  if (Types(connection) != types) Fail("The account has changed", input);
}

// Each line has one answer, an object on one line.
void RunCall(std::string_view input) {
  if (MayRunOn(input)) return;
  static CallControl control;
  static CallServer server({Text(TheComponent().name), Sample().path, true}, control);
  const Json answer = server.Answer(input);
  if (!answer.is_object() || JsonLine(answer).find('\n') != Text::npos) Fail("No answer", input);
}

// What is told of a connection text is itself one, and has no secret left to hide.
void RunConnectionText(std::string_view input) {
  try {
    DataSource::Parse(input);
    const Text told = WithoutSecrets(input);
    if (WithoutSecrets(told) != told) Fail("A secret is told", input);
  } catch (const Error&) {
  }
}

// Gives the exit status of the tool. On a thread of its own, whose end closes its connections.
int RunVerb(std::initializer_list<const char*> arguments) {
  int status = 0;
  std::thread([&] {
    std::istringstream in;
    std::ostringstream out;
    std::ostringstream err;
    Tool tool{in, out, err};
    status = RunTool(static_cast<int>(arguments.size()), arguments.begin(), tool);
  }).join();
  return status;
}

void NeedAnswered(int status, std::string_view input) {
  if (status != 0 && status != 1) Fail("The tool ended with " + std::to_string(status), input);
}

// A file of a request, for both kinds of save, on an account of its own.
void RunRequestFile(std::string_view input) {
  static const Text file = Sample().folder.File("request.json");
  static const Text account = Sample().folder.File("requests.db");
  std::ofstream(files::ToPath(file), std::ios::binary | std::ios::trunc) << input;
  for (const char* suffix : {"", "-wal", "-shm"}) files::Remove(account + suffix);
  std::filesystem::copy_file(files::ToPath(Sample().path), files::ToPath(account));
  NeedAnswered(RunVerb({"rebate", "save", file.c_str(), "--dsn", account.c_str()}), input);
  NeedAnswered(RunVerb({"rebate", "form", "save", file.c_str(), "--dsn", account.c_str()}), input);
}

// A file that is called an account: it is opened and read, or refused.
void RunAccountFile(std::string_view input) {
  static const Text file = Sample().folder.File("other.db");
  for (const char* suffix : {"-wal", "-shm"}) files::Remove(file + suffix);
  std::ofstream(files::ToPath(file), std::ios::binary | std::ios::trunc) << input;
  NeedAnswered(RunVerb({"rebate", "list", "--dsn", file.c_str()}), "");
}

constexpr FuzzTarget kTargets[] = {
    {"statements", RunStatements}, {"calls", RunCall},           {"connections", RunConnectionText},
    {"requests", RunRequestFile},  {"accounts", RunAccountFile},
};

}  // namespace

std::span<const FuzzTarget> FuzzTargets() {
  return kTargets;
}

}  // namespace rebate
