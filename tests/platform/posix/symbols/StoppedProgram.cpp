// A program that faults deep in a chain of calls whose variables are of all kinds, for what is found of them to be
// compared with what a debugger finds. It is compiled without and with optimisation.

#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace
{

void Next();

// Text that the optimiser does not know.
template <class T>
[[gnu::noinline]] T Unknown(T value)
{
    asm volatile("" : "+m"(value));
    return value;
}

int total = 0;

/// So that a value is still wanted behind a call.
template <class T>
[[gnu::noinline]] void Use(const T& value)
{
    asm volatile("" : : "m"(value));
    total += static_cast<int>(sizeof(value));
}

}

namespace shop
{

enum class Colour : int
{
    red = 1,
    green = 7
};

enum Plain
{
    one = 1,
    two = 2
};

union Mixed
{
    int integer;
    float number;
};

struct Bits
{
    unsigned low : 3;
    unsigned high : 5;
};

struct Pair
{
    long first;
    double second;
};

struct Small
{
    int x;
    int y;
};

class Tool
{
public:
    explicit Tool(int number) : m_number(number) {}
    virtual ~Tool() = default;

    virtual int Cut(int depth, double feed);
    template <class T>
    [[gnu::noinline]] T Scaled(T value) const;

private:
    int m_number;
};

[[gnu::noinline]] int Tool::Cut(int depth, double feed)
{
    int local = depth + m_number;
    float ratio = static_cast<float>(feed) / 3;
    bool isDeep = depth > 2;
    wchar_t wide[] = L"wide";
    char narrow[8] = "narrow";
    wchar_t wideCharacter = L'w';
    char character = 'c';
    signed char signedCharacter = -3;
    unsigned char unsignedCharacter = 200;
    short shortNumber = -5;
    unsigned short unsignedShort = 6;
    unsigned unsignedNumber = 7;
    long longNumber = -8;
    unsigned long unsignedLong = 9;
    long long longLong = -10;
    unsigned long long unsignedLongLong = 11;
    float single = 1.5F;
    double twice = 2.5;
    long double extended = 3.5L;
    __extension__ __int128 big = 12;
    char16_t utf16 = u'x';
    char32_t utf32 = U'y';
    Colour colour = Colour::green;
    Plain plain = two;
    Mixed mixed = {5};
    Bits bits{2, 9};
    const int constant = 42;
    static int counter = 17;
    static const int fixed = 99;
    int& reference = local;
    const int&& temporary = 5;
    int* pointer = &local;
    void* nothing = &local;
    int (*function)(int) = nullptr;
    int Small::*member = &Small::y;
    Pair pair{3, 4.5};
    Small small{1, 2};
    std::array<int, 3> numbers = {1, 2, 3};
    std::string text = "text";
    std::vector<int> list = {1, 2};
    auto [left, right] = pair;
    auto lambda = [&](int argument)
    {
        int inner = argument + local;
        {
            int block = inner * 2;
            Next();
            Use(block);
        }
        return inner + constant;
    };
    int result = lambda(3);
    Use(ratio), Use(isDeep), Use(wide), Use(narrow), Use(wideCharacter), Use(character), Use(signedCharacter);
    Use(unsignedCharacter), Use(shortNumber), Use(unsignedShort), Use(unsignedNumber), Use(longNumber);
    Use(unsignedLong), Use(longLong), Use(unsignedLongLong), Use(single), Use(twice), Use(extended), Use(big);
    Use(utf16), Use(utf32), Use(colour), Use(plain), Use(mixed), Use(bits), Use(counter), Use(fixed), Use(reference);
    Use(temporary), Use(pointer), Use(nothing), Use(function), Use(member), Use(small), Use(numbers), Use(text);
    Use(list), Use(left), Use(right);
    return result;
}

template <class T>
T Tool::Scaled(T value) const
{
    T doubled = value * 2;
    Next();
    Use(doubled);
    return doubled + value + static_cast<T>(m_number);
}

}

namespace
{

/// Comes in two registers.
[[gnu::noinline]] long ByPair(shop::Pair pair, int number)
{
    long sum = pair.first + number;
    double scaled = pair.second * 2;
    Next();
    Use(sum), Use(scaled);
    return sum + pair.first;
}

/// Where the parameters are not needed any more, only the caller knows what they were.
[[gnu::noinline]] int Entered(int first, long second, double third, const char* name)
{
    int sum = first + static_cast<int>(second) + static_cast<int>(third) + *name;
    Next();
    return sum;
}

inline int Innermost(int z4)
{
    int l4 = Unknown(z4 + 1);
    Next();
    Use(l4);
    return l4 * 2;
}

inline int Third(int z3)
{
    int l3 = z3 * 3;
    return Innermost(l3) + l3;
}

inline int Second(int z2)
{
    int l2 = z2 - 3;
    return Third(l2) + l2;
}

inline int First(int z1)
{
    int l1 = z1 ^ 3;
    return Second(l1) + l1;
}

[[gnu::noinline]] int Inlined(int number)
{
    int before = number + 5;
    return First(before) + before;
}

[[gnu::noinline]] int Propagated(int same, int varying)
{
    int sum = same + varying;
    Next();
    return sum + same;
}

struct Guard
{
    ~Guard()
    {
        int inDestructor = m_id * 2;
        Next();
        Use(inDestructor);
    }

    int m_id;
};

[[gnu::noinline]] int Destroyed(int number)
{
    Guard guard{number};
    return number + 1;
}

[[gnu::noinline]] double Numbers(float single, double twice, long double extended)
{
    double product = static_cast<double>(single) * twice;
    float quotient = single / 3;
    Next();
    Use(quotient);
    return product + static_cast<double>(extended);
}

[[gnu::noinline]] std::size_t Looped(const std::vector<int>& list, std::string text)
{
    std::size_t length = 0;
    for (int element : list)
    {
        const auto [half, rest] = std::pair(element / 2, element % 2);
        if (length == 0)
            Next();
        length += text.size() + static_cast<std::size_t>(half + rest);
    }
    return length;
}

template <class... Values>
[[gnu::noinline]] int Variadic(Values... values)
{
    int sum = (0 + ... + static_cast<int>(values));
    Next();
    Use(sum);
    return sum + (0 + ... + static_cast<int>(values));
}

[[gnu::noinline]] int Called(int (*function)(int), int argument) { return function(argument) + argument; }

[[gnu::noinline]] int Behind(int argument)
{
    int square = argument * argument;
    Next();
    return square;
}

[[gnu::noinline]] int Deep(int depth, int scale)
{
    int local = depth * scale;
    if (depth == 0)
        Next();
    else
        local += Deep(depth - 1, scale);
    Use(local);
    return local;
}

int* volatile nowhere = nullptr;

[[gnu::noinline]] void Fault(int value, int* place)
{
    int doubled = value * 2;
    *place = doubled;
    Use(doubled);
}

/// The next call of the chain.
[[gnu::noinline]] void Next()
{
    static int step = 0;
    shop::Tool tool(Unknown(4));
    const int number = Unknown(step);
    switch (step++)
    {
    case 0:
        total += tool.Cut(Unknown(3), Unknown(4.5));
        break;
    case 1:
        total += tool.Scaled(Unknown(5));
        break;
    case 2:
        total += static_cast<int>(ByPair({Unknown(6), Unknown(7.5)}, number));
        break;
    case 3:
        total += Entered(11, number, 3.5, "name");
        break;
    case 4:
        total += Inlined(number);
        break;
    case 5:
        total += Propagated(31, number) + Propagated(31, number + 1);
        break;
    case 6:
        total += Destroyed(number);
        break;
    case 7:
        total += static_cast<int>(Numbers(Unknown(1.5F), Unknown(2.5), Unknown(3.5L)));
        break;
    case 8:
        total += static_cast<int>(Looped({1, 2, 3}, "text"));
        break;
    case 9:
        total += Variadic(1, number, Unknown(4.5), 'c');
        break;
    case 10:
        total += Called(Behind, number);
        break;
    case 11:
        total += Deep(300, 2);
        break;
    default:
        Fault(number, nowhere);
        break;
    }
    Use(tool);
}

}

int main()
{
    Next();
    return total;
}
