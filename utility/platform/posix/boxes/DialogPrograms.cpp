#include "utility/platform/posix/boxes/DialogPrograms.h"

#include "utility/platform/posix/programs/RunProgram.h"

#include <optional>
#include <string>

namespace utility::platform::posix
{

namespace
{

std::optional<BoxAnswer> AnswerOf(const std::string& output, const char* abort, const char* retry, const char* ignore)
{
    return output == abort    ? std::optional(BoxAnswer::abort)
           : output == retry  ? std::optional(BoxAnswer::retry)
           : output == ignore ? std::optional(BoxAnswer::ignore)
                              : std::nullopt;
}

}

std::optional<BoxAnswer> AskByDialogProgram(const char* title, const char* text)
{
    // Its first button has the focus, and is the one to be pressed by mistake.
    const char* const zenity[] = {
        "zenity",         "--question", "--switch",       "--no-markup", "--title",        title,   "--text", text,
        "--extra-button", "Ignore",     "--extra-button", "Retry",       "--extra-button", "Abort", nullptr};
    // Its answer is its exit code, which the shell writes.
    const char* const kdialog[] = {"/bin/sh",
                                   "-c",
                                   "kdialog \"$@\"; echo $?",
                                   "sh",
                                   "--title",
                                   title,
                                   "--yes-label",
                                   "Abort",
                                   "--no-label",
                                   "Retry",
                                   "--cancel-label",
                                   "Ignore",
                                   "--warningyesnocancel",
                                   text,
                                   nullptr};
    if (const auto output = OutputOf(zenity))
        return AnswerOf(*output, "Abort\n", "Retry\n", "Ignore\n");
    if (const auto output = OutputOf(kdialog))
        return AnswerOf(*output, "0\n", "1\n", "2\n");
    return std::nullopt;
}

bool ShowByDialogProgram(const char* title, const char* text, UINT style)
{
    struct Kind
    {
        const char* zenity;
        const char* kdialog;
    };
    constexpr UINT signs = 0xF0;
    const Kind kind = (style & signs) == 0x10   ? Kind{"--error", "--error"}
                      : (style & signs) == 0x30 ? Kind{"--warning", "--sorry"}
                                                : Kind{"--info", "--msgbox"};
    auto code = ExitCodeOf({"zenity", kind.zenity, "--no-markup", "--title", title, "--text", text});
    if (!code)
        code = ExitCodeOf({"kdialog", "--title", title, kind.kdialog, text});
    // A box that could not be shown, and one that was closed, end with another code than 0.
    return code == 0;
}

}
