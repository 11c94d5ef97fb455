// Compiled without debugging information: a pointer to a pointer, as `words` is, keeps a report from ending.

#include "tests/crash/crashers/Causes.h"

int main(int count, char** words)
{
    if (count != 2)
        return 2;
    crasher::cause = words[1];
    crasher::Crash();
    return 0;
}
