#include "platform/login/call_observer.h"

namespace rebate {
namespace {

thread_local CallObserver* the_observer = nullptr;

}  // namespace

void SetCallObserver(CallObserver* observer) {
  the_observer = observer;
}

CallObserver* TheCallObserver() {
  return the_observer;
}

}  // namespace rebate
