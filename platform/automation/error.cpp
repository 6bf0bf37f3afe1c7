#include "platform/automation/error.h"

#include <new>

namespace rebate {

Error CurrentError() {
  try {
    throw;
  } catch (const Error& error) {
    return error;
  } catch (const std::bad_alloc&) {
    return Error(error_number::kOutOfMemory, "", "Out of memory");
  } catch (const std::exception& error) {
    return Error(error_number::kInternal, "", error.what());
  }
}

}  // namespace rebate
