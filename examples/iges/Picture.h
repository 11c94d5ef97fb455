#pragma once

// A wireframe as a file that others show: a scene to be turned around (VRML) or a picture (SVG).
//
//     SavePicture("part.svg", wireframe, L"part.igs", [] { return console::Interruption::IsAsked(); });
//
// The file is written beside an older one of its name and takes its place when it is whole and on the disk; what goes
// wrong leaves the older one as it was. What cannot be written throws CFileException (as a pointer), and leaves nothing
// else. What cannot be replaced throws boost::filesystem::filesystem_error: the new file is whole then, and stays under
// the name that it was written by.

#include "examples/iges/Wireframe.h"

#include <boost/filesystem/path.hpp>

#include <functional>
#include <string>

namespace iges
{

/// Whether the writing is to be given up; it is asked again and again.
using IsStopped = std::function<bool()>;

/// Gets a text piece by piece.
using TextSink = std::function<void(const std::string&)>;

/// In SVG, seen so that the three axes are equally long, and made to fit a square. No line hides another one.
void WritePicture(const Wireframe& wireframe, const std::wstring& title, const TextSink& write);

/// In VRML 97, in the unit of the part.
void WriteScene(const Wireframe& wireframe, const std::wstring& title, const TextSink& write);

/// False if it was given up.
bool SavePicture(const boost::filesystem::path& path, const Wireframe& wireframe, const std::wstring& title,
                 const IsStopped& isStopped);

/// Compressed if the name ends in .gz. False if it was given up.
bool SaveScene(const boost::filesystem::path& path, const Wireframe& wireframe, const std::wstring& title,
               const IsStopped& isStopped);

}
