#include "tests/crash/crashers/Hostile.h"

#line 7 "/parts/R&D \"new\"/\xff<1>.cpp"
[[gnu::noipa]] int crasher::Hostile(int* place)
{
    *place = 1;
    return 2;
}
