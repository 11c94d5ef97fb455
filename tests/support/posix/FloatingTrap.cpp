#include "tests/support/FloatingTrap.h"

#include <csignal>
#include <sys/wait.h>

bool support::EndedByFloatingTrap(int status) { return WIFSIGNALED(status) && WTERMSIG(status) == SIGFPE; }
