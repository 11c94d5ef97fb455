#include "utility/Utility.h"

#include <iostream>
#include <map>
#include <thread>

struct Tool
{
    double diameter;
    double length;
};

/// A map whose nodes are in the pool of the thread that makes it.
using Nodes = CThreadNodeAllocator<std::pair<const int, Tool>>;
using Tools = std::map<int, Tool, std::less<>, Nodes>;

double Work(int count)
{
    const CThreadAllocatorManager manager; // ahead of containers: it ends after them
    Tools tools;
    for (int number = 1; number <= count; ++number)
        tools[number] = {0.5 * number, 80.0};
    double sum = 0.0;
    for (const auto& [number, tool] : tools)
        sum += tool.diameter;
    return sum;
}

int main()
{
    // In the first line of main: where memory runs out, a report precedes the failure.
    const CNewHandler newHandler;

    double sum = 0.0;
    std::thread worker([&] { sum = Work(1000); });
    worker.join();
    std::cout << "diameters of " << sum << " mm\n";

    // The thread that loads the library has a pool from the start.
    CQLMNodeAllocator* const pool = GetThreadAllocator();
    void* const node = pool->allocate(24);
    pool->deallocate(node, 24); // nodes have no header: say how large it is
    const bool isSame = pool->allocate(24) == node;
    std::cout << (isSame ? "the same node again\n" : "another node\n");

    std::size_t committed = 0, reserved = 0, free = 0, largestFree = 0;
    GetVirtualAddressSpaceInformation(committed, reserved, free, largestFree);
    const bool isKnown = committed > 0 && largestFree <= free;
    std::cout << (isKnown ? "the address space is known\n" : "nothing is known\n");
}
