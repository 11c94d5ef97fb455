#include "utility/Utility.h"

#include <cstring>
#include <iostream>

/// Fields end at a comma, and the last one of a record at a semicolon.
class FieldCursor final : public CInlineTextRecordPtr<FieldCursor>
{
public:
    using CInlineTextRecordPtr::CInlineTextRecordPtr;
    bool IsTerminator(char c) override { return c == ',' || c == ';' || c == '\0'; }
};

void ShowMessages()
{
    boost::circular_buffer_space_optimized<CLogMessage> messages;
    CLogMessages::instance(nullptr).pop(messages);
    for (const CLogMessage& message : messages)
        std::cout << from_utf(message.m_strMessage, 65001);
}

void ShowFields(FieldCursor& record)
{
    std::cout << "record\n";
    double value = 0.0;
    while (!record.IsEndOfRecord())
    {
        if (record.ReadReal(value))
        {
            std::cout << "  " << value << '\n';
        }
        else
        {
            const TextPosition place = record.Position();
            std::cout << "  line " << place.line << ", column " << place.column << ": ";
            ShowMessages();
            record.SkipField(); // or a number within the bad field would be the next
        }
        if (record.GetCurrentChar() == ';')
            break;
        record.AdvancePtr(); // a read never passes the terminator
    }
}

int main(int argumentCount, char** arguments)
try
{
    InitialiseUtilityDLL();
    SetLogDebugMessages(true);
    CTextInputOutputFile file(argumentCount > 1 ? arguments[1] : "points.txt");
    constexpr int columns = 16;    // of data, and behind them
    constexpr int lineLength = 22; // a letter, a number and the line feed
    const char* line = file.DataPtr();
    while (file.IsValidPtr(line + columns - 1))
    {
        FieldCursor record(&file);
        bool isWhole = false;
        while (!isWhole && file.IsValidPtr(line + columns - 1))
        {
            record.Add(line, line + columns - 1); // the last character is part of it
            isWhole = std::memchr(line, ';', columns) != nullptr;
            line += lineLength;
        }
        ShowFields(record);
    }
    return 0;
}
catch (CFileException* failure)
{
    std::cerr << "cannot open " << from_utf(failure->m_strFileName, 65001) << '\n';
    failure->Delete();
    return 2;
}
