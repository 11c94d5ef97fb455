#pragma once

// The resources of a PE file, the format of modules on Windows, read where they stand in its bytes. Such a file cannot
// be loaded here, but its strings, bitmaps and version record serve every system.
//
//     const MappedFile file("/opt/app/AppResDEU.dll");
//     const ResourceFile resources(file.Content());
//     const std::wstring text = resources.String(8300);
//
// Files of 32 and of 64 bits are read. Any thread may use an object, while the bytes are there. Bytes that are no PE
// file, or a damaged one, have the resources that can be found whole in them, if any: whatever they say, nothing is
// read outside them, and no search follows a circle. Nothing throws except where memory runs out.
//
// Where a resource is there in several languages the first is taken. Files have them in the order of their numbers, so
// that is the neutral one, if there is one.

#include "utility/platform/formats/Bytes.h"
#include "utility/platform/Types.h"

#include <string>
#include <string_view>
#include <variant>

namespace utility::platform::formats
{

/// The name of a resource, or of a type of resources: a number of 16 bits or a text. Case is ignored in A to Z.
using ResourceName = std::variant<UINT, std::wstring_view>;

class ResourceFile
{
public:
    /// The bytes belong to the caller.
    explicit ResourceFile(Bytes file);

    /// Whether this is a PE file that has resources.
    bool HasResources() const { return !m_tree.empty(); }

    /// The bytes of a resource as they stand in the file, at any alignment; none if it is absent.
    Bytes Find(const ResourceName& type, const ResourceName& name) const;

    /// The text with a number; empty if there is none. Lone surrogates stay as they are.
    std::wstring String(UINT id) const;

    /// A bitmap's header, colours and pixels, without the header that begins a bitmap file; none if it is absent.
    Bytes Bitmap(const ResourceName& name) const;

    /// The version record of the module; none if it has none.
    Bytes Version() const;

private:
    template <class IsWanted>
    std::uint32_t EntryOf(std::uint32_t directory, IsWanted isWanted) const;
    bool IsName(std::uint32_t stored, const ResourceName& name) const;
    Bytes FromAddress(std::uint32_t address) const;

    Bytes m_file;
    Bytes m_sections; ///< the table of the file's sections
    Bytes m_tree;     ///< from the root of the resources to the end of their section
};

}
