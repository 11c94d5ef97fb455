#pragma once

#include "tests/support/TemporaryFolder.h"

#include <boost/filesystem/path.hpp>

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace support
{

/// A program that crashes as it is told to, and the folder that its reports go to.
class Crasher
{
public:
    /// How a run ended.
    struct End
    {
        bool isCrash = false;      ///< by a signal, or on Windows by an exception
        std::uint32_t outcome = 0; ///< the signal, the exception's code, or what the program returned
        bool hasCore = false;      ///< Linux: and left an image of its memory
        std::string output;        ///< Linux: what it wrote on its output and its error stream
    };

#ifdef _WIN32
    static constexpr bool readsRegistersAsAddresses = true; ///< a report reads a variable's address, wherever it is
#else
    static constexpr bool readsRegistersAsAddresses = false;
#endif

    /// `program` is the file name of one that the build has made.
    explicit Crasher(const char* program);
    Crasher(const Crasher&) = delete;
    Crasher& operator=(const Crasher&) = delete;
    ~Crasher();

    /// Runs it to its end. Linux: after `inside`, which is called in the new process.
    End Run(const std::string& cause, const std::function<void()>& inside = nullptr);

    /// How long a run may take. Then it is ended, and says so.
    void SetPatience(std::chrono::milliseconds patience) { m_patience = patience; }

    /// Linux: sends the program a signal as soon as it has written that it is ready.
    void SendWhenReady(int signal) { m_signalWhenReady = signal; }

    /// The program's path as it is started.
    const boost::filesystem::path& Program() const { return m_program; }
    /// Has a copy of the program with this name run in its place, in a folder that has nothing else.
    void UseCopy(const boost::filesystem::path& name);

    /// The same as a report has it.
    std::string PathInReport() const;

    /// A folder for what is needed. Linux: it is the program's current one.
    const TemporaryFolder& Folder() const { return m_folder; }
    /// Linux: the folder for the data of the user's programs. It is there for the asking.
    boost::filesystem::path DataFolder() const;
    /// The folder that the reports of the program are in, if there are any.
    boost::filesystem::path ReportFolder() const;
    /// The reports, in order.
    std::vector<boost::filesystem::path> Reports() const;
    /// The text of the one report that there has to be, else nothing.
    std::string Report() const;
    /// The bytes of a report, with one character for each end of a line.
    static std::string TextOf(const boost::filesystem::path& report);

private:
    TemporaryFolder m_folder;
    boost::filesystem::path m_program;
    int m_signalWhenReady = 0;
    std::chrono::milliseconds m_patience = std::chrono::seconds(60);
};

/// What a reader of XML that others have made says against a text; nothing if it is well-formed.
std::string ComplaintAbout(const std::string& xml);

}
