#include "examples/executables/Executable.h"

namespace executables
{

namespace
{

struct Name
{
    unsigned number;
    const char* name;
};

template <std::size_t count>
std::string NameOf(const Name (&names)[count], std::uint64_t number)
{
    for (const Name& each : names)
    {
        if (each.number == number)
            return each.name;
    }
    return "unknown (" + Hex(number, 4) + ")";
}

}

std::string PeMachine(std::uint64_t machine)
{
    constexpr Name names[] = {
        {0x014C, "x86"},       {0x0166, "MIPS"},    {0x0184, "Alpha"},         {0x01C0, "ARM"},    {0x01C4, "ARM"},
        {0x01F0, "PowerPC"},   {0x0200, "Itanium"}, {0x0EBC, "EFI byte code"}, {0x5032, "RISC-V"}, {0x5064, "RISC-V"},
        {0x6264, "LoongArch"}, {0x8664, "x86-64"},  {0xA641, "ARM64EC"},       {0xAA64, "ARM64"}};
    return NameOf(names, machine);
}

std::string ElfMachine(std::uint64_t machine)
{
    constexpr Name names[] = {{2, "SPARC"},     {3, "x86"},         {4, "68000"},      {8, "MIPS"}, {15, "PA-RISC"},
                              {20, "PowerPC"},  {21, "PowerPC 64"}, {22, "S/390"},     {40, "ARM"}, {42, "SuperH"},
                              {43, "SPARC 64"}, {50, "Itanium"},    {62, "x86-64"},    {83, "AVR"}, {183, "ARM64"},
                              {243, "RISC-V"},  {247, "BPF"},       {258, "LoongArch"}};
    return NameOf(names, machine);
}

}
