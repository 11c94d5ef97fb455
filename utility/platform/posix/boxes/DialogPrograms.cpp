#include "utility/platform/posix/boxes/DialogPrograms.h"

#include "utility/platform/posix/programs/RunProgram.h"

#include <optional>

namespace utility::platform::posix
{

namespace
{

template <typename Told, typename Answer>
std::optional<BoxAnswer> AnswerOf(const Told& told, Answer abort, Answer retry, Answer ignore)
{
    return told == abort    ? std::optional(BoxAnswer::abort)
           : told == retry  ? std::optional(BoxAnswer::retry)
           : told == ignore ? std::optional(BoxAnswer::ignore)
                            : std::nullopt;
}

}

std::optional<BoxAnswer> AskByDialogProgram(const char* title, const char* text)
{
    // Its first button has the focus, and is the one to be pressed by mistake.
    const auto zenity = RunProgram({"zenity", "--question", "--switch", "--no-markup", "--title", title, "--text", text,
                                    "--extra-button", "Ignore", "--extra-button", "Retry", "--extra-button", "Abort"},
                                   {.keepsOutput = true});
    if (zenity)
        return AnswerOf(zenity->output, "Abort\n", "Retry\n", "Ignore\n");
    const auto kdialog = RunProgram({"kdialog", "--title", title, "--yes-label", "Abort", "--no-label", "Retry",
                                     "--cancel-label", "Ignore", "--warningyesnocancel", text});
    if (kdialog)
        return AnswerOf(*kdialog->exitCode, 0, 1, 2);
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
    auto run = RunProgram({"zenity", kind.zenity, "--no-markup", "--title", title, "--text", text});
    if (!run)
        run = RunProgram({"kdialog", "--title", title, kind.kdialog, text});
    // A box that could not be shown, and one that was closed, end with another code than 0.
    return run && run->exitCode == 0;
}

}
