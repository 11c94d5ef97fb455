// Stands in for zip32z64.dll: keeps the bytes that it is given, and what the callbacks gave when it called them. It
// packs nothing, but writes the list of entries where the archive was to be, one a line.

#include "tests/modules/StandInZip.h"

#include <cstring>
#include <iterator>

namespace
{

StandInZipRecords records;

}

extern "C" __declspec(dllexport) StandInZipRecords* StandInZip() { return &records; }

extern "C" __declspec(dllexport) int ZpInit(void* callbacks)
{
    using Output = int (*)(char* text, unsigned long size);
    using Answer = int (*)(void* first, void* second);
    std::memcpy(records.callbacks, callbacks, sizeof(records.callbacks));
    void* functions[6];
    std::memcpy(functions, callbacks, sizeof(functions));
    char text[] = "  adding: part.igs";
    records.output = reinterpret_cast<Output>(functions[0])(text, sizeof(text));
    for (int each = 0; each < 2; ++each)
        records.answers[each] = reinterpret_cast<Answer>(functions[1 + each])(text, text);
    return records.initResult;
}

// A record of this size goes over by its address.
extern "C" __declspec(dllexport) int ZpArchive(void* command, void* options)
{
    std::memcpy(records.command, command, sizeof(records.command));
    std::memcpy(records.options, options, sizeof(records.options));
    int count = 0;
    const char* archive = nullptr;
    const char* const* entries = nullptr;
    const char* folder = nullptr;
    std::memcpy(&count, records.command, sizeof(count));
    std::memcpy(&archive, records.command + 8, sizeof(archive));
    std::memcpy(&entries, records.command + 16, sizeof(entries));
    std::memcpy(&folder, records.options + 8, sizeof(folder));
    records.archive = archive;
    records.folder = folder;
    records.entries.assign(entries, entries + count);

    wchar_t path[1000];
    ::MultiByteToWideChar(CP_UTF8, 0, archive, -1, path, static_cast<int>(std::size(path)));
    const HANDLE file = ::CreateFileW(path, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE)
        return 1;
    for (const std::string& entry : records.entries)
    {
        DWORD written = 0;
        const std::string line = entry + '\n';
        ::WriteFile(file, line.data(), static_cast<DWORD>(line.size()), &written, nullptr);
    }
    ::CloseHandle(file);
    return records.archiveResult;
}
