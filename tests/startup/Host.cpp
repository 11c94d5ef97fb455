// A host whose static objects use the library before main and after it, for the tests of startup/CMakeLists.txt:
//   Host PATH            keeps a file mapped and ends
//   Host PATH threads    ends while threads log, map files, and read versions and settings
// Its exit code is 0 if all went well. PATH is a file to map.

#include "utility/Utility.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <thread>

namespace
{

[[noreturn]] void Fail(const char* what)
{
    std::fprintf(stderr, "%s\n", what);
    std::fflush(stderr);
    std::_Exit(1);
}

void Expect(bool isTrue, const char* what)
{
    if (!isTrue)
        Fail(what);
}

std::size_t Stored(const void* owner)
{
    boost::circular_buffer_space_optimized<CLogMessage> messages;
    CLogMessages::instance(owner).pop(messages);
    return messages.size();
}

/// The program's own, if it has one.
void ReadVersion() { CVersion().Initialise(nullptr); }

/// Begins with the first static objects of the program, and ends with the last.
class StaticObject
{
public:
    StaticObject()
    {
        SetLogLevel(LogSeverityWarning);
        LogFile(LogSeverityWarning, this) << L"before main " << 1.5;
        SetThreadDatabase(reinterpret_cast<CEntityDatabase*>(this));
        CQLMAppSettings::SetProductName(L"Host of the tests");
        Expect(CQLMAppSettings::instance().SetValue(L"Static", L"Number", 7), "a setting before main");
        Expect(Lang::GetAvailableTranslations()[4].second == L"German", "the languages before main");
        Expect(GetDistanceDescription(true) == L"mm", "the units before main");
#ifndef UTILITY_STATIC // of which the messages may be the program's own
        Expect(resource_string(8304).empty(), "a message before its module is known");
#endif
        Expect(GetThreadAllocator() != nullptr, "the allocator before main");
        ReadVersion();
    }

    ~StaticObject()
    {
        LogFile(LogSeverityWarning, this) << L"after main " << 1.5;
        Expect(Stored(this) == 1, "a message after main");
        Expect(GetThreadDatabase() == reinterpret_cast<CEntityDatabase*>(this), "the database after main");
        Expect(CQLMAppSettings::instance().GetValue(L"Static", L"Number", 0) == 7, "a setting after main");
        Expect(Lang::GetAvailableTranslations()[4].second == L"German", "the languages after main");
        Expect(GetDistanceDescription(true) == L"mm", "the units after main");
        Expect(GetThreadAllocator() != nullptr, "the allocator after main");
        dbg() << L"";
        ReadVersion();
        if (m_file != nullptr)
        {
            Expect(m_file->Close(0), "a file closed after main");
            Expect(m_file->Open(m_file->path()), "a file opened after main");
            m_file.reset();
        }
    }

    void Check()
    {
        Expect(Stored(this) == 1, "the message of before main");
        Expect(GetLogLevel() == LogSeverityWarning, "the level of before main");
        Expect(GetThreadDatabase() == reinterpret_cast<CEntityDatabase*>(this), "the database of before main");
        Expect(CQLMAppSettings::instance().AppSubKey() == R"(SOFTWARE\Selvane\Host of the tests)",
               "the product's name");
        Expect(CQLMAppSettings::instance().GetValue(L"Static", L"Number", 0) == 7, "the setting of before main");
        InitialiseUtilityDLL();
        Expect(resource_string(8304) == L"mm", "a message");
    }

    void Keep(const char* path) { m_file = std::make_unique<CMemoryMappedFile>(boost::filesystem::path(path)); }

private:
    std::unique_ptr<CMemoryMappedFile> m_file;
};

/// As early as a host may.
[[gnu::init_priority(114)]] StaticObject object;
CMemoryMappedFile mapped;

}

int main(int argumentCount, char** arguments)
{
    object.Check();
    if (argumentCount < 2 || !mapped.Open(boost::filesystem::path(arguments[1])))
        return 2;
    object.Keep(arguments[1]);
    if (argumentCount > 2 && std::strcmp(arguments[2], "threads") == 0)
    {
        static std::atomic<int> begun = 0;
        for (int number = 0; number < 6; ++number)
            std::thread(
                [number, path = boost::filesystem::path(arguments[1])]
                {
                    for (long owner = 0;; ++owner)
                    {
                        if (number % 3 == 0)
                            LogFile(LogSeverityError, reinterpret_cast<void*>(owner % 100)) << L"Number " << 0.5;
                        else if (number % 3 == 1)
                        {
                            Expect(CMemoryMappedFile(path).IsValid(), "a file in a thread");
                            ReadVersion();
                        }
                        else
                            CQLMAppSettings::instance().GetValue(L"Static", L"Number", 0);
                        if (owner == 0)
                            ++begun;
                    }
                })
                .detach();
        while (begun != 6)
            std::this_thread::yield();
    }
    return 0;
}
