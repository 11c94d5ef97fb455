// What a user relies on first: the library links, its strings and version came along, and its failures can be caught.
#include <utility/Utility.h>

#include <cstdio>
#include <cwchar>
#include <list>
#include <stdexcept>

// The library is ready before the static objects of those who use it, and outlasts them.
static std::list<int, CThreadNodeAllocator<int>> numbers{1, 2};

[[maybe_unused]] static bool CurrentModuleBelongsTo(const wchar_t* product)
{
    CVersion version;
    return version.Initialise(nullptr) && std::wcscmp(version.GetProductName(), product) == 0;
}

/// Whether a failure that the call throws is caught by this type, here, though the library has made it.
template <class Failure, class Call>
static bool Throws(Call call)
{
    try
    {
        call();
    }
    catch (const Failure&)
    {
        return true;
    }
    catch (...)
    {
    }
    return false;
}

int main(int, char** arguments)
{
#ifdef HAS_VERSION_RECORD
    if (!CurrentModuleBelongsTo(L"A user's program"))
    {
        std::puts("the program's version record is missing");
        return 5;
    }
#endif

    InitialiseUtilityDLL();
#ifndef UTILITY_STATIC
    // It stands for a program that does not say which module is its own.
    if (!CurrentModuleBelongsTo(L"Selvane Production Software"))
    {
        std::puts("the library's version record is missing");
        return 6;
    }
#endif
    if (resource_string(8301).empty())
    {
        std::puts("the library's strings are missing");
        return 1;
    }

    numbers.push_back(3);

    CMemoryMappedFile file;
    if (!file.Open(boost::filesystem::path(arguments[0])) || file.GetFileSize() == 0)
    {
        std::puts("the program's own file was not mapped");
        return 2;
    }

    const auto throwByText = [] { ThrowSourceLocationException(__FILE__, __LINE__, 8301); };
    if (!Throws<CSourceLocationException>(throwByText) || !Throws<std::runtime_error>(throwByText) ||
        !Throws<boost::filesystem::filesystem_error>([] { CChangeDirectoryTemporarily{L"no such folder"}; }))
    {
        std::puts("a failure was not caught by its type");
        return 7;
    }

    try
    {
        CMemoryMappedFile missing;
        missing.Open(L"no such folder/no such file");
        std::puts("a missing file was opened");
        return 3;
    }
    catch (CFileException* failure)
    {
        const int cause = failure->m_cause;
        failure->Delete();
        return cause == CFileException::badPath || cause == CFileException::fileNotFound ? 0 : 4;
    }
}
