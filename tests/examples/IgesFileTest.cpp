#include "examples/iges/IgesFile.h"

#include "tests/support/IgesText.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>

namespace
{

class IgesFileTest : public testing::Test
{
protected:
    using Errors = std::vector<std::wstring>;

    const iges::File& Load(const std::string& bytes)
    {
        // Exactly as many bytes, so that a sanitizer sees more.
        text = std::vector<char>(bytes.begin(), bytes.end());
        file = std::make_unique<iges::File>(text.data(), text.size(), &messages.file);
        errors = messages.Take();
        return *file;
    }

    support::Messages messages;
    std::vector<char> text;
    std::unique_ptr<iges::File> file;
    Errors errors;
};

std::string Replaced(std::string text, const std::string& what, const std::string& by)
{
    return text.replace(text.find(what), what.size(), by);
}

TEST_F(IgesFileTest, FindsEntriesAndTheirRecords)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,2.,3.;"});
    part.Entity(110, {"110,0.,0.,0.,", "1.,1.,1.;"}, 1, "00010502");
    Load(part.Bytes());
    EXPECT_TRUE(file->IsIges());
    EXPECT_EQ(errors, Errors());
    ASSERT_EQ(file->Directory().size(), 2u);
    ASSERT_EQ(file->Records().size(), 2u);
    const iges::Entry* const line = file->Find(3);
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->type, 110);
    EXPECT_EQ(line->matrix, 1);
    EXPECT_EQ(line->use, 5);
    EXPECT_EQ(line->record, &file->Records()[1]);
    EXPECT_EQ(line->record->name, "3");
    EXPECT_EQ(line->record->lineCount, 2u);
    EXPECT_EQ(line->record->Lines().at(1).size(), 64u);
    EXPECT_EQ(file->Find(2), nullptr);
}

TEST_F(IgesFileTest, LinesMayEndInCrLf)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,2.,3.;"});
    std::string bytes = part.Bytes();
    for (std::size_t at = 0; (at = bytes.find('\n', at)) != std::string::npos; at += 2)
        bytes.insert(at, 1, '\r');
    Load(bytes);
    EXPECT_EQ(errors, Errors());
    EXPECT_EQ(file->Records().size(), 1u);
}

TEST_F(IgesFileTest, LinesMayEndInCrAloneOrFollowEachOtherWithoutAnEnd)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,2.,3.;"});
    part.Entity(110, {"110,0.,0.,0.,", "1.,1.,1.;"});
    const std::string bytes = part.Bytes();
    std::string carriageReturns = bytes;
    std::ranges::replace(carriageReturns, '\n', '\r');
    std::string none = bytes;
    std::erase(none, '\n');
    for (const std::string& form : {bytes, carriageReturns, none, none + "\n", none + "\r\n"})
    {
        Load(form);
        EXPECT_TRUE(file->IsIges());
        EXPECT_EQ(errors, Errors());
        EXPECT_EQ(file->Directory().size(), 2u);
        ASSERT_EQ(file->Records().size(), 2u);
        EXPECT_EQ(file->Records()[1].lineCount, 2u);
        const int before = file->Records()[0].LineNumbers().back();
        EXPECT_EQ(file->Records()[1].LineNumbers(), (std::vector<int>{before + 1, before + 2}));
    }
}

TEST_F(IgesFileTest, TheLastLineNeedsNoEnd)
{
    std::string bytes = support::IgesText().Bytes();
    bytes.pop_back();
    Load(bytes);
    EXPECT_EQ(errors, Errors());
}

struct GlobalCase
{
    const char* global;
    iges::Delimiters delimiters;
    const char* unit;
    double millimetres;
};

class IgesGlobalTest : public IgesFileTest, public testing::WithParamInterface<GlobalCase>
{
};

TEST_P(IgesGlobalTest, DelimitersAndUnitComeFromTheGlobalSection)
{
    Load(support::IgesText(GetParam().global).Bytes());
    EXPECT_EQ(errors, Errors());
    EXPECT_EQ(file->FieldDelimiters().parameter, GetParam().delimiters.parameter);
    EXPECT_EQ(file->FieldDelimiters().record, GetParam().delimiters.record);
    EXPECT_EQ(file->LengthUnit().name, GetParam().unit);
    EXPECT_EQ(file->LengthUnit().millimetres, GetParam().millimetres);
}

INSTANTIATE_TEST_SUITE_P(Globals, IgesGlobalTest,
                         testing::Values(GlobalCase{",,,,,,,,,,,,1.,2,2HMM;", {',', ';'}, "MM", 1.0},
                                         GlobalCase{"1H,,1H;,,,,,,,,,,,1.,1,4HINCH;", {',', ';'}, "INCH", 25.4},
                                         GlobalCase{"1H//1H@///////////1.0D0/6/1HM@", {'/', '@'}, "M", 1000.0},
                                         GlobalCase{"1H||||||||||||||4|;", {'|', ';'}, "FT", 304.8},
                                         GlobalCase{",1H#,,,,,,,,,,,,3,2HUM#", {',', '#'}, "UM", 0.001},
                                         GlobalCase{",,,,,,,,,,,,,3,4HROOD;", {',', ';'}, "ROOD", 0.0},
                                         GlobalCase{",,,,,,,,,,,,,,;", {',', ';'}, "IN", 25.4},
                                         GlobalCase{",,;", {',', ';'}, "IN", 25.4},
                                         GlobalCase{",,,,,,,,,,,,,11,;", {',', ';'}, "UIN", 0.0000254}));

TEST_F(IgesFileTest, DelimitersThatCanStandInANumberAreRefused)
{
    Load(support::IgesText("1H.,1H;,,,,,,,,,,,1.,2,2HMM;").Bytes());
    ASSERT_FALSE(errors.empty());
    EXPECT_EQ(errors[0], L"The delimiters in the global section cannot be delimiters.");
    EXPECT_EQ(file->FieldDelimiters().parameter, ',');
}

TEST_F(IgesFileTest, TextThatIsNoIgesFileIsNone)
{
    EXPECT_FALSE(Load("").IsIges());
    EXPECT_FALSE(Load("\n\n\r\n").IsIges());
    EXPECT_FALSE(Load(std::string(72, 'P')).IsIges());
    EXPECT_FALSE(Load(std::string(80, 'x')).IsIges());
    EXPECT_EQ(errors, Errors());
    EXPECT_TRUE(Load(std::string(73, 'P')).IsIges());
}

TEST_F(IgesFileTest, ALineOfAnotherLengthIsSaidOfItsRecord)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,2.,3.;"});
    part.Entity(110, {"110,0.,0.,0.,", "1.,1.,1.;"});
    const std::string bytes = part.Bytes();

    Load(Replaced(bytes, "1P      3", "1P      3 "));
    ASSERT_EQ(file->Records().size(), 2u);
    EXPECT_EQ(file->Records()[0].trouble, L"Line 7 does not have 80 columns.");
    EXPECT_EQ(file->Records()[1].trouble, L"");

    // The second line of the second record ends in column 30.
    Load(Replaced(bytes, support::IgesText::Padded("1.,1.,1.;", 64) + "       3P",
                  support::IgesText::Padded("1.,1.,1.;", 30)));
    ASSERT_EQ(file->Records().size(), 2u);
    EXPECT_EQ(file->Records()[0].trouble, L"");
    EXPECT_EQ(file->Records()[1].trouble, L"Line 9 does not have 80 columns.");
    EXPECT_EQ(file->Records()[1].lineCount, 1u);
}

TEST_F(IgesFileTest, ALineOfAnotherLengthAheadOfTheRecordsIsSaidOfTheFile)
{
    Load("short\n" + support::IgesText().Bytes());
    EXPECT_EQ(errors, Errors{L"Line 1 does not have 80 columns."});
}

TEST_F(IgesFileTest, WhatFollowsTheLastSectionIsIgnored)
{
    Load(support::IgesText().Bytes() + "\n\n\x1A");
    EXPECT_EQ(errors, Errors());
}

TEST_F(IgesFileTest, AFileThatEndsEarlySaysSo)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,2.,3.;"});
    const std::string bytes = part.Bytes();
    Load(bytes.substr(0, bytes.size() - 81));
    EXPECT_EQ(errors, Errors{L"The file ends before its last section."});
    Load(bytes.substr(0, bytes.size() - 162));
    EXPECT_EQ(errors, (Errors{L"The file ends before its last section.", L"D 1 has no parameter record."}));
    Load(bytes.substr(0, bytes.size() - 243));
    EXPECT_EQ(errors, (Errors{L"The file ends before its last section.",
                              L"Line 3 is half a directory entry without the other half."}));
}

TEST_F(IgesFileTest, HalfAnEntryDoesNotTouchTheOthers)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,2.,3.;"});
    part.Entity(110, {"110,0.,0.,0.,1.,1.,1.;"});
    std::string bytes = part.Bytes();
    bytes.erase(bytes.find("D      2") - 72, 81);
    Load(bytes);
    EXPECT_EQ(file->Find(1), nullptr);
    ASSERT_NE(file->Find(3), nullptr);
    EXPECT_EQ(file->Find(3)->type, 110);
}

TEST_F(IgesFileTest, ABadDirectoryFieldIsSaidAndIsZero)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,2.,3.;"});
    Load(Replaced(part.Bytes(), "     116", "     1x6"));
    EXPECT_EQ(errors, (Errors{L"Invalid character (x) found whilst reading an integer number.",
                              L"Line 3 has no number where one should be."}));
    EXPECT_EQ(file->Find(1)->type, 0);
}

TEST_F(IgesFileTest, ARecordWithoutANumberIsKept)
{
    support::IgesText part;
    part.Entity(116, {"116,1.,2.,3.;"});
    Load(Replaced(part.Bytes(), "       1P", "      1xP"));
    ASSERT_EQ(file->Records().size(), 1u);
    EXPECT_EQ(file->Records()[0].name, "1x");
    EXPECT_EQ(file->Records()[0].directory, 0);
    EXPECT_EQ(errors.size(), 3u);
}

}
