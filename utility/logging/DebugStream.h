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
    class UTILITY_API DebugStreamBuf : public std::basic_stringbuf<wchar_t>
    {
    public:
        DebugStreamBuf();
        ~DebugStreamBuf() override;

    protected:
        /// Sends what was put in, up to its first null character, also if it is nothing.
        int sync() override;
    };

    DebugStream();
    /// Sends what is left.
    ~DebugStream() override;

private:
    DebugStreamBuf m_buffer;
};

class UTILITY_API DebugStreamHelper
{
public:
    DebugStreamHelper();
    DebugStreamHelper(const DebugStreamHelper&) = delete;
    DebugStreamHelper& operator=(const DebugStreamHelper&) = delete;
    ~DebugStreamHelper();

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

UTILITY_API DebugStreamHelper dbg();
