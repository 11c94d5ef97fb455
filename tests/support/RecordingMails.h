#pragma once

#include "tests/support/TemporaryFolder.h"
#include "utility/platform/Mail.h"

#include <cstdint>
#include <memory>
#include <new>
#include <string>
#include <vector>

namespace support
{

/// What a mail program was asked for.
struct MailRecord
{
    int loaded = 0;
    int released = 0;
    int prepared = 0;
    std::vector<utility::platform::Mail> mails;
    std::string attached; ///< what was in the attachment of the latest
};

class RecordingMailProgram final : public utility::platform::MailProgram
{
public:
    RecordingMailProgram(MailRecord& record, bool sends, bool throws, std::uint32_t status)
        : m_record(record), m_sends(sends), m_throws(throws), m_status(status)
    {
        ++m_record.loaded;
    }
    ~RecordingMailProgram() override { ++m_record.released; }

    bool Prepare() override
    {
        ++m_record.prepared;
        return m_sends;
    }

    std::uint32_t Send(const utility::platform::Mail& mail) override
    {
        m_record.mails.push_back(mail);
        m_record.attached = TemporaryFolder::BytesOf(mail.attachment);
        if (m_throws)
            throw std::bad_alloc();
        return m_status;
    }

private:
    MailRecord& m_record;
    bool m_sends;
    bool m_throws;
    std::uint32_t m_status;
};

/// A mail program that records what it is asked for, or none.
class RecordingMails final : public utility::platform::MailService
{
public:
    std::unique_ptr<utility::platform::MailProgram> Load() override
    {
        return isThere ? std::make_unique<RecordingMailProgram>(record, sends, throws, status) : nullptr;
    }

    bool isThere = true;
    bool sends = true;
    bool throws = false; ///< when it has got a mail
    std::uint32_t status = 0;
    MailRecord record;
};

}
