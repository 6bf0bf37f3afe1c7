// Every operation with every fault below it: a call that comes to a fault leaves the account as it was, or does all of
// its work; it answers as its failure class says, and the next call on the same instance works. Some faults of each
// kind, or all of them where the environment says REBATE_FAULTS=all.

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <iostream>
#include <regex>
#include <thread>

#include "calls/call_control.h"
#include "calls/call_thread.h"
#include "calls/late_call.h"
#include "platform/database/embedded/embedded_account.h"
#include "service/component_classes.h"
#include "tests/faults/fault_points.h"
#include "tests/faults/operations.h"
#include "tests/scratch_folder.h"

namespace rebate {
namespace {

std::size_t pairs = 0;
std::size_t failures = 0;

bool All() {
  const char* wish = std::getenv("REBATE_FAULTS");
  return wish != nullptr && std::string_view(wish) == "all";
}

bool IsMemory(FaultPoint point) {
  return point == FaultPoint::Memory || point == FaultPoint::EngineMemory;
}

// The numbers of faults to try out of `total`: memory is asked for thousands of times.
std::vector<std::size_t> Spread(std::size_t total, FaultPoint point) {
  const std::size_t most = !All() ? 3 : IsMemory(point) ? 200 : total;
  std::vector<std::size_t> numbers;
  const std::size_t count = std::min(total, most);
  for (std::size_t i = 0; i < count; ++i) numbers.push_back(1 + i * total / count);
  return numbers;
}

const Text& TemplateAccount() {
  struct Template {
    ScratchFolder folder;
    Text path = folder.File("template.db");
    // The thread's end closes its connections, so that the file holds everything.
    Template() {
      std::thread([this] { MakeFaultAccount(path); }).join();
    }
  };
  static const Template made;
  return made.path;
}

// Today's date differs from run to run.
Json WithoutTimes(const Json& answer) {
  static const std::regex time(R"(\d{4}-\d\d-\d\d( \d\d:\d\d:\d\d)?)");
  return ParseJson(std::regex_replace(JsonLine(answer), time, "TIME"));
}

// What a call left.
struct Left {
  Json answer;
  Text rows;
  friend bool operator==(const Left&, const Left&) = default;
};

// What calls leave on a fresh copy of the account.
class Calls {
 public:
  Calls(const Operation& operation, bool warm, FaultPoint point, std::size_t n, bool stays) : operation_(operation) {
    const auto begin = std::chrono::steady_clock::now();
    // A thread of its own has no connection yet.
    std::thread([&] { Perform(warm, point, n, stays); }).join();
    time_ = std::chrono::steady_clock::now() - begin;
  }

  const Text& before() const { return before_; }
  const Left& faulty() const { return faulty_; }         // the call with the fault
  const Left& next() const { return next_; }             // the one behind it
  std::size_t count() const { return count_; }           // how often it came to the point
  bool waited() const { return time_ > kLockWait / 2; }  // for a lock that a call left

 private:
  void Perform(bool warm, FaultPoint point, std::size_t n, bool stays) {
    std::filesystem::copy_file(files::ToPath(TemplateAccount()), files::ToPath(path_));
    Instances instances{Text(TheComponent().name)};
    if (warm) {
      for (const Json& request : operation_.warm) Answer(instances, request, FaultPoint{}, 0, false);
    }
    before_ = RowsOfAccount(path_);
    faulty_ = {Answer(instances, operation_.request, point, n, stays), RowsOfAccount(path_)};
    const std::size_t count = count_;
    next_ = {Answer(instances, operation_.request, point, 0, false), RowsOfAccount(path_)};
    count_ = count;
  }

  Json Answer(Instances& instances, const Json& request, FaultPoint point, std::size_t n, bool stays) {
    const std::optional<Text> dsn = "Data Source=" + path_ + ";AppUser=1001";
    LateCall call(instances, request["op"].get<Text>(), request["args"], dsn);
    Json answer = Json::object();
    try {
      Invoke(call, point, n, stays);
      answer["result"] = call.Result();
      answer["args"] = call.ByRefArguments();
    } catch (const Error& error) {
      answer["error"] = error.number;
    } catch (const std::bad_alloc&) {
      answer["error"] = "memory";
    }
    return WithoutTimes(answer);
  }

  void Invoke(LateCall& call, FaultPoint point, std::size_t n, bool stays) {
    const ArmedFault fault(point, n, stays);
    const struct Counting {
      const ArmedFault& fault;
      std::size_t& count;
      ~Counting() { count = fault.count(); }
    } counting{fault, count_};
    call.Invoke();
  }

  const Operation& operation_;
  ScratchFolder folder_;
  Text path_ = folder_.File("shop.db");
  Text before_;
  Left faulty_;
  Left next_;
  std::size_t count_ = 0;
  std::chrono::steady_clock::duration time_{};
};

// What is wrong with a run beside one without a fault; empty where nothing is.
Text WrongWith(const Calls& run, const Calls& sound, const Operation& operation, FaultPoint point) {
  const Left& left = run.faulty();
  const bool without_memory = IsMemory(point) && left.answer.contains("error");
  const bool failed = operation.IsFailure(left.answer) || without_memory;
  const bool untouched = left.rows == run.before();
  const bool done = left.rows == sound.faulty().rows;
  if (run.waited()) return "left a lock";
  if (!untouched && !done) return "left half of its work";
  if (left.answer != sound.faulty().answer && !failed)
    return "gave an answer that is neither: " + JsonLine(left.answer);
  if (left.answer == sound.faulty().answer && !done && !failed) return "told of work that isn't there";
  if (failed && !untouched && !IsMemory(point) && !operation.completes) return "failed, and did its work";
  if (run.next() == (untouched ? sound.faulty() : sound.next())) return {};
  return "spoilt the next call: " + JsonLine(run.next().answer);
}

class Pairs : public testing::TestWithParam<std::tuple<Operation, bool>> {
 protected:
  void Try(FaultPoint point) {
    const auto& [operation, warm] = GetParam();
    const Calls sound(operation, warm, point, 0, false);
    if (!operation.fails_late) {
      ASSERT_FALSE(operation.IsFailure(sound.faulty().answer)) << JsonLine(sound.faulty().answer);
    }
    std::size_t wrong = 0;
    for (const std::size_t n : Spread(sound.count(), point)) {
      for (const bool stays : {false, true}) {
        if (!All() && stays != (n % 2 == 0)) continue;
        const Calls run(operation, warm, point, n, stays);
        ++pairs;
        const Text what = WrongWith(run, sound, operation, point);
        if (what.empty()) continue;
        ++failures;
        if (++wrong <= 3) {
          ADD_FAILURE() << NameOf(point) << " " << n << " of " << sound.count() << (stays ? " and on" : "") << ": "
                        << what;
        }
      }
    }
  }
};

TEST_P(Pairs, LeaveAllOrNothing) {
  for (const FaultPoint point : kFaultPoints) Try(point);
}

INSTANTIATE_TEST_SUITE_P(Faults, Pairs, testing::Combine(testing::ValuesIn(AllOperations()), testing::Bool()),
                         [](const auto& test) {
                           return std::get<0>(test.param).name + (std::get<1>(test.param) ? "_Warm" : "_Cold");
                         });

TEST(FaultyOperations, AreAllThereAre) {
  std::set<Text> tried;
  for (const Operation& operation : AllOperations()) tried.insert(operation.request["op"].get<Text>());
  EXPECT_EQ(tried.size(), 28u);
}

}  // namespace
}  // namespace rebate

int main(int argc, char** argv) {
  rebate::InstallFaultPoints();
  testing::InitGoogleTest(&argc, argv);
  rebate::RegisterComponent();
  const rebate::CallControl control;
  const int status = RUN_ALL_TESTS();
  std::cout << rebate::pairs << " pairs, " << rebate::failures << " failures\n";
  return status;
}
