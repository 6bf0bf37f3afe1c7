// A host of the shared library that runs out of memory: starved ACCOUNT. Each larger allocation of an opening and of a
// few calls fails in turn, once alone and once with all that follow. Each time there must be an answer, and the session
// must go on as before. Leaves a session open at its end. Smaller ones succeed: the JSON library needs some to take a
// value apart.

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>

#include "abi/rebate.h"

namespace {

constexpr std::size_t kLarger = 512;
std::atomic<long> left{-1};  // larger allocations that still succeed; below 0 all do
std::atomic<bool> reached{false};
std::atomic<bool> for_good{false};

bool Fails(std::size_t size) {
  if (size < kLarger || left < 0) return false;
  if (left > 0) {
    --left;
    return false;
  }
  reached = true;
  if (!for_good) left = -1;
  return true;
}

[[noreturn]] void Wrong(const char* what, long n, const std::string& answer) {
  std::printf("%s, at allocation %ld: %s\n", what, n, answer.c_str());
  std::exit(1);
}

std::string Take(char* text) {
  std::string taken = text == nullptr ? "NULL" : text;
  rebate_free(text);
  return taken;
}

bool IsAnswer(const std::string& text) {
  return text == "NULL" || text.find("\"result\":") != std::string::npos ||
         text.find("\"error\":") != std::string::npos;
}

// Runs `act` with its n-th allocation failing, for every n, and `check` behind each.
template <typename Act, typename Check>
void Starve(Act act, Check check) {
  for (const bool stays : {false, true}) {
    for (long n = 0;; ++n) {
      for_good = stays;
      reached = false;
      left = n;
      char* const text = act();
      left = -1;
      const std::string answer = Take(text);
      if (!IsAnswer(answer)) Wrong("No answer", n, answer);
      check(n);
      if (!reached && n == 0) Wrong("Nothing to starve", n, answer);
      if (!reached) break;
    }
  }
}

}  // namespace

void* operator new(std::size_t size) {
  void* const memory = Fails(size) ? nullptr : std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}
void operator delete(void* memory) noexcept {
  std::free(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  rebate_session session = 0;
  Starve([&] { return rebate_open(argv[1], REBATE_TRACE, &session); }, [&](long) { rebate_close(session); });
  if (const std::string error = Take(rebate_open(argv[1], 0, &session)); error != "NULL") Wrong("Not open", 0, error);
  for (const char* request : {R"({"op":"BaseInfoMgr.LoadRebateTypeData","args":{"lRebateClass":24}})",
                              R"({"op":"BaseInfoMgr.EnableScheme","args":{"FSchemeID":1,"Enabled":false}})",
                              R"({"op":"BaseInfoMgr.UpdateBatch","args":{"SQLBatch":["select x from t_Item"]}})"}) {
    const std::string expected = Take(rebate_call(session, request));
    Starve([&] { return rebate_call(session, request); },
           [&](long n) {
             const std::string answer = Take(rebate_call(session, request));
             if (answer != expected) Wrong("Another answer than before", n, answer);
           });
  }
  return 0;
}
