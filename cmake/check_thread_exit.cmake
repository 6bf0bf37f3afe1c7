# Refuses BINARY where it has the compiler run destructors at a thread's end: on Windows the runtime of GCC 12 frees the
# memory of a thread_local before that. NM is the tool that lists symbols.
execute_process(COMMAND ${NM} ${BINARY} OUTPUT_VARIABLE symbols RESULT_VARIABLE failed)
if(failed OR NOT symbols MATCHES " T ")
  message(FATAL_ERROR "${NM} lists no symbols of ${BINARY}")
endif()
if(symbols MATCHES "[^\n]*thread_atexit[^\n]*")
  file(REMOVE ${BINARY})
  message(FATAL_ERROR "A thread_local with a destructor is in ${BINARY} (${CMAKE_MATCH_0}): "
                      "platform/automation/per_thread.h has what stands in its place.")
endif()
