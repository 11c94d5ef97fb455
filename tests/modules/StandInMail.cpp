// A mail library that stands in for the system's: it sends nothing, and keeps what it was called with.

#include "tests/modules/StandInMail.h"

#include <mapi.h>

namespace
{

MailCall latest;

template <class Record>
void Keep(unsigned char (&bytes)[sizeof(Record)], const Record& record)
{
    __builtin_memcpy(bytes, &record, sizeof(record));
}

void Keep(KeptText& kept, const char* text)
{
    kept.isThere = text != nullptr;
    for (std::size_t at = 0; kept.isThere && at < sizeof(kept.bytes); ++at)
    {
        kept.bytes[at] = text[at];
        if (text[at] == '\0')
            break;
    }
}

}

extern "C" __declspec(dllexport) MailCall* StandInMailCall() { return &latest; }

extern "C" __declspec(dllexport) ULONG WINAPI
    MAPISendMail(LHANDLE session, ULONG_PTR window, lpMapiMessage message, FLAGS flags, ULONG reserved)
{
    ++latest.count;
    latest.session = session;
    latest.window = window;
    latest.flags = flags;
    latest.reserved = reserved;
    Keep<MapiMessage>(latest.message, *message);
    Keep(latest.subject, message->lpszSubject);
    Keep(latest.note, message->lpszNoteText);
    if (message->lpFiles != nullptr)
    {
        Keep<MapiFileDesc>(latest.file, *message->lpFiles);
        Keep(latest.path, message->lpFiles->lpszPathName);
        Keep(latest.name, message->lpFiles->lpszFileName);
    }
    if (message->lpRecips != nullptr)
    {
        Keep<MapiRecipDesc>(latest.recipient, *message->lpRecips);
        Keep(latest.recipientName, message->lpRecips->lpszName);
        Keep(latest.recipientAddress, message->lpRecips->lpszAddress);
    }
    return latest.status;
}
