#include "utility/desktop/SendMail.h"

#include "tests/modules/StandInMail.h"
#include "tests/support/windows/ImportedCall.h"

#include <boost/filesystem/path.hpp>
#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>
#include <windows.h>

using support::ImportedCall;

extern "C" decltype(&::GetSystemDirectoryW) __imp_GetSystemDirectoryW;
extern "C" decltype(&::LoadLibraryExW) __imp_LoadLibraryExW;
extern "C" decltype(&::FreeLibrary) __imp_FreeLibrary;

namespace
{

std::wstring systemFolder;

UINT WINAPI GiveFolder(LPWSTR buffer, UINT size)
{
    if (size <= systemFolder.size())
        return static_cast<UINT>(systemFolder.size()) + 1;
    std::wmemcpy(buffer, systemFolder.c_str(), systemFolder.size() + 1);
    return static_cast<UINT>(systemFolder.size());
}

struct Loading
{
    std::wstring path;
    DWORD flags;
};
std::vector<Loading> loadings;
std::vector<HMODULE> freed;

std::wstring libraryFile;

/// Loads what stands in for a library of the system: Wine takes its own for a file of that name, wherever it is.
HMODULE WINAPI LoadStandIn(LPCWSTR path, HANDLE, DWORD flags)
{
    loadings.push_back({path, flags});
    return libraryFile.empty() ? nullptr : ::LoadLibraryW(libraryFile.c_str());
}

BOOL WINAPI NoteFreeing(HMODULE module)
{
    freed.push_back(module);
    return TRUE;
}

std::string Bytes(const unsigned char* bytes, std::size_t size) { return {reinterpret_cast<const char*>(bytes), size}; }

/// The record with its pointers as flags: whether they are there.
template <class Record>
Record RecordOf(const unsigned char (&bytes)[sizeof(Record)])
{
    Record record;
    std::memcpy(&record, bytes, sizeof(record));
    return record;
}

/// The system's folder is that of a mail library that keeps what it is called with.
class SendMailByMapi : public ::testing::Test
{
protected:
    SendMailByMapi()
    {
        systemFolder = L"C:\\" + std::wstring(300, L'x');
        libraryFile = boost::filesystem::path(UTILITY_STAND_IN_MAIL).make_preferred().native();
        loadings.clear();
        freed.clear();
    }

    /// Sends with this status, and gives what Send says.
    bool Send(const std::wstring& recipient, const std::wstring& subject, const std::wstring& note, bool noDialog,
              ULONG status = 0)
    {
        CSendMail mail;
        EXPECT_TRUE(mail.Init());
        const HMODULE library = ::GetModuleHandleW(boost::filesystem::path(libraryFile).filename().c_str());
        EXPECT_NE(library, nullptr);
        if (library == nullptr)
            return true;
        const auto call =
            reinterpret_cast<MailCall* (*)()>(reinterpret_cast<void*>(::GetProcAddress(library, "StandInMailCall")));
        *call() = {};
        call()->status = status;
        const bool isFailure =
            mail.Send(recipient, subject, L"C:\\Parts\\part.nc", L"Part 7, \"\u00FC\".nc", note, noDialog);
        m_call = *call();
        return isFailure;
    }

    static std::string_view TextOf(const KeptText& kept) { return kept.isThere ? kept.bytes : "none"; }

    const ImportedCall<decltype(&::GetSystemDirectoryW)> m_folder{__imp_GetSystemDirectoryW, &GiveFolder};
    const ImportedCall<decltype(&::LoadLibraryExW)> m_load{__imp_LoadLibraryExW, &LoadStandIn};
    MailCall m_call = {};
};

}

TEST_F(SendMailByMapi, WholeMailIsInTheRecordsByteForByte)
{
    EXPECT_FALSE(Send(L"a'b,\"c\"@example.com", L"Part \u00FC", L"First\r\nsecond", false));
    EXPECT_EQ(m_call.count, 1);
    EXPECT_EQ(m_call.session, 0u);
    EXPECT_EQ(m_call.window, 0u);
    EXPECT_EQ(m_call.flags, 9u);
    EXPECT_EQ(m_call.reserved, 0u);

    const auto message = RecordOf<MapiMessage>(m_call.message);
    MapiMessage expected = {};
    expected.lpszSubject = message.lpszSubject;
    expected.lpszNoteText = message.lpszNoteText;
    expected.nRecipCount = 1;
    expected.lpRecips = message.lpRecips;
    expected.nFileCount = 1;
    expected.lpFiles = message.lpFiles;
    EXPECT_EQ(Bytes(m_call.message, sizeof(m_call.message)),
              Bytes(reinterpret_cast<unsigned char*>(&expected), sizeof(expected)));

    const auto file = RecordOf<MapiFileDesc>(m_call.file);
    MapiFileDesc expectedFile = {};
    expectedFile.nPosition = 0xFFFFFFFF;
    expectedFile.lpszPathName = file.lpszPathName;
    expectedFile.lpszFileName = file.lpszFileName;
    EXPECT_EQ(Bytes(m_call.file, sizeof(m_call.file)),
              Bytes(reinterpret_cast<unsigned char*>(&expectedFile), sizeof(expectedFile)));

    const auto recipient = RecordOf<MapiRecipDesc>(m_call.recipient);
    MapiRecipDesc expectedRecipient = {};
    expectedRecipient.ulRecipClass = 1;
    expectedRecipient.lpszName = recipient.lpszName;
    expectedRecipient.lpszAddress = recipient.lpszAddress;
    EXPECT_EQ(Bytes(m_call.recipient, sizeof(m_call.recipient)),
              Bytes(reinterpret_cast<unsigned char*>(&expectedRecipient), sizeof(expectedRecipient)));

    // The code page is 1252 there, or UTF-8.
    const std::string u = ::GetACP() == CP_UTF8 ? "\xC3\xBC" : "\xFC";
    EXPECT_EQ(TextOf(m_call.subject), "Part " + u);
    EXPECT_EQ(TextOf(m_call.note), "First\r\nsecond");
    EXPECT_EQ(TextOf(m_call.path), "C:\\Parts\\part.nc");
    EXPECT_EQ(TextOf(m_call.name), "Part 7, \"" + u + "\".nc");
    EXPECT_EQ(TextOf(m_call.recipientName), "a'b,\"c\"@example.com");
    EXPECT_EQ(TextOf(m_call.recipientAddress), "SMTP:a'b,\"c\"@example.com");
}

TEST_F(SendMailByMapi, RecordsSayNothingOfWhatIsNotGiven)
{
    EXPECT_FALSE(Send(L"", L"", L"A note without a subject", true));
    EXPECT_EQ(m_call.flags, 1u);
    const auto message = RecordOf<MapiMessage>(m_call.message);
    EXPECT_EQ(message.nRecipCount, 0u);
    EXPECT_EQ(message.lpRecips, nullptr);
    EXPECT_EQ(message.lpszSubject, nullptr);
    EXPECT_EQ(message.lpszNoteText, nullptr);
    EXPECT_EQ(message.nFileCount, 1u);
}

TEST_F(SendMailByMapi, EmptyNoteGoesWithASubject)
{
    EXPECT_FALSE(Send(L"", L"Part", L"", true));
    EXPECT_EQ(TextOf(m_call.subject), "Part");
    EXPECT_EQ(TextOf(m_call.note), "");
}

TEST_F(SendMailByMapi, StatusOfTheLibraryIsTheResult)
{
    EXPECT_FALSE(Send(L"", L"", L"", false, 0));
    EXPECT_FALSE(Send(L"", L"", L"", false, 1));
    EXPECT_TRUE(Send(L"", L"", L"", false, 2));
    EXPECT_FALSE(Send(L"", L"", L"", false, 3));
    EXPECT_TRUE(Send(L"", L"", L"", false, 4));
}

TEST_F(SendMailByMapi, LibraryIsThatOfTheSystemsFolderFromTheConstructorToTheDestructor)
{
    const ImportedCall<decltype(&::FreeLibrary)> free(__imp_FreeLibrary, &NoteFreeing);
    {
        CSendMail mail;
        ASSERT_EQ(loadings.size(), 1u);
        EXPECT_EQ(loadings[0].path, systemFolder + L"\\MAPI32.dll");
        EXPECT_EQ(loadings[0].flags, DWORD{LOAD_WITH_ALTERED_SEARCH_PATH});
        mail.Init();
        EXPECT_EQ(loadings.size(), 1u);
        EXPECT_TRUE(freed.empty());
    }
    ASSERT_EQ(freed.size(), 1u);
    EXPECT_EQ(freed[0], ::GetModuleHandleW(boost::filesystem::path(libraryFile).filename().c_str()));
}

TEST_F(SendMailByMapi, FolderWithoutTheLibraryIsToldByInit)
{
    libraryFile.clear();
    CSendMail mail;
    EXPECT_THROW(mail.Init(), std::runtime_error);
}

TEST_F(SendMailByMapi, LibraryWithoutTheFunctionIsToldByInit)
{
    libraryFile = L"version.dll";
    CSendMail mail;
    std::string reason;
    try
    {
        mail.Init();
    }
    catch (const std::runtime_error& failure)
    {
        reason = failure.what();
    }
    EXPECT_EQ(reason, "The mail program cannot be used to send messages.");
}

TEST(SendMailOfWindows, LibraryOfTheSystemHasTheFunction)
{
    CSendMail mail;
    EXPECT_TRUE(mail.Init());
}
