#pragma once

#include "utility/platform/formats/ResourceFile.h"

#include <string>
#include <vector>

namespace support
{

/// What a file answers to look-ups of every kind, hits and misses for tests/modules/Resources.rc. Absent resources are
/// empty.
inline std::vector<std::wstring> ResourceLookups(utility::platform::formats::Bytes file)
{
    const utility::platform::formats::ResourceFile resources(file);
    std::vector<std::wstring> answers;
    for (const UINT id : {0u, 1u, 15u, 16u, 17u, 32u, 8300u, 65535u, 65536u})
        answers.push_back(resources.String(id));
    const auto add = [&answers](utility::platform::formats::Bytes bytes)
    {
        std::wstring& answer = answers.emplace_back();
        for (const std::byte each : bytes)
            answer += static_cast<wchar_t>(each);
    };
    add(resources.Bitmap(7u));
    add(resources.Bitmap(8u));
    add(resources.Bitmap(L"LOGO"));
    add(resources.Bitmap(L"LOGOS"));
    add(resources.Find(10u, L"anything"));
    add(resources.Find(L"Kind", 300u));
    add(resources.Version());
    return answers;
}

}
