#include "tests/support/FloatingTrap.h"

#include <csignal>
#include <sys/wait.h>

#if defined(__SANITIZE_ADDRESS__)
// The sanitizer would report the trap, and end the process by an exit.
extern "C" __attribute__((visibility("default"))) const char* __asan_default_options() { return "handle_sigfpe=0"; }
#endif

bool support::EndedByFloatingTrap(int status) { return WIFSIGNALED(status) && WTERMSIG(status) == SIGFPE; }
