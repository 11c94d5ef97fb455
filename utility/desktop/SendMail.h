#pragma once

// Hands a file to the user's mail program.
//
//     CSendMail mail;
//     try
//     {
//         mail.Init();
//         if (mail.Send(L"shop@example.com", L"Part 7", L"part.nc", L"Part 7.nc", L"As agreed.", false))
//             Show(L"The mail program has failed.");
//     }
//     catch (const std::runtime_error& failure) // there is none
//     {
//         Show(failure.what());
//     }
//
// An object belongs to one thread at a time. Its constructor throws nothing but std::bad_alloc. Whatever Send returns
// or throws, the attachment's own file is as it was.
//
// On Windows this is Simple MAPI, and a call lasts as long as the mail's dialog. Texts that the code page of the system
// does not have arrive with its substitutes, and a path that it does not have is not found.
//
// On Linux it is the first of these that takes the mail: the desktop's portal (org.freedesktop.portal.Email on the
// session's bus), where it can see the attachment; Thunderbird; and xdg-email, where the desktop's program for mails is
// one that is known to keep attachments (Thunderbird, Evolution, KMail, Claws Mail), since others drop them without a
// word. The last two need a display that answers. The user always sees the mail before it goes, with or without a
// dialog asked for, and nobody tells whether it then went: success means that a mail program has taken it, cancelled
// that the user did not want one. A program that fails within five seconds of its start is a failure, one that runs by
// then has the mail. No shell reads what the programs are given; the host is told of no child, and none of them is left
// as a zombie.
//
// Programs of Linux read an attachment long after Send has returned. So they get a copy of it, under its attachment
// name, in a folder that only the user may enter: utility-mail-XXXXXX among the system's temporary files ($TMPDIR, or
// /tmp). It is removed at once where no program has taken the mail, and otherwise a week later, by whoever uses this
// class next. A slash in an attachment name becomes an underscore there; an empty name stands for the file's own.

#include "utility/platform/Export.h"

#include <boost/filesystem/path.hpp>

#include <cstdint>
#include <memory>
#include <string>

namespace utility::platform
{
class MailProgram;
}

/// A way to the user's mail program. It can be moved and not copied.
class UTILITY_API CSendMail
{
public:
    /// Loads the mail library; where there is none, Init tells.
    CSendMail();
    /// The object that was moved from is like one for which there is no mail program.
    CSendMail(CSendMail&&) noexcept;
    CSendMail& operator=(CSendMail&&) noexcept;
    ~CSendMail();

    /// To be called ahead of Send. Always true. Throws std::runtime_error with a text for the user, in the system's
    /// narrow encoding, if there is no mail program (61840), or none that can send a file (61841).
    bool Init();

    /// Sends one file. Deliberately true for a failure that the user should be told of, and false if there is nothing
    /// more to say: it went well, the user has cancelled it, or could not log on. Without a recipient the mail program
    /// asks for one. A note goes deliberately with a subject only. Without Init nothing is sent, and the result is
    /// true.
    bool Send(const std::wstring& recipient, const std::wstring& subject, const boost::filesystem::path& attachment,
              const std::wstring& attachmentName, const std::wstring& note, bool noDialog);

    /// Has `writer` write the attachment, to a path in `folder` that it gets with `context`, and opens a mail with it.
    /// Gives what the writer returned; after false no mail is opened. How the mail ended is deliberately not told. The
    /// written file is gone when this returns or throws. Throws what the writer throws.
    bool Send(bool (*writer)(std::int64_t, const boost::filesystem::path&), std::int64_t context,
              const wchar_t* attachmentName, const boost::filesystem::path& folder);

private:
    std::unique_ptr<utility::platform::MailProgram> m_program;
};
