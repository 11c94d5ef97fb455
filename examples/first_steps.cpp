#include "utility/Utility.h"

#include <iostream>

class CommaCursor final : public CInlineTextRecordPtr<CommaCursor>
{
public:
    using CInlineTextRecordPtr::CInlineTextRecordPtr;
    bool IsTerminator(char c) override { return c == ',' || c == '\n' || c == '\0'; }
};

int main(int argumentCount, char** arguments)
try
{
    InitialiseUtilityDLL();    // the library's messages can be found
    SetLogDebugMessages(true); // and bad input is worth one
    CTextInputOutputFile file(argumentCount > 1 ? arguments[1] : "numbers.csv");
    if (!file.IsValid())
        return 2;
    CommaCursor cursor(&file);
    cursor.Add(file.DataPtr(), file.DataPtr() + file.GetFileSize() - 1);
    double sum = 0.0;
    for (double value; !cursor.IsEndOfRecord(); cursor.AdvancePtr())
        sum += cursor.ReadReal(value) ? value : 0.0;
    std::cout << "sum " << sum << '\n';
    boost::circular_buffer_space_optimized<CLogMessage> messages;
    CLogMessages::instance(nullptr).pop(messages);
    for (const CLogMessage& message : messages)
        std::cout << from_utf(message.m_strMessage, 65001);
    return messages.empty() ? 0 : 1;
}
catch (CFileException* failure)
{
    std::cerr << "cannot open " << from_utf(failure->m_strFileName, 65001) << '\n';
    failure->Delete();
    return 2;
}
