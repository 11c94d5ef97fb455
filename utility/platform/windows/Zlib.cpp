#include "utility/platform/Zlib.h"

#include "utility/platform/SystemService.h"

#include <atomic>
#include <windows.h>
#include <zlib.h>

namespace utility::platform
{

namespace
{

/// What is called here is imported with its first call: zlib1.def lists it. The file that was loaded then goes with
/// this library.
class WindowsZlib final : public ZlibService
{
public:
    WindowsZlib() = default;
    WindowsZlib(const WindowsZlib&) = delete;
    WindowsZlib& operator=(const WindowsZlib&) = delete;
    ~WindowsZlib() override
    {
        if (m_isLoaded)
            ::FreeLibrary(::GetModuleHandleW(L"zlib1.dll"));
    }

    int DeflateInit(z_stream& stream, int level, const char* version, int streamSize) override
    {
        return Call(&::deflateInit_, &stream, level, version, streamSize);
    }

    int DeflateInit2(z_stream& stream, int level, int method, int windowBits, int memoryLevel, int strategy,
                     const char* version, int streamSize) override
    {
        return Call(&::deflateInit2_, &stream, level, method, windowBits, memoryLevel, strategy, version, streamSize);
    }

    int Deflate(z_stream& stream, int flush) override { return Call(&::deflate, &stream, flush); }

    int DeflateEnd(z_stream& stream) override { return Call(&::deflateEnd, &stream); }

    int InflateInit(z_stream& stream, const char* version, int streamSize) override
    {
        return Call(&::inflateInit_, &stream, version, streamSize);
    }

    int Inflate(z_stream& stream, int flush) override { return Call(&::inflate, &stream, flush); }

    int InflateEnd(z_stream& stream) override { return Call(&::inflateEnd, &stream); }

    std::uint32_t Checksum(std::uint32_t before, const void* data, std::uint32_t size) override
    {
        return Call(&::crc32, before, static_cast<const Bytef*>(data), size);
    }

private:
    template <class Result, class... Parameters, class... Arguments>
    Result Call(Result (*function)(Parameters...), Arguments... arguments)
    {
        const Result result = function(arguments...);
        m_isLoaded.store(true, std::memory_order_relaxed);
        return result;
    }

    std::atomic<bool> m_isLoaded = false;
};

}

ServiceSlot<ZlibService>& ZlibSlot() noexcept { return SystemService<ZlibService, WindowsZlib>::Slot(); }

}
