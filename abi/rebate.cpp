#include "abi/rebate.h"

#include <pthread.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <nlohmann/json.hpp>

#include "abi/session_table.h"
#include "calls/json_values.h"
#include "platform/values/text.h"
#include "service/component_classes.h"

namespace {

using rebate::Error;
using rebate::Text;

constexpr const char* kSource = "rebate";

// What is said where not even the words for it can be had; rebate_free knows it by its place.
char no_memory[] = R"({"error":{"number":7,"source":"rebate","description":"Out of memory"}})";

[[noreturn]] void Refuse(const char* reason) {
  throw Error(rebate::error_number::kInvalidCall, kSource, reason);
}

char* Copy(const Text& text) {
  auto* copy = static_cast<char*>(std::malloc(text.size() + 1));
  if (copy == nullptr) return no_memory;
  std::memcpy(copy, text.c_str(), text.size() + 1);
  return copy;
}

char* ErrorAnswer(const Error& error) {
  return Copy(rebate::JsonLine({{"error", rebate::ErrorToJson(error)}}));
}

// While it lives, the thread isn't cancelled, and errno comes back as it was.
class HostThread {
 public:
  HostThread() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &cancel_state_); }
  ~HostThread() {
    pthread_setcancelstate(cancel_state_, nullptr);
    errno = errno_;
  }
  HostThread(const HostThread&) = delete;
  HostThread& operator=(const HostThread&) = delete;

 private:
  int errno_ = errno;
  int cancel_state_ = 0;
};

// What `work` gives; what it raises becomes an answer.
template <typename Work>
char* Guard(Work work) noexcept {
  const HostThread host;
  try {
    try {
      return work();
    } catch (const Error& error) {
      return ErrorAnswer(error);
    } catch (const std::bad_alloc&) {
      return no_memory;
    } catch (const std::exception& error) {
      constexpr rebate::Long kInternal = 51;
      return ErrorAnswer(Error(kInternal, kSource, error.what()));
    }
  } catch (...) {
    return no_memory;  // nothing else is left to fail
  }
}

bool IsUtf8(std::string_view text) {
  const char* at = text.data();
  const char* const end = at + text.size();
  while (at != end) {
    if (rebate::NextCodePoint(at, end) >= rebate::kInvalidByte) return false;
  }
  return true;
}

std::optional<Text> DataSourceOf(const char* dsn) {
  if (dsn == nullptr) return std::nullopt;
  if (!IsUtf8(dsn)) Refuse("The data source is no UTF-8");
  return dsn;
}

}  // namespace

std::uint32_t rebate_abi() {
  return REBATE_ABI;
}

char* rebate_open(const char* dsn, std::uint32_t flags, rebate_session* session) {
  if (session != nullptr) *session = 0;
  return Guard([&]() -> char* {
    if (session == nullptr) Refuse("The place for the session is NULL");
    if ((flags & ~REBATE_TRACE) != 0) Refuse("Unknown flags: those of rebate_open are REBATE_TRACE");
    static const bool registered = (rebate::RegisterComponent(), true);
    static_cast<void>(registered);
    *session = rebate::TheSessionTable().Open(DataSourceOf(dsn), (flags & REBATE_TRACE) != 0);
    return nullptr;
  });
}

char* rebate_call(rebate_session session, const char* request) {
  return Guard([&] {
    if (request == nullptr) Refuse("The request is NULL");
    return Copy(rebate::TheSessionTable().Find(session)->Answer(request));
  });
}

void rebate_free(char* text) {
  if (text != no_memory) std::free(text);
}

void rebate_close(rebate_session session) {
  Guard([&]() -> char* {
    rebate::TheSessionTable().Close(session);
    return nullptr;
  });
}
