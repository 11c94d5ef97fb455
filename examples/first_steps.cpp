#include "utility/Utility.h"

#include <iostream>
#include <numeric>
#include <string>
#include <vector>

std::string NewMessages()
{
    boost::circular_buffer_space_optimized<CLogMessage> messages;
    CLogMessages::instance(nullptr).pop(messages);
    std::string text;
    for (const CLogMessage& message : messages)
        text += from_utf(message.m_strMessage, 65001);
    return text;
}

int main(int argumentCount, char** arguments)
try
{
    InitialiseUtilityDLL();    // the library's messages can be found
    SetLogDebugMessages(true); // and bad input is worth one
    CTextInputOutputFile file(argumentCount > 1 ? arguments[1] : "numbers.csv");
    if (!file.IsValid())
        return 2;
    CDelimitedTextRecordPtr cursor(&file, ",\r\n");
    cursor.Add(file.DataPtr(), file.DataPtr() + file.GetFileSize() - 1);
    std::vector<double> values(1000);
    std::size_t count;
    double sum = 0.0;
    bool isGood = true;
    for (; !cursor.IsEndOfRecord(); cursor.AdvancePtr())
    {
        const bool isRunGood = cursor.ReadReals(values, ',', count);
        sum = std::accumulate(values.data(), values.data() + count, sum);
        if (isRunGood)
            continue;
        const TextPosition place = cursor.Position();
        std::cout << "line " << place.line << ", column " << place.column << ": " << NewMessages();
        cursor.SkipField(); // the rest of a bad field is no number
        isGood = false;
    }
    std::cout << "sum " << sum << '\n';
    return isGood ? 0 : 1;
}
catch (CFileException* failure)
{
    std::cerr << "cannot open " << from_utf(failure->m_strFileName, 65001) << '\n';
    failure->Delete();
    return 2;
}
