#include "examples/settings/RegText.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

using regtext::DataOfText;
using regtext::Key;
using regtext::Value;

namespace
{

constexpr wchar_t path[] = L"HKEY_CURRENT_USER\\SOFTWARE\\Selvane";

std::string Utf16(std::u16string_view text)
{
    return "\xFF\xFE" + std::string(reinterpret_cast<const char*>(text.data()), 2 * text.size());
}

/// A file with one key and these lines under it.
std::string FileWith(const std::string& lines)
{
    return "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\SOFTWARE\\Selvane]\r\n" + lines + "\r\n";
}

std::vector<Key> KeysWith(const Value& value) { return {{path, {value}, false}}; }

Value DwordValue(const wchar_t* name, DWORD number)
{
    return {name, REG_DWORD, {reinterpret_cast<const char*>(&number), sizeof number}, false};
}

std::string MessageFor(const std::string& bytes)
{
    try
    {
        regtext::Parse(bytes);
    }
    catch (const regtext::Malformed& failure)
    {
        return failure.what();
    }
    return "nothing";
}

// --- what a file may say
// -----------------------------------------------------------------------------------------------

struct LineCase
{
    const char* line;
    Value value;
};

class RegTextLineTest : public testing::TestWithParam<LineCase>
{
};

TEST_P(RegTextLineTest, IsThisValue)
{
    EXPECT_EQ(regtext::Parse(FileWith(GetParam().line)), KeysWith(GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(
    Lines, RegTextLineTest,
    testing::Values(
        LineCase{R"("Name"="text")", {L"Name", REG_SZ, DataOfText(L"text"), false}},
        LineCase{R"(@="text")", {L"", REG_SZ, DataOfText(L"text"), false}},
        LineCase{R"(""="")", {L"", REG_SZ, DataOfText(L""), false}},
        LineCase{R"("a\\b\"c"="C:\\path \"quoted\"")", {L"a\\b\"c", REG_SZ, DataOfText(L"C:\\path \"quoted\""), false}},
        LineCase{R"("@"="; no comment")", {L"@", REG_SZ, DataOfText(L"; no comment"), false}},
        LineCase{"\"\xC3\xA4\"=\"\xE2\x82\xAC \xF0\x9F\x98\x80\"",
                 {L"\u00E4", REG_SZ, DataOfText(L"\u20AC \U0001F600"), false}},
        LineCase{"\"n\"=\"two\r\nlines\"", {L"n", REG_SZ, DataOfText(L"two\r\nlines"), false}},
        LineCase{R"("a\nb"="one\r\ntwo")", {L"a\nb", REG_SZ, DataOfText(L"one\r\ntwo"), false}},
        LineCase{R"("n"=dword:0000000a)", DwordValue(L"n", 10)},
        LineCase{R"("n"=dword:FFFFfffe)", DwordValue(L"n", 0xFFFFFFFE)},
        LineCase{R"("n"=dword:7)", DwordValue(L"n", 7)}, LineCase{R"("n"=hex:)", {L"n", REG_BINARY, "", false}},
        LineCase{R"("n"=hex:00,fF,1)", {L"n", REG_BINARY, std::string("\0\xFF\1", 3), false}},
        LineCase{"\"n\"=hex:01,\\\r\n  02,\\\r\n03", {L"n", REG_BINARY, "\1\2\3", false}},
        LineCase{"\"n\"=hex:\\\n\t01 , 02 \\ \n ,03", {L"n", REG_BINARY, "\1\2\3", false}},
        LineCase{R"("n"=hex(0):01)", {L"n", REG_NONE, "\1", false}},
        LineCase{R"("n"=hex(1):)", {L"n", REG_SZ, "", false}},
        LineCase{R"("n"=hex(2):41,00,00,00)", {L"n", REG_EXPAND_SZ, DataOfText(L"A"), false}},
        LineCase{R"("n"=hex(4):01,02)", {L"n", REG_DWORD, "\1\2", false}},
        LineCase{R"("n"=hex(7):41,00,00,00,00,00)", {L"n", REG_MULTI_SZ, std::string("A\0\0\0\0\0", 6), false}},
        LineCase{R"("n"=hex(b):01,00,00,00,00,00,00,00)", {L"n", REG_QWORD, std::string("\1\0\0\0\0\0\0\0", 8), false}},
        LineCase{R"("n"=hex(FFFFffff):01)", {L"n", 0xFFFFFFFF, "\1", false}},
        LineCase{R"("n"=-)", {L"n", REG_NONE, "", true}}, LineCase{R"(@=-)", {L"", REG_NONE, "", true}},
        LineCase{" \t\"n\" \t= \tdword:1 \t; a comment", DwordValue(L"n", 1)},
        LineCase{"; a comment\r\n\r\n \t\r\n\"n\"=dword:1\r\n;[another]", DwordValue(L"n", 1)},
        LineCase{R"("n"=hex: ; none)", {L"n", REG_BINARY, "", false}}));

TEST(RegTextParseTest, KeysAndDeletionsStandInTheirOrder)
{
    const std::vector<Key> keys = {
        {L"HKEY_CURRENT_USER\\a]b", {{L"n", REG_NONE, "", true}, DwordValue(L"n", 1)}, false},
        {L"HKEY_LOCAL_MACHINE\\gone", {}, true},
        {L"HKEY_CURRENT_USER\\a]b", {}, false}};
    EXPECT_EQ(regtext::Parse("Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\a]b]\n\"n\"=-\n\"n\"=dword:1\n"
                             "[-HKEY_LOCAL_MACHINE\\gone] \n[HKEY_CURRENT_USER\\a]b]"),
              keys);
}

TEST(RegTextParseTest, FileMayHaveNoKeys)
{
    EXPECT_EQ(regtext::Parse("Windows Registry Editor Version 5.00"), std::vector<Key>());
    EXPECT_EQ(regtext::Parse("REGEDIT4\r\n\r\n"), std::vector<Key>());
}

class RegTextEncodingTest : public testing::TestWithParam<std::string>
{
};

TEST_P(RegTextEncodingTest, IsRead)
{
    EXPECT_EQ(regtext::Parse(GetParam()), KeysWith({L"\u00E4", REG_SZ, DataOfText(L"\u20AC"), false}));
}

INSTANTIATE_TEST_SUITE_P(
    Encodings, RegTextEncodingTest,
    testing::Values(FileWith("\"\xC3\xA4\"=\"\xE2\x82\xAC\""),
                    "\xEF\xBB\xBF" + FileWith("\"\xC3\xA4\"=\"\xE2\x82\xAC\""),
                    Utf16(u"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\SOFTWARE\\Selvane]\r\n"
                          u"\"\u00E4\"=\"\u20AC\"\r\n"),
                    Utf16(u"Windows Registry Editor Version 5.00\n[HKEY_CURRENT_USER\\SOFTWARE\\Selvane]\n"
                          u"\"\u00E4\"=\"\u20AC\"")));

TEST(RegTextParseTest, OlderFormHasItsTextsInNarrowBytes)
{
    const std::string start = "REGEDIT4\n[HKEY_CURRENT_USER\\SOFTWARE\\Selvane]\n";
    EXPECT_EQ(regtext::Parse(start + "\"n\"=hex(2):41,c3,a4,00"),
              KeysWith({L"n", REG_EXPAND_SZ, DataOfText(L"A\u00E4"), false}));
    EXPECT_EQ(regtext::Parse(start + "\"n\"=hex(7):41,00,42,00,00"),
              KeysWith({L"n", REG_MULTI_SZ, DataOfText(L"A") + DataOfText(L"B") + DataOfText(L""), false}));
    EXPECT_EQ(regtext::Parse(start + "\"n\"=hex:41,c3"), KeysWith({L"n", REG_BINARY, "A\xC3", false}));
    EXPECT_EQ(MessageFor(start + "\"n\"=hex(2):41,c3"), "line 3: the text is neither UTF-8 nor marked as UTF-16");
}

TEST(RegTextParseTest, LoneSurrogatesSurvive)
{
    const std::u16string text = u"Windows Registry Editor Version 5.00\n[K]\n\"n\"=\"\xD800x\"\n";
    const std::vector<Key> keys = regtext::Parse(Utf16(text));
    ASSERT_EQ(keys.size(), 1u);
    EXPECT_EQ(keys[0].values[0].data, std::string("\x00\xD8x\0\0\0", 6));
    EXPECT_EQ(regtext::Parse(regtext::Text(keys)), keys);
}

// --- what is wrong with others
// -----------------------------------------------------------------------------------------

struct BadCase
{
    std::string bytes;
    const char* message;
};

class RegTextBadFileTest : public testing::TestWithParam<BadCase>
{
};

TEST_P(RegTextBadFileTest, IsRefusedWithItsLine) { EXPECT_EQ(MessageFor(GetParam().bytes), GetParam().message); }

constexpr char noHeader[] = "line 1: this is no registry file: it begins with neither of the two headers";
constexpr char noData[] = R"(line 4: the value is none of "text", dword:, hex:, hex(type): and -)";
constexpr char noDigit[] = "line 4: a hexadecimal digit is missing";
constexpr char noStatement[] = "line 4: this is neither a key, a value, nor a comment";
constexpr char noKey[] = "line 4: a key is named between [ and ]";
constexpr char noUtf8[] = "line 4: the text is neither UTF-8 nor marked as UTF-16";

INSTANTIATE_TEST_SUITE_P(
    Files, RegTextBadFileTest,
    testing::Values(
        BadCase{"", noHeader}, BadCase{"\r\n[K]", noHeader}, BadCase{"REGEDIT5\n[K]", noHeader},
        BadCase{"Windows Registry Editor Version 5.00 ; now\n", noHeader}, BadCase{Utf16(u"REGEDIT"), noHeader},
        BadCase{Utf16(u"REGEDIT4\n\nx"), "line 3: this is neither a key, a value, nor a comment"},
        BadCase{Utf16(u"REGEDIT4\n") + "x", "line 2: the file ends within a character"},
        BadCase{std::string("REGEDIT4\n\0", 10), "line 2: there is a null character"},
        BadCase{"REGEDIT4\n\"n\"=-", "line 2: a value stands ahead of the first key"},
        BadCase{"REGEDIT4\n[-K]\n\"n\"=-", "line 3: a value stands under a key that is deleted"},
        BadCase{FileWith("[K"), noKey}, BadCase{FileWith("[K] x"), noKey}, BadCase{FileWith("[]"), noKey},
        BadCase{FileWith("[-]"), noKey}, BadCase{FileWith("["), noKey}, BadCase{FileWith("Name=1"), noStatement},
        BadCase{FileWith("\"n"), "line 4: a text is not closed"},
        BadCase{FileWith("\"n\"=\"x\n\n"), "line 4: a text is not closed"},
        BadCase{FileWith("\"n\"=\"x\\"), R"(line 4: in a text, a \ stands ahead of another \, a ", an n or an r only)"},
        BadCase{FileWith(R"("n"="a\tb")"),
                R"(line 4: in a text, a \ stands ahead of another \, a ", an n or an r only)"},
        BadCase{FileWith(R"("n")"), "line 4: a = is missing behind the name of a value"},
        BadCase{FileWith(R"("n"=)"), noData}, BadCase{FileWith(R"("n"=word:1)"), noData},
        BadCase{FileWith(R"("n"=dword:)"), noDigit}, BadCase{FileWith(R"("n"=dword:g)"), noDigit},
        BadCase{FileWith(R"("n"=dword:123456789)"), noStatement}, BadCase{FileWith(R"("n"=dword:1 2)"), noStatement},
        BadCase{FileWith(R"("n"="a" "b")"), noStatement}, BadCase{FileWith(R"("n"=-1)"), noStatement},
        BadCase{FileWith(R"("n"=hex:,)"), noDigit}, BadCase{FileWith(R"("n"=hex:1,)"), noDigit},
        BadCase{FileWith(R"("n"=hex:123)"), noStatement},
        BadCase{FileWith(R"("n"=hex:1;2)") + "x", "line 5: this is neither a key, a value, nor a comment"},
        BadCase{FileWith("\"n\"=hex:1,\\ 2"), R"(line 4: in bytes, a \ stands at the end of a line only)"},
        BadCase{FileWith("\"n\"=hex:1,\\\n,"), "line 5: a hexadecimal digit is missing"},
        BadCase{FileWith("\"n\"=hex(:1"), noDigit},
        BadCase{FileWith("\"n\"=hex(1:1"), "line 4: ): is missing behind the type of a value"},
        BadCase{FileWith("\"n\"=hex(1)1"), "line 4: ): is missing behind the type of a value"},
        BadCase{FileWith("\"n\"=\"\xC3\""), noUtf8}, BadCase{FileWith("\"n\"=\"\xE4\""), noUtf8},
        BadCase{FileWith("\"n\"=\"\xED\xA0\x80\""), noUtf8}));

TEST(RegTextParseTest, FileCutAnywhereIsReadOrRefusedAndNothingElse)
{
    const std::string whole =
        FileWith("\"n\"=\"te\\\\xt\"\r\n\"h\"=hex(7):01,\\\r\n  02\r\n@=dword:1\r\n[-K]\r\n; end");
    for (std::size_t length = 0; length <= whole.size(); ++length)
    {
        const std::vector<char> cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length));
        try
        {
            for (const Key& key : regtext::Parse({cut.data(), cut.size()}))
                EXPECT_FALSE(key.path.empty());
        }
        catch (const regtext::Malformed&)
        {
        }
    }
}

// --- what is written
// ---------------------------------------------------------------------------------------------------

struct WrittenCase
{
    Value value;
    const wchar_t* line;
};

class RegTextWrittenTest : public testing::TestWithParam<WrittenCase>
{
};

TEST_P(RegTextWrittenTest, HasThisLineAndIsReadBack)
{
    EXPECT_EQ(regtext::Line(GetParam().value), GetParam().line);
    EXPECT_EQ(regtext::Parse(regtext::Text(KeysWith(GetParam().value))), KeysWith(GetParam().value));
}

INSTANTIATE_TEST_SUITE_P(
    Values, RegTextWrittenTest,
    testing::Values(
        WrittenCase{{L"n", REG_SZ, DataOfText(L"a \\ and a \""), false}, LR"("n"="a \\ and a \"")"},
        WrittenCase{{L"", REG_SZ, DataOfText(L""), false}, LR"(@="")"},
        WrittenCase{{L"\u00E4\\\"", REG_SZ, DataOfText(L"\u20AC\t\U0001F600"), false},
                    L"\"\u00E4\\\\\\\"\"=\"\u20AC\t\U0001F600\""},
        // What the quotes cannot hold so that every reader understands it.
        WrittenCase{{L"n", REG_SZ, "", false}, LR"("n"=hex(1):)"},
        WrittenCase{{L"n", REG_SZ, "x", false}, LR"("n"=hex(1):78)"},
        WrittenCase{{L"n", REG_SZ, std::string("A\0", 2), false}, LR"("n"=hex(1):41,00)"},
        WrittenCase{{L"n", REG_SZ, std::string("A\0\0\0x", 5), false}, LR"("n"=hex(1):41,00,00,00,78)"},
        WrittenCase{{L"n", REG_SZ, DataOfText(L"A") + DataOfText(L""), false}, LR"("n"=hex(1):41,00,00,00,00,00)"},
        WrittenCase{{L"n", REG_SZ, DataOfText(L"\n"), false}, LR"("n"=hex(1):0a,00,00,00)"},
        WrittenCase{{L"n", REG_SZ, DataOfText(L"\r"), false}, LR"("n"=hex(1):0d,00,00,00)"},
        WrittenCase{{L"a\r\nb", REG_BINARY, "", false}, LR"("a\r\nb"=hex:)"},
        WrittenCase{DwordValue(L"n", 0xABCDEF), LR"("n"=dword:00abcdef)"},
        WrittenCase{{L"n", REG_DWORD, "\1", false}, LR"("n"=hex(4):01)"},
        WrittenCase{{L"n", REG_BINARY, "", false}, LR"("n"=hex:)"},
        WrittenCase{{L"n", REG_BINARY, std::string("\0\x0F\xF0", 3), false}, LR"("n"=hex:00,0f,f0)"},
        WrittenCase{{L"n", REG_NONE, "\1", false}, LR"("n"=hex(0):01)"},
        WrittenCase{{L"n", REG_EXPAND_SZ, DataOfText(L"%A"), false}, LR"("n"=hex(2):25,00,41,00,00,00)"},
        WrittenCase{{L"n", REG_QWORD, std::string(8, '\1'), false}, LR"("n"=hex(b):01,01,01,01,01,01,01,01)"},
        WrittenCase{{L"n", 0xFFFFFFFF, "\1", false}, LR"("n"=hex(ffffffff):01)"},
        WrittenCase{{L"n", 0x20000, "", false}, LR"("n"=hex(20000):)"},
        WrittenCase{{L"n", REG_NONE, "", true}, LR"("n"=-)"}));

TEST(RegTextTest, FileIsUtf16WithAByteOrderMarkAndTheLineEndsOfWindows)
{
    const std::vector<Key> keys = {{path, {DwordValue(L"n", 1), {L"", REG_NONE, "", true}}, false},
                                   {L"HKEY_LOCAL_MACHINE\\gone", {}, true}};
    EXPECT_EQ(regtext::Text(keys),
              Utf16(u"Windows Registry Editor Version 5.00\r\n\r\n[HKEY_CURRENT_USER\\SOFTWARE\\Selvane]\r\n"
                    u"\"n\"=dword:00000001\r\n@=-\r\n\r\n[-HKEY_LOCAL_MACHINE\\gone]\r\n\r\n"));
    EXPECT_EQ(regtext::Parse(regtext::Text(keys)), keys);
}

TEST(RegTextTest, BytesAreContinuedSoThatNoLineHasMoreThan80Columns)
{
    const std::vector<Key> keys = KeysWith({L"Value", REG_BINARY, std::string(60, '\xAB'), false});
    const std::string text = regtext::Text(keys);
    std::u16string units(text.size() / 2, u'\0');
    std::memcpy(units.data(), text.data(), text.size());
    std::size_t longest = 0;
    std::size_t lines = 0;
    for (std::size_t start = 0, end = 0; (end = units.find(u"\r\n", start)) != units.npos; start = end + 2, ++lines)
        longest = std::max(longest, end - start);
    EXPECT_LE(longest, 80u);
    EXPECT_EQ(lines, 7u);
    EXPECT_EQ(regtext::Parse(text), keys);
}

TEST(RegTextTest, EveryLengthOfBytesIsReadBack)
{
    for (std::size_t size = 0; size < 120; ++size)
    {
        const std::vector<Key> keys = KeysWith({L"Value", REG_BINARY, std::string(size, 'x'), false});
        EXPECT_EQ(regtext::Parse(regtext::Text(keys)), keys);
    }
}

TEST(RegTextTest, KeyWithALineEndInItsNameIsRefused)
{
    EXPECT_THROW(regtext::Text({{L"HKEY_CURRENT_USER\\a\nb", {}, false}}), std::runtime_error);
    EXPECT_THROW(regtext::Text({{L"HKEY_CURRENT_USER\\a\rb", {}, false}}), std::runtime_error);
}

}
