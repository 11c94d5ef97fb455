// A library that Delaying.cpp needs when it calls it first.

extern "C" __declspec(dllexport) int AnswerOfDelayed() { return 42; }
