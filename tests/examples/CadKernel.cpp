// The survey against a CAD kernel: for each file that is named, the extents have to contain the box that the kernel
// computes of the same file. A file without a unit is no part of this.

#include "examples/iges/Survey.h"

#include <Bnd_Box.hxx>
#include <BRepBndLib.hxx>
#include <IGESControl_Reader.hxx>
#include <Message.hxx>
#include <Message_Messenger.hxx>
#include <Message_PrinterOStream.hxx>

#include <cstdio>

using iges::operator*;
using iges::operator-;

namespace
{

/// In millimetres, without the tolerances of the shapes.
Bnd_Box KernelBoxOf(const char* path)
{
    IGESControl_Reader reader;
    if (reader.ReadFile(path) != IFSelect_RetDone)
        return {};
    reader.TransferRoots();
    Bnd_Box box;
    BRepBndLib::AddOptimal(reader.OneShape(), box, false, false);
    box.SetGap(0.0);
    return box;
}

iges::Extents SurveyedBoxOf(const char* path)
{
    CTextInputOutputFile mapped{boost::filesystem::path(path)};
    const iges::File file(mapped.DataPtr(), mapped.GetFileSize(), &mapped);
    iges::Part part(file);
    iges::Survey survey(file, part);
    for (const iges::Record& record : file.Records())
        survey.Read(record);
    iges::Extents box;
    const double millimetres = file.LengthUnit().millimetres;
    box.Add(millimetres * survey.Found().extents.Low());
    box.Add(millimetres * survey.Found().extents.High());
    return box;
}

/// Says by how much the box is larger on each side, as a share of its diagonal.
bool Contains(const char* path)
{
    constexpr double accuracyOfKernel = 2e-7; // millimetres
    constexpr double lastBits = 1e-12;
    const Bnd_Box kernel = KernelBoxOf(path);
    const iges::Extents surveyed = SurveyedBoxOf(path);
    if (kernel.IsVoid())
    {
        std::printf("%s: the kernel finds nothing\n", path);
        return false;
    }
    iges::Point low;
    iges::Point high;
    kernel.Get(low[0], low[1], low[2], high[0], high[1], high[2]);
    const double size = iges::Length(high - low);
    const iges::Point below = 1.0 / size * (low - surveyed.Low());
    const iges::Point above = 1.0 / size * (surveyed.High() - high);
    bool isGood = true;
    for (const double margin : {below[0], below[1], below[2], above[0], above[1], above[2]})
        isGood = isGood && margin * size > -(accuracyOfKernel + lastBits * size);
    std::printf("%s: %s, larger by %.2g %.2g %.2g below, %.2g %.2g %.2g above\n", path,
                isGood ? "contained" : "NOT CONTAINED", below[0], below[1], below[2], above[0], above[1], above[2]);
    return isGood;
}

}

int main(int count, char** paths)
{
    Message::DefaultMessenger()->RemovePrinters(STANDARD_TYPE(Message_PrinterOStream));
    InitialiseUtilityDLL();
    int failures = 0;
    for (int i = 1; i < count; ++i)
        failures += !Contains(paths[i]);
    return count > 1 && failures == 0 ? 0 : 1;
}
