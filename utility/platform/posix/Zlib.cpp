#include "utility/platform/Zlib.h"

#include "utility/platform/AtFork.h"
#include "utility/platform/posix/modules/SystemLibrary.h"
#include "utility/platform/SystemService.h"

#include <atomic>
#include <zlib.h>

namespace utility::platform
{

namespace
{

struct Functions
{
    decltype(&::deflateInit_) deflateInit = nullptr;
    decltype(&::deflateInit2_) deflateInit2 = nullptr;
    decltype(&::deflate) deflate = nullptr;
    decltype(&::deflateEnd) deflateEnd = nullptr;
    decltype(&::inflateInit_) inflateInit = nullptr;
    decltype(&::inflate) inflate = nullptr;
    decltype(&::inflateEnd) inflateEnd = nullptr;
    decltype(&::crc32) checksum = nullptr;

    bool FindIn(void* library)
    {
        using posix::FindFunction;
        return FindFunction(library, "deflateInit_", deflateInit) &&
               FindFunction(library, "deflateInit2_", deflateInit2) && FindFunction(library, "deflate", deflate) &&
               FindFunction(library, "deflateEnd", deflateEnd) && FindFunction(library, "inflateInit_", inflateInit) &&
               FindFunction(library, "inflate", inflate) && FindFunction(library, "inflateEnd", inflateEnd) &&
               FindFunction(library, "crc32", checksum);
    }
};

/// The system's zlib stays loaded as long as the library.
class PosixZlib final : public ZlibService
{
public:
    PosixZlib() = default;
    PosixZlib(const PosixZlib&) = delete;
    PosixZlib& operator=(const PosixZlib&) = delete;
    ~PosixZlib() override { m_library.Unload(); }

    int DeflateInit(z_stream& stream, int level, const char* version, int streamSize) override
    {
        return Call(&Functions::deflateInit, &stream, level, version, streamSize);
    }

    int DeflateInit2(z_stream& stream, int level, int method, int windowBits, int memoryLevel, int strategy,
                     const char* version, int streamSize) override
    {
        return Call(&Functions::deflateInit2, &stream, level, method, windowBits, memoryLevel, strategy, version,
                    streamSize);
    }

    int Deflate(z_stream& stream, int flush) override { return Call(&Functions::deflate, &stream, flush); }

    int DeflateEnd(z_stream& stream) override { return Call(&Functions::deflateEnd, &stream); }

    int InflateInit(z_stream& stream, const char* version, int streamSize) override
    {
        return Call(&Functions::inflateInit, &stream, version, streamSize);
    }

    int Inflate(z_stream& stream, int flush) override { return Call(&Functions::inflate, &stream, flush); }

    int InflateEnd(z_stream& stream) override { return Call(&Functions::inflateEnd, &stream); }

    std::uint32_t Checksum(std::uint32_t before, const void* data, std::uint32_t size) override
    {
        const auto checksum = Loaded().checksum;
        if (checksum == nullptr)
            return 0;
        return static_cast<std::uint32_t>(checksum(before, static_cast<const Bytef*>(data), size));
    }

private:
    template <class Function, class... Arguments>
    int Call(Function* Functions::*function, Arguments... arguments)
    {
        Function* const found = Loaded().*function;
        return found != nullptr ? found(arguments...) : Z_VERSION_ERROR;
    }

    /// All are null where there is no zlib.
    const Functions& Loaded()
    {
        static constexpr Functions none;
        return m_isLoaded.load(std::memory_order_acquire) || Load() ? m_functions : none;
    }

    bool Load()
    {
        const bool isLoaded = m_library.Load("libz.so.1", m_functions, m_loading);
        if (isLoaded)
            m_isLoaded.store(true, std::memory_order_release);
        return isLoaded;
    }

    ForkSafeMutex m_loading;
    std::atomic<bool> m_isLoaded = false;
    posix::SystemLibrary m_library;
    Functions m_functions;
};

}

ServiceSlot<ZlibService>& ZlibSlot() noexcept { return SystemService<ZlibService, PosixZlib>::Slot(); }

}
