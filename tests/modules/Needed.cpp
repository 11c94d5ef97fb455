// A library that modules/Needing.cpp needs. Both are in a folder where nothing looks that was not told to.
extern "C" __declspec(dllexport) int Needed() { return 1; }
