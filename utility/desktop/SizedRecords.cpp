#include "utility/desktop/SizedRecords.h"

CWindowPlacement::CWindowPlacement() { length = sizeof(WINDOWPLACEMENT); }
CWindowPlacement& CWindowPlacement::operator=(const CWindowPlacement& other) = default;

CDevMode::CDevMode() { dmSize = sizeof(DEVMODEW); }
CDevMode& CDevMode::operator=(const CDevMode& other) = default;

CShellExecuteInfo::CShellExecuteInfo() { cbSize = sizeof(SHELLEXECUTEINFOW); }
CShellExecuteInfo& CShellExecuteInfo::operator=(const CShellExecuteInfo& other) = default;

CFormatEtc::CFormatEtc() : FORMATETC() {}
CFormatEtc::CFormatEtc(unsigned short clipboardFormat, tagDVTARGETDEVICE* targetDevice, DWORD aspect,
                       std::int32_t index, DWORD medium)
    : FORMATETC{clipboardFormat, targetDevice, aspect, index, medium}
{
}
CFormatEtc& CFormatEtc::operator=(const CFormatEtc& other) = default;
