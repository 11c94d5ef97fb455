// A function that is entered by a jump: what is on the stack is the call of another one, with other arguments.

namespace
{

int* volatile nowhere = nullptr;

[[gnu::noinline, gnu::noipa]] int Entered([[maybe_unused]] int value)
{
    int* const place = nowhere;
    asm volatile("" : : : "rdi", "memory");
    *place = 1;
    return 0;
}

[[gnu::noinline, gnu::noipa]] int Jumping(int value) { return Entered(value + 10); }

[[gnu::noinline, gnu::noipa]] int Calling(int value) { return Jumping(5) + value; }

}

int main() { return Calling(1); }
