// The examples in the head comments of the public headers. Each is cut out of its header as it stands there, and is
// compiled and run here, among what it takes for granted.

#include "tests/support/ForwardingLocale.h"
#include "tests/support/Gunzip.h"
#include "tests/support/KeepFloatingControl.h"
#include "tests/support/KeepNewHandler.h"
#include "tests/support/LogSettings.h"
#include "tests/support/RecordingDebugger.h"
#include "tests/support/RecordingForm.h"
#include "tests/support/RecordingMails.h"
#include "tests/support/RecordingZipLibrary.h"
#include "tests/support/ScratchHives.h"
#include "tests/support/ScriptedDesktop.h"
#include "tests/support/StripModule.h"
#include "tests/support/Substitute.h"
#include "tests/support/TemporaryFolder.h"
#include "tests/support/ThreadLog.h"
#include "utility/platform/Clipboard.h"
#include "utility/platform/Jobs.h"
#include "utility/platform/Modules.h"
#include "utility/platform/Programs.h"
#include "utility/platform/ThreadPriorities.h"
#include "utility/Utility.h"

#include <boost/filesystem/operations.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <list>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>
#include <zlib.h>

#undef assert
#define assert(condition) EXPECT_TRUE(condition)

using support::Logged;
using support::NewOwner;
using support::TakeLog;
using utility::platform::Modules;
using utility::platform::Registry;

namespace
{

/// In a folder of its own, with what the examples show.
class HeaderExampleTest : public testing::Test
{
protected:
    HeaderExampleTest()
    {
        boost::filesystem::current_path(m_folder.Path());
        shown.clear();
    }
    ~HeaderExampleTest() override { boost::filesystem::current_path(m_earlier); }

    template <class... Values>
    static void Show(const Values&... values)
    {
        std::wostringstream stream;
        ((stream << values << L'|'), ...);
        shown += stream.str();
    }

    static boost::filesystem::path TestModules() { return UTILITY_TEST_MODULES; }

    static inline std::wstring shown;

    const boost::filesystem::path m_earlier = boost::filesystem::current_path();
    const support::TemporaryFolder m_folder;
    const support::LogSettings m_logSettings;
    const support::ThreadLog m_log;
};

std::wstring console;

/// Gives the debugger's output back to the system.
struct KeepDebuggerSink
{
    utility::platform::DebuggerSink earlier =
        utility::platform::SetDebuggerSink([](const wchar_t* text) { console = text; });
    ~KeepDebuggerSink() { utility::platform::SetDebuggerSink(earlier); }
};

}

TEST_F(HeaderExampleTest, BlastDecoder)
{
    std::string compressed("\x00\x05\x90\x94\x61\xC3\xE6\x0D\x88\x2B\x6F\xE4\xB0\x21\x13\x12\xF0\x0F", 18);
    const auto GiveBlock = [](void* context, const unsigned char** block)
    {
        const auto& bytes = *static_cast<const std::string*>(context);
        *block = reinterpret_cast<const unsigned char*>(bytes.data());
        return static_cast<std::uint32_t>(bytes.size());
    };
    std::string expanded;
    const auto Take = [&expanded](const unsigned char* bytes, std::uint64_t size)
    { expanded.append(reinterpret_cast<const char*>(bytes), size); };
#include "codec/BlastDecoder.example"
    EXPECT_EQ(code, 1);
    EXPECT_EQ(expanded, "Hello World!");
}

TEST_F(HeaderExampleTest, CyclicRedundancyCheck){
#include "codec/CyclicRedundancyCheck.example"
}

TEST_F(HeaderExampleTest, VRMLFile)
{
#include "codec/VRMLFile.example"
    EXPECT_EQ(support::Gunzip(m_folder.BytesOf("part.wrl.gz")),
              "#VRML V2.0 utf8\nShape { geometry Sphere { radius 5 } }\n");
}

TEST_F(HeaderExampleTest, ZEngine)
{
    Bytef text[] = "to compress, to compress, to compress";
    const uInt textSize = sizeof(text);
    Bytef compressed[100];
    const uInt roomForCompressed = sizeof(compressed);
#include "codec/ZEngine.example"
    EXPECT_TRUE(isDone);
    EXPECT_LT(stream.total_out, sizeof(text));
}

TEST_F(HeaderExampleTest, Zip)
{
    support::RecordingZipLibrary library;
    const support::Substitute<utility::platform::ZipLibraryService> scope(utility::platform::ZipLibrarySlot(), library);
#include "codec/Zip.example"
    EXPECT_TRUE(isWritten);
    EXPECT_EQ(library.entries, (std::vector<std::string>{"-UN=UTF8", "moves.nc", "plate.igs"}));
}

TEST_F(HeaderExampleTest, ZeloImageList)
{
    support::StripModule();
    struct
    {
        void SetImages(UINT kind, HIMAGELIST list) { isSet = kind == TB_SETDISABLEDIMAGELIST && list != nullptr; }
        bool isSet = false;
    } toolbar;
    const auto ShowDisabled = [&]
    {
#include "desktop/ZeloImageList.example"
        EXPECT_EQ(images.GetImageCount(), 0); // of images that are wider than the strip
        return true;
    };
    EXPECT_TRUE(ShowDisabled());
    EXPECT_TRUE(toolbar.isSet);
}

TEST_F(HeaderExampleTest, ImageList){
#include "framework/ImageList.example"
}

TEST_F(HeaderExampleTest, ReportLog)
{
    const void* const database = NewOwner();
#include "crash/ReportLog.example"
    EXPECT_EQ(TakeLog(database), (std::vector<Logged>{{LogSeverityInformation, L"Tool change\n"}}));
}

TEST_F(HeaderExampleTest, SETranslator)
{
    const int part = 7;
    const auto Read = [](int) {};
#include "crash/SETranslator.example"
    EXPECT_EQ(shown, L"");
}

TEST_F(HeaderExampleTest, UnhandledExceptionFilter){
#include "crash/UnhandledExceptionFilter.example"
}

TEST_F(HeaderExampleTest, Clipboard)
{
    struct : utility::platform::ClipboardService
    {
        bool SetText(const wchar_t*) override { return false; }
    } none;
    const support::Substitute<utility::platform::ClipboardService> scope(utility::platform::ClipboardSlot(), none);
#include "desktop/Clipboard.example"
    EXPECT_EQ(shown, L"The clipboard cannot be had.|");
}

TEST_F(HeaderExampleTest, Keys)
{
    support::ScriptedDesktop desktop;
    desktop.keyThatIsDown = 0x10;
#include "desktop/Keys.example"
    EXPECT_TRUE(isCopy);
}

TEST_F(HeaderExampleTest, SizedRecords){
#include "desktop/SizedRecords.example"
}

TEST_F(HeaderExampleTest, WindowClasses){
#include "desktop/WindowClasses.example"
}

TEST_F(HeaderExampleTest, RegistryKeyNames){
#include "settings/RegistryKeyNames.example"
}

TEST_F(HeaderExampleTest, Libraries){
#include "system/Libraries.example"
}

TEST_F(HeaderExampleTest, Machine)
{
    std::atomic<DWORD> milled = 0;
    const auto Mill = [&] { ++milled; };
#include "system/Machine.example"
    for (std::thread& worker : workers)
        worker.join();
    EXPECT_EQ(milled, GetNumberOfProcessors());
}

TEST_F(HeaderExampleTest, Users){
#include "system/Users.example"
}

TEST_F(HeaderExampleTest, MessageBoxes)
{
    support::ScriptedDesktop desktop;
#include "desktop/MessageBoxes.example"
    EXPECT_EQ(desktop.shown.size(), 2u);
}

TEST_F(HeaderExampleTest, SendMail)
{
    support::RecordingMails mails;
    const support::Substitute<utility::platform::MailService> scope(utility::platform::MailsSlot(), mails);
    const auto send = [] {
#include "desktop/SendMail.example"
    };
    send();
    EXPECT_EQ(mails.record.mails.size(), 1u);
    EXPECT_EQ(shown, L"");
    mails.isThere = false;
    send();
    EXPECT_EQ(shown, L"No mail program was found.|");
}

TEST_F(HeaderExampleTest, Assertions)
{
    const int count = 0;
#include "diagnostics/Assertions.example"
}

TEST_F(HeaderExampleTest, Failures)
{
    const char text[] = "part";
    const char* const cursor = text;
    try
    {
#include "failures/Failures.example"
        FAIL();
    }
    catch (const CTextRecordException& failure)
    {
        EXPECT_EQ(failure.Place(), text);
        EXPECT_NE(std::strstr(failure.what(), "Invalid character"), nullptr);
    }
}

TEST_F(HeaderExampleTest, BackupFile)
{
    m_folder.File("part.nc", "old");
    {
#include "files/BackupFile.example"
    } EXPECT_EQ(m_folder.BytesOf("part.nc"), "N10 G01\n");
}

TEST_F(HeaderExampleTest, ChangeDirectoryTemporarily)
{
    create_directory(m_folder / "parts");
    m_folder.File("parts/part.igs", "part");
#include "files/ChangeDirectoryTemporarily.example"
    EXPECT_EQ(file.GetFileSize(), 4u);
}

TEST_F(HeaderExampleTest, FileNames)
{
    const support::ScratchHives hives;
#include "files/FileNames.example"
    EXPECT_EQ(help, "help.txt");
}

TEST_F(HeaderExampleTest, NamedFiles)
{
    m_folder.File("tools.bak", "drill");
#include "files/NamedFiles.example"
    EXPECT_EQ(m_folder.BytesOf("tools.dat"), "drill");
}

TEST_F(HeaderExampleTest, Places)
{
#include "files/Places.example"
    EXPECT_EQ(templates.filename(), "templates");
    EXPECT_TRUE(templates.is_absolute());
}

TEST_F(HeaderExampleTest, BinaryFile)
{
#include "files/BinaryFile.example"
    using namespace std::string_literals;
    EXPECT_EQ(m_folder.BytesOf("mesh.bin"), "MESH\3\0\0\0\0\0\xC0\x3F"s);
}

TEST_F(HeaderExampleTest, TextFile)
{
#include "files/TextFile.example"
    EXPECT_EQ(m_folder.BytesOf("moves.nc"), "N10 G01 X10.500\n");
}

TEST_F(HeaderExampleTest, InputOutputFile)
{
    SetLogDebugMessages(true);
    const auto LooksRight = [](const void* bytes) { return *static_cast<const char*>(bytes) == 'S'; };
    const int messageId = 8304;
    const boost::filesystem::path path = m_folder.File("part.igs", "part");
#include "files/InputOutputFile.example"
    EXPECT_EQ(m_log.Take(), (std::vector<Logged>{{LogSeverityError, L"mm\n"}}));
}

TEST_F(HeaderExampleTest, MemoryMappedFile)
{
    std::string scanned;
    const auto Scan = [&scanned](const char* bytes, std::uint64_t size) { scanned.assign(bytes, size); };
    m_folder.File("part.igs", "part");
#include "files/MemoryMappedFile.example"
    EXPECT_EQ(scanned, "part");
}

TEST_F(HeaderExampleTest, Exception)
{
    CMemoryMappedFile file;
#include "framework/Exception.example"
    EXPECT_NE(shown.find(L"part.igs"), std::wstring::npos);
}

TEST_F(HeaderExampleTest, String){
#include "framework/String.example"
}

TEST_F(HeaderExampleTest, Locks)
{
    int shared = 0;
    const auto Change = [](int& value) { ++value; };
#include "guards/Locks.example"
    EXPECT_EQ(shared, 1);
}

TEST_F(HeaderExampleTest, ResourcePtr)
{
    const support::ScratchHives hives;
    const auto open = []() -> resource_ptr<HKEY>
    {
#include "guards/ResourcePtr.example"
        return {};
    };
    EXPECT_EQ(open(), nullptr);
    HKEY made = nullptr;
    Registry().RegCreateKeyW(HKEY_CURRENT_USER, L"SOFTWARE\\Selvane", made);
    Registry().RegCloseKey(made);
    EXPECT_NE(open(), nullptr);
}

TEST_F(HeaderExampleTest, DebugStream)
{
    const KeepDebuggerSink keep;
    const int hits = 1;
    const int reads = 2;
#include "logging/DebugStream.example"
    EXPECT_EQ(console, L"cache 1 of 2\n");
}

TEST_F(HeaderExampleTest, LogMessages)
{
    const void* const database = NewOwner();
    CLogMessages::instance(database).push(LogSeverityError, L"worn\n");
#include "logging/LogMessages.example"
    EXPECT_EQ(shown, L"4|worn\n|");
}

TEST_F(HeaderExampleTest, LogStream)
{
    const void* const database = NewOwner();
    const int number = 7;
#include "logging/LogStream.example"
    EXPECT_EQ(TakeLog(database), (std::vector<Logged>{{LogSeverityWarning, L"Tool 7 is worn\n"}}));
}

TEST_F(HeaderExampleTest, ThreadDatabase)
{
    struct
    {
        CEntityDatabase* Database() { return reinterpret_cast<CEntityDatabase*>(this); }
        char it;
    } job;
#include "logging/ThreadDatabase.example"
    EXPECT_EQ(TakeLog(&job), (std::vector<Logged>{{LogSeverityWarning, L"No tool\n"}}));
}

TEST_F(HeaderExampleTest, ThreadTimer)
{
    const auto Compute = [] {};
#include "logging/ThreadTimer.example"
    EXPECT_LT(milliseconds, 60000u);
}

TEST_F(HeaderExampleTest, TimeLogger)
{
    const support::LogSettings settings;
    SetLogDebugMessages(true);
    const auto* const database = static_cast<const CPlanDatabase*>(NewOwner());
    const auto ReadPart = [] {};
    const auto ComputePaths = [] {};
#include "logging/TimeLogger.example"
    const auto messages = TakeLog(database);
    ASSERT_EQ(messages.size(), 1u);
    EXPECT_NE(messages[0].text.find(L" read\n"), std::wstring::npos);
    EXPECT_EQ(messages[0].text.substr(messages[0].text.size() - 12), L" tool paths\n");
}

TEST_F(HeaderExampleTest, MemoryReport)
{
    const KeepDebuggerSink keep;
#include "memory/MemoryReport.example"
    EXPECT_NE(console.find(L" percent in use, " + std::to_wstring(committed)), std::wstring::npos);
}

TEST_F(HeaderExampleTest, NewHandler)
{
    const support::KeepNewHandler keep;
#include "memory/NewHandler.example"
}

TEST_F(HeaderExampleTest, NodeAllocator)
{
#include "memory/NodeAllocator.example"
    EXPECT_EQ(pool.allocate(24), node);
}

namespace
{

#include "memory/ThreadAllocator.example"

}

TEST_F(HeaderExampleTest, ThreadAllocator) { std::thread(&Work).join(); }

TEST_F(HeaderExampleTest, ThreadNodeAllocator)
{
    struct Tool
    {
    };
    const CThreadAllocatorManager manager;
#include "memory/ThreadNodeAllocator.example"
    EXPECT_TRUE(tools.try_emplace(1).second);
}

TEST_F(HeaderExampleTest, FloatFormat){
#include "numbers/FloatFormat.example"
}

TEST_F(HeaderExampleTest, FloatHygiene)
{
    const support::KeepFloatingControl keep;
#include "numbers/FloatHygiene.example"
}

TEST_F(HeaderExampleTest, DataExchange)
{
    support::RecordingForm form;
    form.fields[1001];
    double diameter = 6.0;
    const auto edit = [&]
    {
        EXPECT_EQ(form.fields[1001], L"6");
        form.fields[1001] = L"12";
    };
#include "framework/DataExchange.example"
}

TEST_F(HeaderExampleTest, DialogData)
{
    struct
    {
        float diameter = 6.0F;
        double weight = 0.5;
    } tool;
    support::RecordingForm form;
    form.fields[1001] = L"12";
    form.fields[1002];
    CDataExchange save(form, true);
    CDataExchange* const exchange = &save;
#include "units/DialogData.example"
    EXPECT_EQ(tool.diameter, 12.0F);
    EXPECT_EQ(form.fields[1002], L"0.5");
}

TEST_F(HeaderExampleTest, TerminalForm)
{
    std::istringstream in("1\n2\n3\n");
    std::ostringstream out;
    const auto show = [](utility::platform::Form& form) { form.SetText(1001, L"0"); };
    const auto save = [](utility::platform::Form& form)
    {
        wchar_t text[2];
        form.Text(1002, text, 2);
        form.Focus(1002);
        return text[0] == L'3';
    };
#include "framework/TerminalForm.example"
    EXPECT_EQ(out.str(), "Diameter [0]: Length []: Length [2]: ");
}

TEST_F(HeaderExampleTest, Distances)
{
#include "units/Distances.example"
    SetDistanceUnits(DISTANCE_UNITS_MM);
}

TEST_F(HeaderExampleTest, FloatParse){
#include "numbers/FloatParse.example"
}

TEST_F(HeaderExampleTest, PowersOfTen){
#include "numbers/PowersOfTen.example"
}

TEST_F(HeaderExampleTest, StatSeries)
{
    const double measured[] = {1.0, 3.0};
#include "numbers/StatSeries.example"
    EXPECT_EQ(shown, L"1|3|2|");
}

TEST_F(HeaderExampleTest, DebuggerSink)
{
    const KeepDebuggerSink keep;
    console.clear();
#include "platform/DebuggerSink.example"
}

TEST_F(HeaderExampleTest, Registry)
{
    const support::ScratchHives hives;
    const auto List = [](HKEY key) { Show(key != nullptr); };
#include "platform/Registry.example"
    EXPECT_EQ(shown, L"");
}

TEST_F(HeaderExampleTest, InputRecordPtr)
{
    CInputOutputFile file;
    const int messageId = 8300;
    unsigned char block[512] = {7};
#include "records/InputRecordPtr.example"
    EXPECT_EQ(count, 7);
    EXPECT_EQ(length, 0.0);
}

TEST_F(HeaderExampleTest, RecordLines)
{
    const char line[162] = "S";
#include "records/RecordLines.example"
    EXPECT_EQ(record.Lines().size(), 2U);
}

TEST_F(HeaderExampleTest, TextRecordPtr)
{
    CTextInputOutputFile file;
    const char line[] = "1.5,";
    const std::size_t length = 4;
#include "records/TextRecordPtr.example"
    EXPECT_EQ(x, 1.5);
    EXPECT_TRUE(cursor.IsEndOfRecord());
}

namespace
{

#include "records/InlineTextRecordPtr.example"

}

TEST_F(HeaderExampleTest, InlineTextRecordPtr)
{
    CTextInputOutputFile file;
    const char line[] = "1.5,";
    CommaCursor cursor(&file);
    cursor.Add(line, line + 3);
    double value = 0.0;
    EXPECT_TRUE(cursor.ReadReal(value));
    EXPECT_EQ(value, 1.5);
}

TEST_F(HeaderExampleTest, DelimitedTextRecordPtr)
{
    CTextInputOutputFile file;
    const std::string line = "110,1.5,-2.5D-1," + std::string(48, ' ') + " 0000001P      1\n7;" + std::string(62, ' ');
    const char* const first = line.data();
    {
        const char* const line = first;
#include "records/DelimitedTextRecordPtr.example"
        EXPECT_EQ(count, 4U);
        EXPECT_EQ(values[2], -0.25);
        EXPECT_EQ(values[3], 7.0);
        EXPECT_TRUE(isWhole);
    }
}

TEST_F(HeaderExampleTest, Lang)
{
    const support::ScratchHives hives;
#include "settings/Lang.example"
}

TEST_F(HeaderExampleTest, ResourceCounter)
{
    struct UnchangedLocale : support::ForwardingLocale
    {
        bool SetThreadLocale(LCID) override { return true; }
        bool SetRuntimeLocale(const wchar_t*) override { return true; }
    };
    const UnchangedLocale locale;
    const HINSTANCE module = Modules().Load((TestModules() / "Resources.dll").wstring().c_str());
#include "settings/ResourceCounter.example"
    EXPECT_FALSE(text.empty());
}

TEST_F(HeaderExampleTest, Version)
{
    support::TemporaryFolder::Copy(TestModules() / "WholeVersion.dll", "app.exe");
#include "settings/Version.example"
    EXPECT_EQ(shown.substr(0, 13), L"the \"product\"");
}

TEST_F(HeaderExampleTest, ExeFile)
{
    support::TemporaryFolder::Copy(TestModules() / "WholeVersion.dll", "app.exe");
#include "system/ExeFile.example"
    EXPECT_EQ(shown, L"0|");
}

TEST_F(HeaderExampleTest, ThreadName)
{
    support::RecordingDebugger debugger;
    debugger.isPresent = true;
    const DWORD threadId = 7;
#include "diagnostics/ThreadName.example"
    EXPECT_EQ(debugger.names.at(0).second, "tool paths");
}

TEST_F(HeaderExampleTest, EventSetter)
{
#include "guards/EventSetter.example"
    EXPECT_EQ(shown, L"0|");
}

TEST_F(HeaderExampleTest, ThreadPriority)
{
    using utility::platform::ThreadPriorities;
    const auto Recalculate = [] { Show(ThreadPriorities().Priority(ThreadPriorities().CallingThread())); };
#include "guards/ThreadPriority.example"
    EXPECT_NE(shown, L"");
}

TEST_F(HeaderExampleTest, CommandLine)
{
    using namespace utility::platform::formats;
#include "platform/formats/CommandLine.example"
}

TEST_F(HeaderExampleTest, Jobs)
{
    struct OneCommand final : utility::platform::JobService
    {
        HANDLE MakeJob() override { return utility::platform::Events().MakeEvent(); }
        bool KillOnClose(HANDLE) override { return true; }
        HANDLE Watch(HANDLE) override { return MakeJob(); }
        HANDLE StartIn(HANDLE, const wchar_t* line) override
        {
            Show(line);
            return MakeJob();
        }
        std::optional<DWORD> WaitForExitCode(HANDLE, DWORD) override { return 3; }
    } jobs;
    const support::Substitute<utility::platform::JobService> scope(utility::platform::JobsSlot(), jobs);
#include "system/Jobs.example"
    EXPECT_EQ(shown, L"mill \"part 7.igs\"|3|");
}

TEST_F(HeaderExampleTest, Programs)
{
    struct ShownPrograms final : utility::platform::ProgramService
    {
        bool Run(wchar_t* line, utility::platform::UntilItEnds) override
        {
            Show(line);
            return true;
        }
        std::intptr_t Open(const wchar_t* file, const wchar_t* parameters) override
        {
            Show(file, parameters);
            return 33;
        }
    } programs;
    const support::Substitute<utility::platform::ProgramService> scope(utility::platform::ProgramsSlot(), programs);
#include "system/Programs.example"
    EXPECT_EQ(shown, L"convert \"part 7.igs\" part7.stl|part7.pdf||");
}

TEST_F(HeaderExampleTest, PerfLib)
{
    support::ScratchHives hives;
    HKEY key = nullptr;
    hives.RegCreateKeyW(HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Perflib\\009", key);
    const std::u16string table(u"238\0Processor\0\0", 15);
    hives.RegSetValueExW(key, L"Counter", REG_MULTI_SZ, table.data(), static_cast<DWORD>(table.size() * 2));
    hives.RegCloseKey(key);
    struct
    {
        _PERF_DATA_BLOCK header{};
        _PERF_OBJECT_TYPE object{};
    } data;
    _PERF_DATA_BLOCK& block = data.header;
    block.TotalByteLength = sizeof(data);
    block.HeaderLength = sizeof(block);
    block.NumObjectTypes = 1;
    data.object.ObjectNameTitleIndex = 238;
    data.object.NumCounters = 15;
#include "system/PerfLib.example"
    EXPECT_EQ(shown, L"15|");
}

TEST_F(HeaderExampleTest, SerialPorts)
{
#include "system/SerialPorts.example"
    EXPECT_EQ(static_cast<std::size_t>(std::ranges::count(shown, L'|')), ports.size());
}

TEST_F(HeaderExampleTest, Messages){
#include "text/Messages.example"
}

TEST_F(HeaderExampleTest, Conversion){
#include "text/Conversion.example"
}

TEST_F(HeaderExampleTest, NarrowText){
#include "text/NarrowText.example"
}

TEST_F(HeaderExampleTest, SetCLocale)
{
    char text[32];
#include "text/SetCLocale.example"
}

TEST_F(HeaderExampleTest, XMLEncode){
#include "text/XMLEncode.example"
}

TEST_F(HeaderExampleTest, ResourceString)
{
#include "text/ResourceString.example"
}

namespace
{

// These two are for the rest of a process.

[[noreturn]] void UseSettings()
{
    const support::ScratchHives hives;
#include "settings/AppSettings.example"
    std::exit(testing::Test::HasFailure() ? 1 : 0);
}

[[noreturn]] void MoveHive()
{
    const support::TemporaryFolder folder;
#include "platform/Hives.example"
    std::exit(utility::platform::HiveFile(HKEY_CURRENT_USER).filename() == "settings.db" ? 0 : 1);
}

}

TEST_F(HeaderExampleTest, AppSettings)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(UseSettings(), testing::ExitedWithCode(0), "");
}

TEST_F(HeaderExampleTest, Hives)
{
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    // On Windows the registry stays where it is.
    EXPECT_EXIT(MoveHive(), testing::ExitedWithCode(sizeof(wchar_t) == 2 ? 1 : 0), "");
}
