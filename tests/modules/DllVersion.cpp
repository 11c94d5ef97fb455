// A library that tells its version, as GetDLLVersion asks for it.

#ifdef _WIN32
#define UTILITY_EXPORTED __declspec(dllexport)
#else
#define UTILITY_EXPORTED __attribute__((visibility("default")))
#endif

extern "C" UTILITY_EXPORTED int DllGetVersion(unsigned int* record)
{
    // Its size is 20 bytes, and the rest is zero.
    if (record[0] != 20 || record[1] != 0 || record[2] != 0 || record[3] != 0 || record[4] != 0)
        return -1;
    record[1] = 4;
    record[2] = 71;
    return 1;
}
