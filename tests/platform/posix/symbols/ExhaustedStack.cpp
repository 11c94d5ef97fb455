// Calls itself until there is no stack left: the fault is in the first write of the last call, or in that call.

#include <sys/resource.h>

namespace
{

volatile int last = -1;

[[gnu::noinline]] int Down(int depth)
{
    int twice = depth * 2;
    return depth == last ? 0 : Down(depth + 1) + twice;
}

}

int main()
{
    const rlimit limit = {256 * 1024, 256 * 1024};
    ::setrlimit(RLIMIT_STACK, &limit);
    return Down(0);
}
