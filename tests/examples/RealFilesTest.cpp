// The parts of other makers' systems, and the sample: each field against what a slow and obvious reader makes of it.

#include "examples/iges/Survey.h"

#include "tests/support/IgesText.h"
#include "tests/support/TemporaryFolder.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cctype>
#include <charconv>
#include <cstdint>
#include <sstream>

namespace
{

struct SlowRecord
{
    std::string name;
    std::string text;
};

std::string WithoutBlanks(std::string text)
{
    std::erase(text, ' ');
    return text;
}

/// Copies everything: columns 1 to 64 of the P lines of a number, and all of the G lines, each as one text.
std::vector<SlowRecord> SlowRecordsOf(const std::string& bytes, std::string& global)
{
    std::vector<SlowRecord> records;
    std::istringstream stream(bytes);
    for (std::string line; std::getline(stream, line);)
    {
        line.resize(80, ' ');
        const std::string name = WithoutBlanks(line.substr(64, 8));
        if (line[72] == 'G')
            global += line.substr(0, 72);
        if (line[72] != 'P')
            continue;
        if (records.empty() || records.back().name != name)
            records.push_back({name, ""});
        records.back().text += line.substr(0, 64);
    }
    return records;
}

/// The fields of a record's text, a text with its count and letter in front.
std::vector<std::string> SlowFieldsOf(const std::string& text, char parameter, char record)
{
    std::vector<std::string> fields(1);
    for (std::size_t at = 0; at < text.size(); ++at)
    {
        const char c = text[at];
        const std::string start = WithoutBlanks(fields.back());
        if (c == record)
            return fields;
        if (c == parameter)
        {
            fields.emplace_back();
        }
        else if (c == 'H' && !start.empty() && start.find_first_not_of("0123456789") == std::string::npos)
        {
            const std::size_t count = std::stoul(start);
            fields.back() = start + 'H' + text.substr(at + 1, count);
            at += count;
        }
        else
        {
            fields.back() += c;
        }
    }
    ADD_FAILURE() << "no end: " << text;
    return fields;
}

/// The nearest double.
double SlowReal(std::string text)
{
    text = WithoutBlanks(text);
    for (char& c : text)
    {
        if (c == 'D' || c == 'd')
            c = 'E';
    }
    if (text.starts_with('+'))
        text.erase(0, 1);
    double value = 0.0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), value);
    EXPECT_EQ(result.ec, std::errc()) << text;
    EXPECT_EQ(result.ptr, text.data() + text.size()) << text;
    return value;
}

std::int64_t UnitsInTheLastPlace(double a, double b)
{
    const auto place = [](double value)
    {
        const auto bits = std::bit_cast<std::int64_t>(value);
        return bits < 0 ? INT64_MIN - bits : bits;
    };
    return std::abs(place(a) - place(b));
}

void ExpectSame(const iges::Field& field, const std::string& slow)
{
    const std::string dense = WithoutBlanks(slow);
    const std::size_t letter = slow.find('H');
    switch (field.kind)
    {
    case iges::FieldKind::empty:
        EXPECT_EQ(dense, "");
        break;
    case iges::FieldKind::integer:
        EXPECT_EQ(dense.find_first_of(".DEde"), std::string::npos) << slow;
        EXPECT_EQ(field.integer, std::stoll(dense)) << slow;
        break;
    case iges::FieldKind::real:
        EXPECT_NE(dense.find_first_of(".DEde"), std::string::npos) << slow;
        EXPECT_LE(UnitsInTheLastPlace(field.real, SlowReal(slow)), 4) << slow;
        break;
    case iges::FieldKind::text:
        ASSERT_NE(letter, std::string::npos) << slow;
        EXPECT_EQ(field.text, slow.substr(letter + 1));
        break;
    case iges::FieldKind::bad:
        ADD_FAILURE() << slow;
        break;
    }
}

std::vector<std::string> FilesIn(const std::string& folder)
{
    std::vector<std::string> files;
    if (boost::filesystem::is_directory(folder))
    {
        for (const auto& entry : boost::filesystem::directory_iterator(folder))
        {
            if (boost::filesystem::is_regular_file(entry.path()) && entry.path().extension() != ".tsv")
                files.push_back(entry.path().string());
        }
    }
    std::ranges::sort(files);
    return files;
}

const std::string realFolder = std::string(UTILITY_TEST_DATA) + "/iges";

std::vector<std::string> GoodFiles()
{
    std::vector<std::string> files = FilesIn(realFolder);
    files.push_back(UTILITY_SAMPLES "/sample.igs");
    return files;
}

TEST(RealFilesFolder, IsThere)
{
    if (std::string(UTILITY_TEST_DATA).empty())
        GTEST_SKIP() << "UTILITY_TEST_DATA is empty: only the sample is read";
    EXPECT_FALSE(FilesIn(realFolder).empty());
    EXPECT_FALSE(FilesIn(realFolder + "/malformed").empty());
}

class RealFilesTest : public testing::TestWithParam<std::string>
{
};

TEST_P(RealFilesTest, EveryFieldIsWhatASlowReaderMakesOfIt)
{
    std::string global;
    const std::vector<SlowRecord> slow = SlowRecordsOf(support::TemporaryFolder::BytesOf(GetParam()), global);
    const char parameter = global.starts_with("1H") ? global[2] : ',';
    const std::size_t second = global.starts_with("1H") ? 4 : 1;
    const char end = global.substr(second).starts_with("1H") ? global[second + 2] : ';';

    support::Messages messages;
    CTextInputOutputFile mapped{boost::filesystem::path(GetParam())};
    ASSERT_TRUE(mapped.IsValid());
    const iges::File file(mapped.DataPtr(), mapped.GetFileSize(), &mapped);
    iges::Part part(file);
    iges::Survey survey(file, part);
    ASSERT_EQ(file.Records().size(), slow.size());
    ASSERT_FALSE(slow.empty());
    std::uint64_t count = 0;
    for (std::size_t i = 0; i < slow.size(); ++i)
    {
        EXPECT_EQ(file.Records()[i].name, slow[i].name);
        const std::vector<std::string> fields = SlowFieldsOf(slow[i].text, parameter, end);
        std::size_t number = 0;
        survey.Read(file.Records()[i],
                    [&](const iges::Field& field)
                    {
                        if (number < fields.size())
                            ExpectSame(field, fields[number]);
                        ++number;
                        count += field.kind != iges::FieldKind::empty;
                    });
        EXPECT_EQ(number, fields.size()) << "D " << slow[i].name;
        if (HasFailure())
            return;
    }
    EXPECT_EQ(survey.Found().integers + survey.Found().reals + survey.Found().texts, count);
    EXPECT_EQ(messages.Take(), std::vector<std::wstring>());
    EXPECT_FALSE(survey.Found().extents.IsEmpty());
    EXPECT_GT(file.LengthUnit().millimetres, 0.0);
}

std::string NameOf(const testing::TestParamInfo<std::string>& test)
{
    std::string name = boost::filesystem::path(test.param).stem().string();
    std::ranges::replace_if(
        name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Files, RealFilesTest, testing::ValuesIn(GoodFiles()), NameOf);

TEST(RealFilesMalformed, AreSaidToBeSo)
{
    if (std::string(UTILITY_TEST_DATA).empty())
        GTEST_SKIP() << "UTILITY_TEST_DATA is empty";
    for (const std::string& path : FilesIn(realFolder + "/malformed"))
    {
        support::Messages messages;
        CTextInputOutputFile mapped{boost::filesystem::path(path)};
        const iges::File file(mapped.DataPtr(), mapped.GetFileSize(), &mapped);
        iges::Part part(file);
        iges::Survey survey(file, part);
        for (const iges::Record& record : file.Records())
            survey.Read(record);
        EXPECT_TRUE(!file.IsIges() || !messages.Take().empty()) << path;
    }
}

/// Lines of 80 columns and their ends until a text has this size, made so by ends of two bytes; the last line is bare.
std::string Filled(std::string bytes, std::size_t size, bool lastLineEnds)
{
    std::string filler = support::IgesText::Padded("filler", 72) + "S      1\n";
    const std::size_t wanted = size + (lastLineEnds ? 0 : 1);
    std::string front;
    while (front.size() + bytes.size() + filler.size() <= wanted)
        front += filler;
    for (std::size_t at = 0; front.size() + bytes.size() < wanted; at += 82)
        front.insert(at + 80, 1, '\r');
    front += bytes;
    front.resize(size);
    return front;
}

TEST(IgesMappedFile, MayEndWhereItsLastPageEnds)
{
    const std::string sample = support::TemporaryFolder::BytesOf(UTILITY_SAMPLES "/sample.igs");
    const std::string withoutEnd = sample.substr(0, sample.size() - 81);
    const support::TemporaryFolder folder;
    for (const std::string& text : {sample, withoutEnd})
    {
        for (const bool lastLineEnds : {true, false})
        {
            const std::string bytes = Filled(text, 16384, lastLineEnds);
            ASSERT_EQ(bytes.size(), 16384u);
            support::Messages messages;
            CTextInputOutputFile mapped(folder.File("paged.igs", bytes));
            ASSERT_TRUE(mapped.IsValid());
            const iges::File file(mapped.DataPtr(), mapped.GetFileSize(), &mapped);
            iges::Part part(file);
            iges::Survey survey(file, part);
            for (const iges::Record& record : file.Records())
                survey.Read(record);
            EXPECT_EQ(survey.Found().reals, 72u);
            EXPECT_EQ(messages.Take().size(), text == sample ? 0u : 1u);
            mapped.Close(0);
        }
    }
}

}
