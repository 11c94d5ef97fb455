#include "utility/logging/DebugStream.h"

#include "utility/platform/Debugger.h"

DebugStream::DebugStreamBuf::DebugStreamBuf() = default;

DebugStream::DebugStreamBuf::~DebugStreamBuf() = default;

int DebugStream::DebugStreamBuf::sync()
{
    utility::platform::Debugger().Output(str().c_str());
    str(std::wstring());
    return 0;
}

DebugStream::DebugStream() : std::basic_ostream<wchar_t>(nullptr) { rdbuf(&m_buffer); }

DebugStream::~DebugStream() { m_buffer.pubsync(); }

DebugStreamHelper::DebugStreamHelper() = default;

DebugStreamHelper::~DebugStreamHelper() = default;

const DebugStreamHelper&
DebugStreamHelper::operator<<(std::basic_ostream<wchar_t>& (*manipulator)(std::basic_ostream<wchar_t>&)) const
{
    m_stream << manipulator;
    return *this;
}

DebugStreamHelper dbg() { return DebugStreamHelper(); }
