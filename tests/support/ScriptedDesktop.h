#pragma once

#include "tests/support/Substitute.h"
#include "utility/platform/Boxes.h"
#include "utility/platform/Keys.h"
#include "utility/platform/Processes.h"

#include <cstring>
#include <functional>
#include <string>
#include <vector>

namespace support
{

/// Stands in for boxes, keys and processes while it lives, answers as told, and keeps the calls that change something.
class ScriptedDesktop : public utility::platform::BoxService,
                        public utility::platform::KeyService,
                        public utility::platform::ProcessService
{
public:
    using Answer = utility::platform::BoxAnswer;

    std::optional<int> TakeQuitMessage() override
    {
        calls.emplace_back("take quit");
        return std::exchange(quit, std::nullopt);
    }
    void PostQuitMessage(int exitCode) override
    {
        calls.emplace_back("post quit");
        quit = exitCode;
    }
    bool IsControlKeyDown() override { return isControlKeyDown; }
    bool IsDown(int virtualKey) override { return virtualKey == keyThatIsDown; }
    bool IsDownNow(int virtualKey) override { return virtualKey == keyThatIsDownNow; }
    Answer AskAbortRetryIgnore(const char* title, const char* text) override
    {
        calls.emplace_back("ask");
        titles.emplace_back(title);
        boxes.emplace_back(text);
        whileAsking();
        return answer;
    }
    void Show(const wchar_t* title, const wchar_t* text, UINT style, UINT helpTopic) override
    {
        shown.push_back({title, text == nullptr ? L"<null>" : text, style, helpTopic});
    }
    bool ProgramPath(char (&path)[pathSize]) override
    {
        if (program != nullptr)
            std::strcpy(path, program);
        return program != nullptr;
    }
    void EndProcess() override { calls.emplace_back("end"); }

    struct Shown
    {
        std::wstring title;
        std::wstring text;
        UINT style;
        UINT helpTopic;

        bool operator==(const Shown&) const = default;
    };

    std::optional<int> quit;
    bool isControlKeyDown = false;
    int keyThatIsDown = -1;
    int keyThatIsDownNow = -1;
    Answer answer = Answer::ignore;
    const char* program = "C:\\host.exe"; ///< null for one that is not known
    std::function<void()> whileAsking = [] {};
    std::vector<std::string> calls;
    std::vector<std::string> titles;
    std::vector<std::string> boxes;
    std::vector<Shown> shown;

private:
    Substitute<utility::platform::BoxService> m_boxes{utility::platform::BoxesSlot(), *this};
    Substitute<utility::platform::KeyService> m_keys{utility::platform::KeysSlot(), *this};
    Substitute<utility::platform::ProcessService> m_processes{utility::platform::ProcessesSlot(), *this};
};

}
