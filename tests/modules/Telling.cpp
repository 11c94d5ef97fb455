// A program that writes its arguments to the file that the environment names, each in angle brackets, and then does
// what the first of them says: `exit=N` or `sleep`.

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>
#include <thread>

int main(int count, char** arguments)
{
    if (const char* const file = std::getenv("UTILITY_TOLD"))
    {
        std::ofstream told(file, std::ios::binary);
        for (int each = 1; each < count; ++each)
            told << '<' << arguments[each] << '>';
    }
    const std::string first = count > 1 ? arguments[1] : "";
    if (first == "sleep")
        std::this_thread::sleep_for(std::chrono::minutes(10));
    return first.starts_with("exit=") ? std::atoi(first.c_str() + 5) : 0;
}
