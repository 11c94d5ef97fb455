#pragma once

// A text file that issues numbered messages, and its characters. See files/InputOutputFile.h.

#include "utility/files/InputOutputFile.h"

#include <cstdint>

/// A place in a text, both counted from 1; 0 and 0 is none.
struct TextPosition
{
    std::uint64_t line = 0;   ///< the first is 1
    std::uint64_t column = 0; ///< in bytes; the first is 1

    /// Whether both are the same place.
    bool operator==(const TextPosition&) const = default;
};

class UTILITY_API CTextInputOutputFile : public CInputOutputFile
{
public:
    /// Closed.
    CTextInputOutputFile();
    /// Open to read; test IsValid afterwards.
    explicit CTextInputOutputFile(const wchar_t* path);
    explicit CTextInputOutputFile(const std::wstring& path);
    explicit CTextInputOutputFile(const boost::filesystem::path& path);
    /// An alias of the same open file, like every copy of a file object.
    CTextInputOutputFile(const CTextInputOutputFile&) = default;
    CTextInputOutputFile& operator=(const CTextInputOutputFile&) = default;
    ~CTextInputOutputFile() override;

    /// The first character of the view, null when closed.
    const char* DataPtr() const;

    /// Where a pointer into the view is, or one just behind it; none for any other. Lines end in LF, CR or CR LF. They
    /// are counted from the start of the view on each call: this is for messages.
    TextPosition PositionOf(const char* place) const;

    /// Issues the message with this number, filled with the arguments as LoadMessage does. A warning needs verbose
    /// messages too. `place` is deliberately ignored: a message tells no position.
    void IssueWarning(const char* place, int messageId, ...);
    void IssueError(const char* place, int messageId, ...);
};
