#pragma once

// The framework's list of images of one size, as toolbars have them: on Windows one of the system's, on Linux the
// framework's own, of 32 bits a pixel. What is in it can be had as pixels on both:
//
//     CImageList list;
//     list.Create(16, 16, ILC_COLOR32, 0, 0);
//     assert(list.GetImageCount() == 0 && list.GetImage(0).pixels.empty());
//
// desktop/ZeloImageList.h fills one from the resources of a module. For the thread of the user interface.

#include "utility/framework/Object.h"
#include "utility/platform/ImageTypes.h"

class UTILITY_API CImageList : public CObject
{
public:
    /// There is no list yet.
    CImageList();
    CImageList(const CImageList&) = delete;
    CImageList& operator=(const CImageList&) = delete;
    /// Ends the list.
    ~CImageList() override;

    /// A new, empty list of images of this size, with room for `initialCount`, in the place of an earlier one. Gives 0
    /// on failure, which leaves the earlier one. On Linux the flags and the growth make no difference.
    int Create(int width, int height, UINT flags, int initialCount, int growth);

    /// Ends the list; 0 if there is none.
    int DeleteImageList();

    /// Null while there is no list. It stays the object's.
    HIMAGELIST GetSafeHandle() const;

    /// How many images are in it; 0 where there is no list.
    int GetImageCount() const;

    /// The pixels of an image as the list keeps them; none if it has no such image. On Linux, and under Wine, they are
    /// those that were added; a list of Windows itself may have the colours multiplied by the alpha.
    utility::platform::ListImage GetImage(int index) const;

    /// The list, which the object ends with itself; null if there is none.
    HIMAGELIST m_hImageList = nullptr;
};
