#include "utility/platform/Clipboard.h"

#include "utility/platform/formats/Utf8.h"
#include "utility/platform/posix/descriptors/Descriptor.h"
#include "utility/platform/posix/display/Display.h"
#include "utility/platform/posix/programs/RunProgram.h"
#include "utility/platform/SystemService.h"

#include <chrono>
#include <string>
#include <sys/mman.h>
#include <unistd.h>
#include <vector>

namespace utility::platform
{

namespace
{

/// A text is with the program that offers it to others; there are some that do so until the next text.
class PosixClipboard final : public ClipboardService
{
public:
    bool SetText(const wchar_t* text) override
    {
        // A file cannot break as a pipe does, nor does anybody wait for the one who reads it.
        const posix::Descriptor file(::memfd_create("clipboard", MFD_CLOEXEC));
        return file && posix::WriteAll(file.Number(), formats::Utf8FromWide(text)) && Offer(file.Number());
    }

private:
    static bool Offer(int text)
    {
        using Clock = std::chrono::steady_clock;
        const auto end = Clock::now() + std::chrono::seconds(5);
        // The program goes on by itself once it has taken the text, which is a moment's work.
        const auto takes = [&](const std::vector<std::string>& program)
        {
            const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now()).count();
            if (left <= 0 || ::lseek(text, 0, SEEK_SET) != 0)
                return false;
            const auto run = posix::RunProgram(program, {.input = text, .milliseconds = static_cast<DWORD>(left)});
            return run && run->exitCode == 0;
        };
        return (posix::HasWayland() && takes({"wl-copy", "--type", "text/plain"})) ||
               (posix::HasX11() &&
                (takes({"xclip", "-in", "-selection", "clipboard"}) || takes({"xsel", "--input", "--clipboard"})));
    }
};

}

ServiceSlot<ClipboardService>& ClipboardSlot() noexcept
{
    return SystemService<ClipboardService, PosixClipboard>::Slot();
}

}
