#pragma once

#include "utility/framework/DataExchange.h"
#include "utility/platform/Forms.h"

#include <map>
#include <string>
#include <vector>

namespace support
{

/// A form without a user: its fields are there to be set and read, and it keeps what was done.
class RecordingForm final : public utility::platform::Form
{
public:
    struct Box
    {
        std::wstring text;
        UINT style;
        int helpTopic;

        friend bool operator==(const Box&, const Box&) = default;
    };

    bool HasField(int id) override { return fields.contains(id); }
    void Text(int id, wchar_t* buffer, int size) override
    {
        limits.push_back(size);
        const auto field = fields.find(id);
        buffer[field == fields.end() ? 0 : field->second.copy(buffer, static_cast<std::size_t>(size) - 1)] = L'\0';
    }
    void SetText(int id, const wchar_t* text) override
    {
        ++written;
        fields[id] = text;
    }
    void Focus(int id) override { focused.push_back(id); }
    void ShowBox(const wchar_t* text, UINT style, int helpTopic) override { boxes.push_back({text, style, helpTopic}); }

    std::map<int, std::wstring> fields;
    std::vector<int> limits; ///< of the texts that were asked for
    std::vector<int> focused;
    std::vector<Box> boxes;
    int written = 0;
};

/// Whether this ends in such a failure of the framework.
template <class Failure, class Action>
bool EndsIn(const Action& action)
{
    try
    {
        action();
        return false;
    }
    catch (Failure* failure)
    {
        failure->Delete();
        return true;
    }
}

template <class Action>
bool IsRefused(const Action& action)
{
    return EndsIn<CUserException>(action);
}

}
