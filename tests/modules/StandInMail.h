#pragma once

// What the mail library that stands in for the system's keeps of a call.

#include <windows.h>

#include <mapi.h>

#include <cstddef>

struct KeptText
{
    bool isThere;
    char bytes[400];
};

struct MailCall
{
    ULONG status; ///< what the call is to give
    int count;
    LHANDLE session;
    ULONG_PTR window;
    FLAGS flags;
    ULONG reserved;
    unsigned char message[sizeof(MapiMessage)];
    unsigned char file[sizeof(MapiFileDesc)];
    unsigned char recipient[sizeof(MapiRecipDesc)];
    KeptText subject;
    KeptText note;
    KeptText path;
    KeptText name;
    KeptText recipientName;
    KeptText recipientAddress;
};
