#include "utility/Utility.h"

#include <cstring>
#include <iostream>
#include <vector>

/// The record whose first line stands here, in a file of fixed columns. Behind it the next one.
void AddLines(CTextRecordPtr& record, const char*& line, const CTextInputOutputFile& file)
{
    constexpr int columns = 16;    // of data, and behind them
    constexpr int lineLength = 22; // a letter, a number and the line feed
    for (bool isWhole = false; !isWhole && file.IsValidPtr(line + columns - 1); line += lineLength)
    {
        record.Add(line, line + columns - 1); // the last character is part of it
        isWhole = std::memchr(line, ';', columns) != nullptr;
    }
}

int main(int argumentCount, char** arguments)
try
{
    InitialiseUtilityDLL();
    CTextInputOutputFile file(argumentCount > 1 ? arguments[1] : "points.txt");
    std::vector<double> values(1000);
    std::vector<TextFieldForm> forms(values.size());
    for (const char* line = file.DataPtr(); file.IsValidPtr(line + 15);)
    {
        CDelimitedTextRecordPtr record(&file, ",;");
        AddLines(record, line, file);
        std::size_t count = 0;
        const bool isGood = record.ReadReals(values, ',', count, forms);
        std::cout << count << " good fields:";
        for (std::size_t i = 0; i < count; ++i)
            std::cout << ' ' << values[i] << (forms[i] == TextFieldForm::whole ? " (whole)" : "");
        const bool isWhole = isGood && *record == ';';
        std::cout << (isWhole ? "\n" : ", then something else\n");
    }
    return 0;
}
catch (CFileException* failure)
{
    std::cerr << "cannot open " << from_utf(failure->m_strFileName, 65001) << '\n';
    failure->Delete();
    return 2;
}
