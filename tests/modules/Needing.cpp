extern "C" __declspec(dllimport) int Needed();
extern "C" __declspec(dllexport) int Needing() { return Needed(); }
