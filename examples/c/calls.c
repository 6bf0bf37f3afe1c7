/* Answers requests, one a line of standard input, on an account:
 *
 *     cc -o calls examples/c/calls.c -I abi -L build/lib -l:librebate.so.1
 *     echo '{"op":"BaseInfoMgr.LoadRebateTypeData","args":{"lRebateClass":24}}' | LD_LIBRARY_PATH=build/lib ./calls shop.db
 */
#include <stdio.h>

#include "rebate.h"

int main(int argc, char **argv) {
  static char line[1 << 20];
  rebate_session session;
  char *text;

  if (argc != 2) {
    fprintf(stderr, "usage: calls ACCOUNT <REQUESTS\n");
    return 2;
  }
  if (rebate_abi() < REBATE_ABI) {
    fprintf(stderr, "calls: the library is older than this program\n");
    return 1;
  }
  text = rebate_open(argv[1], 0, &session);
  if (text != NULL) {
    fprintf(stderr, "%s\n", text);
    rebate_free(text);
    return 1;
  }
  while (fgets(line, sizeof line, stdin) != NULL) {
    text = rebate_call(session, line);
    puts(text);
    rebate_free(text);
  }
  rebate_close(session);
  return 0;
}
