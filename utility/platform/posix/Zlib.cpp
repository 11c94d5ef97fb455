#include "utility/platform/Zlib.h"

#include "utility/platform/AtFork.h"
#include "utility/platform/SystemService.h"

#include <atomic>
#include <dlfcn.h>
#include <mutex>
#include <type_traits>
#include <utility>
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
};

/// The system's zlib stays loaded as long as the library.
class PosixZlib final : public ZlibService
{
public:
    PosixZlib() = default;
    PosixZlib(const PosixZlib&) = delete;
    PosixZlib& operator=(const PosixZlib&) = delete;
    ~PosixZlib() override
    {
        if (m_library != nullptr)
            ::dlclose(m_library);
    }

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
        // Ahead of the lock: the system's loader has one as well, and holds it while static objects of another library
        // are made, which may compress something.
        void* library = ::dlopen("libz.so.1", RTLD_NOW | RTLD_LOCAL);
        if (library == nullptr)
            return false;
        Functions found;
        const auto find = [library](const char* name, auto*& function)
        { function = reinterpret_cast<std::remove_reference_t<decltype(function)>>(::dlsym(library, name)); };
        find("deflateInit_", found.deflateInit);
        find("deflateInit2_", found.deflateInit2);
        find("deflate", found.deflate);
        find("deflateEnd", found.deflateEnd);
        find("inflateInit_", found.inflateInit);
        find("inflate", found.inflate);
        find("inflateEnd", found.inflateEnd);
        find("crc32", found.checksum);
        {
            const std::lock_guard lock(m_loading);
            if (m_library == nullptr)
            {
                m_functions = found;
                m_library = std::exchange(library, nullptr);
                m_isLoaded.store(true, std::memory_order_release);
            }
        }
        if (library != nullptr)
            ::dlclose(library);
        return true;
    }

    ForkSafeMutex m_loading;
    std::atomic<bool> m_isLoaded = false;
    void* m_library = nullptr;
    Functions m_functions;
};

}

ServiceSlot<ZlibService>& ZlibSlot() noexcept { return SystemService<ZlibService, PosixZlib>::Slot(); }

}
