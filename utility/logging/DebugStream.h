#pragma once

// Text for the debugger's output, with no filter and no line feed added.
//
//     dbg() << L"cache " << hits << L" of " << reads << L"\n";
//
// What was inserted is sent when the object that dbg() gave dies, which is the end of the statement, and at each
// std::flush or std::endl. A stream that was not used still sends an empty text. One stream, one thread.

#include "utility/platform/Export.h"

#include <ostream>
#include <sstream>

class UTILITY_API DebugStream : public std::basic_ostream<wchar_t>
{
public:
    /// Where the text is kept until it is sent.
    class UTILITY_API DebugStreamBuf : public std::basic_stringbuf<wchar_t>
    {
    public:
        /// Empty.
        DebugStreamBuf();
        ~DebugStreamBuf() override;

    protected:
        /// Sends what was put in, up to its first null character, also if it is nothing.
        int sync() override;
    };

    /// Nothing is sent yet.
    DebugStream();
    /// Sends what is left.
    ~DebugStream() override;

private:
    DebugStreamBuf m_buffer;
};

/// What dbg() gives: a stream for one statement.
class UTILITY_API DebugStreamHelper
{
public:
    /// Nothing is sent yet.
    DebugStreamHelper();
    DebugStreamHelper(const DebugStreamHelper&) = delete;
    DebugStreamHelper& operator=(const DebugStreamHelper&) = delete;
    /// Sends what is left.
    ~DebugStreamHelper();

    /// Manipulators, such as std::flush and std::endl, which send what was inserted so far.
    const DebugStreamHelper&
    operator<<(std::basic_ostream<wchar_t>& (*manipulator)(std::basic_ostream<wchar_t>&)) const;

    /// Whatever can be inserted into a wide stream.
    template <class T>
    const DebugStreamHelper& operator<<(const T& value) const
    {
        m_stream << value;
        return *this;
    }

private:
    mutable DebugStream m_stream;
};

/// A stream to the debugger's output, for one statement.
UTILITY_API DebugStreamHelper dbg();
