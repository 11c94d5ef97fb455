// The reader of IGES files over arbitrary bytes: the library's text cursor on real records, with messages on, and then
// what is measured and drawn of them.

#include "examples/iges/Picture.h"
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
    constexpr double coarse = 0.1;
    constexpr std::size_t mostPoints = 10'000;
    iges::Wireframe wireframe(coarse, mostPoints);
    for (const iges::Entry& entry : file.Directory())
    {
        if (part.Has(entry.number))
            part.Show(entry.number, part.NumbersOf(entry), wireframe);
    }
    iges::WritePicture(wireframe, L"", [](const std::string&) {});
    iges::WriteScene(wireframe, L"", [](const std::string&) {});
    return 0;
}
