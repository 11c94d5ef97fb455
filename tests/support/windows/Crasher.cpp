#include "tests/support/Crasher.h"

#include <boost/filesystem/operations.hpp>

#include <msxml.h>
#include <shlobj.h>
#include <windows.h>

namespace support
{

Crasher::Crasher(const char* program) : m_program(boost::filesystem::path(UTILITY_CRASHERS) / program)
{
    m_program += ".exe";
    m_program.make_preferred();
    // The reports of all programs are in one folder, under their names: this one has it to itself.
    UseCopy(m_folder.Path().filename().string() + ".exe");
}

Crasher::~Crasher()
{
    boost::system::error_code ignored;
    boost::filesystem::remove_all(ReportFolder().parent_path(), ignored);
}

Crasher::End Crasher::Run(const std::string& cause, const std::function<void()>&)
{
    // Where a copy finds the libraries of the first one.
    const boost::filesystem::path current = boost::filesystem::path(UTILITY_CRASHERS).make_preferred();
    std::wstring line = L'"' + m_program.wstring() + L"\" " + std::wstring(cause.begin(), cause.end());
    STARTUPINFOW start = {};
    start.cb = sizeof(start);
    PROCESS_INFORMATION process = {};
    // Who crashes asks nobody what to do about it.
    const UINT mode = ::SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
    const BOOL isStarted =
        ::CreateProcessW(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, current.c_str(), &start, &process);
    ::SetErrorMode(mode);
    End end;
    if (!isStarted)
        return end;
    if (::WaitForSingleObject(process.hProcess, static_cast<DWORD>(m_patience.count())) != WAIT_OBJECT_0)
    {
        end.output = "The program did not end.\n";
        ::TerminateProcess(process.hProcess, 0);
    }
    DWORD code = 0;
    ::GetExitCodeProcess(process.hProcess, &code);
    ::CloseHandle(process.hThread);
    ::CloseHandle(process.hProcess);
    end.isCrash = code >= 0x80000000;
    end.outcome = code;
    return end;
}

std::string Crasher::PathInReport() const { return m_program.string(); }

boost::filesystem::path Crasher::DataFolder() const
{
    wchar_t folder[MAX_PATH] = {};
    ::SHGetFolderPathW(nullptr, CSIDL_LOCAL_APPDATA, nullptr, SHGFP_TYPE_CURRENT, folder);
    return folder;
}

std::string ComplaintAbout(const std::string& xml)
{
    const HRESULT isReady = ::CoInitialize(nullptr);
    std::string complaint = "there is no reader";
    IXMLDOMDocument* document = nullptr;
    if (::CoCreateInstance(CLSID_DOMDocument, nullptr, CLSCTX_INPROC_SERVER, IID_IXMLDOMDocument,
                           reinterpret_cast<void**>(&document)) == S_OK)
    {
        const std::wstring wide(xml.begin(), xml.end());
        const BSTR text = ::SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
        VARIANT_BOOL isRead = VARIANT_FALSE;
        document->loadXML(text, &isRead);
        ::SysFreeString(text);
        document->Release();
        complaint = isRead ? "" : "it is not well-formed";
    }
    if (SUCCEEDED(isReady))
        ::CoUninitialize();
    return complaint;
}

}
