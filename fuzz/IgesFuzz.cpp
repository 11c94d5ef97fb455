// The reader of IGES files over arbitrary bytes: the library's text cursor on real records, with messages on.

#include "examples/iges/Survey.h"

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerInitialize(int*, char***)
{
    InitialiseUtilityDLL();
    SetLogDebugMessages(true);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    CTextInputOutputFile messages;
    messages.SetIssueMessages(true);
    messages.SetVerboseMessages(true);
    const iges::File file(reinterpret_cast<const char*>(data), size, &messages);
    iges::Part part(file);
    iges::Survey survey(file, part);
    for (const iges::Record& record : file.Records())
        survey.Read(record);
    return 0;
}
