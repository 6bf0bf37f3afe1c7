/* The rebate component for programs in other languages: librebate.so.1.
 *
 *     rebate_session session;
 *     char *error = rebate_open("shop.db", 0, &session);      NULL: it is open
 *     char *answer = rebate_call(session, "{\"op\":\"BaseInfoMgr.GetRebateRange\",\"args\":{\"lType\":2040}}");
 *     rebate_free(answer);
 *     rebate_close(session);
 *
 * Texts. Every text is UTF-8 and ends with a NUL. Requests and answers are the JSON objects of `rebate call`, which
 * README.md describes. A text that a function gives belongs to the caller, until rebate_free.
 *
 * Errors. They are texts, too: {"error":{"number":...,"source":...,"description":...}}. No function raises or sets
 * errno, whatever it is given; each may be called while an exception of the host is under way. Want of memory is
 * answered by error 7; where not even the small pieces are to be had that taking a JSON value apart needs, the process
 * ends.
 *
 * Threads. A session may be used from any thread, by one at a time: a call that comes while another one runs in the
 * same session is answered by error 70 and does nothing. Sessions work beside each other. The calls of a session run
 * on a thread that the session owns, since instances and open connections belong to one thread: so the caller's
 * stack, signal handlers and exceptions don't touch them, a host that moves between threads finds the same instances,
 * and closing leaves nothing behind. It costs two thread switches a call. A thread isn't cancelled (pthread_cancel)
 * while it is in one of these functions.
 *
 * Processes. A session belongs to the process that opened it. In a child made by fork its calls are answered by error
 * 5; the child opens its own.
 *
 * Versions. What is declared here stays as it is under the name librebate.so.1; rebate_abi tells what was added. */
#ifndef REBATE_H
#define REBATE_H

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif
#ifdef __GNUC__
#pragma GCC visibility push(default) /* whatever the program's own symbols are */
#endif

#define REBATE_ABI 1u /* what this header declares */

/* A session's number; 0 is none. Numbers aren't used again: one that was closed is answered by error 91. */
typedef uint64_t rebate_session;

/* Flags of rebate_open. */
#define REBATE_TRACE 1u /* answers list under "trace" what the call did: opens, votes, statements */

/* The version of the loaded library: at least REBATE_ABI where it has all that this header declares. */
uint32_t rebate_abi(void);

/* Opens a session on the account that `dsn` names, for calls that leave their sDsn out; where `dsn` is NULL, each call
 * names its own. `flags` are added up, 0 for none. Gives NULL and puts the session's number at `session`; where there
 * is no such account, or an argument is wrong, gives the error and puts 0 there. */
char* rebate_open(const char* dsn, uint32_t flags, rebate_session* session);

/* Carries out a request, one JSON object, and gives the answer, another one on one line; never NULL. A session that is
 * none, a request that is NULL or no JSON, and want of memory are answered by an error. The lines "login" and "cache"
 * of `rebate call` hold for all sessions of the process, until the last one is closed. */
char* rebate_call(rebate_session session, const char* request);

/* Frees a text that rebate_open or rebate_call gave; NULL is let be. */
void rebate_free(char* text);

/* Closes a session, its connections and its threads; a call that runs in it comes to its end first. A number that is
 * no session's is let be. Texts that it gave stay. */
void rebate_close(rebate_session session);

#ifdef __GNUC__
#pragma GCC visibility pop
#endif
#ifdef __cplusplus
}
#endif

#endif
