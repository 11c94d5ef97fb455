#include "utility/framework/ImageList.h"

#include "utility/platform/Images.h"

#include <utility>

using utility::platform::Images;

CImageList::CImageList() = default;

CImageList::~CImageList() { CImageList::DeleteImageList(); }

int CImageList::Create(int width, int height, UINT flags, int initialCount, int growth)
{
    const HIMAGELIST list = Images().MakeList(width, height, flags, initialCount, growth);
    if (list == nullptr)
        return 0;
    DeleteImageList();
    m_hImageList = list;
    return 1;
}

int CImageList::DeleteImageList()
{
    return m_hImageList != nullptr && Images().DestroyList(std::exchange(m_hImageList, nullptr)) ? 1 : 0;
}

HIMAGELIST CImageList::GetSafeHandle() const { return m_hImageList; }

int CImageList::GetImageCount() const { return m_hImageList != nullptr ? Images().Count(m_hImageList) : 0; }

utility::platform::ListImage CImageList::GetImage(int index) const
{
    return m_hImageList != nullptr ? Images().ImageOf(m_hImageList, index) : utility::platform::ListImage();
}
