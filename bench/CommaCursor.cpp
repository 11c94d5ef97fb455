#include "bench/CommaCursor.h"

bool CommaCursor::IsTerminator(char c) { return c == ',' || c == '\n' || c == '\0'; }
