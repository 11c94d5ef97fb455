// A program that faults 25 calls deep, in functions with the variables that programs have. Its report is measured.

#include "utility/numbers/FloatFormat.h"

#include <array>
#include <map>
#include <string>
#include <vector>

namespace
{

struct Point
{
    double x;
    double y;
    double z;
};

enum class Kind
{
    line,
    arc,
};

int* volatile nowhere = nullptr;

template <class T>
[[gnu::noinline]] void Use(const T& value)
{
    asm volatile("" : : "m"(value));
}

inline double Length(const Point& from, const Point& to)
{
    const double x = to.x - from.x;
    const double y = to.y - from.y;
    return x * x + y * y;
}

template <int Level>
[[gnu::noinline]] double Move(const Point& from, Kind kind, unsigned count, const std::string& name)
{
    const Point to = {from.x + Level, from.y * 2, from.z};
    std::vector<Point> points(count, to);
    std::map<std::string, int> tools = {{name, Level}};
    std::string label = name + (Level % 2 == 0 ? " even" : " odd");
    std::wstring symbol = GetDecimalSymbol();
    std::array<float, 4> matrix = {1.0F, 0.0F, 0.0F, static_cast<float>(count)};
    const bool isLong = Length(from, to) > 10;
    wchar_t axis = L'X';
    char letter = 'G';
    long block = Level * 10L;
    const std::vector<Point>* const list = &points;
    double total = Length(from, points.front());
    if constexpr (Level > 0)
        total += Move<Level - 1>(points.front(), isLong ? Kind::arc : kind, count + 1, label);
    else
        *nowhere = Level;
    Use(to), Use(points), Use(tools), Use(label), Use(symbol), Use(matrix), Use(isLong), Use(axis), Use(letter);
    Use(block), Use(list);
    return total;
}

}

int main()
{
    constexpr int frames = 25;
    Use(Move<frames - 2>({1, 2, 3}, Kind::line, 3, "program"));
}
