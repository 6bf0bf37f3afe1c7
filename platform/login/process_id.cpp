#include "platform/login/process_id.h"

#ifdef _WIN32
#include <process.h>
#else
#include <unistd.h>
#endif

namespace rebate {

Long CurrentProcessId() {
#ifdef _WIN32
  return _getpid();
#else
  return getpid();
#endif
}

}  // namespace rebate
