// Compiled once for each target. No source relies on it: each includes what it uses, and the Clang build goes without.
// Boost's headers are not among them: they would cost each source 0.4 s to load, and most do without.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <iomanip>
#include <iostream>
#include <map>
#include <memory>
#include <mutex>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <vector>
