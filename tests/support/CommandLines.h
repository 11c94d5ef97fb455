#pragma once

#include <string>

namespace support
{

/// What stands behind a program's name, and what the program gets of it, each argument in angle brackets.
struct CommandLine
{
    const wchar_t* rest;
    const char* told;
};

/// What programs on Windows get: one of the tests asks one.
inline constexpr CommandLine commandLines[] = {
    {L"", ""},
    {L" a b", "<a><b>"},
    {L"\ta \t b  ", "<a><b>"},
    {L" \"a b\" c", "<a b><c>"},
    {L" a\"b c\"d e", "<ab cd><e>"},
    {L" \"a b", "<a b>"},
    {L" \"\"", "<>"},
    {L" \"\" \"\"", "<><>"},
    {L" a\"\"b c", "<ab><c>"},
    {L" a\\b \\", "<a\\b><\\>"},
    {L" a\\\\b \\\\", "<a\\\\b><\\\\>"},
    {L" \"a\\\"b\"", "<a\"b>"},
    {L" a\\\"b c", "<a\"b><c>"},
    {L" a\\\\\"b c\"", "<a\\b c>"},
    {L" a\\\\\\\"b c", "<a\\\"b><c>"},
    {L" \"a\\\\\" b", "<a\\><b>"},
    {L" \"\\\\\\\"\" b", "<\\\"><b>"},
    {L" \"a\"\"b\" c", "<a\"b><c>"},
    {L" \"a\"\"b c\" d", "<a\"b c><d>"},
    {L" \"a\"\"\"b c\" d", "<a\"b><c d>"},
    {L" \"\"\"\" b", "<\"><b>"},
    {L" \"\"\"a b\"\"\" c", "<\"a b\"><c>"},
    {L" \"\"\"\"\"a b c", "<\"\"a b c>"},
    {L" \"a\"\"\"\" b c", "<a\"\" b c>"},
    {L" a\nb", "<a\nb>"},
    {L" a\vb", "<a\vb>"},
    {L" 'a b'", "<'a><b'>"},
    {L" *.c ?.c \"*.c\"", "<*.c><?.c><*.c>"},
    {L" $HOME %PATH% ^ ! `", "<$HOME><%PATH%><^><!><`>"},
};

}
