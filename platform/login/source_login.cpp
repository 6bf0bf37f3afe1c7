#include "platform/login/source_login.h"

#include <atomic>

#include "platform/automation/error.h"
#include "platform/database/data_source.h"

namespace rebate {
namespace {

std::atomic<SourceLoginListener> the_listener = nullptr;

}  // namespace

void SetSourceLoginListener(SourceLoginListener listener) {
  the_listener = listener;
}

void AnnounceSourceLogin(const DataSource& source) {
  if (const SourceLoginListener listener = the_listener) {
    listener(source);
  } else if (source.rights) {
    throw Error(error_number::kInvalidCall, "DataSource",
                "Rights= can't be named in the connection text here: the host's login tells the user's data rights.");
  }
}

}  // namespace rebate
