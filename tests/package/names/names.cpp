// Refers to every function and operation that the library offers to its users, by calls that are never made: what is
// not exported does not link, and what a user's compiler cannot make of the installed headers does not compile.
#include <utility/Utility.h>

#include <cstdarg>
#include <list>
#include <memory>
#include <utility>

namespace
{

/// An object for a call that is never made.
template <class T>
T& Any()
{
    static T* volatile none;
    return *none;
}

template <class T>
void Copy()
{
    T copy(Any<const T>());
    copy = Any<const T>();
}

template <class T>
void Move()
{
    T moved(std::move(Any<T>()));
    moved = std::move(Any<T>());
}

/// That a failure can be caught needs its type from the library.
template <class T>
void Catch()
{
    try
    {
        InitialiseUtilityDLL();
    }
    catch (const T&)
    {
    }
    catch (const T*)
    {
    }
}

void Codec()
{
    blastInit(Any<BlastInput>(), nullptr, &Any<BlastState*>());
    blastMore(nullptr, nullptr, 0, &Any<uint64_t>());
    blastEndMarkRead(nullptr, &Any<uint64_t>());
    blastTerm(nullptr);

    CVRMLFile scene;
    scene.Open(L"", true, 6);
    scene.Open(std::wstring(), true, 6);
    scene.Open(boost::filesystem::path(), true, 6);
    scene << "";
    scene.Write(nullptr, 0);
    scene.DoDeflate(0);
    scene.CommitAndClose();
    scene.Close();

    CZEngine engine;
    engine.DeflateInit(6);
    engine.DeflateInit2(6, 8, 15, 8, 0);
    engine.Deflate(0);
    engine.DeflateEnd();
    engine.InflateInit();
    engine.Inflate(0);
    engine.InflateEnd();
    Copy<CZEngine>();

    Zip::ZipFiles("", {});

    CyclicRedundancyCheck check(0);
    check = CyclicRedundancyCheck();
    check.Incorporate(nullptr, 0);
    check.clear();
    check.Current();
    static_cast<void>(check == check || check != check);
}

void Crash()
{
    KeepLogForExceptionReports();
    CUnhandledExceptionFilter filter;
    filter = CUnhandledExceptionFilter();
    CUnhandledExceptionFilter::g_bGenerateExceptionReport =
        CUnhandledExceptionFilter::UnhandledExceptionFilter(nullptr) != 0;

    CSETranslator translator;
    CStructuredException(0, nullptr).GetErrorMessage(nullptr, 0, nullptr);
    CStructuredException failure(0, nullptr);
    failure.CStructuredException::GetErrorMessage(nullptr, 0, nullptr);
    failure.GetExceptionPointers();
    Catch<CStructuredException>();
    ZeloIsDebuggerPresent();
    ZeloDliHook(0, nullptr);
    utility::platform::OpenDelayed("", &ZeloDliHook);
}

void Desktop()
{
    CSendMail mail;
    CSendMail moved(std::move(mail));
    mail = std::move(moved);
    mail.Init();
    mail.Send(std::wstring(), std::wstring(), boost::filesystem::path(), std::wstring(), std::wstring(), false);
    mail.Send(nullptr, 0, L"", boost::filesystem::path());

    CZeloImageList images;
    images.AddBitmap(0u, 0, 0, 0);
    images.AddBitmap(L"", 0, 0, 0);
    images.AppendBitmap(0u, 0, 0, 0);
    images.AppendBitmap(L"", 0, 0, 0);
    MakeRGBA(0, 0);
    GetRGB(0);
    GetAValue(0);
}

void Diagnostics() { ZeloAssertFailed("", 0, 0, Any<bool>()); }

void Failures()
{
    CError error(CError::SeverityError, std::wstring());
    CError(CError::SeverityError, L"");
    error.Severity();
    error.Message();
    Copy<CError>();
    Catch<CError>();

    CTextError textError(CError::SeverityError, std::wstring(), 0);
    textError.Offset();
    Copy<CTextError>();
    Catch<CTextError>();

    CSourceLocationException(__FILE__, __LINE__, 0);
    CSourceLocationException{};
    Copy<CSourceLocationException>();
    Catch<CSourceLocationException>();

    CInputRecordException(__FILE__, __LINE__, 0);
    Copy<CInputRecordException>();
    Catch<CInputRecordException>();

    CTextRecordException textRecord(__FILE__, __LINE__, 0, "");
    textRecord.Place();
    Copy<CTextRecordException>();
    Catch<CTextRecordException>();

    COSException system;
    COSException(0).GetErrorMessage(nullptr, 0, nullptr);
    system.COSException::GetErrorMessage(nullptr, 0, nullptr);
    Catch<COSException>();

    AlgorithmFailure(__FILE__, __LINE__);
    AlgorithmFailure algorithm(__FILE__, __LINE__, "");
    algorithm.FileName();
    algorithm.LineNumber();
    algorithm.Message();
    Copy<AlgorithmFailure>();
    Move<AlgorithmFailure>();
    Catch<AlgorithmFailure>();

    ThrowSourceLocationException(__FILE__, __LINE__, 0);
}

struct MappedFile : CMemoryMappedFile
{
    void Protected()
    {
        CloseFileView();
        CloseFileMapping();
        CloseFile();
        GetFile();
        ThrowFileException(0, L"");
    }
};

struct OutputFile : CInputOutputFile
{
    void Protected() { Issue(true, LogSeverityError, 0, Any<std::va_list>()); }
};

struct CharacterFile : CTextFile
{
    void Protected() { Write(nullptr, 0); }
};

void Files()
{
    const boost::filesystem::path path;
    const std::wstring wide;
    CMemoryMappedFile{};
    CMemoryMappedFile(L"");
    CMemoryMappedFile(L"", 0);
    CMemoryMappedFile{path};
    CMemoryMappedFile{wide};
    CMemoryMappedFile(wide, 0);
    CMemoryMappedFile file(path, 0);
    file.Open(L"");
    file.Open(L"", 0);
    file.Open(path);
    file.Open(path, 0);
    file.Open(wide);
    file.Open(wide, 0);
    file.GetBase();
    std::as_const(file).GetBase();
    file.GetFileSize();
    file.IsValid();
    file.path();
    file.IsValidPtr(nullptr);
    file.GetFileInformation(nullptr);
    file.WriteFile(nullptr, 0);
    file.GetFilePointer();
    file.SetFilePointer(0, FILE_BEGIN);
    file.CommitAndClose();
    file.Close(0);
    Copy<CMemoryMappedFile>();
    MappedFile().Protected();

    CBackupFile{L""};
    CBackupFile{wide};
    CBackupFile backup(path);
    backup.GetFilename();
    backup.GetTempFilename();
    backup.SetReplaceFile(false);
    Copy<CBackupFile>();

    CChangeDirectoryTemporarily{L""};
    CChangeDirectoryTemporarily{wide};
    CChangeDirectoryTemporarily change(path);
    CChangeDirectoryTemporarily{change};

    MakeTemporaryFile(L"", L"");
    MakeTemporaryFile(wide, L"");
    MakeTemporaryFile(path, L"");
    MakeTemporaryFolder(L"", L"");
    MakeTemporaryFolder(wide, L"");
    MakeTemporaryFolder(path, L"");
    FormatLanguageDependentFilename(0, L"");
    FindLanguageDependentFilename(L"");
    GetLongPathNameW(L"");
    GetLongPathNameW(wide);
    GetLongPathNameW(path);
    GetShortPathNameW(L"");
    GetShortPathNameW(wide);
    GetShortPathNameW(path);

    ZeloMessageBox(L"", 0, 0);
    ZeloMessageBox(0u, 0, 0);
    ShowSystemErrorMessage(0);
    static_cast<void>(IsKeyDown(0));
    static_cast<void>(IsKeyDownAsync(0));
    static_cast<void>(MouseKeyToVirtualKey(0));
    SetClipboardText(L"");
    static_cast<void>(GetClassAtom(L""));
    Copy<CWindowPlacement>();
    CWindowPlacement{};
    Copy<CDevMode>();
    CDevMode{};
    Copy<CShellExecuteInfo>();
    CShellExecuteInfo{};
    Copy<CFormatEtc>();
    CFormatEtc{};
    CFormatEtc{0, nullptr, 0, 0, 0};

    GetDCServerName(Any<std::wstring>());
    GetUserLogonServer(Any<std::wstring>());
    static_cast<void>(GetUserFullName());
    GetUserFullName(Any<std::wstring>());
    GetUserFullName(L"", Any<std::wstring>());
    GetUserFullName(L"", L"", Any<std::wstring>());
    static_cast<void>(UserHasAdministrativeRights());
    DWORD part = 0;
    static_cast<void>(IsDLLAvailable(path));
    GetDLLVersion(path, part, part);
    GetBrowserVersion(part, part);
    static_cast<void>(CheckBrowserVersion());
    GetModuleHandleExW(nullptr, 0);
    static_cast<void>(GetNumberOfProcessors());
    GetVersionExZelo(Any<_OSVERSIONINFOEXW>());
    static_cast<void>(IsValidRegistryKeyName(L""));

    RenameFile(L"", L"");
    RenameFile(wide, wide);
    RenameFile(path, path);
    CreateFileIfNotPresent(L"");
    CreateFileIfNotPresent(wide);
    CreateFileIfNotPresent(path);
    IsFileReadable(L"");
    IsFileReadable(wide);
    IsFileReadable(path);
    GetFileSize(L"");
    GetFileSize(wide);
    GetFileSize(path);

    GetModuleFilename(nullptr);
    GetModulePath(nullptr);
    GetExecutableFilename();
    GetExecutablePath();
    GetUserDocumentsFolder();
    GetSystemFolder();

    CInputOutputFile{};
    CInputOutputFile{L""};
    CInputOutputFile{wide};
    CInputOutputFile binary(path);
    binary.SetIssueMessages(true);
    binary.IssueMessages();
    binary.SetVerboseMessages(true);
    binary.VerboseMessages();
    binary.IssueWarning(0, 0);
    binary.IssueError(0, 0);
    Copy<CInputOutputFile>();
    OutputFile().Protected();

    CTextInputOutputFile{};
    CTextInputOutputFile{L""};
    CTextInputOutputFile{wide};
    CTextInputOutputFile text(path);
    text.DataPtr();
    text.PositionOf("");
    text.IssueWarning("", 0, 0);
    text.IssueError("", 0, 0);
    Copy<CTextInputOutputFile>();

    CBinaryFile bytes;
    bytes.Open(L"");
    bytes.Open(std::wstring());
    bytes.Open(path);
    bytes << "" << 1.0F << DWORD{1} << static_cast<unsigned short>(1);
    Copy<CBinaryFile>();

    CTextFile characters;
    characters.Open(L"");
    characters.Open(std::wstring());
    characters.Open(path);
    characters << 'c' << "" << L"" << 1 << 1U << 1L << 1UL << 1LL << 1ULL;
    characters.WriteFixed(1.0, 0);
    Copy<CTextFile>();
    CharacterFile().Protected();
}

struct Object : CObject
{
};

void Framework()
{
    Object{};

    CException failure;
    failure.CException::GetErrorMessage(nullptr, 0, nullptr);
    failure.Delete();
    Catch<CException>();

    CFileException{};
    CFileException file(CFileException::none, -1, L"");
    file.CFileException::GetErrorMessage(nullptr, 0, nullptr);
    CFileException::OsErrorToException(0);
    Catch<CFileException>();

    CStringW{};
    CStringW(L"");
    CStringW text(L"", 0);
    text.GetString();
    static_cast<const wchar_t*>(text);
    text.GetLength();
    text.IsEmpty();
    text.Empty();
    text += text;
    text.Format(L"", 0);
    text.LoadString(0);
    text.LoadString(nullptr, 0);
    text == text;
    text == L"";
    Copy<CStringW>();
    Move<CStringW>();

    CImageList list;
    list.Create(0, 0, 0, 0, 0);
    list.DeleteImageList();
    list.GetSafeHandle();
    list.GetImageCount();
    list.GetImage(0);

    CDataExchange exchange(Any<utility::platform::Form>(), false);
    exchange.PrepareEditCtrl(0);
    DDV_MinMaxFloat(&exchange, 0.0F, 0.0F, 0.0F);
    DDV_MinMaxDouble(&exchange, 0.0, 0.0, 0.0);
    Catch<CUserException>();
    Catch<CNotSupportedException>();

    using utility::framework::TerminalForm;
    TerminalForm form(Any<std::istream>(), Any<std::ostream>(), {});
    form.Edit();
    form.HasField(0);
    form.Text(0, nullptr, 0);
    form.SetText(0, L"");
    form.Focus(0);
    form.ShowBox(L"", 0, 0);

#ifdef _WIN32
    using utility::platform::WindowForm;
    WindowForm window(nullptr);
    window.HasField(0);
    window.Text(0, nullptr, 0);
    window.SetText(0, L"");
    window.Focus(0);
    window.ShowBox(L"", 0, 0);
#endif

    if (Any<bool>())
        CFileException::ThrowOsError(0, L"");
    else if (Any<bool>())
        exchange.Refuse(L"", 0, 0);
    exchange.Fail();
}

void Guards()
{
    CLock lock;
    lock.InitialUnlock();
    lock.ReadLock();
    lock.WriteLock();
    lock.Unlock();
    lock.IsLocked();
    lock.IsWriteLocked();
    lock.LockCount();
    Copy<CLock>();

    CCriticalSectionSpinCount{};
    CCriticalSectionSpinCount section(0);
    section.Lock();
    section.Unlock();
    static_cast<_RTL_CRITICAL_SECTION*>(section);

    resource_ptr<HKEY>{};
    resource_ptr<HANDLE>{};
    resource_ptr<HWINSTA>{};
    resource_ptr<HBITMAP>{};
    resource_ptr<HBRUSH>{};
    resource_ptr<HFONT>{};
    resource_ptr<HPALETTE>{};
    resource_ptr<HPEN>{};
    resource_ptr<HRGN>{};
}

struct DebugBuffer : DebugStream::DebugStreamBuf
{
    void Protected() { DebugStreamBuf::sync(); }
};

struct LogBuffer : CLogStream::CLogStreamBuffer
{
    LogBuffer() : CLogStreamBuffer(nullptr, LogSeverityError) {}
    void Protected() { CLogStreamBuffer::sync(); }
};

struct Messages : CLogMessages
{
    Messages() : CLogMessages(0) {}
};

void Logging()
{
    DebugStream{} << L"";
    DebugBuffer().Protected();
    DebugStreamHelper{} << L"" << 1 << std::endl;
    dbg() << L"" << std::endl;

    CLogMessage(LogSeverityError, L"");
    Copy<CLogMessage>();
    Move<CLogMessage>();
    Messages messages;
    messages.SetLogCapacity(0);
    messages.push(LogSeverityError, L"");
    messages.pop(Any<boost::circular_buffer_space_optimized<CLogMessage>>());
    CLogMessages::instance(nullptr);
    CLogMessages::SetDefaultLogCapacity(0);
    GetLogLevel();
    SetLogLevel(LogSeverityError);
    LogDebugMessages();
    SetLogDebugMessages(true);

    CLogStream(nullptr, LogSeverityError) << L"";
    LogBuffer().Protected();
    CLogStreamHelper helper(nullptr, LogSeverityError);
    helper << L"" << std::wstring() << std::wstring_view() << L'c' << true << 1 << 1ull << 1.0 << 1.0L << ""
           << std::string() << std::endl;
    LogFile(LogSeverityError, nullptr) << "";
    LogFile(LogSeverityError, nullptr) << std::string();
    DbgLogFile(LogSeverityError, Any<const void*>());
    DbgLogFile(LogSeverityError, Any<CEntityDatabase*>());

    SetThreadDatabase(nullptr);
    GetThreadDatabase();

    KUtime time({}, {});
    time.copy({}, {});
    time.Diff(KUtime());

    ThreadTimer timer;
    timer.Start();
    timer.Stop();
    timer.Reset();
    timer.IsPaused();
    timer.ElapsedTime();
    timer.ElapsedTime(Any<std::uint64_t>(), Any<std::uint64_t>());
    timer = ThreadTimer();

    CTimeLogger timing;
    timing.LogNextTimeStr(L"");
    timing.LogNextTime(L"");
    timing.GetTimeLog();
    timing.PrintNextTime(nullptr, L"");
    timing.PrintTimeLog(nullptr);
    FormatMachiningTime(0);
}

void Memory()
{
    GetAvailVirtualMemory();
    WalkAddressSpace();
    auto& size = Any<std::size_t>();
    GetVirtualAddressSpaceInformation(size, size, size, size);
    QLMMemoryStatus(nullptr);
    QLMMemoryLoad();
    UseLowFragmentationHeap(nullptr);

    CNewHandler{};

    CQLMNodeAllocator pool;
    pool.deallocate(pool.allocate(1), 1);

    GetThreadAllocator();
    ResetThreadAllocator(true);
    CThreadAllocatorManager manager;
    manager = manager;

    CThreadNodeAllocator<int> allocator;
    CThreadNodeAllocator<long> other(allocator);
    allocator.deallocate(allocator.allocate(1), 1);
    allocator.select_on_container_copy_construction();
    other == allocator;
    std::list<int, CThreadNodeAllocator<int>>{1, 2};
}

void Numbers()
{
    GetDecimalSymbol();
    SetDecimalSymbol(DWORD{});
    SetDecimalSymbol(L"");
    DialogDecimalPlaces();
    DialogDecimalPlaces(DISTANCE_UNITS_MM);
    SetDialogDecimalPlaces(0);
    to_wstring(1.0, 0);
    to_wstring(1.0f, 0);
    static_cast<void>(FormatFixed(std::span<char>(), 1.0, 0));
    static_cast<void>(FormatFixed(std::span<wchar_t>(), 1.0, 0));
    QLMFormatFloatE(1.0, 0);
    QLMFormatFloatPrecise(1.0, 0);

    MakeFloatDoubleConsistent(1.0);
    IsFloatDoubleConsistent(1.0);
    EqualAsFloats(1.0, 1.0);
    Round(1.0, 0);
    Round(1.0f, 0);
    RoundToFloat(1.0, _RC_NEAR);
    IsValidFloat(1.0f);
    IsValidReal(1.0);
    ExponentOf(Any<double>());
    ExponentOf(1.0f);
    ConvertVMSFloat(1.0f);
    UnmaskFloatingPointExceptions();
    MaskFloatingPointExceptions();
    CMaskFloatingPointExceptions{};
    Copy<CMaskFloatingPointExceptions>();

    QLMParseFloat1(L"", L"", Any<double>());
    QLMParseFloat(L"", L"", Any<double>());
    QLMParseFloat(L"", Any<double>());
    QLMParseFloat(L"", L'c', Any<double>());

    pow10(0);

    StatSeries series;
    series.AddVal(1.0);
    series.AddValNotArray(1.0);
    Copy<StatSeries>();
    Move<StatSeries>();
}

void Platform()
{
    namespace platform = utility::platform;

    platform::SetDebuggerSink(nullptr);
    platform::SetLastError(platform::LastError());
    platform::SetLastError(platform::LatestError());
    platform::SetHiveFile(HKEY_CURRENT_USER, platform::HiveFile(HKEY_CURRENT_USER));
    platform::formats::Utf16FromWide(L"");
    platform::formats::WideFromUtf16("", 0);

    platform::RegistryService& registry = platform::Registry();
    registry.RegCreateKeyExW(nullptr, L"", KEY_READ, Any<HKEY>());
    registry.RegOpenKeyExW(nullptr, L"", KEY_READ, Any<HKEY>());
    registry.RegOpenKeyW(nullptr, L"", Any<HKEY>());
    registry.RegCreateKeyW(nullptr, L"", Any<HKEY>());
    registry.RegQueryValueExW(nullptr, L"", nullptr, nullptr, nullptr);
    registry.RegSetValueExW(nullptr, L"", REG_SZ, nullptr, 0);
    registry.RegSetValueW(nullptr, L"", L"");
    registry.RegDeleteValueW(nullptr, L"");
    registry.RegCloseKey(nullptr);
    registry.SHDeleteKeyW(nullptr, L"");
    registry.RegEnumKeyExW(nullptr, 0, nullptr, Any<DWORD>());
    registry.RegEnumValueW(nullptr, 0, nullptr, Any<DWORD>(), nullptr, nullptr, nullptr);
    registry.RegQueryInfoKeyW(nullptr, Any<platform::RegistryKeyInfo>());
    platform::RegistrySlot().Exchange(registry);
}

struct VirtualCursor : CTextRecordPtr
{
    using CTextRecordPtr::CTextRecordPtr;
    bool IsTerminator(char c) override { return c == ','; }
};

struct InlineCursor final : CInlineTextRecordPtr<InlineCursor>
{
    using CInlineTextRecordPtr::CInlineTextRecordPtr;
    bool IsTerminator(char c) override { return c == ','; }
};

struct DelimitedCursor final : CDelimitedTextRecordPtr
{
    explicit DelimitedCursor(CTextInputOutputFile* file) : CDelimitedTextRecordPtr(file, ",") {}
};

template <class Cursor>
void TextCursor()
{
    Cursor cursor(nullptr);
    cursor.Add("", "");
    cursor.Lines().front().First();
    cursor.Lines().front().Last();
    cursor.InputFile();
    cursor.Reset();
    cursor.IsEndOfRecord();
    cursor.GetCurrentChar();
    *cursor;
    static_cast<char>(cursor);
    static_cast<const char*>(cursor);
    cursor.AdvancePtr();
    cursor.SkipBlanks();
    cursor.IsExponentChar('e');
    cursor.ReadChar(Any<char>());
    cursor.ReadInt(Any<int>());
    cursor.ReadReal(Any<double>());
    cursor.ReadReals({}, ',', Any<std::size_t>());
    cursor.ReadInts({}, ',', Any<std::size_t>());
    cursor.SkipField();
    cursor.Position();
    cursor.SkipLine();
}

void Records()
{
    CTextRecord().Add("", "");
    Any<TextLine>() == Any<TextLine>();
    CInputRecord record;
    record.Add(nullptr, nullptr);
    Copy<CInputRecord>();
    InputLine(nullptr, nullptr).AdvanceStart(1);

    CInputRecordPtr cursor(Any<CInputOutputFile*>());
    CInputRecordPtr copy(cursor);
    cursor.InputFile();
    cursor.Add(nullptr, nullptr);
    cursor.Reset();
    cursor.IsEndOfRecord();
    cursor.GetCurrentByte();
    cursor.AdvancePtr();
    cursor.AdvancePtr(1);
    cursor.Read(nullptr, 0);
    cursor.ReadChar(Any<char>());
    cursor.ReadInt(Any<int>());
    cursor.ReadFloat(Any<float>());
    cursor.ReadReal(Any<double>());

    TextCursor<VirtualCursor>();
    TextCursor<InlineCursor>();
    TextCursor<DelimitedCursor>();
}

struct AppSettings : CQLMAppSettings
{
    AppSettings() : CQLMAppSettings(std::wstring()) {}
};

template <class... Values>
void EverySetting(const CQLMAppSettings& settings, const Values&... values)
{
    (settings.GetValue(L"", L"", values), ...);
    (settings.SetValue(L"", L"", values), ...);
}

void Settings()
{
    AppSettings{};
    CQLMAppSettings::CompanyKeyName();
    CQLMAppSettings::SetProductName(L"");
    const CQLMAppSettings& settings = CQLMAppSettings::instance();
    settings.AppSubKey();
    settings.GetAppName();
    settings.GetCaptionBarString();
    settings.IsBranded();
    settings.IsPreReleaseVersion();
    settings.IsDebugOrPreReleaseVersion();
    EverySetting(settings, std::wstring(), L"", true, 1, 1u, 1l, 1ul, 1ll, 1ull, 1.0f, 1.0, FILETIME());
    settings.SetValue(L"", L"", nullptr, 0);
    CQLMAppSettings::OpenKey(nullptr, L"", KEY_READ);
    CQLMAppSettings::OpenKey(nullptr, boost::filesystem::path(), KEY_READ);
    CQLMAppSettings::CreateKey(nullptr, L"", KEY_READ);
    CQLMAppSettings::DeleteKey(nullptr, L"");
    settings.CreateKey(L"");
    settings.DeleteKey(L"");
    CQLMAppSettings::ReadValue(nullptr, L"", REG_SZ, Any<std::wstring>());
    CreateRegSubKeyAndValue(nullptr, L"", L"", L"");
    CreateRegValue(nullptr, L"", L"");

    std::wstring text;
    Lang::GetLanguage();
    Lang::SetLanguage(0);
    Lang::IsWindowsDefaultLanguage(0);
    Lang::GetAvailableTranslations();
    Lang::GetLanguageCodes(text, Any<std::vector<std::wstring>>());
    Lang::GetNamedLCID(text);
    Lang::GetLanguageLocale(0, text);
    Lang::GetLanguageName(0, text);
    Lang::GetLanguageName(text, text);
    Lang::GetLanguageAbbreviatedName(0, text);

    CResourceCounter resources(nullptr);
    resources.GetResourceDLL();
    resources.GetDLL();

    CVersion version;
    version.Initialise(L"");
    version.GetTranslation();
    version.GetCompanyName();
    version.GetProductName();
    version.GetProductVersion();
    version.GetLegalCopyright();
    version.GetComments();
    version.GetFileDescription();
    version.GetFileVersion();
    version.GetInternalName();
    version.GetLegalTrademarks();
    version.GetOriginalFileName();
    version.GetPrivateBuild();
    version.GetSpecialBuild();
    version.GetFileVersionMS();
    version.GetFileVersionLS();
    version.GetProductVersionMS();
    version.GetProductVersionLS();
    version.GetFileFlagsMask();
    version.GetFileFlags();
    version.GetFileOS();
    version.GetFileType();
    version.GetFileSubtype();
    version.GetFileDateMS();
    version.GetFileDateLS();
    version = version;
}

void Startup()
{
    InitialiseUtilityDLL();
    ZeloInitMFCExtensionDLL(nullptr, nullptr);
    utility::LoadResourceModule(L"");
}

void System()
{
    const boost::filesystem::path path;
    const std::wstring wide;
    CExeFile{L""};
    CExeFile{wide};
    const CExeFile file(path);
    file.GetErrorType();
    file.GetSecondaryHeaderOffset();
    file.GetExeType();
    Copy<CExeFile>();

    CPEExeFile{L""};
    CPEExeFile{wide};
    const CPEExeFile module(path);
    module.GetMachine();
    module.GetNumberOfSections();
    module.GetTimeDateStamp();
    module.GetCharacteristics();
    module.IsValid();
    Copy<CPEExeFile>();

    CPerfLib names(9, true, true);
    names.GetPerformanceDataCounterTitles(Any<std::map<std::wstring, int>>());
    names.GetPerformanceDataCounterHelp(Any<std::map<int, std::wstring>>());
    names.GetTitleIndex(L"");
    CPerfLib::FindObject(nullptr, 0);
    Copy<CPerfLib>();
    Move<CPerfLib>();

    const CSerialPortInfo port(L"", L"");
    port.PortName();
    port.FriendlyName();
    Copy<CSerialPortInfo>();
    Move<CSerialPortInfo>();
    EnumerateSerialPorts(Any<std::list<CSerialPortInfo>>());

    std::unique_ptr<void, int (*)(void*)> owner(nullptr, nullptr);
    CreateJob(owner, owner);
    StartInJob(nullptr, L"", owner);
    WaitForExitCode(nullptr);
    CEventSetter setter(utility::platform::Events().MakeEvent());
    CThreadPriority{0};
    CThreadPriority{nullptr, 0};
    SetThreadName(0, "");
    QLMExecute(L"", true);
    QLMShellExecute(L"", nullptr);
    static_cast<void>(utility::platform::formats::JoinCommandLine({}));
    static_cast<void>(utility::platform::formats::SplitCommandLine(L""));
}

void Text()
{
    LoadMessage(0, 0);
    LoadMessageVA(0, Any<std::va_list>());
    CResourceString{0u};
    CResourceString(nullptr, 0);
    Copy<CResourceString>();
    resource_string(0);
    resource_string(nullptr, 0);
    const std::locale locale;
    static_cast<void>(tstd::convert_impl::converter<wchar_t>::convert("", locale));
    static_cast<void>(tstd::convert_impl::converter<char>::convert(L"", locale));
    static_cast<void>(strnistr("", "", 0));
    static_cast<void>(MBCSByteCount(""));
    static_cast<void>(XMLEncode(L"", false));
    CSetCLocale{};
    Copy<CSetCLocale>();
    from_utf(std::wstring(), 0);
    from_utf(L"", 0, 0);
}

void Units()
{
    GetDistanceUnits();
    SetDistanceUnits(DISTANCE_UNITS_MM);
    GetDistanceScale();
    GetDistanceScale(DISTANCE_UNITS_MM);
    GetDistanceDescription(false);
    float narrow = 0.0F;
    double wide = 0.0;
    QLMParseDistance(L"", wide, 1.0);

    CDataExchange exchange(Any<utility::platform::Form>(), false);
    DDX_Text(&exchange, 0, std::as_const(narrow));
    DDX_Text(&exchange, 0, std::as_const(wide));
    DDX_Distance(&exchange, 0, narrow);
    DDX_Distance(&exchange, 0, wide);
    DDX_Distance(&exchange, 0, wide, std::as_const(wide));
    DDX_Distance(&exchange, 0, std::as_const(narrow));
    DDX_Distance(&exchange, 0, std::as_const(wide));
    DDV_MinFloat(&exchange, std::as_const(narrow), 0.0F);
    DDV_MaxFloat(&exchange, std::as_const(narrow), 0.0F);
    DDV_MinFloatEx(&exchange, std::as_const(narrow), 0.0F);
    DDV_MaxFloatEx(&exchange, std::as_const(narrow), 0.0F);
    DDV_FloatEx(&exchange, std::as_const(narrow), 0.0F);
    DDV_MinDouble(&exchange, std::as_const(wide), 0.0);
    DDV_MaxDouble(&exchange, std::as_const(wide), 0.0);
    DDV_MinDoubleEx(&exchange, std::as_const(wide), 0.0);
    DDV_MaxDoubleEx(&exchange, std::as_const(wide), 0.0);
    DDV_DoubleEx(&exchange, std::as_const(wide), 0.0);
    DDV_MinDistance(&exchange, std::as_const(narrow), 0.0F);
    DDV_MaxDistance(&exchange, std::as_const(narrow), 0.0F);
    DDV_MinDistanceEx(&exchange, std::as_const(narrow), 0.0F);
    DDV_MaxDistanceEx(&exchange, std::as_const(narrow), 0.0F);
    DDV_DistanceEx(&exchange, std::as_const(narrow), 0.0F);
    DDV_MinDistance(&exchange, std::as_const(wide), 0.0);
    DDV_MaxDistance(&exchange, std::as_const(wide), 0.0);
    DDV_MinDistanceEx(&exchange, std::as_const(wide), 0.0);
    DDV_MaxDistanceEx(&exchange, std::as_const(wide), 0.0);
    DDV_DistanceEx(&exchange, std::as_const(wide), 0.0);
    DDV_MinMaxDistance(&exchange, std::as_const(narrow), 0.0F, 0.0F);
    DDV_MinMaxDistance(&exchange, std::as_const(wide), 0.0, 0.0);
}

}

int main(int argumentCount, char**)
{
    if (argumentCount > 0)
        return 0;
    Codec();
    Crash();
    Desktop();
    Diagnostics();
    Failures();
    Files();
    Framework();
    Guards();
    Logging();
    Memory();
    Numbers();
    Platform();
    Records();
    Settings();
    Startup();
    System();
    Text();
    Units();
}
