#pragma once

#include "examples/iges/IgesFile.h"
#include "tests/support/LogSettings.h"
#include "tests/support/ThreadLog.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace support
{

/// The text of an IGES file, written line by line in the right columns.
///
///     IgesText text;
///     text.Entity(110, {"110,0.,0.,0.,", "1.,2.,3.;"});
///     const std::string bytes = text.Bytes();
class IgesText
{
public:
    explicit IgesText(std::string_view global = "1H,,1H;,,,,,32,38,6,308,15,,1.,2,2HMM;")
    {
        Line("made for a test", 'S');
        for (; !global.empty(); global.remove_prefix(std::min<std::size_t>(72, global.size())))
            Line(global.substr(0, 72), 'G');
    }

    /// A directory entry and its record; the number of the entry is given back.
    int Entity(int type, const std::vector<std::string>& lines, int matrix = 0, const std::string& status = "00000000",
               int form = 0)
    {
        const int number = Directory(type, matrix, status, form);
        for (const std::string& line : lines)
            Parameters(line, number);
        return number;
    }

    int Directory(int type, int matrix = 0, const std::string& status = "00000000", int form = 0)
    {
        const std::string blanks(8, ' ');
        Line(Field(type) + blanks + blanks + blanks + blanks + blanks + Field(matrix) + blanks + status, 'D');
        Line(Field(type) + blanks + blanks + blanks + Field(form), 'D');
        return static_cast<int>(m_directory.size() / 81) - 1;
    }

    void Parameters(const std::string& line, int directory) { Line(Padded(line, 64) + Field(directory), 'P'); }

    std::string Bytes() const { return m_front + m_directory + m_parameters + Padded("S      1", 72) + "T      1\n"; }

    static std::string Padded(std::string_view text, std::size_t width)
    {
        std::string padded(text);
        padded.resize(width, ' ');
        return padded;
    }

private:
    static std::string Field(int value)
    {
        const std::string digits = std::to_string(value);
        return std::string(8 - digits.size(), ' ') + digits;
    }

    void Line(std::string_view text, char section)
    {
        std::string& part = section == 'D' ? m_directory : section == 'P' ? m_parameters : m_front;
        const std::string number =
            section == 'D' ? std::to_string(m_directory.size() / 81 + 1) : std::to_string(++m_number);
        part += Padded(text, 72) + section + std::string(7 - number.size(), ' ') + number + '\n';
    }

    std::string m_front;
    std::string m_directory;
    std::string m_parameters;
    int m_number = 0;
};

/// Collects the errors that a test's reading is told of.
class Messages
{
public:
    Messages()
    {
        file.SetIssueMessages(true);
        file.SetVerboseMessages(true);
        SetLogDebugMessages(true);
    }

    /// Those since the last time, each without its line feed.
    std::vector<std::wstring> Take() const
    {
        std::vector<std::wstring> texts;
        for (const Logged& message : m_log.Take())
        {
            if (message.severity >= LogSeverityError)
                texts.push_back(message.text.substr(0, message.text.find(L'\n')));
        }
        return texts;
    }

    /// A closed file: it has no text, but it issues.
    CTextInputOutputFile file;

private:
    LogSettings m_settings;
    ThreadLog m_log;
};

}
